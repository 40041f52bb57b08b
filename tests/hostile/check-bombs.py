#!/usr/bin/env python3
"""Checks that documents which expand without measure end in an error, in 2 seconds and with 200 MB.

    check-bombs.py VANXML BLIND-LIBRARY [--sanitized] [--verbose]

Beside each hostile document stands a harmless one of the same kind, which must pass. A tool that is built with a
sanitizer is slower and takes more memory, so --sanitized raises the limits.

Preloads BLIND-LIBRARY (see BlindXerces.cpp) in two more runs: if the library cannot measure entities, it must refuse
them.
"""

import os
import sys
import tempfile

import measure

SECONDS = 2
MEGABYTES = 200


def declare_levels(count, fan, leaf, sign="&", kind=""):
    """Declares e0 to e(count - 1). Each one after the first contains the one before `fan` times."""
    text = "<!ENTITY %se0 \"%s\">" % (kind, leaf)
    for level in range(1, count):
        text += "<!ENTITY %se%d \"%s\">" % (kind, level, ("%se%d;" % (sign, level - 1)) * fan)
    return text


def document(declarations, content="<r/>"):
    return "<!DOCTYPE r [" + declarations + "]>" + content


def parameter_levels(count, fan, leaf=""):
    return document(declare_levels(count, fan, leaf, "&#37;", "% ") + "%%e%d;" % (count - 1))


def levels_in(count, fan, place, leaf="x"):
    """`place` contains {e}, the reference to the last entity."""
    return document(declare_levels(count, fan, leaf), place.format(e="&e%d;" % (count - 1)))


def default_levels(count, fan, leaf="x"):
    return document(declare_levels(count, fan, leaf) + "<!ATTLIST r a CDATA '&e%d;'>" % (count - 1))


def repeated(length, count, place="<r>%s</r>", text="%s"):
    """One long entity that is used many times: quadratic blow-up."""
    return document("<!ENTITY e '" + text % ("x" * length) + "'>", place % ("&e;" * count))


def defaults(count, elements, value=""):
    """Many default attributes, of many elements."""
    attributes = "".join(" a%d CDATA '%s'" % (i, value) for i in range(count))
    return document("<!ATTLIST e" + attributes + ">", "<r>" + "<e/>" * elements + "</r>")


def default_in_entity(elements):
    """Elements with a default attribute, from an entity."""
    return document("<!ATTLIST e a CDATA '" + "x" * 1000 + "'><!ENTITY m '" + "<e/>" * 100 + "'>",
                    "<r>" + "&m;" * elements + "</r>")


def repeated_markup(markup, count):
    """An entity of 100 pieces of markup that is used many times."""
    return document("<!ENTITY e '" + markup * 100 + "'>", "<r>" + "&e;" * count + "</r>")


def repeated_declarations(declaration, count):
    """A parameter entity of 100 declarations that is used many times."""
    return document("<!ENTITY % p '" + declaration * 100 + "'>" + "%p;" * count)


def declaring_parameters(count):
    """A chain of parameter entities that begins with one which another one declares."""
    return document(declare_levels(count, 1, "", "&#37;", "% ") +
                    "<!ENTITY %% p \"<!ENTITY &#37; q '&#38;#37;e%d;'> &#37;q;\">%%p;" % (count - 1))


def circle(count):
    return document("".join("<!ENTITY e%d '&e%d;'>" % (i, (i + 1) % count) for i in range(count)), "<r>&e0;</r>")


def long_names(count, length):
    """Nested entities with long names, which the parser compares with each other."""
    names = ["n" * length + str(i) for i in range(count)]
    text = "<!ENTITY %s 'x'>" % names[0]
    text += "".join("<!ENTITY %s '&%s;'>" % (name, inner) for name, inner in zip(names[1:], names))
    return document(text, "<r>" + ("&%s;" % names[-1]) * 40 + "</r>")


EXPANSIONS = "more than '50000' entity expansions"
CONTENT = "grows beyond the limit of 50000 expansions"
TEXT = "more than '100000000' characters of entities"
MARKUP = "more than '1000000' characters of entities with markup"
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
    ("quadratic blow-up of a text", repeated(100000, 2000), TEXT, repeated(10000, 2000)),
    ("quadratic blow-up of an attribute", repeated(100000, 2000, "<r a='%s'/>"), TEXT,
     repeated(1000, 2000, "<r a='%s'/>")),
    ("quadratic blow-up of a comment", repeated(100000, 2000, text="<!--%s-->"), TEXT,
     repeated(1000, 2000, text="<!--%s-->")),
    ("many elements of an entity", repeated_markup("<a/>", 40000), MARKUP, repeated_markup("<a/>", 2000)),
    ("many attributes of an entity", repeated_markup('<a b="" c="" d="" e=""/>', 40000), MARKUP,
     repeated_markup('<a b="" c="" d="" e=""/>', 400)),
    ("many declarations of a parameter entity", repeated_declarations("<!ATTLIST r a ID #IMPLIED>", 20000), MARKUP,
     repeated_declarations("<!ATTLIST r a ID #IMPLIED>", 200)),
    ("many defaults", defaults(3000, 3000), "more than '3000000' default attributes", defaults(300, 300)),
    ("long defaults", defaults(1, 2000, "x" * 100000), "more than '80000000' characters of default attributes",
     defaults(1, 2000, "x" * 1000)),
    ("defaults of elements from entities", default_in_entity(2000), "more than '80000000' characters of default",
     default_in_entity(50)),
    ("deep nesting", levels_in(45000, 1, "<r>{e}</r>"), LEVELS, levels_in(1000, 1, "<r>{e}</r>")),
    ("deep nesting in an attribute", levels_in(45000, 1, "<r a='{e}'/>"), LEVELS, levels_in(1000, 1, "<r a='{e}'/>")),
    ("deep nesting in a default", default_levels(45000, 1), LEVELS, default_levels(1000, 1)),
    ("deep nesting of parameter entities", parameter_levels(20000, 1), LEVELS, parameter_levels(1000, 1)),
    ("deep nesting that an entity declares", declaring_parameters(20000), LEVELS, declaring_parameters(990)),
    ("deep circle", circle(45000), LEVELS, circle(1).replace("'&e0;'", "'x'")),
    ("circle", circle(3), "contains", document("<!ENTITY a '&b;'><!ENTITY b 'x'>", "<r>&a;&b;</r>")),
    ("long names of nested entities", long_names(900, 4000), "more than '2000000000' characters of the names",
     long_names(20, 4000)),
]


def describe(name, kind, result):
    return "%s (%s): status %d, %.2f seconds, %d MB: %s" % (
        name, kind, result.status, result.seconds, result.megabytes, result.errors.split("\n")[0][-200:])


def check_blind(tool, library, path):
    """Runs the tool with a Xerces that reports no entities. Returns the failures."""
    failures = []
    # AddressSanitizer must be the first library, unless this option allows another order.
    command = ["env", "ASAN_OPTIONS=verify_asan_link_order=0", "LD_PRELOAD=" + library]
    for text, status, error in (
            (levels_in(2, 1, "<r>{e}</r>"), 1, "entities cannot be bounded with this build of Xerces"),
            (document("<!ELEMENT r ANY>"), 0, "")):
        with open(path, "w", encoding="ascii") as file:
            file.write(text)
        result = measure.run(command + [tool, "check", "--schema", "none", path])
        if result.status != status or error not in result.errors:
            failures.append(describe("a Xerces that reports no entities", text, result))
    return failures


def main():
    tool = sys.argv[1]
    factor = 10 if "--sanitized" in sys.argv else 1
    is_verbose = "--verbose" in sys.argv
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "document.xml")
        for name, hostile, error, harmless in ROWS:
            for kind, text, status in (("hostile", hostile, 1), ("harmless", harmless, 0)):
                with open(path, "w", encoding="ascii") as file:
                    file.write(text)
                # Only "query" builds a tree. Its status for a document with an error is 2.
                for command, end in (["check", "--schema", "none", path], status), (["query", path, "/*"], 2 * status):
                    result = measure.run([tool] + command)
                    description = describe(name, kind + ", " + command[0], result)
                    if is_verbose:
                        print(description)
                    is_expected = result.status == end and (end == 0 or error in result.errors)
                    is_cheap = result.seconds < factor * SECONDS and result.megabytes < factor * MEGABYTES
                    if not is_expected or not is_cheap:
                        failures.append(description)
        failures += check_blind(tool, sys.argv[2], path)
    for failure in failures:
        print("failure: " + failure)
    print("%d pairs of documents, %d failures" % (len(ROWS), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
