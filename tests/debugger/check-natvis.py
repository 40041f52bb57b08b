"""Checks in GDB that the natvis file names only types and members that exist.

  gdb -batch -ex 'python natvis = "FILE"' -x check-natvis.py OBJECTS

OBJECTS have the debug information of the types. Prints each fault, and "N members of M types" at the end.
"""
import re
import xml.etree.ElementTree as ElementTree

import gdb

NAMESPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
# An expression without casts consists of chains of members. The debugger's format behind a comma is no member.
CAST = re.compile(r"\((const )?(char|char16_t)\*\)|,(en|\[|su)|\]su")
CHAIN = re.compile(r"[A-Za-z_]\w*(?:(?:\.|->)[A-Za-z_]\w*)*")


def expressions(node):
    """Yields the expressions of a node of the natvis file."""
    if "Condition" in node.attrib:
        yield node.attrib["Condition"]
    if node.tag == NAMESPACE + "DisplayString":
        yield from re.findall(r"\{([^{}]+)\}", node.text.replace("{{", "").replace("}}", ""))
    elif len(node) == 0:
        yield node.text


def find_member(owner, name):
    """Returns the type of a member of `owner` or of its bases, or None."""
    for field in owner.fields():
        if field.is_base_class:
            found = find_member(field.type.strip_typedefs(), name)
            if found:
                return found
        elif field.name == name or not field.name:
            found = field.type if field.name else find_member(field.type, name)
            if found:
                return found
    return None


def count_faults(owner, chain):
    """Returns 1 if the chain begins with no member of `owner` or goes on with none, up to the standard library."""
    scope = owner
    for name in re.split(r"\.|->", chain):
        found = find_member(scope, name)
        if found is None:
            print(f"{owner} has no '{chain}'")
            return 1
        scope = found.strip_typedefs()
        if scope.code == gdb.TYPE_CODE_PTR:
            scope = scope.target().strip_typedefs()
        if str(scope).startswith("std::"):
            return 0
    return 0


def check():
    members = types = faults = 0
    for node in ElementTree.parse(natvis).getroot().iter(NAMESPACE + "Type"):  # pylint: disable=undefined-variable
        types += 1
        owner = gdb.lookup_type(node.attrib["Name"])
        for part in node.iter():
            if part is node or part.tag in (NAMESPACE + "Expand", NAMESPACE + "ArrayItems"):
                continue
            for expression in expressions(part):
                for chain in CHAIN.findall(CAST.sub(" ", expression)):
                    if chain != "nullptr":
                        members += 1
                        faults += count_faults(owner, chain)
    print(f"{members} members of {types} types, {faults} faults")


check()
