#!/usr/bin/env python3
"""Checks that each promise and each limit in SECURITY.md names tests, and that these tests exist.

    check-promises.py SOURCE-FOLDER

The last column of a row names a suite, a case (SUITE.CASE), or a test of CTest.
"""

import re
import sys
from pathlib import Path


def find_tests(folder):
    """Returns the names of all suites and cases, and of the tests that are not programs with cases."""
    names = set()
    for path in (folder / "tests").rglob("*.cpp"):
        text = path.read_text(encoding="utf-8")
        for suite, case in re.findall(r"^ *TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", text, re.MULTILINE):
            names |= {suite, suite + "." + case}
        names |= set(re.findall(r"INSTANTIATE_TEST_SUITE_P\(\s*(\w+),", text))
    for path in (folder / "tests").rglob("CMakeLists.txt"):
        names |= set(re.findall(r"add_test\(NAME ([\w.]+)", path.read_text(encoding="utf-8")))
    names |= {"fuzz.Replay" + path.name.replace("Fuzzer.cpp", "") for path in (folder / "fuzz").glob("*Fuzzer.cpp")}
    return names


def main():
    folder = Path(sys.argv[1])
    tests = find_tests(folder)
    text = (folder / "SECURITY.md").read_text(encoding="utf-8")
    promises = text[text.index("## Promises"):text.index("## Limits that you must set")]
    rows = [line.split("|")[1:-1] for line in promises.splitlines() if line.startswith("| ")]
    rows = [row for row in rows if row[-1] != " Tests "]
    failures = []
    for *promise, column in rows:
        named = re.findall(r"`([^`]+)`", column)
        if not named:
            failures.append("no test: " + "|".join(promise).strip())
        failures += ["this test does not exist: " + name for name in named if name not in tests]
    for failure in failures:
        print("failure: " + failure)
    print("%d promises and limits, %d failures" % (len(rows), len(failures)))
    return 0 if rows and not failures else 1


if __name__ == "__main__":
    sys.exit(main())
