#!/usr/bin/env python3
"""Runs the tool on large documents, with a call stack of 8 MiB.

    check-sizes.py VANXML [--full] [--only NAME]

Each document must be processed, or be refused with an error. Without --full, each document comes in a size and in
twice this size: the CPU time must about double at most. With --full, each document has its full size once, and the
script prints time and memory. That takes minutes, 10 GB of memory and 2 GB of disk.
"""

import argparse
import os
import sys
import tempfile

import measure

# A quadratic cost would make this 4. A linear one makes it at most 2, because of the time that the tool takes to start.
LARGEST_RATIO = 3
PIECE = 10000
SCHEMA = """<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>
<xs:element name='r'><xs:complexType><xs:sequence>
<xs:element name='n' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>
</xs:sequence><xs:attribute name='p'><xs:simpleType><xs:restriction base='xs:string'>
<xs:pattern value='(a|b|cd)*x'/></xs:restriction></xs:simpleType></xs:attribute>
</xs:complexType></xs:element></xs:schema>"""


def write_numbered(file, count, piece):
    """Writes piece.format(i) for each i below count."""
    for start in range(0, count, PIECE):
        file.write("".join(piece.format(i) for i in range(start, min(start + PIECE, count))))


def write_repeated(file, count, piece):
    """Writes the piece count times. The pieces are written in groups to save time and memory."""
    group = max(1, 1000000 // len(piece))
    for _ in range(count // group):
        file.write(piece * group)
    file.write(piece * (count % group))


def levels(file, count):
    write_repeated(file, count, "<a>")
    write_repeated(file, count, "</a>")


def attributes(file, count):
    file.write("<r")
    write_numbered(file, count, " a{0}='{0}'")
    file.write("/>")


def siblings(file, count):
    file.write("<r>")
    write_repeated(file, count, "<a/>")
    file.write("</r>")


def named_siblings(file, count):
    file.write("<r>")
    write_numbered(file, count, "<a{0}/>")
    file.write("</r>")


def text(file, count):
    file.write("<r>")
    write_repeated(file, count, "text of a document; ")
    file.write("</r>")


def escaped_text(file, count):
    file.write("<r>")
    write_repeated(file, count, "&lt;&#65;")
    file.write("</r>")


def attribute_value(file, count):
    file.write("<r a='")
    write_repeated(file, count, "value ")
    file.write("'/>")


def comment(file, count):
    file.write("<r><!--")
    write_repeated(file, count, "comment ")
    file.write("--></r>")


def long_names(file, count):
    name = "n" * count
    file.write("<!DOCTYPE r [<!ENTITY %s 'x'>]><r><%s %s='1'><?%s x?>&%s;</%s></r>" % ((name,) * 6))


def colon_names(file, count):
    file.write("<r>")
    write_repeated(file, count, "<a :b='1'/>")
    file.write("</r>")


def declarations(file, count):
    file.write("<!DOCTYPE r [")
    write_numbered(file, count, "<!ELEMENT e{0} ANY><!ATTLIST e{0} a CDATA #IMPLIED><!ENTITY g{0} 'x'>")
    file.write("]><r/>")


def valid_numbers(file, count):
    file.write("<r>")
    write_repeated(file, count, "<n>1</n>")
    file.write("</r>")


def bad_numbers(file, count):
    file.write("<r>")
    write_numbered(file, count, "<n>x{0}</n>\n")
    file.write("</r>")


def undeclared_attributes(file, count):
    file.write("<r")
    write_numbered(file, count, " a{0}='{0}'")
    file.write("/>")


def undeclared_children(file, count):
    file.write("<r>")
    write_repeated(file, count, "<u/>\n")
    file.write("</r>")


def different_undeclared_children(file, count):
    file.write("<r>")
    write_numbered(file, count, "<u{0}/>\n")
    file.write("</r>")


def open_tags(file, count):
    write_repeated(file, count, "<a>")


def value_with_pattern(file, count):
    file.write("<r p='")
    write_repeated(file, count, "abcd")
    file.write("x'/>")


def late_fault(file, count):
    file.write("<r>")
    write_numbered(file, count, "<a{0} b='c'>x</a{0}>\n")
    file.write("</s>")


def columns(file, count):
    file.write("<data-source version='18.1' name='old'><connection class='text-file' filename='a.csv'/>")
    write_numbered(file, count, "<column name='c{0}' data-type='real' role='measure'/>")
    file.write("</data-source>")


def references(file, count):
    file.write("<data-source version='18.1' name='old'><connection class='text-file' filename='a.csv'/>"
               "<column name='c' data-type='real' role='measure'><calculation formula='")
    write_repeated(file, count, "[old].[x]+")
    file.write("1'/></column></data-source>")


CHECK = ["check", "--schema", "none", "{file}"]
VALIDATE = ["check", "--schema", "{schema}", "{file}"]
FORMAT = ["format", "{file}"]
QUERY = ["query", "{file}", "/r"]
EDIT = ["edit", "--at", "//a", "--set", "b=c", "{file}"]
TREE = ["tree", "{file}"]
STATS = ["stats", "{file}"]
# Retargeting validates, so its time grows with the square of the levels: see SECURITY.md.
RETARGET = ["retarget", "--data-source", "old=new", "{file}"]
DIFF = ["diff", "{file}", "{other}"]

# For each case: its name, the document, the command, the everyday size, and the full size.
CASES = [
    ("levels", levels, CHECK, 200000, 1000000),
    ("levels to query", levels, ["query", "--count", "{file}", "//a"], 100000, 1000000),
    ("levels to edit", levels, EDIT, 50000, 1000000),
    ("attributes", attributes, CHECK, 50000, 1000000),
    ("attributes to format", attributes, FORMAT, 50000, 1000000),
    ("siblings", siblings, CHECK, 300000, 10000000),
    ("siblings to format", siblings, FORMAT, 150000, 10000000),
    ("siblings to edit", siblings, EDIT, 100000, 10000000),
    ("different siblings", named_siblings, CHECK, 150000, 1000000),
    ("a text", text, CHECK, 1000000, 25000000),
    ("a text to format", text, FORMAT, 500000, 25000000),
    ("an escaped text", escaped_text, CHECK, 500000, 5000000),
    ("an attribute value", attribute_value, CHECK, 2000000, 20000000),
    ("a comment", comment, CHECK, 2000000, 20000000),
    ("names", long_names, CHECK, 1000000, 10000000),
    ("names to format", long_names, FORMAT, 1000000, 10000000),
    ("colon names", colon_names, CHECK, 100000, 1000000),
    ("declarations", declarations, CHECK, 20000, 200000),
    ("valid numbers", valid_numbers, VALIDATE, 50000, 1000000),
    ("a value with a pattern", value_with_pattern, VALIDATE, 500000, 5000000),
    ("schema errors", bad_numbers, VALIDATE, 5000, 100000),
    ("undeclared attributes", undeclared_attributes, VALIDATE, 5000, 100000),
    ("undeclared children", undeclared_children, VALIDATE, 5000, 100000),
    ("different undeclared children", different_undeclared_children, VALIDATE, 2500, 100000),
    ("levels of an outline", levels, TREE, 100000, 1000000),
    ("different siblings of an outline", named_siblings, TREE, 100000, 1000000),
    ("levels to count", levels, STATS, 100000, 1000000),
    ("attributes to count", attributes, STATS, 50000, 1000000),
    ("different siblings to count", named_siblings, STATS, 100000, 1000000),
    ("names to count", long_names, STATS, 1000000, 10000000),
    ("levels to compare", levels, DIFF, 50000, 1000000),
    ("attributes to compare", attributes, DIFF, 25000, 1000000),
    ("siblings to compare", siblings, DIFF, 100000, 10000000),
    ("different siblings to compare", named_siblings, DIFF, 50000, 1000000),
    ("a text to compare", text, DIFF, 500000, 25000000),
    ("columns to retarget", columns, RETARGET, 25000, 1000000),
    ("references to retarget", references, RETARGET, 20000, 1000000),
    ("tags that are not closed", open_tags, CHECK, 100000, 1000000),
    ("a fault at the end", late_fault, CHECK, 50000, 1000000),
]


class Runner:
    def __init__(self, tool, folder):
        self.tool = tool
        self.path = os.path.join(folder, "document.xml")
        self.other = os.path.join(folder, "other.xml")
        self.schema = os.path.join(folder, "schema.xsd")
        with open(self.schema, "w", encoding="ascii") as file:
            file.write(SCHEMA)

    def run(self, document, command, count):
        """Runs the command on a document of this size. To compare it, makes the other one a tenth smaller."""
        with open(self.path, "w", encoding="ascii") as file:
            document(file, count)
        if "{other}" in command:
            with open(self.other, "w", encoding="ascii") as file:
                document(file, count - count // 10)
        parts = [part.format(file=self.path, other=self.other, schema=self.schema) for part in command]
        return measure.run([self.tool] + parts)


def find_fault(result, command):
    """Returns what is wrong with the end of a run, or None."""
    if result.status not in (0, 1):
        return "status %d: %s" % (result.status, result.errors[:300])
    if command == DIFF:
        return None if result.status == 1 and not result.errors else "no difference: " + result.errors[:300]
    if result.status == 1 and "error" not in result.errors:
        return "status 1 without an error"
    return None


def run_full(runner, case):
    name, document, command, _, size = case
    result = runner.run(document, command, size)
    megabytes = os.path.getsize(runner.path) / 1e6
    fault = find_fault(result, command)
    print("| %s | %d | %.0f MB | %.1f s | %.0f MB | %d %s |" % (
        name, size, megabytes, result.seconds, result.megabytes, result.status,
        result.errors.replace(runner.path, "FILE").split("\n")[0][:120]), flush=True)
    return "%s: %s" % (name, fault) if fault else None


def run_everyday(runner, case):
    name, document, command, size, _ = case
    seconds = [1e9, 1e9]
    # Another load of the machine makes a run slower, never faster. So the fastest of several runs counts.
    for _ in range(5):
        for i in range(2):
            result = runner.run(document, command, size * (i + 1))
            fault = find_fault(result, command)
            if fault:
                return "%s: %s" % (name, fault)
            seconds[i] = min(seconds[i], result.seconds)
        if seconds[1] < LARGEST_RATIO * seconds[0]:
            return None
    return "%s: %.2f seconds for %d, %.2f seconds for twice as many" % (name, seconds[0], size, seconds[1])


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("tool")
    arguments.add_argument("--full", action="store_true")
    arguments.add_argument("--only", default="")
    options = arguments.parse_args()
    cases = [case for case in CASES if options.only in case[0]]
    run = run_full if options.full else run_everyday
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(options.tool, folder)
        failures = [failure for failure in (run(runner, case) for case in cases) if failure]
    for failure in failures:
        print("failure: " + failure)
    print("%d documents, %d failures" % (len(cases), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
