#!/usr/bin/env python3
"""Checks that the problem matcher reads the messages of `vanxml check --format gcc`.

    check-matcher.py MATCHER VANXML FOLDER...

Checks all documents of the folders, and all schemas in them, whose errors may have no place. For each message of
`--format json`, the matcher must find the same file, line, column, severity, code and message in one line of
`--format gcc`, and it must find nothing else.
"""

import json
import pathlib
import re
import subprocess
import sys

TIMEOUT = 300  # seconds for all documents


def run(tool, form, folders):
    """Returns the lines of standard output and standard error."""
    commands = [["--recursive", "--include", "*.*", *folders]]
    for schema in (path for folder in folders for path in sorted(pathlib.Path(folder).rglob("*.xsd"))):
        commands.append(["--schema", str(schema), str(schema)])
    output, errors = [], []
    for command in commands:
        result = subprocess.run([tool, "check", "--format", form, *command], capture_output=True, timeout=TIMEOUT,
                                check=False)
        output += result.stdout.decode().splitlines()
        errors += result.stderr.decode().splitlines()
    return output, errors


def match(matchers, line):
    """Returns what each matcher finds in a line."""
    found = []
    for matcher in matchers:
        pattern = matcher["pattern"][0]
        # [0-9] is the only meaning of \d in JavaScript.
        if result := re.search(pattern["regexp"], line, re.ASCII):
            found.append({name: result[group] for name, group in pattern.items() if name != "regexp"})
    return found


def expected(diagnostic):
    values = {"file": diagnostic["file"], "message": diagnostic["message"], "code": diagnostic["code"],
              "severity": "warning" if diagnostic["severity"] == "warning" else "error"}
    if "line" in diagnostic:
        values.update(line=str(diagnostic["line"]), column=str(diagnostic.get("column", 0)))
    return values


def main():
    matcher, tool, *folders = sys.argv[1:]
    matchers = json.loads(pathlib.Path(matcher).read_text(encoding="utf-8"))["problemMatcher"]
    lines = run(tool, "gcc", folders)[1]
    objects = [json.loads(line) for line in run(tool, "json", folders)[0]]
    wanted = [expected(each) for each in objects if each["type"] == "diagnostic"]
    # A line shows control characters as escapes, JSON as they are.
    wanted = [each for each in wanted if each["message"].isprintable()]
    found = []
    failures = 0
    for line in lines:
        matches = match(matchers, line)
        if len(matches) > 1:
            failures += 1
            print(f"two matchers find something: {line}")
        found += matches
    found = [each for each in found if "\\" not in each["message"] or each in wanted]
    for each in wanted:
        if each not in found:
            failures += 1
            print(f"not found: {each}")
    without_place = sum("line" not in each for each in wanted)
    if len(wanted) < 50 or without_place == 0 or len(found) > len(wanted):
        failures += 1
        print(f"{len(wanted)} messages, {without_place} of them without a place; {len(found)} matches")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
