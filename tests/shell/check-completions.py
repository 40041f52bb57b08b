#!/usr/bin/env python3
"""Checks the completions of vanxml for bash, zsh and fish.

    check-completions.py FOLDER VANXML

FOLDER contains the completions that vanxml/shell/completions.py wrote. Each shell completes the same command lines in
a folder with documents. Exits with status 77, which counts as skipped, if a shell is missing.
"""

import os
import pathlib
import pty
import select
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
TIMEOUT = 60  # seconds for one completion
FILES = ["sales.kxa", "orders.kxb", "book.xml", "notes.txt", "book.xsd", "names.csv", "my file.kxa", "-dash.kxa",
         "options"]
FOLDERS = ["docs"]
DOCUMENTS = {"sales.kxa", "orders.kxb", "book.xml", "my file.kxa", "docs"}

# The words behind "vanxml", of which the last one is completed, the completions that there must be, and some that must
# not be there.
CASES = [
    (["ch"], {"check"}, {"format"}),
    ([""], {"check", "format", "schema", "help"}, {"sales.kxa"}),
    (["check", "--fo"], {"--format"}, {"--files-from"}),
    (["check", "--"], {"--schema", "--strict", "--help"}, {"--in-place"}),
    (["format", "--in"], {"--in-place", "--include"}, set()),
    (["check", "--format", "s"], {"sarif"}, {"json"}),
    (["check", "--format", ""], {"text", "gcc", "json", "sarif", "html"}, {"sales.kxa"}),
    (["check", "--schema", "kxa-"], {"kxa-10.2", "kxa-18.1"}, {"kxb-10.2"}),
    (["check", "--schema", ""], {"auto", "hints", "none", "oauth-config", "book.xsd"}, {"sales.kxa", "notes.txt"}),
    (["check", ""], DOCUMENTS, {"notes.txt", "names.csv"}),
    (["check", "--strict", "sa"], {"sales.kxa"}, {"orders.kxb"}),
    (["check", "no"], {"notes.txt"}, set()),
    (["check", "options", "sa"], {"sales.kxa"}, {"--strict"}),
    (["check", "--", "-"], {"-dash.kxa"}, {"--strict"}),
    (["check", "-o", "report", "sa"], {"sales.kxa"}, {"orders.kxb"}),
    (["check", "--files-from", "no"], {"notes.txt"}, set()),
    (["retarget", "--from", ""], {"names.csv"}, {"sales.kxa", "notes.txt"}),
    (["schema", ""], {"list", "show"}, {"sales.kxa"}),
    (["schema", "sh"], {"show"}, {"list"}),
    (["schema", "show", "oauth"], {"oauth-config"}, {"kxa-10.2"}),
    (["help", "re"], {"retarget"}, {"check"}),
    (["check", "--max-errors", ""], set(), {"sales.kxa", "text"}),
]
# Values behind an equals sign. fish and zsh complete the whole word.
VALUE_CASES = [
    (["check", "--format=ht"], {"html"}),
    (["check", "--schema=kxb-10"], {"kxb-10.2", "kxb-10.5"}),
]

BASH = """
source "$COMPLETIONS"
[[ $(complete -p vanxml) == *"-F _vanxml vanxml" ]] || exit 3
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_vanxml
printf '%s\\n' "${COMPREPLY[@]}"
"""

# Writes all matches to the file $MATCHES. compadd with -A, -D or -O only computes and adds nothing.
ZSH = """
PS1='ready> '
unsetopt beep
zstyle ':completion:*' list-prompt ''
fpath=($COMPLETIONS_FOLDER $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
    local -a found
    if [[ " ${argv[1,${argv[(i)(-|--)]}]} " != *' -'[A-Za-z0-9]#[ADO]' '* ]]; then
        builtin compadd -A found "$@"
        print -rl -- $found >> $MATCHES
    fi
    builtin compadd "$@"
}
_finish() { print done >> $MATCHES.done }
zle -N _finish
bindkey '^X^F' _finish
setopt extended_glob
print loaded > $MATCHES.loaded
"""


def complete_in_bash(folder, words):
    split = []
    for word in words:  # as bash splits words
        name, equals, value = word.partition("=")
        split += [name, equals, value] if equals else [name]
    result = subprocess.run(["bash", "--norc", "-c", BASH, "bash", "vanxml", *split], capture_output=True, text=True,
                            timeout=TIMEOUT, check=True, env={**os.environ, "COMPLETIONS": str(folder / "vanxml.bash")})
    return result.stdout, result.stderr


def complete_in_fish(folder, words):
    # fish -C reads the line as text, so blanks would need quotes. No case has them.
    command = f"source '{folder / 'vanxml.fish'}'; complete -C 'vanxml {' '.join(words)}'"
    result = subprocess.run(["fish", "--no-config", "-c", command], capture_output=True, text=True, timeout=TIMEOUT,
                            check=True, env={**os.environ, "HOME": os.getcwd()})
    names = [line.split("\t")[0] for line in result.stdout.splitlines()]
    return "\n".join(name.rpartition("=")[2] for name in names), result.stderr


def wait_for(path, descriptor):
    """Waits until the file exists. Reads what the shell prints, so that it never waits for a reader."""
    end = time.monotonic() + TIMEOUT
    while not path.exists():
        if time.monotonic() > end:
            raise TimeoutError(f"zsh did not write {path}")
        if select.select([descriptor], [], [], 0.02)[0]:
            os.read(descriptor, 65536)


def complete_in_zsh(folder, words):
    with tempfile.TemporaryDirectory() as work:
        matches = pathlib.Path(work) / "matches"
        matches.touch()
        setup = pathlib.Path(work) / "setup"
        setup.write_text(ZSH)
        process, descriptor = pty.fork()
        if process == 0:
            os.environ.update(MATCHES=str(matches), COMPLETIONS_FOLDER=str(folder), TERM="dumb", HOME=work)
            os.execvp("zsh", ["zsh", "-f", "-i"])
        try:
            os.write(descriptor, f"source {setup}\n".encode())
            wait_for(matches.with_suffix(".loaded"), descriptor)
            os.write(descriptor, f"vanxml {' '.join(words)}\t\x18\x06".encode())
            wait_for(matches.with_suffix(".done"), descriptor)
        finally:
            os.close(descriptor)
            os.waitpid(process, 0)
        return matches.read_text(), ""


def check(shell, complete, folder):
    failures = 0
    cases = CASES + [(words, wanted, set()) for words, wanted in VALUE_CASES]
    for words, wanted, unwanted in cases:
        output, errors = complete(folder, words)
        found = {line.strip().rstrip("/").replace("\\ ", " ") for line in output.splitlines()} - {""}
        if not wanted <= found or unwanted & found or errors or (words[-1] == "" and not wanted and found):
            failures += 1
            print(f"{shell}: 'vanxml {' '.join(words)}': expected {sorted(wanted)}, not {sorted(unwanted)}; "
                  f"found {sorted(found)}; {errors}")
    return failures


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    tool = pathlib.Path(sys.argv[2]).resolve()
    shells = {"bash": complete_in_bash, "zsh": complete_in_zsh, "fish": complete_in_fish}
    missing = [shell for shell in shells if shutil.which(shell) is None]
    if missing:
        print("missing: " + ", ".join(missing))
        return SKIPPED
    os.environ["PATH"] = f"{tool.parent}:{os.environ['PATH']}"
    os.environ["LC_ALL"] = "C.UTF-8"
    with tempfile.TemporaryDirectory() as work:
        os.chdir(work)
        for name in FILES:
            pathlib.Path(name).touch()
        for name in FOLDERS:
            pathlib.Path(name).mkdir()
        failures = sum(check(shell, complete, folder) for shell, complete in shells.items())
        os.chdir("/")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
