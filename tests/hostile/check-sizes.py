#!/usr/bin/env python3
"""Runs the tool on large documents, with a call stack of 8 MiB.

    check-sizes.py VANXML [--full] [--only NAME]

Each run must end as its case says: with a status and, for a faulty document, with a certain error. Without --full, each
document comes in a size and in twice this size: the CPU time and the memory must about double at most. With --full,
each document has its full size once, and the script prints time and memory. That takes minutes, 10 GB of memory and
2 GB of disk.
"""

import argparse
import os
import sys
import tempfile

import measure

# A quadratic cost would make this 4. A linear one makes it at most 2, because of the time that the tool takes to start.
# The memory that the tool takes for a tiny document does not count, or it would hide the growth. Without it, a few
# megabytes remain for some documents, so differences of SLACK are allowed.
LARGEST_RATIO = 3
SLACK_MEGABYTES = 4
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


def bad_numbers_beside_a_colon_name(file, count):
    """The library rewrites the colon name with the prefix "IllegalColon:". The numbers begin like this prefix, which
    makes a search for it slow. When each error searched the document for it, 20,000 errors took 54 seconds."""
    file.write("<r :x='1'>")
    write_numbered(file, count, "<n>IIIIIIIIIIIIIIII{0}</n>\n")
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


class End:
    """The status that a run must end with, and a piece of the errors that it must print."""

    def __init__(self, status, errors=""):
        self.status = status
        self.errors = errors


PROCESSED = End(0)
DIFFERENT = End(1)
BAD_NUMBERS = End(1, "0' of element 'n' is not a whole number")


# For each case: its name, the document, the command, its end, the everyday size, and the full size.
CASES = [
    ("levels", levels, CHECK, PROCESSED, 200000, 1000000),
    ("levels to query", levels, ["query", "--count", "{file}", "//a"], PROCESSED, 100000, 1000000),
    ("levels to edit", levels, EDIT, PROCESSED, 50000, 1000000),
    ("attributes", attributes, CHECK, PROCESSED, 50000, 1000000),
    ("attributes to format", attributes, FORMAT, PROCESSED, 50000, 1000000),
    ("siblings", siblings, CHECK, PROCESSED, 300000, 10000000),
    ("siblings to format", siblings, FORMAT, PROCESSED, 150000, 10000000),
    ("siblings to edit", siblings, EDIT, PROCESSED, 100000, 10000000),
    ("different siblings", named_siblings, CHECK, PROCESSED, 150000, 1000000),
    ("a text", text, CHECK, PROCESSED, 1000000, 25000000),
    ("a text to format", text, FORMAT, PROCESSED, 500000, 25000000),
    ("an escaped text", escaped_text, CHECK, PROCESSED, 500000, 5000000),
    ("an attribute value", attribute_value, CHECK, PROCESSED, 2000000, 20000000),
    ("a comment", comment, CHECK, PROCESSED, 2000000, 20000000),
    ("names", long_names, CHECK, PROCESSED, 1000000, 10000000),
    ("names to format", long_names, FORMAT, PROCESSED, 1000000, 10000000),
    ("colon names", colon_names, CHECK, PROCESSED, 100000, 1000000),
    ("declarations", declarations, CHECK, PROCESSED, 20000, 200000),
    ("valid numbers", valid_numbers, VALIDATE, PROCESSED, 50000, 1000000),
    ("a value with a pattern", value_with_pattern, VALIDATE, PROCESSED, 500000, 5000000),
    ("schema errors", bad_numbers, VALIDATE, BAD_NUMBERS, 5000, 100000),
    ("schema errors beside a colon name", bad_numbers_beside_a_colon_name, VALIDATE, BAD_NUMBERS, 5000, 100000),
    ("undeclared attributes", undeclared_attributes, VALIDATE,
     End(1, "error: attribute 'a0' is not allowed on element 'r'"), 5000, 100000),
    ("undeclared children", undeclared_children, VALIDATE,
     End(1, "error: element 'u' is not allowed here; "), 5000, 100000),
    ("different undeclared children", different_undeclared_children, VALIDATE,
     End(1, "error: element 'u0' is not allowed here"), 2500, 20000),  # the limit: see UndeclaredElementsTest.cpp
    ("levels of an outline", levels, TREE, PROCESSED, 100000, 1000000),
    ("different siblings of an outline", named_siblings, TREE, PROCESSED, 100000, 1000000),
    ("levels to count", levels, STATS, PROCESSED, 100000, 1000000),
    ("attributes to count", attributes, STATS, PROCESSED, 50000, 1000000),
    ("different siblings to count", named_siblings, STATS, PROCESSED, 100000, 1000000),
    ("names to count", long_names, STATS, PROCESSED, 1000000, 10000000),
    ("levels to compare", levels, DIFF, DIFFERENT, 50000, 1000000),
    ("attributes to compare", attributes, DIFF, DIFFERENT, 25000, 1000000),
    ("siblings to compare", siblings, DIFF, DIFFERENT, 100000, 10000000),
    ("different siblings to compare", named_siblings, DIFF, DIFFERENT, 50000, 1000000),
    ("a text to compare", text, DIFF, DIFFERENT, 500000, 25000000),
    ("columns to retarget", columns, RETARGET, PROCESSED, 25000, 1000000),
    ("references to retarget", references, RETARGET, PROCESSED, 20000, 1000000),
    ("tags that are not closed", open_tags, CHECK,
     End(1, "elements 'a' are still open"), 100000, 1000000),
    ("a fault at the end", late_fault, CHECK,
     End(1, "error: the end tag '</s>' does not fit the open element 'r'"), 50000, 1000000),
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


def find_fault(result, end):
    """Returns what is wrong with the end of a run, or None."""
    if result.status != end.status:
        return "status %d instead of %d: %s" % (result.status, end.status, result.errors[:300])
    if end.errors not in result.errors:
        return "no \"%s\" in: %s" % (end.errors, result.errors[:300])
    if end == DIFFERENT and result.errors:
        return "no difference: " + result.errors[:300]
    return None


def run_full(runner, case):
    name, document, command, end, _, size = case
    result = runner.run(document, command, size)
    megabytes = os.path.getsize(runner.path) / 1e6
    fault = find_fault(result, end)
    print("| %s | %d | %.0f MB | %.1f s | %.0f MB | %d %s |" % (
        name, size, megabytes, result.seconds, result.megabytes, result.status,
        result.errors.replace(runner.path, "FILE").split("\n")[0][:120]), flush=True)
    return "%s: %s" % (name, fault) if fault else None


def run_everyday(runner, case):
    name, document, command, end, size, _ = case
    start = runner.run(document, command, 1).megabytes
    seconds = [1e9, 1e9]
    megabytes = [1e9, 1e9]
    # Another load of the machine makes a run slower, never faster. So the fastest of several runs counts.
    for _ in range(5):
        for i in range(2):
            result = runner.run(document, command, size * (i + 1))
            fault = find_fault(result, end)
            if fault:
                return "%s: %s" % (name, fault)
            seconds[i] = min(seconds[i], result.seconds)
            megabytes[i] = min(megabytes[i], result.megabytes - start)
        is_fast = seconds[1] < LARGEST_RATIO * seconds[0]
        is_small = megabytes[1] < LARGEST_RATIO * megabytes[0] + SLACK_MEGABYTES
        if is_fast and is_small:
            return None
    return "%s: %.2f seconds and %.0f MB for %d, %.2f seconds and %.0f MB for twice as many" % (
        name, seconds[0], megabytes[0], size, seconds[1], megabytes[1])


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
