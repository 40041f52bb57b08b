#!/usr/bin/env python3
"""Runs the hooks of vanxml with pre-commit in new repositories.

    check-pre-commit.py SOURCE VANXML

SOURCE is the root folder of this repository. Tries both ways that extras/README.md shows: the hooks of a repository,
and a configuration that defines the hooks itself. Exits with status 77, which counts as skipped, if git or pre-commit
is missing.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
TIMEOUT = 120  # seconds for one command
UNFORMATTED = "<a>\n<b/></a>\n"
FORMATTED = "<?xml version='1.0' encoding='utf-8' ?>\n\n<a>\n  <b />\n</a>\n"


def run(folder, *command, check=True):
    result = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=TIMEOUT, check=False)
    if check and result.returncode != 0:
        raise RuntimeError(f"{command} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result


def make_repository(folder):
    folder.mkdir()
    run(folder, "git", "init", "--quiet")
    run(folder, "git", "config", "user.name", "Tester")
    run(folder, "git", "config", "user.email", "tester@example.invalid")


def commit(folder, check=True):
    run(folder, "git", "add", "--all")
    return run(folder, "git", "commit", "--message", "change", check=check)


def try_hooks(folder, configuration, sample):
    """Commits documents in a new repository that has the configuration. Returns what went wrong."""
    make_repository(folder)
    (folder / ".pre-commit-config.yaml").write_text(configuration, encoding="utf-8")
    run(folder, "pre-commit", "install")
    faults = []
    document = folder / "my document.kxe"
    # Neither hook applies to another file.
    (folder / "notes.txt").write_text("<a>", encoding="utf-8")
    commit(folder)

    # The first commit fails, because a hook formats the document.
    document.write_text(UNFORMATTED, encoding="utf-8")
    result = commit(folder, check=False)
    if result.returncode == 0 or document.read_text(encoding="utf-8") != FORMATTED:
        faults.append(f"the document was not formatted: {result.stdout}{result.stderr}")
    # The second one fails, because the document does not match its schema.
    result = commit(folder, check=False)
    output = result.stdout + result.stderr
    if result.returncode == 0 or "my document.kxe:3:1: error: " not in output or "Passed" not in output:
        faults.append(f"the document was not checked: {output}")
    # A valid and formatted document passes.
    shutil.copy(sample, document)
    run(folder, "vanxml", "format", "--in-place", str(document))
    result = commit(folder, check=False)
    output = result.stdout + result.stderr
    if result.returncode != 0 or output.count("Passed") != 2:
        faults.append(f"a good document was refused: {output}")
    return faults


def main():
    source = pathlib.Path(sys.argv[1])
    tool = pathlib.Path(sys.argv[2]).resolve()
    if shutil.which("git") is None or shutil.which("pre-commit") is None:
        print("missing: git or pre-commit")
        return SKIPPED
    os.environ["PATH"] = f"{tool.parent}:{os.environ['PATH']}"
    with tempfile.TemporaryDirectory() as work:
        work = pathlib.Path(work)
        os.environ.update(HOME=str(work), PRE_COMMIT_HOME=str(work / "cache"), GIT_CONFIG_NOSYSTEM="1")
        hooks = work / "hooks"
        make_repository(hooks)
        shutil.copy(source / ".pre-commit-hooks.yaml", hooks)
        commit(hooks)
        revision = run(hooks, "git", "rev-parse", "HEAD").stdout.strip()
        shared = f"repos:\n  - repo: {hooks}\n    rev: {revision}\n    hooks:\n      - id: vanxml-format\n" \
            "      - id: vanxml-check\n"
        sample = source / "samples/captions.kxe"
        local = (source / "extras/pre-commit/.pre-commit-config.yaml").read_text(encoding="utf-8")
        faults = try_hooks(work / "shared", shared, sample) + try_hooks(work / "local", local, sample)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
