#!/usr/bin/env python3
"""Checks the manual pages of vanxml as a reader sees them.

    check-man-pages.py FOLDER VANXML

FOLDER contains the pages that vanxml/shell/man-pages.py wrote. There must be one for the tool and for each command, and
each command and option of `vanxml help` must be on its page. `man` and `mandoc` must not warn. Exits with status 77,
which counts as skipped, if one of the two is missing.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "vanxml" / "shell"))
import toolhelp  # noqa: E402

SKIPPED = 77
TIMEOUT = 60  # seconds for one page
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "SEE ALSO"]


def render(page):
    """The text of a page, and the warnings of man and mandoc."""
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100"}
    man = subprocess.run(["man", "--warnings", "-P", "cat", "-l", str(page)], capture_output=True, text=True,
                         timeout=TIMEOUT, check=True, env=environment)
    lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", str(page)], capture_output=True, text=True,
                          timeout=TIMEOUT, check=False, env=environment)
    return re.sub(".\b", "", man.stdout), man.stderr + lint.stdout


def find_faults(name, command, text):
    faults = [f"no section {title}" for title in SECTIONS if not re.search(rf"^{title}$", text, re.MULTILINE)]
    # Each option begins an entry of the section OPTIONS.
    entries = "\n".join(re.findall(r"^OPTIONS$(.*?)^[A-Z]", text, re.DOTALL | re.MULTILINE))
    for each in command.all_commands() if command.words else [command]:
        for option in each.options:
            label = ", ".join(option.names)
            if not re.search(rf"^ +{re.escape(label)}\b", entries, re.MULTILINE):
                faults.append(f"no entry for {label}")
    faults += [f"no reference to vanxml-{each.words[0]}" for each in command.commands
               if not command.words and f"vanxml-{each.words[0]}(1)" not in text]
    if re.search(r"\]\(#|`", text):
        faults.append("Markdown is left")
    return [f"{name}: {fault}" for fault in faults]


def main():
    folder = pathlib.Path(sys.argv[1])
    if shutil.which("man") is None or shutil.which("mandoc") is None:
        print("missing: man or mandoc")
        return SKIPPED
    tool = toolhelp.read_command(sys.argv[2:])
    faults = []
    pages = {"vanxml.1": tool, **{f"vanxml-{each.words[0]}.1": each for each in tool.commands}}
    if sorted(pages) != sorted(path.name for path in folder.iterdir()):
        faults.append(f"the pages are {sorted(path.name for path in folder.iterdir())}")
    for name, command in pages.items():
        text, warnings = render(folder / name)
        faults += [f"{name}: {line}" for line in warnings.splitlines()]
        faults += find_faults(name, command, text)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
