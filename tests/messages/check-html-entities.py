#!/usr/bin/env python3
"""Checks the suggestion of `vanxml check` for each entity of HTML 4, against the table of Python.

    check-html-entities.py VANXML
"""

import html.entities
import json
import subprocess
import sys
import tempfile
from pathlib import Path

# XML itself declares these.
DECLARED = {"amp", "lt", "gt", "quot"}


def main():
    characters = {name: code for name, code in html.entities.name2codepoint.items() if name not in DECLARED}
    with tempfile.TemporaryDirectory() as folder:
        paths = []
        for name in characters:
            # Some names differ only in case, and some file systems take such names for equal.
            path = Path(folder, "%d-%s.xml" % (characters[name], name))
            path.write_text("<a>&%s;</a>" % name, encoding="ascii")
            paths.append(path)
        command = [sys.argv[1], "check", "--schema", "none", "--format", "json", *paths]
        lines = subprocess.run(command, capture_output=True, text=True).stdout.splitlines()
    found = {entry["value"]: entry.get("suggestion") for entry in map(json.loads, lines) if "value" in entry}
    expected = {"&%s;" % name: "&#%d;" % code for name, code in characters.items()}
    failures = [name for name in expected if found.get(name) != expected[name]]
    for name in failures:
        print("failure: %s: %s instead of %s" % (name, found.get(name), expected[name]))
    print("%d entities, %d failures" % (len(expected), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
