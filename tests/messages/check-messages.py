#!/usr/bin/env python3
"""Checks the messages of `vanxml check` for a catalogue of mistakes, and writes the page docs/messages.md.

    check-messages.py [--emulator=WORD...] VANXML [CASE...]
    check-messages.py VANXML --update [CASE...]
    check-messages.py --render PAGE
    check-messages.py --compare PAGE

mistakes.txt lists the cases and describes its own format. The first form runs the tool on the document of each case.
It compares standard output, standard error and the exit status in full with the file CASE.expected, and the codes of
the diagnostics with the codes in mistakes.txt. If no case is named, it also checks these rules:
  - each code of the library occurs in at least one case
  - each file in the folder "cases" belongs to a case

The words of --emulator stand before the tool in a command, for a tool of another system. --update rewrites
CASE.expected. It still compares the codes, because people write them. --render writes the page from
the documents and the expected files, and --compare fails if the page is not what --render would write. Neither of the
two needs the tool.
"""

import argparse
import collections
import concurrent.futures
import difflib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import unicodedata

HERE = pathlib.Path(__file__).resolve().parent
CASES = HERE / "cases"
TABLE = HERE / "mistakes.txt"
CODES = HERE.parent.parent / "vancorexml" / "main" / "parser" / "DiagnosticCode.cpp"
NAMED_CODE = re.compile(r'\{DiagnosticCode::\w+, "([a-z-]+)"\}')
# Codes without a case, with the reason.
UNCOVERED_CODES = {"out-of-memory": "Memory ran out. `vanxml` reports this as a failure, with exit status 2."}
TIMEOUT = 120  # seconds for one run of the tool, also under a sanitizer

ERROR_TITLE = "[standard error]\n"
OUTPUT_TITLE = "[standard output]\n"
STATUS_TITLE = "[exit status]\n"

INTRODUCTION = """\
# Messages of vanxml check

This page shows what `vanxml check` prints for {count} typical mistakes. Use it to judge the messages before you \
choose the tool, or to look up a code that your build server shows.

Each mistake has a document, the command, the message, and the [code](#codes) of the message. The tests run all these \
commands and compare the output with this page, so the page is always up to date.

- **The command** runs in the folder `tests/messages/cases` of the repository, which contains all documents and \
schemas of this page.
- **The message** is the text on standard error. `vanxml` also prints a summary on standard output, such as \
`1 document, 1 error`, which this page leaves out. On a terminal, the message has colours.
- **The exit status** is 1 unless the page says otherwise.
- **The code** names the kind of mistake. It is a part of the formats for programs (`--format gcc`, `json` and \
`sarif`) and does not change in later versions.
- **Invisible characters** of a document stand between angle quotes: ‹E9› is a byte that is not valid UTF-8, ‹1B› is a \
control character, ‹U+00A0› is a character that looks like a blank or is not visible. Files that are not text are \
shown as hexadecimal bytes. Long lines are cut.
"""

CODES_INTRODUCTION = """\
## Codes

This table lists all codes in alphabetical order, with mistakes on this page that have them.

| code | mistakes |
|---|---|
"""

SHOWN_BYTES = 96
SHOWN_COLUMNS = 160
SHOWN_LINKS = 4
ZERO_WIDTH_JOINER = "\u200d"  # joins the parts of an emoji, which is visible


class Case:
    """A mistake: a document, the arguments of the tool, and the codes that the diagnostics must have."""

    def __init__(self, line):
        fields = [field.strip() for field in line.split("|")]
        if len(fields) not in (3, 4):
            raise ValueError("a case has three or four fields: " + line)
        self.file = fields[0]
        self.name = self.file.rpartition(".")[0]
        self.codes = [] if fields[1] == "-" else fields[1].split()
        self.title = fields[2]
        self.arguments = shlex.split(fields[3]) if len(fields) == 4 else []
        self.remark = ""

    @property
    def document(self):
        return CASES / self.file

    @property
    def expected(self):
        return CASES / (self.name + ".expected")

    @property
    def schema(self):
        """The schema that only this case uses, because the mistake is there."""
        return CASES / (self.name + ".xsd")

    @property
    def command(self):
        return "vanxml check " + "".join(shlex.quote(argument) + " " for argument in self.arguments) + self.file


class Group:
    """A chapter of the page."""

    def __init__(self, heading):
        self.heading = heading
        self.text = ""
        self.cases = []


def read_groups():
    """Returns the content of mistakes.txt."""
    groups = []
    for line in TABLE.read_text(encoding="utf-8").splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith("=="):
            groups.append(Group(line[2:].strip()))
        elif line.startswith(" "):
            groups[-1].cases[-1].remark = line.strip()
        elif "|" in line:
            groups[-1].cases.append(Case(line))
        else:
            groups[-1].text = line
    return groups


def read_codes():
    """Returns the names of all codes of the library."""
    codes = NAMED_CODE.findall(CODES.read_text(encoding="utf-8"))
    if not codes:
        raise ValueError(f"found no codes in {CODES.name}")
    return codes


def environment():
    """Returns the environment for the tool: without colours, in a fixed language."""
    changed = dict(os.environ, NO_COLOR="1", LC_ALL="C.UTF-8")
    for name in ("CLICOLOR_FORCE", "FORCE_COLOR", "COLUMNS"):
        changed.pop(name, None)
    return changed


def run(tool, case, options=()):
    """Runs the tool, which is a list of the words of its command."""
    arguments = [*tool, "check", *case.arguments, *options, case.file]
    return subprocess.run(arguments, cwd=CASES, env=environment(), stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=TIMEOUT)


def record(tool, case):
    """Returns what the tool does with a case, as the text of its expected file."""
    result = run(tool, case)
    texts = [result.stderr.decode(), result.stdout.decode()]
    texts = [text + "\n" if text and not text.endswith("\n") else text for text in texts]
    return f"{ERROR_TITLE}{texts[0]}{OUTPUT_TITLE}{texts[1]}{STATUS_TITLE}{result.returncode}\n"


def read_expected(case):
    """Returns the expected standard error and exit status."""
    text = case.expected.read_text(encoding="utf-8")
    errors, _, rest = text.partition(OUTPUT_TITLE)
    return errors[len(ERROR_TITLE):], int(rest.rpartition(STATUS_TITLE)[2])


def find_codes(tool, case):
    """Returns the codes of the diagnostics in the order of the output."""
    output = run(tool, case, ["--format", "json"]).stdout.decode()
    objects = [json.loads(line) for line in output.splitlines()]
    return [found["code"] for found in objects if "code" in found]


def check_case(tool, case, is_update):
    """Returns the findings on one case."""
    try:
        findings = []
        actual = record(tool, case)
        if is_update:
            case.expected.write_bytes(actual.encode())
        expected = case.expected.read_text(encoding="utf-8") if case.expected.exists() else ""
        if actual != expected:
            changes = difflib.unified_diff(expected.splitlines(True), actual.splitlines(True), case.expected.name,
                                           "now", n=99)
            findings.append(f"{case.name}: the output has changed\n" + "".join(changes))
        codes = find_codes(tool, case)
        if codes != case.codes:
            findings.append(f"{case.name}: the codes are {codes}, but mistakes.txt says {case.codes}\n")
        return findings
    except (OSError, ValueError, subprocess.TimeoutExpired) as error:
        return [f"{case.name}: {error}\n"]


def check_catalogue(cases):
    """Returns the findings on the catalogue as a whole."""
    findings = []
    used = {code for case in cases for code in case.codes}
    codes = set(read_codes())
    findings += [f"no case has the code {code}\n" for code in sorted(codes - used - set(UNCOVERED_CODES))]
    findings += [f"mistakes.txt has the unknown code {code}\n" for code in sorted(used - codes)]
    findings += [f"the code {code} has a case\n" for code in sorted(used & set(UNCOVERED_CODES))]
    names = collections.Counter(case.name for case in cases)
    findings += [f"two cases have the name {name}\n" for name in sorted(names) if names[name] > 1]
    anchors = collections.Counter(anchor(case.title) for case in cases)
    findings += [f"two titles have the anchor {title}\n" for title in sorted(anchors) if anchors[title] > 1]

    own = {path.name for case in cases for path in (case.document, case.expected)}
    others = {path.name for path in CASES.iterdir()} - own
    mentions = b" ".join([case.document.read_bytes() for case in cases] + [case.command.encode() for case in cases])
    findings += [f"{name} belongs to no case\n" for name in sorted(others) if name.encode() not in mentions]
    return findings


def check(tool, groups, names, is_update):
    """Runs the tool on the cases with these names, or on all. Returns the exit status."""
    cases = [case for group in groups for case in group.cases]
    unknown = set(names) - {case.name for case in cases}
    if unknown:
        print("no such case: " + " ".join(sorted(unknown)), file=sys.stderr)
        return 2
    chosen = [case for case in cases if not names or case.name in names]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda case: check_case(tool, case, is_update), chosen)
        findings = [finding for result in results for finding in result]
    if not names:
        findings += check_catalogue(cases)
    sys.stderr.write("".join(findings))
    print(f"{len(chosen)} cases, {len(findings)} findings")
    return 1 if findings else 0


def is_odd(character):
    """True for control characters and bytes that are not UTF-8, which surrogates stand for here."""
    return character not in "\t\n\r" and unicodedata.category(character) in ("Cc", "Cs")


def show_character(character):
    """Returns the character, or a visible name of it."""
    if character in "\t\n " or character == ZERO_WIDTH_JOINER:
        return character
    if 0xDC80 <= ord(character) <= 0xDCFF:
        return f"‹{ord(character) - 0xDC00:02X}›"
    category = unicodedata.category(character)
    if category == "Cc":
        return f"‹{ord(character):02X}›"
    return f"‹U+{ord(character):04X}›" if category in ("Cf", "Cn", "Zl", "Zp", "Zs") else character


def show_line(line):
    shown = "".join(map(show_character, line[:SHOWN_COLUMNS]))
    rest = len(line) - SHOWN_COLUMNS
    return shown + (f"… ({rest:,} more characters)" if rest > 0 else "")


def show_bytes(data):
    """Returns a table of the first bytes, 16 on a line, with the ASCII characters among them."""
    lines = []
    for start in range(0, min(len(data), SHOWN_BYTES), 16):
        row = data[start:start + 16]
        text = "".join(chr(byte) if 0x20 <= byte < 0x7F else "." for byte in row)
        lines.append(f"{start:04x}  {row.hex(' '):47}  {text}")
    if len(data) > SHOWN_BYTES:
        lines.append(f"… ({len(data) - SHOWN_BYTES:,} more bytes)")
    return "\n".join(lines)


def code_block(language, text):
    longest = max(map(len, re.findall("`+", text)), default=0)
    fence = "`" * max(3, longest + 1)
    return f"{fence}{language}\n{text}\n{fence}\n"


def show_file(path):
    """Returns the content of a file as a block for the page."""
    data = path.read_bytes()
    if not data:
        return code_block("text", "(no bytes)")
    text = data.decode("utf-8", "surrogateescape")
    if sum(map(is_odd, text)) * 10 > len(text):
        return code_block("text", show_bytes(data))
    lines = map(show_line, text.removesuffix("\n").split("\n"))
    return code_block("xml" if text.lstrip().startswith("<") else "text", "\n".join(lines))


def anchor(title):
    """Returns the name that Markdown gives to a heading."""
    return re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


def render_case(case):
    errors, status = read_expected(case)
    parts = [f"### {case.title}\n", show_file(case.document)]
    if case.schema.exists():
        parts += [f"The schema `{case.schema.name}`:\n", show_file(case.schema)]
    parts.append(code_block("console", f"$ {case.command}\n{errors}".rstrip("\n")))
    facts = []
    if case.codes:
        facts.append(("Code: " if len(case.codes) == 1 else "Codes: ") + ", ".join(f"`{c}`" for c in case.codes) + ".")
    if status != 1:
        facts.append(f"Exit status: {status}.")
    if case.remark:
        facts.append(case.remark)
    if facts:
        parts.append(" ".join(facts) + "\n")
    return parts


def render(groups):
    """Returns the page."""
    cases = [case for group in groups for case in group.cases]
    parts = [INTRODUCTION.format(count=len(cases))]
    headings = [group.heading for group in groups] + ["Codes"]
    parts.append("".join(f"- [{heading}](#{anchor(heading)})\n" for heading in headings))
    for group in groups:
        parts.append(f"## {group.heading}\n")
        if group.text:
            parts.append(group.text + "\n")
        for case in group.cases:
            parts += render_case(case)
    rows = []
    for code in sorted(read_codes()):
        links = [f"[{case.title}](#{anchor(case.title)})" for case in cases if code in case.codes]
        more = f"; and {len(links) - SHOWN_LINKS} more" if len(links) > SHOWN_LINKS else ""
        rows.append(f"| `{code}` | {'; '.join(links[:SHOWN_LINKS]) or UNCOVERED_CODES.get(code, '')}{more} |\n")
    parts.append(CODES_INTRODUCTION + "".join(rows))
    return "\n".join(parts)


def compare(page, text):
    """Returns the exit status: 1 if the page has another text."""
    old = pathlib.Path(page).read_text(encoding="utf-8")
    if old == text:
        return 0
    sys.stderr.writelines(difflib.unified_diff(old.splitlines(True), text.splitlines(True), page, "now"))
    print(f"{page} is out of date; run tests/messages/check-messages.py --render docs/messages.md", file=sys.stderr)
    return 1


def main():
    parser = argparse.ArgumentParser(description="Checks the messages of vanxml for a catalogue of mistakes.")
    parser.add_argument("vanxml", nargs="?", help="the tool")
    parser.add_argument("case", nargs="*", help="a name of a case; all cases if there is none")
    parser.add_argument("--emulator", metavar="WORD", action="append", default=[], help="a word before the tool")
    parser.add_argument("--update", action="store_true", help="rewrite the expected files")
    parser.add_argument("--render", metavar="PAGE", help="write the page from the expected files")
    parser.add_argument("--compare", metavar="PAGE", help="compare the page with the expected files")
    options = parser.parse_intermixed_args()  # so that options may stand between the tool and the cases
    if not (options.vanxml or options.render or options.compare):
        parser.error("name the tool, or use --render or --compare")

    groups = read_groups()
    status = 0
    if options.vanxml:
        status = check([*options.emulator, os.path.abspath(options.vanxml)], groups, options.case, options.update)
    if options.render:
        pathlib.Path(options.render).write_bytes(render(groups).encode())
    if options.compare:
        status = max(status, compare(options.compare, render(groups)))
    return status


sys.exit(main())
