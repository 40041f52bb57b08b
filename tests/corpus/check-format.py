#!/usr/bin/env python3
"""Formats the documents of this machine with `vanxml format` and checks that nothing is lost.

    check-format.py [--emulator=WORD...] VANXML [--at-least N] [--step N] FOLDER...

Works on copies. For every document that `vanxml format` accepts:
  - the result has the same content, as Expat reads it: elements, attributes, text outside ignorable white space,
    comments, processing instructions, document type, references to entities
  - formatting the result again does not touch the file
Every document that `vanxml format` refuses, `vanxml check` must refuse as well.

The words of --emulator stand before the tool in a command, for a tool of another system. --step N takes only each Nth
document, for a slow system. Exits with 77, which CTest reports as skipped, if there are fewer than N documents.
"""

import argparse
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile
from xml.parsers import expat

ENDINGS = (".xml", ".xsl", ".svg")
SKIPPED = 77
FILES_PER_RUN = 200  # a command line of Windows has at most 32,767 characters
WHITE_SPACE = " \t\r\n"
NOT_REFERENCES = re.compile(rb"<!--.*?-->|<!\[CDATA\[.*?\]\]>", re.DOTALL)
ENTITY = re.compile(rb"&[^#;&<>'\"\s]+;")
QUOTED = re.compile('"([^"]+)"')
PLACED = re.compile(r"^(.*?)(?::\d+:\d+)?: error: ")
PREDEFINED = {b"&lt;", b"&gt;", b"&amp;", b"&apos;", b"&quot;"}


class Element:
    """An open element, or the document."""

    def __init__(self, is_preserved):
        self.parts = []  # tuples; ("blank", text) is white space that may be ignorable
        self.is_preserved = is_preserved
        self.has_elements = False
        self.has_text = False


class Reader:
    """Reads a document into a list of tuples that is equal for all documents with the same content."""

    def __init__(self):
        self.open = [Element(False)]
        self.text = ""
        self.has_section = False
        self.document_type = None  # the text, while it is read
        parser = expat.ParserCreate()
        parser.ordered_attributes = True
        parser.StartElementHandler = self.start_element
        parser.EndElementHandler = self.end_element
        parser.CharacterDataHandler = self.add_text
        parser.StartCdataSectionHandler = self.start_section
        parser.CommentHandler = lambda text: self.add(("comment", text))
        parser.ProcessingInstructionHandler = lambda target, data: self.add(("instruction", target, data))
        parser.XmlDeclHandler = self.read_declaration
        parser.StartDoctypeDeclHandler = self.start_document_type
        parser.EndDoctypeDeclHandler = self.end_document_type
        # With this handler, Expat does not expand entities in texts but passes the references.
        parser.DefaultHandler = self.read_other
        parser.SkippedEntityHandler = lambda name, is_parameter: self.add_entity("&" + name + ";")
        self.parser = parser
        self.declaration = ("declaration", "1.0", -1)

    def read(self, data):
        self.parser.Parse(data.lstrip(WHITE_SPACE.encode()), True)
        return [self.declaration] + self.open[0].parts

    def add(self, part):
        self.flush_text()
        self.open[-1].parts.append(part)

    def flush_text(self):
        if not self.text and not self.has_section:
            return
        element = self.open[-1]
        if self.has_section or self.text.strip(WHITE_SPACE):
            element.has_text = True
            element.parts.append(("text", self.text))
        else:
            element.parts.append(("blank", self.text))
        self.text = ""
        self.has_section = False

    def add_text(self, text):
        self.text += text

    def start_section(self):
        self.has_section = True

    def add_entity(self, reference):
        self.add(("entity", reference))
        self.open[-1].has_text = True

    def start_element(self, name, attributes):
        pairs = sorted(zip(attributes[::2], attributes[1::2]))
        self.add(("start", name, pairs))
        parent = self.open[-1]
        parent.has_elements = True
        self.open.append(Element(parent.is_preserved or ("xml:space", "preserve") in pairs))

    def end_element(self, name):
        self.flush_text()
        element = self.open.pop()
        is_ignorable = element.has_elements and not element.has_text and not element.is_preserved
        self.open[-1].parts += [part for part in element.parts if part[0] != "blank" or not is_ignorable]
        self.open[-1].parts.append(("end", name))

    def read_declaration(self, version, encoding, standalone):
        self.declaration = ("declaration", version, standalone)

    def start_document_type(self, name, system_id, public_id, has_subset):
        self.document_type = ""
        self.add(("document type", name, system_id, public_id, has_subset))

    def end_document_type(self):
        self.add(("subset", self.document_type))
        self.document_type = None

    def read_other(self, text):
        if self.document_type is not None:
            self.document_type += text
        elif text.startswith("&"):
            self.add_entity(text)


def read_file(path):
    with open(path, "rb") as file:
        return file.read()


def count_entities(data):
    """Also counts those in attributes, which Expat expands."""
    references = ENTITY.findall(NOT_REFERENCES.sub(b"", data))
    return collections.Counter(name for name in references if name not in PREDEFINED)


def compare(before, after):
    """Returns the first difference between two documents as a text, or None.

    Raises ValueError if Expat does not know the encoding.
    """
    try:
        expected = Reader().read(before)
    except expat.ExpatError as error:
        return "Expat refuses the document, which the tool accepts: %s" % error
    try:
        actual = Reader().read(after)
    except expat.ExpatError as error:
        return "Expat refuses the result: %s" % error
    for a, b in zip(expected, actual):
        if a != b:
            return "%.300r became %.300r" % (a, b)
    if len(expected) != len(actual):
        return "%d parts became %d parts" % (len(expected), len(actual))
    if count_entities(before) != count_entities(after):
        return "the references to entities differ"
    return None


def find_documents(folders):
    for folder in folders:
        for place, _, names in sorted(os.walk(folder)):
            for name in sorted(names):
                path = os.path.join(place, name)
                if name.endswith(ENDINGS) and not os.path.islink(path):
                    yield path


def run(tool, arguments, files):
    """Runs the tool, which is a list of the words of its command, for all files.

    Returns the files that its error lines name, with the first line of each.
    """
    refused = {}
    for start in range(0, len(files), FILES_PER_RUN):
        chunk = files[start:start + FILES_PER_RUN]
        result = subprocess.run(tool + arguments + chunk, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        known = set(chunk)
        errors = result.stderr.decode("utf-8", "replace").splitlines()
        for line in errors:
            # FILE:LINE:COLUMN: error: MESSAGE, or vanxml: Cannot read "FILE": MESSAGE
            for name in PLACED.findall(line) + QUOTED.findall(line):
                if name in known:
                    refused.setdefault(name, line)
        if result.returncode not in (0, 1, 2) or (result.returncode != 0 and not known & refused.keys()):
            sys.exit("%s exits with %d:\n%s" % (arguments[0], result.returncode, "\n".join(errors)))
    return refused


def identify(path):
    status = os.stat(path)
    return status.st_ino, status.st_mtime_ns


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("tool")
    arguments.add_argument("folders", nargs="+")
    arguments.add_argument("--at-least", type=int, default=1)
    arguments.add_argument("--step", type=int, default=1)
    arguments.add_argument("--emulator", metavar="WORD", action="append", default=[])
    options = arguments.parse_args()
    tool = options.emulator + [options.tool]

    originals = list(find_documents(options.folders))[::options.step]
    if len(originals) < options.at_least:
        print("skipped: only %d documents; scripts/test installs the packages" % len(originals))
        return SKIPPED

    failures = []
    with tempfile.TemporaryDirectory() as folder:
        files = []
        for number, original in enumerate(originals):
            files.append(os.path.join(folder, "%05d-%s" % (number, os.path.basename(original))))
            shutil.copyfile(original, files[-1])
        source = dict(zip(files, originals))

        refused = run(tool, ["format", "--in-place"], files)
        confirmed = run(tool, ["check"], sorted(refused))
        for name, line in refused.items():
            if name not in confirmed:
                failures.append("%s: refused only by format: %s" % (source[name], line))
            elif read_file(name) != read_file(source[name]):
                failures.append("%s: refused, but changed" % source[name])

        formatted = [name for name in files if name not in refused]
        changed = 0
        uncompared = 0
        for name in formatted:
            before, after = read_file(source[name]), read_file(name)
            changed += before != after
            try:
                difference = compare(before, after)
            except ValueError as error:
                print("not compared: %s: %s" % (source[name], error))
                uncompared += 1
                continue
            if difference:
                failures.append("%s: %s" % (source[name], difference))

        identities = {name: identify(name) for name in formatted}
        run(tool, ["format", "--in-place"], formatted)
        for name in formatted:
            if identify(name) != identities[name]:
                failures.append("%s: a second run changes the document" % source[name])

    for line in refused.values():
        print("refused: " + os.path.basename(line))
    for failure in failures:
        print("failure: " + failure)
    print("%d documents: %d formatted (%d of them changed), %d refused, %d failures" %
          (len(originals), len(formatted), changed, len(refused), len(failures)))
    if len(formatted) - uncompared < options.at_least:
        print("fewer than %d documents were compared" % options.at_least)
        return 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
