#!/usr/bin/env python3
"""Checks with strace that documents which name other resources make the tool touch none of them.

    check-access.py VANXML

Each document names a resource in another way: as an entity, an external subset, a notation, a style sheet, an inclusion
or a schema. Files exist under the names of local resources. For each command, the trace must contain no call with the
name of a resource and no call that opens a socket. The text of a resource must not appear in the output.

Schemas name resources too. The tool reads local schemas that a schema imports or includes, but nothing of a network.

Exits with 77, which CTest reports as skipped, if strace is missing, or if the system refuses strace the call ptrace, as
some containers do. A program that is traced cannot trace itself, so the script provokes such a refusal to check that it
notices one.
"""

import os
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
SECRET = "text-of-a-secret"
XSI = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
XINCLUDE = "xmlns:xi='http://www.w3.org/2001/XInclude'"

# The identifiers of a resource; {folder} is the folder with the documents.
IDENTIFIERS = {
    "relative": "bait.xml",
    "relative with a dot": "./bait.xml",
    "relative in a folder": "below/bait.xml",
    "relative and escaped": "b%61it.xml",
    "absolute": "{folder}/bait.xml",
    "file with three slashes": "file://{folder}/bait.xml",
    "file with a host": "file://localhost{folder}/bait.xml",
    "file in capitals": "FILE://{folder}/bait.xml",
    "file without slashes": "file:bait.xml",
    "http": "http://127.0.0.1:9/bait.xml",
    "http with a name": "http://bait.invalid/bait.xml",
    "https": "https://127.0.0.1:9/bait.xml",
    "ftp": "ftp://127.0.0.1:9/bait.xml",
    "two slashes": "//127.0.0.1/bait.xml",
    "UNC": "\\\\127.0.0.1\\share\\bait.xml",
    "netdoc": "netdoc:{folder}/bait.xml",
    "jar": "jar:file://{folder}/bait.xml!/x",
    "data": "data:text/xml,bait",
    "device": "/dev/bait",
}

# The documents; {id} is the identifier of a resource.
FORMS = {
    "general entity": "<!DOCTYPE a [<!ENTITY e SYSTEM '{id}'>]><a>&e;</a>",
    "general entity that is not used": "<!DOCTYPE a [<!ENTITY e SYSTEM '{id}'>]><a/>",
    "public general entity": "<!DOCTYPE a [<!ENTITY e PUBLIC '-//P//' '{id}'>]><a>&e;</a>",
    "general entity in an attribute": "<!DOCTYPE a [<!ENTITY e SYSTEM '{id}'>]><a b='&e;'/>",
    "general entity in a default": "<!DOCTYPE a [<!ENTITY e SYSTEM '{id}'><!ATTLIST a b CDATA '&e;'>]><a/>",
    "general entity in an entity": "<!DOCTYPE a [<!ENTITY e SYSTEM '{id}'><!ENTITY f '&e;'>]><a>&f;</a>",
    "general entity that is declared twice": "<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY e SYSTEM '{id}'>]><a>&e;</a>",
    "general entity in UTF-16":
        "<?xml version='1.0' encoding='UTF-16'?><!DOCTYPE a [<!ENTITY e SYSTEM '{id}'>]><a>&e;</a>",
    "unparsed entity": "<!DOCTYPE a [<!NOTATION n SYSTEM '{id}'><!ENTITY e SYSTEM '{id}' NDATA n>"
                       "<!ATTLIST a b ENTITY #IMPLIED>]><a b='e'/>",
    "unparsed entities": "<!DOCTYPE a [<!NOTATION n SYSTEM '{id}'><!ENTITY e SYSTEM '{id}' NDATA n>"
                         "<!ENTITY f SYSTEM '{id}' NDATA n><!ATTLIST a b ENTITIES #IMPLIED>]><a b='e f'/>",
    "notation": "<!DOCTYPE a [<!NOTATION n PUBLIC '-//N//' '{id}'><!ATTLIST a b NOTATION (n) 'n'>]><a/>",
    "parameter entity": "<!DOCTYPE a [<!ENTITY % p SYSTEM '{id}'>%p;]><a/>",
    "public parameter entity": "<!DOCTYPE a [<!ENTITY % p PUBLIC '-//P//' '{id}'>%p;]><a/>",
    "nested parameter entity": "<!DOCTYPE a [<!ENTITY % p \"<!ENTITY &#37; q SYSTEM '{id}'> &#37;q;\">%p;]><a/>",
    "general entity of a parameter entity":
        "<!DOCTYPE a [<!ENTITY % p \"<!ENTITY e SYSTEM '{id}'>\">%p;]><a>&e;</a>",
    "external subset": "<!DOCTYPE a SYSTEM '{id}'><a/>",
    "public external subset": "<!DOCTYPE a PUBLIC '-//D//' '{id}'><a/>",
    "external subset with an internal one": "<!DOCTYPE a SYSTEM '{id}' [<!ATTLIST a b CDATA 'c'>]><a>&e;</a>",
    "external subset that is needed": "<?xml version='1.0' standalone='no'?><!DOCTYPE a SYSTEM '{id}'><a>&e;</a>",
    "style sheet": "<?xml-stylesheet type='text/xsl' href='{id}'?><a/>",
    "model": "<?xml-model href='{id}'?><a/>",
    "inclusion": "<a " + XINCLUDE + "><xi:include href='{id}'/></a>",
    "inclusion as text": "<a " + XINCLUDE + "><xi:include href='{id}' parse='text'><xi:fallback/></xi:include></a>",
    "schema": "<a " + XSI + " xsi:noNamespaceSchemaLocation='{id}'/>",
    "schema of a namespace": "<a xmlns='urn:n' " + XSI + " xsi:schemaLocation='urn:n {id}'/>",
    "schemas of two namespaces": "<a xmlns='urn:n' " + XSI + " xsi:schemaLocation='urn:m {id} urn:n {id}'/>",
    "schema in a default": "<!DOCTYPE a [<!ATTLIST a xsi:noNamespaceSchemaLocation CDATA '{id}'>]><a " + XSI + "/>",
    "inclusion in a default":
        "<!DOCTYPE a [<!ATTLIST xi:include href CDATA '{id}'>]><a " + XINCLUDE + "><xi:include/></a>",
    "schema of an inner element": "<a><b " + XSI + " xsi:noNamespaceSchemaLocation='{id}'/></a>",
    "base": "<a xml:base='{id}' " + XINCLUDE + "><xi:include href=''/></a>",
}

# The contents of a schema. A schema may name local schemas, so it gets other identifiers only.
SCHEMA_FORMS = {
    "import": "<xs:import namespace='urn:n' schemaLocation='{id}'/>",
    "inclusion": "<xs:include schemaLocation='{id}'/>",
    "redefinition": "<xs:redefine schemaLocation='{id}'/>",
    "source of a documentation": "<xs:annotation><xs:documentation source='{id}'/></xs:annotation>",
    "identifiers of a notation": "<xs:notation name='n' public='{id}' system='{id}'/>",
}
SCHEMA_IDENTIFIERS = ["http", "http with a name", "https", "ftp", "netdoc", "jar", "data"]

COMMANDS = [
    ["check", "--jobs", "1", "--schema", "none"],
    ["check", "--jobs", "1"],
    ["check", "--jobs", "1", "--schema", "{folder}/schema.xsd"],
    ["check", "--jobs", "1", "--schema", "kxa"],
    ["format", "--jobs", "1", "--check"],
    ["edit", "--jobs", "1", "--check", "--at", "//b", "--text", "x"],
    ["retarget", "--jobs", "1", "--check", "--data-source", "old=new"],
    ["stats", "--jobs", "1"],
    ["query", "--at", "//a"],
]
# These take one document or two, so they run for two identifiers of each form only.
SINGLE_COMMANDS = [["version", "{file}"], ["tree", "{file}"], ["diff", "schema.xsd", "{file}"]]
SINGLE_IDENTIFIERS = ["absolute", "http"]

BAIT = "<!ELEMENT a ANY><a>" + SECRET + "</a>"
SCHEMA = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>%s<xs:element name='a'/></xs:schema>"
NETWORK = ("socket(", "connect(", "sendto(", "sendmsg(")


def write(path, text):
    with open(path, "w", encoding="utf-16" if "encoding='UTF-16'" in text else "utf-8") as file:
        file.write(text)


def trace(folder, command):
    """Runs a command under strace. Returns its output and the lines of the trace."""
    log = os.path.join(folder, "trace.log")
    result = subprocess.run(
        ["strace", "-f", "-s", "4096", "-e", "trace=%file,%network", "-o", log] + command,
        cwd=folder, env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"),  # the leak sanitizer cannot run under strace
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    with open(log, encoding="utf-8", errors="replace") as file:
        lines = file.read().splitlines()
    return result.stdout.decode("utf-8", "replace"), lines


def find_faults(output, lines, started, may_look_up=False):
    """Returns the lines of the trace that touch a resource or a network. With `may_look_up`, the tool may look for a
    local file with the name of the resource, but finds none."""
    faults = [line for line in lines if line.split(" ", 1)[-1].lstrip().startswith(NETWORK)]
    # The first call starts the program; its arguments are the documents.
    touched = [line for line in lines[1:] if "bait" in line or "b%61it" in line]
    faults += [line for line in touched if not may_look_up or "ENOENT" not in line]
    if SECRET in output:
        faults.append("the output has the text of a resource")
    if not any(started in line for line in lines[1:]):
        faults.append("the trace does not show that the document was opened")
    return faults


def find_obstacle(folder, prefix=()):
    """Returns why strace cannot trace a program that `prefix` starts, or None if it can."""
    if not shutil.which("strace"):
        return "strace is missing"
    path = os.path.join(folder, "probe.xml")
    log = os.path.join(folder, "probe.log")
    for empty in (path, log):
        write(empty, "")
    result = subprocess.run(
        [*prefix, "strace", "-f", "-e", "trace=%file", "-o", log, "cat", path],
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    with open(log, encoding="utf-8", errors="replace") as file:
        lines = file.read().splitlines()
    if result.returncode != 0:
        reasons = result.stderr.decode("utf-8", "replace").splitlines() or ["status %d" % result.returncode]
        return "the system does not let strace trace a program (%s)" % reasons[0]
    if not any("probe.xml" in line for line in lines[1:]):
        return "strace ends without an error but does not record the files that a program opens"
    return None


def main():
    tool = os.path.abspath(sys.argv[1])
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        obstacle = find_obstacle(folder)
        if obstacle:
            print("skipped, nothing was checked: " + obstacle)
            return SKIPPED
        if not find_obstacle(folder, ["strace", "-f", "-o", os.devnull]):
            failures.append("the script does not notice that ptrace is refused")
        os.mkdir(os.path.join(folder, "below"))
        for place in ("bait.xml", "below/bait.xml", "b%61it.xml"):
            write(os.path.join(folder, place), BAIT)
        write(os.path.join(folder, "schema.xsd"), SCHEMA % "")
        documents = []
        single = []
        for form in FORMS.values():
            for name, identifier in IDENTIFIERS.items():
                documents.append("document%03d.kxa" % len(documents))
                write(os.path.join(folder, documents[-1]), form.format(id=identifier.format(folder=folder)))
                if name in SINGLE_IDENTIFIERS:
                    single.append(documents[-1])

        runs = [[part.format(folder=folder) for part in command] + documents for command in COMMANDS]
        for document in single:
            runs += [[part.format(file=document) for part in command] for command in SINGLE_COMMANDS]
        for form in SCHEMA_FORMS.values():
            for name in SCHEMA_IDENTIFIERS:
                schema = "schema%02d.xsd" % len(runs)
                identifier = IDENTIFIERS[name].format(folder=folder)
                write(os.path.join(folder, schema), SCHEMA % form.format(id=identifier))
                runs.append(["check", "--schema", schema, documents[0]])
        for run in runs:
            last = next(part for part in reversed(run) if part.startswith("document"))
            output, lines = trace(folder, [tool] + run)
            # A document is not opened if its schema cannot be used.
            is_schema = run[1] == "--schema"
            for fault in find_faults(output, lines, run[2] if is_schema else last, is_schema)[:10]:
                failures.append("%s: %s" % (" ".join(run[:5]), fault[:300]))

        # The check must notice a resource that is opened: with "hints", the tool reads the schema.
        write(os.path.join(folder, "hint.xml"), FORMS["schema"].format(id="bait.xml"))
        output, lines = trace(folder, [tool, "check", "--schema", "hints", "hint.xml"])
        if not find_faults(output, lines, "hint.xml"):
            failures.append("the trace does not show the schema that the tool reads")

    for failure in failures:
        print("failure: " + failure)
    print("%d documents, %d runs, %d failures" % (len(documents), len(runs), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
