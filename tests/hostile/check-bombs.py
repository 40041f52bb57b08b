#!/usr/bin/env python3
"""Checks that documents which expand without measure end in an error, in 2 seconds and with 200 MB.

    check-bombs.py VANXML BLIND-LIBRARY [--sanitized] [--verbose]

Beside each hostile document stands a harmless one of the same kind, which must pass. Each is parsed, formatted,
edited, outlined, counted, compared, queried and validated, and each is loaded as a schema with the same document type
and content. A few become documents with names to rename, because `vanxml retarget` refuses all others. A tool that is
built with a sanitizer is slower and takes more memory, so --sanitized raises the limits.

Preloads BLIND-LIBRARY (see BlindXerces.cpp) in two more runs: if the library cannot measure entities, it must refuse
them.
"""

import os
import sys
import tempfile

import measure

SECONDS = 2
MEGABYTES = 200
RUNS = 3

SCHEMA = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='r'>%s</xs:element></xs:schema>"
# Accepts each element r.
OPEN_SCHEMA = SCHEMA % (
    "<xs:complexType mixed='true'><xs:sequence><xs:any processContents='skip' minOccurs='0' maxOccurs='unbounded'/>"
    "</xs:sequence><xs:anyAttribute processContents='skip'/></xs:complexType>")


def declare_levels(count, fan, leaf, sign="&", kind=""):
    """Declares e0 to e(count - 1). Each one after the first contains the one before `fan` times."""
    text = "<!ENTITY %se0 \"%s\">" % (kind, leaf)
    for level in range(1, count):
        text += "<!ENTITY %se%d \"%s\">" % (kind, level, ("%se%d;" % (sign, level - 1)) * fan)
    return text


class Document:
    def __init__(self, declarations, content="<r/>", root="r"):
        self.declarations = declarations
        self.content = content
        self.root = root

    def text(self):
        return "<!DOCTYPE " + self.root + " [" + self.declarations + "]>" + self.content

    def schema(self):
        """Returns a schema that contains the document in an annotation."""
        annotation = "<xs:annotation><xs:appinfo>" + self.content + "</xs:appinfo></xs:annotation>"
        return "<!DOCTYPE xs:schema [" + self.declarations + "]>" + SCHEMA % annotation


def parameter_levels(count, fan, leaf=""):
    return Document(declare_levels(count, fan, leaf, "&#37;", "% ") + "%%e%d;" % (count - 1))


def levels_in(count, fan, place, leaf="x"):
    """`place` contains {e}, the reference to the last entity."""
    return Document(declare_levels(count, fan, leaf), place.format(e="&e%d;" % (count - 1)))


def default_levels(count, fan, leaf="x"):
    return Document(declare_levels(count, fan, leaf) + "<!ATTLIST r a CDATA '&e%d;'>" % (count - 1))


def repeated(length, count, place="<r>%s</r>", text="%s"):
    """One long entity that is used many times: quadratic blow-up."""
    return Document("<!ENTITY e '" + text % ("x" * length) + "'>", place % ("&e;" * count))


def defaults(count, elements, value=""):
    """Many default attributes, of many elements."""
    attributes = "".join(" a%d CDATA '%s'" % (i, value) for i in range(count))
    return Document("<!ATTLIST e" + attributes + ">", "<r>" + "<e/>" * elements + "</r>")


def default_in_entity(elements):
    """Elements with a default attribute, from an entity."""
    return Document("<!ATTLIST e a CDATA '" + "x" * 1000 + "'><!ENTITY m '" + "<e/>" * 100 + "'>",
                    "<r>" + "&m;" * elements + "</r>")


def repeated_markup(markup, count):
    """An entity of 100 pieces of markup that is used many times."""
    return Document("<!ENTITY e '" + markup * 100 + "'>", "<r>" + "&e;" * count + "</r>")


def repeated_declarations(declaration, count):
    """A parameter entity of 100 declarations that is used many times."""
    return Document("<!ENTITY % p '" + declaration * 100 + "'>" + "%p;" * count)


def declaring_parameters(count):
    """A chain of parameter entities that begins with one which another one declares."""
    return Document(declare_levels(count, 1, "", "&#37;", "% ") +
                    "<!ENTITY %% p \"<!ENTITY &#37; q '&#38;#37;e%d;'> &#37;q;\">%%p;" % (count - 1))


def circle(count):
    return Document("".join("<!ENTITY e%d '&e%d;'>" % (i, (i + 1) % count) for i in range(count)), "<r>&e0;</r>")


def long_names(count, length):
    """Nested entities with long names, which the parser compares with each other."""
    names = ["n" * length + str(i) for i in range(count)]
    text = "<!ENTITY %s 'x'>" % names[0]
    text += "".join("<!ENTITY %s '&%s;'>" % (name, inner) for name, inner in zip(names[1:], names))
    return Document(text, "<r>" + ("&%s;" % names[-1]) * 40 + "</r>")


def long_references(count):
    """An entity with 50 references to another one, whose name has 40,000 characters."""
    name = "n" * 40000
    return Document("<!ENTITY %s ''><!ENTITY e '%s'>" % (name, ("&%s;" % name) * 50), "<r>" + "&e;" * count + "</r>")


def long_default_name(elements):
    """Elements with a default attribute whose name has 40,000 characters."""
    return Document("<!ATTLIST e " + "n" * 40000 + " CDATA ''>", "<r>" + "<e/>" * elements + "</r>")


def data_source(declarations, caption):
    content = ("<data-source version='18.1' name='old' caption='%s'><connection class='text-file' filename='a.csv'/>"
               "</data-source>" % caption)
    return Document(declarations, content, "data-source")


def levels_in_data_source(count, fan):
    return data_source(declare_levels(count, fan, "x"), "&e%d;" % (count - 1))


EXPANSIONS = "more than '50000' entity expansions"
CONTENT = "grows beyond the limit of 50000 expansions"
TEXT = "more than '100000000' characters of entities"
MARKUP = "more than '1000000' characters of entities with markup"
DEFAULTS = "more than '3000000' default attributes"
DEFAULT_TEXT = "more than '80000000' characters of default attributes"
LEVELS = "more than '1000' levels of nested entities"

# For each kind: the hostile document, the error, and the harmless document.
ROWS = [
    ("general entities", levels_in(10, 10, "<r>{e}</r>"), CONTENT, levels_in(4, 10, "<r>{e}</r>")),
    ("general entities without text", levels_in(30, 2, "<r>{e}</r>", ""), CONTENT, levels_in(12, 2, "<r>{e}</r>", "")),
    ("general entities with elements", levels_in(10, 10, "<r>{e}</r>", "<a/>"), CONTENT,
     levels_in(4, 10, "<r>{e}</r>", "<a/>")),
    ("entities in an attribute", levels_in(10, 10, "<r a='{e}'/>"), EXPANSIONS, levels_in(4, 10, "<r a='{e}'/>")),
    ("entities in many attributes", levels_in(5, 10, "<r>" + "<a b='{e}'/>" * 100 + "</r>"), EXPANSIONS,
     levels_in(3, 10, "<r>" + "<a b='{e}'/>" * 100 + "</r>")),
    ("entities in a default", default_levels(10, 10), EXPANSIONS, default_levels(4, 10)),
    ("parameter entities", parameter_levels(8, 10), EXPANSIONS, parameter_levels(4, 10)),
    ("parameter entities with declarations", parameter_levels(8, 10, "<!ELEMENT a ANY>"), EXPANSIONS,
     parameter_levels(3, 10, "<!ENTITY a 'x'>")),
    ("quadratic blow-up of a text", repeated(100000, 2000), TEXT, repeated(10000, 1500)),
    ("quadratic blow-up of an attribute", repeated(100000, 2000, "<r a='%s'/>"), TEXT,
     repeated(1000, 2000, "<r a='%s'/>")),
    ("quadratic blow-up of a comment", repeated(100000, 2000, text="<!--%s-->"), TEXT,
     repeated(1000, 2000, text="<!--%s-->")),
    ("many elements of an entity", repeated_markup("<a/>", 40000), MARKUP, repeated_markup("<a/>", 2000)),
    ("many attributes of an entity", repeated_markup('<a b="" c="" d="" e=""/>', 40000), MARKUP,
     repeated_markup('<a b="" c="" d="" e=""/>', 400)),
    ("many declarations of a parameter entity", repeated_declarations("<!ATTLIST r a ID #IMPLIED>", 20000), MARKUP,
     repeated_declarations("<!ATTLIST r a ID #IMPLIED>", 200)),
    ("many defaults", defaults(3000, 3000), DEFAULTS, defaults(300, 300)),
    ("long defaults", defaults(1, 2000, "x" * 100000), DEFAULT_TEXT,
     defaults(1, 2000, "x" * 1000)),
    ("defaults of elements from entities", default_in_entity(2000), DEFAULT_TEXT,
     default_in_entity(50)),
    ("deep nesting", levels_in(45000, 1, "<r>{e}</r>"), LEVELS, levels_in(1000, 1, "<r>{e}</r>")),
    ("deep nesting in an attribute", levels_in(45000, 1, "<r a='{e}'/>"), LEVELS, levels_in(1000, 1, "<r a='{e}'/>")),
    ("deep nesting in a default", default_levels(45000, 1), LEVELS, default_levels(1000, 1)),
    ("deep nesting of parameter entities", parameter_levels(20000, 1), LEVELS, parameter_levels(1000, 1)),
    ("deep nesting that an entity declares", declaring_parameters(20000), LEVELS, declaring_parameters(990)),
    ("deep circle", circle(45000), LEVELS, levels_in(1, 1, "<r>{e}</r>")),
    ("circle", circle(3), "contains", Document("<!ENTITY a '&b;'><!ENTITY b 'x'>", "<r>&a;&b;</r>")),
    ("long names of nested entities", long_names(900, 4000), "more than '2000000000' characters of the names",
     long_names(20, 4000)),
    ("long references within an entity", long_references(110), "more than '200000000' characters of entities and",
     long_references(10)),
    ("long names of defaults", long_default_name(2100), DEFAULT_TEXT, long_default_name(21)),
]

# The same for documents that `vanxml retarget` changes.
DATA_SOURCE_ROWS = [
    ("entities in an attribute", levels_in_data_source(10, 10), EXPANSIONS, levels_in_data_source(4, 10)),
    ("quadratic blow-up of an attribute", data_source("<!ENTITY e '" + "x" * 100000 + "'>", "&e;" * 2000), TEXT,
     data_source("<!ENTITY e '" + "x" * 1000 + "'>", "&e;" * 2000)),
    ("deep nesting in an attribute", levels_in_data_source(45000, 1), LEVELS, levels_in_data_source(1000, 1)),
]


def write(path, text):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


class Runner:
    """Writes documents into a folder and runs all commands on them."""

    def __init__(self, tool, folder, factor, is_verbose):
        self.tool = tool
        self.seconds = factor * SECONDS
        self.megabytes = factor * MEGABYTES
        self.is_verbose = is_verbose
        self.path = os.path.join(folder, "document.xml")
        self.bomb_schema = os.path.join(folder, "bomb.xsd")
        self.open_schema = os.path.join(folder, "open.xsd")
        self.plain = os.path.join(folder, "plain.xml")
        self.data_source = os.path.join(folder, "data-source.kxb")
        self.other = os.path.join(folder, "other.xml")
        self.failures = []
        write(self.open_schema, OPEN_SCHEMA)
        write(self.plain, "<r/>")
        write(self.other, "<other/>")

    def commands(self, error, is_hostile):
        """Returns the commands with the statuses that they must end with."""
        status = 1 if is_hostile else 0
        # With a schema, Xerces adds no default attributes of a document type.
        is_validated = error not in (DEFAULTS, DEFAULT_TEXT)
        return [
            (["check", "--schema", "none", self.path], status),
            (["check", "--schema", self.open_schema, self.path], status if is_validated else 0),
            (["check", "--schema", self.bomb_schema, self.plain], 2 * status),
            (["format", self.path], status),
            (["edit", "--at", "/*", "--set", "new=1", self.path], status),
            (["tree", self.path], status),
            (["stats", self.path], status),
            (["diff", self.path, self.other], 2 * status or 1),
            (["diff", self.other, self.path], 2 * status or 1),
            (["query", self.path, "/*"], 2 * status),  # the only command that builds a tree
        ]

    def is_cheap(self, result):
        return result.seconds < self.seconds and result.megabytes < self.megabytes

    def run(self, command):
        # Another load of the machine makes a run slower, never faster. So a slow run gets further chances.
        for _ in range(RUNS):
            result = measure.run([self.tool] + command)
            if self.is_cheap(result):
                break
        return result

    def check(self, name, bomb, error, is_hostile):
        write(self.path, bomb.text())
        write(self.bomb_schema, bomb.schema())
        self.run_all(self.commands(error, is_hostile), name, error, is_hostile)

    def check_data_source(self, name, bomb, error, is_hostile):
        write(self.data_source, bomb.text())
        commands = [(["retarget", "--data-source", "old=new", self.data_source], 1 if is_hostile else 0)]
        self.run_all(commands, name, error, is_hostile)

    def run_all(self, commands, name, error, is_hostile):
        for command, status in commands:
            result = self.run(command)
            kind = "%s, %s" % ("hostile" if is_hostile else "harmless", " ".join(map(os.path.basename, command)))
            description = describe(name, kind, result)
            if self.is_verbose:
                print(description)
            has_error = error in result.errors
            is_expected = result.status == status and has_error == (is_hostile and status != 0)
            if not is_expected or not self.is_cheap(result):
                self.failures.append(description)


def describe(name, kind, result):
    return "%s (%s): status %d, %.2f seconds, %d MB: %s" % (
        name, kind, result.status, result.seconds, result.megabytes, result.errors.split("\n")[0][-200:])


def check_blind(tool, library, path):
    """Runs the tool with a Xerces that reports no entities. Returns the failures."""
    failures = []
    # AddressSanitizer must be the first library, unless this option allows another order.
    command = ["env", "ASAN_OPTIONS=verify_asan_link_order=0", "LD_PRELOAD=" + library]
    for text, status, error in (
            (levels_in(2, 1, "<r>{e}</r>").text(), 1, "entities cannot be bounded with this build of Xerces"),
            (Document("<!ELEMENT r ANY>").text(), 0, "")):
        write(path, text)
        result = measure.run(command + [tool, "check", "--schema", "none", path])
        if result.status != status or error not in result.errors:
            failures.append(describe("a Xerces that reports no entities", text, result))
    return failures


def main():
    tool = sys.argv[1]
    factor = 10 if "--sanitized" in sys.argv else 1
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(tool, folder, factor, "--verbose" in sys.argv)
        for name, hostile, error, harmless in ROWS:
            runner.check(name, hostile, error, True)
            runner.check(name, harmless, error, False)
        for name, hostile, error, harmless in DATA_SOURCE_ROWS:
            runner.check_data_source(name, hostile, error, True)
            runner.check_data_source(name, harmless, error, False)
        failures = runner.failures + check_blind(tool, sys.argv[2], runner.path)
    for failure in failures:
        print("failure: " + failure)
    print("%d pairs of documents, %d failures" % (len(ROWS) + len(DATA_SOURCE_ROWS), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
