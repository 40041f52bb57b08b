"""GDB printers for the classes of vancorexml.

  (gdb) source PREFIX/share/vancorexml/vancorexml-gdb.py
  (gdb) print *element

A string prints as its text, a document as its tree, and a diagnostic as its message with its place. The printers read
memory only: they call no function of the program, so they also work on core dumps and while a thread holds a lock.

They need the debug information of a source that includes the headers, but not that of the library. clang gives all of
it only with the option -fstandalone-debug.
"""
import gdb
import gdb.printing


def read_pointer(place, pointee):
    """Returns the pointer to `pointee` at an address, which may be that of a std::unique_ptr."""
    return place.cast(pointee.pointer().pointer()).dereference()


def is_null(pointer):
    return int(pointer) == 0


def format_text(text):
    """Returns a VString as it appears within a longer text, cut as `set print elements` says."""
    address, length = find_text(text)
    limit = gdb.parameter("print elements") or length
    shown = min(length, limit)
    units = bytes(gdb.selected_inferior().read_memory(address, 2 * shown)) if shown else b""
    # Unpaired surrogates become U+FFFD.
    return repr(units.decode("utf-16-le", "replace"))[1:-1] + ("..." if shown < length else "")


def find_text(text):
    """Returns the address of the first code unit of a VString, and the number of its code units."""
    # QString has one member, a pointer to a header that gives the distance of the text in bytes.
    header = text["m_text"]["d"].dereference()
    return int(header.address) + int(header["offset"]), int(header["size"])


def format_attributes(attributes):
    names = [f" {format_text(name)}='{format_text(value)}'" for name, value in entries_of(attributes)]
    return "".join(names)


def entries_of(attributes):
    """Yields the names and values of an AttributeMap."""
    first = attributes["m_block"] if int(attributes["m_capacity"]) > 1 else attributes["m_entry"].address
    for i in range(int(attributes["m_size"])):
        entry = (first + i).dereference()
        yield entry["first"], entry["second"]


def children_of(element):
    """Yields the children of a DOMElement."""
    # The first two of the three pointers of a vector are those to its first entry and behind its last one.
    children = element["m_children"].address
    owners = children.cast(gdb.lookup_type("DOMElement").pointer().pointer().pointer())
    first, end = owners[0], owners[1]
    for i in range(int(end - first)):
        yield first[i].dereference()


class StringPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        address, length = find_text(self.value)
        unit = gdb.lookup_type("char16_t").pointer()
        return gdb.Value(address).cast(unit).lazy_string(length=length)

    def display_hint(self):
        return "string"


class AttributesPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        count = int(self.value["m_size"])
        return f"{count} attribute{'' if count == 1 else 's'}"

    def children(self):
        for i, (name, value) in enumerate(entries_of(self.value)):
            yield f"name {i}", name
            yield f"value {i}", value

    def display_hint(self):
        return "map"


class ElementPrinter:
    """Prints the start tag, the place, the text and the children of a DOMElement."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        element = self.value
        tag = f"<{format_text(element['m_name'])}{format_attributes(element['m_attributes'])}>"
        line = int(element["m_startLine"])
        place = f" at {line}:{int(element['m_startColumn'])}" if line else ""
        text = format_text(element["m_text"])
        return tag + place + (f" '{text}'" if text else "")

    def children(self):
        for i, child in enumerate(children_of(self.value)):
            yield f"[{i}]", child


class DocumentPrinter:
    """Prints the tree below the synthetic topmost element of a DOM."""

    def __init__(self, value):
        self.value = value

    def root(self):
        # The first member, behind the pointer to the virtual functions. Its debug information may be missing: g++
        # describes a class with virtual functions only where it emits the table of these functions.
        place = int(self.value.address) + gdb.lookup_type("void").pointer().sizeof
        return read_pointer(gdb.Value(place), gdb.lookup_type("DOMElement"))

    def to_string(self):
        root = self.root()
        if is_null(root):
            return "document without a tree"
        count = sum(1 for child in children_of(root.dereference()))
        return "document" if count else "empty document"

    def children(self):
        root = self.root()
        if not is_null(root):
            for i, child in enumerate(children_of(root.dereference())):
                yield f"[{i}]", child


class LightweightElementPrinter:
    """Prints the start tag and the nodes of a StandaloneDOMElement: child elements and texts."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return f"<{format_text(self.value['m_name'])}{format_attributes(self.value['m_attributes'])}>"

    def children(self):
        nodes = self.value["m_nodes"]
        first = nodes["m_block"] if int(nodes["m_capacity"]) > 1 else nodes["m_node"].address
        for i in range(int(nodes["m_size"])):
            node = (first + i).dereference()
            element = read_pointer(node["element"].address, gdb.lookup_type("StandaloneDOMElement"))
            yield f"[{i}]", node["text"] if is_null(element) else element.dereference()


class DiagnosticPrinter:
    """Prints the severity, the place and the message of a ParseDiagnostic, and those other fields that have a value."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        diagnostic = self.value
        severity = {"Warning": "warning", "Error": "error", "FatalError": "fatal error"}.get(
            str(diagnostic["severity"]).rpartition("::")[2], "diagnostic")
        start = diagnostic["start"]
        place = format_text(diagnostic["sourceId"])
        if int(start["line"]):
            place += f":{int(start['line'])}:{int(start['column'])}"
        code = str(diagnostic["code"]).rpartition("::")[2]
        return f"{severity} {code} at {place}: {format_text(diagnostic['message'])}"

    def children(self):
        for field in ("path", "attribute", "value", "expected", "suggestion"):
            if find_text(self.value[field])[1]:
                yield field, self.value[field]


def build_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("vancorexml")
    for name, printer in (
            ("VString", StringPrinter),
            ("AttributeMap", AttributesPrinter),
            ("DOMElement", ElementPrinter),
            ("DOM", DocumentPrinter),
            ("StandaloneDOMElement", LightweightElementPrinter),
            ("ParseDiagnostic", DiagnosticPrinter)):
        printers.add_printer(name, f"^{name}$", printer)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printers(), replace=True)
