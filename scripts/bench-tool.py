#!/usr/bin/env python3
"""Compares the commands of the tool with those of other tools, and prints tables of ratios.

bench-tool.py TOOL FOLDER [--quick] [--filter PATTERN] [--page PAGE.md]

TOOL is the program vanxml. FOLDER receives the documents while they are needed. With --quick, measures only the
smallest documents, in fewer rounds. PATTERN selects commands by their names. With --page, writes the tables into a page
instead of printing them.

Each measurement is a whole process, from its start to its end. A time is the least of all rounds: other work on the
machine only makes a program slower, for seconds at a time. The excess is the share by which the median is larger.
"""
import argparse
import collections
import hashlib
import os
import pathlib
import platform
import random
import re
import statistics
import subprocess
import sys
import tempfile
import time
from xml.etree import ElementTree

MEGABYTE = 1_000_000
SIZES = (5, 20, 100)  # of the documents, in MB
QUICK_LARGEST = 20  # replaces LARGEST in a quick run
LARGEST = 400  # of the documents for the memory of our tool alone, in MB
ROUNDS = {5: 11, 20: 7, 100: 5}
QUICK_ROUNDS = 5
OURS = "vanxml"
SMALL_DOCUMENTS = 5_000

# The largest ratios that the project accepts.
MOST_TIME = 1.3  # of our time to the time of the fastest peer
MOST_MEMORY = 0.5  # of our peak memory to the peak memory of the smallest peer
MOST_MEMORY_OF_FILE = 3.0  # of our peak memory to the size of the largest document

FIRST_NAMES = ["Anna", "Émile", "Jürgen", "María", "Noor", "Ольга", "Paul", "Søren", "Tomás", "美咲"]
LAST_NAMES = ["Almeida", "Bauer", "Çelik", "Dupont", "Eriksson", "Fischer", "García", "Hansen", "Novák", "O’Neill"]
CITIES = ["Berlin", "Córdoba", "Gdańsk", "Lyon", "Malmö", "Porto", "Zürich"]
WORDS = ("account address amount article before between bill branch carrier cause change copy credit customer daily "
         "damage date delay delivery discount entry error export invoice later letter line market month number offer "
         "order packet paper payment price quarter rate region report return sales season second shelf ship stock "
         "store supplier table tax total transport truck value weight without year").split()

Sample = collections.namedtuple("Sample", "wall cpu peak")  # seconds, seconds, bytes

# A ratio for the table of checks, with the largest one that the project accepts and the one that it aims at. For a
# throughput, larger is better, and `limit` is the smallest ratio.
Check = collections.namedtuple("Check", "name limit goal ratio is_throughput note")

# A task and the programs that perform it. `programs` returns their command lines by name for the tool, a document and
# its kind. They write to standard output. An edit keeps the blank text of a document and changes its content; a format
# does the opposite.
Task = collections.namedtuple("Task", "name is_edit note programs")


def format_programs(tool, path, _kind):
    return {
        OURS: [tool, "format", path],
        "xmllint": ["xmllint", "--format", path],
        "xmlstarlet": ["xmlstarlet", "fo", path],
    }


def edit_programs(tool, path, elements, attribute):
    return {
        OURS: [tool, "edit", path, "--at", elements, "--set", f"{attribute}=final"],
        "xmlstarlet": ["xmlstarlet", "ed", "-P", "-u", f"{elements}/@{attribute}", "-v", "final", path],
    }


def edit_one_programs(tool, path, kind):
    return edit_programs(tool, path, f"/{kind}/export", "status")


def edit_all_programs(tool, path, kind):
    element, attribute = {"orders": ("order", "status"), "book": ("section", "author")}[kind]
    return edit_programs(tool, path, f"/{kind}/{element}", attribute)


TASKS = [
    Task("format", False, "`vanxml format FILE`, `xmllint --format FILE` and `xmlstarlet fo FILE`.", format_programs),
    Task("edit-one", True, "Sets an attribute of one element: `vanxml edit FILE --at PATH --set NAME=VALUE` and "
         "`xmlstarlet ed -P -u PATH/@NAME -v VALUE FILE`.", edit_one_programs),
    Task("edit-all", True, "Sets an attribute of each order or section, with the same commands.", edit_all_programs),
]


CHECKS = "check"  # the name of the measurements that have a table of their own


def sentence(source, fewest, most):
    words = source.choices(WORDS, k=source.randint(fewest, most))
    return " ".join(words).capitalize() + "."


def person(source):
    return f"{source.choice(FIRST_NAMES)} {source.choice(LAST_NAMES)}"


def order(source, number):
    """Returns an order: elements with many attributes and short texts, like the documents of the product."""
    date = f"2024-{source.randint(1, 12):02}-{source.randint(1, 28):02}"
    status = source.choice(["open", "paid", "sent"])
    text = (f'  <order number="{number}" date="{date}" status="{status}" customer="{person(source)}" '
            f'city="{source.choice(CITIES)}">\n')
    if source.random() < 0.3:
        text += f"    <note>{sentence(source, 3, 9)}</note>\n"
    for line in range(source.randint(1, 4)):
        title = " ".join(source.choices(WORDS, k=2))
        if source.random() < 0.1:
            title += " &amp; " + source.choice(WORDS)
        text += (f'    <line position="{line + 1}" article="A-{source.randint(1000, 9999)}" caption="{title}" '
                 f'quantity="{source.randint(1, 40)}" price="{source.randint(100, 99999) / 100:.2f}" '
                 f'currency="EUR" />\n')
    return text + "  </order>\n"


ORDERS_START = """<?xml version="1.0" encoding="utf-8"?>
<orders version="18.1" xml:lang="en">
  <export status="draft" date="2024-03-15" />
"""


def section(source, number):
    """Returns a section: comments, processing instructions, CDATA sections, mixed content and entities."""
    text = f"  <!-- Section {number}: {sentence(source, 3, 8)} -->\n"
    text += f'  <section id="s{number}" author="{person(source)}">\n'
    text += f"    <title>{sentence(source, 2, 6)}</title>\n"
    if source.random() < 0.2:
        text += f'    <?layout columns="{source.randint(1, 3)}"?>\n'
    for _ in range(source.randint(1, 3)):
        # vanxml accepts at most 50,000 references to entities. The largest document has about 23,000.
        entity = "&company; " if source.random() < 0.02 else ""
        text += (f"    <p>{sentence(source, 5, 15)} <b>{sentence(source, 1, 3)}</b> {entity}"
                 f'{sentence(source, 2, 8)} <a href="#s{source.randint(1, number)}">{sentence(source, 1, 3)}</a> '
                 f"{sentence(source, 4, 12)}</p>\n")
    if source.random() < 0.3:
        text += (f"    <code><![CDATA[if (a < {source.randint(1, 99)} && b > 0)\n"
                 f"    {sentence(source, 3, 9)}\n]]></code>\n")
    if source.random() < 0.2:
        text += f"    <!-- {sentence(source, 5, 15)}\n         {sentence(source, 5, 15)} -->\n"
    return text + "  </section>\n"


BOOK_START = """<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE book [
  <!ENTITY company "Example Ltd.">
  <!ENTITY legal "All rights reserved.">
]>
<book version="3" xml:lang="en">
  <export status="draft" date="2024-03-15" />
"""

# The kinds of documents: the start, the end, and the function that returns the next part.
KINDS = {
    "orders": (ORDERS_START, "</orders>\n", order),
    "book": (BOOK_START, "</book>\n", section),
}


def generate(path, kind, megabytes):
    """Writes a document of about this size. The same call always writes the same bytes."""
    start, end, part = KINDS[kind]
    source = random.Random(12)
    size, number = 0, 0
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        size += file.write(start)
        while size < megabytes * MEGABYTE:
            number += 1
            piece = part(source, number)
            size += len(piece.encode("utf-8"))
            file.write(piece)
        file.write(end)


class ContentSurvey:
    """Finds out for each element, in the order of the start tags, whether its blank text is ignorable."""

    def __init__(self):
        self.ignorable = []
        self._open = []  # the number of each open element, whether it has elements, and whether it has text

    def start(self, _tag, _attributes):
        if self._open:
            self._open[-1][1] = True
        self._open.append([len(self.ignorable), False, False])
        self.ignorable.append(False)

    def data(self, text):
        if self._open and text.strip():
            self._open[-1][2] = True

    def end(self, _tag):
        number, has_elements, has_text = self._open.pop()
        self.ignorable[number] = has_elements and not has_text

    def close(self):
        """Is called by the parser."""


class ContentWriter(ElementTree.C14NWriterTarget):
    """Writes the canonical form without ignorable blank text."""

    def __init__(self, write, ignorable):
        super().__init__(write, with_comments=True)
        self._ignorable = iter(ignorable)
        self._open = []

    def start(self, tag, attributes):
        self._open.append(next(self._ignorable))
        super().start(tag, attributes)

    def data(self, text):
        if not self._open or not self._open[-1]:
            super().data(text)

    def end(self, tag):
        self._open.pop()
        super().end(tag)


def parse(path, target):
    parser = ElementTree.XMLParser(target=target)
    with open(path, "rb") as file:
        while block := file.read(MEGABYTE):
            parser.feed(block)
    parser.close()


def digest(path, keeps_blanks):
    """Returns a checksum of the canonical form of a document, with or without ignorable blank text."""
    survey = ContentSurvey()
    parse(path, survey)
    ignorable = [not keeps_blanks and each for each in survey.ignorable]
    checksum = hashlib.sha256()
    parse(path, ContentWriter(lambda text: checksum.update(text.encode("utf-8")), ignorable))
    return checksum.hexdigest()


def run(command, output):
    """Runs a program and returns its sample. Ends this process if the program fails."""
    begin = time.monotonic()
    child = os.fork()
    if child == 0:
        os.dup2(os.open(output, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), 1)
        os.execvp(command[0], command)
    _, status, usage = os.wait4(child, 0)
    wall = time.monotonic() - begin
    if status != 0:
        sys.exit(f"{' '.join(command)}: ends with status {os.waitstatus_to_exitcode(status)}")
    return Sample(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)


def check(task, programs, document, folder):
    """Ends this process unless all programs give the same answer, and the right kind of answer."""
    answers = {}
    for name, command in programs.items():
        output = folder / name
        run(command, output)
        answers[name] = digest(output, keeps_blanks=task.is_edit)
        output.unlink()
    if len(set(answers.values())) != 1:
        sys.exit(f"{task.name} {document.name}: the answers differ: {answers}")
    is_changed = answers[OURS] != digest(document, keeps_blanks=task.is_edit)
    if is_changed != task.is_edit:
        sys.exit(f"{task.name} {document.name}: the content is {'changed' if is_changed else 'unchanged'}")


def measure_document(tasks, tool, kind, size, rounds, folder):
    """Returns the samples by (task, document, program). The programs take turns."""
    samples = collections.defaultdict(list)
    document = folder / f"{kind}-{size}.xml"
    generate(document, kind, size)
    for task in tasks:
        programs = task.programs(tool, str(document), kind)
        if size == SIZES[0]:
            check(task, programs, document, folder)
        for _ in range(rounds):
            for name, command in programs.items():
                samples[task.name, (kind, size), name].append(run(command, folder / "output"))
    (folder / "output").unlink()
    document.unlink()
    return samples


def measure_largest(tool, kind, folder):
    """Returns the peak memory of a large document that is replaced, for each byte of the document."""
    document = folder / f"{kind}-{LARGEST}.xml"
    generate(document, kind, LARGEST)
    size = document.stat().st_size
    sample = run([tool, "format", "--in-place", str(document)], folder / "output")
    document.unlink()
    return sample.peak / size


def generate_small(folder, count):
    """Writes documents of about 3 KB and returns their names."""
    folder.mkdir()
    names = []
    for number in range(count):
        source = random.Random(number)
        name = folder / f"{number:04}.xml"
        parts = "".join(order(source, each + 1) for each in range(8))
        name.write_text(ORDERS_START + parts + "</orders>\n", encoding="utf-8")
        names.append(str(name))
    return names


def build_empty_program(tool, folder):
    """Builds a program that does nothing and needs the same libraries as the tool. Returns its name."""
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output_of("readelf", "-d", tool))
    places = dict(re.findall(r"(\S+) => (\S+)", output_of("ldd", tool)))
    source = folder / "empty.cpp"
    source.write_text("int main() { return 0; }\n", encoding="utf-8")
    program = str(folder / "empty")
    libraries = [places[name] for name in needed if name in places]
    paths = sorted({f"-Wl,-rpath,{os.path.dirname(place)}" for place in libraries})
    subprocess.run(["c++", "-O2", str(source), "-o", program, "-Wl,--no-as-needed", *libraries, *paths], check=True)
    return program


def take_turns(programs, rounds, output):
    """Returns the samples of each program by its name."""
    samples = collections.defaultdict(list)
    for _ in range(rounds):
        for name, command in programs.items():
            samples[name].append(run(command, output))
    return samples


def require_answer(command, status, output=None):
    """Ends this process unless a command ends with the status and prints the output."""
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode != status or output not in (None, result.stdout):
        sys.exit(f"{' '.join(command)[:200]}: status {result.returncode}, output {result.stdout[:200]!r}")


def check_answers(tool, names, folder):
    """Ends this process unless the programs accept the small documents and refuse a broken one."""
    broken = folder / "broken.xml"
    broken.write_text(pathlib.Path(names[0]).read_text(encoding="utf-8").replace("</order>", "</ordr>", 1),
                      encoding="utf-8")
    options = ["check", "--jobs", "1"]
    require_answer([tool, *options, *names], 0, f"{len(names):,} documents, 0 errors\n")
    require_answer([tool, *options, *names, str(broken)], 1)
    require_answer(["xmllint", "--noout", *names], 0)
    require_answer(["xmllint", "--noout", *names, str(broken)], 1)


def measure_small(tool, rounds, folder):
    """Returns the checks of the start of the tool and of many small documents."""
    names = generate_small(folder / "small", SMALL_DOCUMENTS)
    check_answers(tool, names, folder)
    output = folder / "output"
    start = take_turns({"empty": [build_empty_program(tool, folder)], OURS: [tool, "check", names[0]]},
                       8 * rounds, output)
    many = take_turns({OURS: [tool, "check", "--jobs", "1", *names], "xmllint": ["xmllint", "--noout", *names]},
                      rounds, output)
    return [
        Check("check of one small document ÷ an empty program with the same libraries", 1.2, 1.1,
              least(start[OURS], "cpu") / least(start["empty"], "cpu"), False,
              f"CPU time, {show(least(start[OURS], 'cpu'))}"),
        Check(f"check --jobs 1 of {SMALL_DOCUMENTS:,} small documents ÷ xmllint --noout", 1.0, 0.8,
              least(many[OURS], "cpu") / least(many["xmllint"], "cpu"), False,
              f"CPU time, {show(least(many[OURS], 'cpu'))}"),
        measure_jobs(tool, names, "small documents", 1.9, rounds, output),
        measure_jobs(tool, copy_sample(folder / "samples", SMALL_DOCUMENTS), "documents with schemas", 1.85, rounds,
                     output),
    ]


def copy_sample(folder, count):
    """Writes copies of a document that the tool checks against a schema, and returns their names."""
    folder.mkdir()
    content = (pathlib.Path(__file__).parent.parent / "samples" / "orders.kxb").read_bytes()
    names = [folder / f"{number:04}.kxb" for number in range(count)]
    for name in names:
        name.write_bytes(content)
    return [str(name) for name in names]


def measure_jobs(tool, names, what, limit, rounds, output):
    """Returns the check of the throughput of two jobs."""
    commands = {count: [tool, "check", "--jobs", str(count), *names] for count in (1, 2)}
    require_answer(commands[2], 0, f"{len(names):,} documents, 0 errors\n")
    cores = os.sched_getaffinity(0)
    os.sched_setaffinity(0, range(os.cpu_count()))
    # Two jobs are fast only while nothing else runs on both cores, so they need many rounds.
    samples = take_turns({"one": [tool, "check", names[0]], **commands}, 3 * rounds, output)
    os.sched_setaffinity(0, cores)
    # The start of the tool is not part of the throughput.
    rest = {count: least(samples[count], "wall") - least(samples["one"], "wall") for count in commands}
    return Check(f"check --jobs 2 of {len(names):,} {what} ÷ --jobs 1", limit, 1.95, rest[1] / rest[2], True,
                 f"documents per second without the start of the tool, {len(names) / rest[2]:,.0f}")


def measure_memory(tool, kind, size, folder):
    """Returns the checks of the peak memory for a large document."""
    document = folder / f"{kind}-{size}.xml"
    generate(document, kind, size)
    element = {"orders": "line", "book": "p"}[kind]
    with open(document, encoding="utf-8") as lines:
        count = sum(line.count(f"<{element} ") + line.count(f"<{element}>") for line in lines)
    commands = {"check": [tool, "check", "--schema", "none", str(document)],
                "query --count": [tool, "query", "--count", str(document), f"//{element}"]}
    require_answer(commands["check"], 0, "1 document, 0 errors\n")
    require_answer(commands["query --count"], 0, f"{count}\n")
    checks = []
    for (name, command), limit in zip(commands.items(), (2, 4)):
        sample = run(command, folder / "output")
        checks.append(Check(f"{name} of {kind} of {size} MB: peak memory ÷ document", limit, 0.2,
                            sample.peak / document.stat().st_size, False, f"{sample.peak / MEGABYTE:.0f} MB"))
    document.unlink()
    return checks


def check_table(checks):
    """Returns the lines of the table of checks."""
    lines = ["| measure | limit | goal | ratio | value |", "|---|---|---|---|---|"]
    for each in checks:
        is_missed = each.ratio < each.limit if each.is_throughput else each.ratio > each.limit
        ratio = f"**{each.ratio:.2f}**" if is_missed else f"{each.ratio:.2f}"
        lines.append(f"| {each.name} | {each.limit:.2f} | {each.goal:.2f} | {ratio} | {each.note} |")
    return lines + [""]


def require_small_parent(samples, folder):
    """Ends this process if it is larger than a measured one.

    When Linux starts a program, it counts the memory of the parent as a peak of the child.
    """
    least = run(["true"], folder / "output").peak
    if any(sample.peak <= least for values in samples.values() for sample in values):
        sys.exit("the measuring process itself is larger than a measured process")


def least(samples, field):
    return min(getattr(sample, field) for sample in samples)


def excess(values):
    """Returns how much larger the median is than the least value, as a share of that."""
    return statistics.median(values) / min(values) - 1


def show(seconds):
    """Returns a time with its unit, such as "46.9 ms"."""
    return f"{seconds:.3g} s" if seconds >= 1 else f"{seconds * 1e3:.3g} ms"


def goals(samples, largest):
    """Returns the lines of the table of goals: a row for each measure, a column for each document."""
    documents = list(dict.fromkeys(document for _, document, _ in samples))
    tasks = list(dict.fromkeys(task for task, _, _ in samples))
    lines = ["| measure | limit | " + " | ".join(f"{kind} {size} MB" for kind, size in documents) + " |",
             "|---|---|" + "---|" * len(documents)]
    missed = []

    def row(name, limit, ratios):
        cells = []
        for document, ratio in ratios.items():
            cells.append(f"{ratio:.2f}" if ratio <= limit else f"**{ratio:.2f}**")
            if ratio > limit:
                missed.append(f"{name}, {document[0]} {document[1]} MB: {ratio:.2f} (limit {limit:.2f})")
        return f"| {name} | {limit:.2f} | " + " | ".join(cells) + " |"

    for task in tasks:
        for field, what, limit in (("wall", "time ÷ fastest peer", MOST_TIME),
                                   ("cpu", "CPU time ÷ fastest peer", MOST_TIME),
                                   ("peak", "peak memory ÷ smallest peer", MOST_MEMORY)):
            ratios = {}
            for document in documents:
                values = {name: least(s, field) for (t, d, name), s in samples.items() if (t, d) == (task, document)}
                ratios[document] = values.pop(OURS) / min(values.values())
            lines.append(row(f"{task}: {what}", limit, ratios))
    lines.append("")
    for kind, ratio in largest.items():
        lines += [f"Peak memory of `vanxml format --in-place` for {kind} of {LARGEST} MB: {ratio:.2f} bytes for each "
                  f"byte of the file (limit {MOST_MEMORY_OF_FILE:.2f}).", ""]
        if ratio > MOST_MEMORY_OF_FILE:
            missed.append(f"peak memory, {kind} {LARGEST} MB: {ratio:.2f} (limit {MOST_MEMORY_OF_FILE:.2f})")
    lines += ["Limits that this run missed:", ""] if missed else ["This run missed no limit."]
    lines += [f"- {each}" for each in missed] + [""]
    return lines


def table(samples, task):
    """Returns the lines of the table of a task: a row for each document and program."""
    lines = ["| document | program | time | CPU time | peak memory |", "|---|---|---|---|---|"]
    for (name, document, program), values in samples.items():
        if name != task.name:
            continue
        ours = samples[name, document, OURS]
        cells = []
        for field in ("wall", "cpu"):
            each = least(values, field)
            more = excess([getattr(sample, field) for sample in values]) * 100
            cells.append(f"**{each / least(ours, field):.2f}** ({show(each)} +{more:.0f} %)")
        peak = least(values, "peak")
        cells.append(f"**{peak / least(ours, 'peak'):.2f}** ({peak / MEGABYTE:.0f} MB)")
        lines.append(f"| {document[0]} {document[1]} MB | {program} | " + " | ".join(cells) + " |")
    return lines + [""]


def output_of(*words):
    """Returns the output of a command, or "unknown" if it fails."""
    try:
        return subprocess.run(words, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return "unknown"


def setting(load, rounds, tasks):
    """Returns lines that describe the run."""
    with open("/proc/cpuinfo", encoding="utf-8") as processors:
        models = [line.split(":", 1)[1].strip() for line in processors if line.startswith("model name")]
    peers = output_of("dpkg-query", "-W", "-f", "${Package} ${Version}, ", "libxml2-utils", "libxml2", "xmlstarlet")
    counts = ", ".join(f"{count} for {size} MB" for size, count in rounds.items())
    return [
        f"- date: {output_of('date', '+%Y-%m-%d')}; revision {output_of('git', 'rev-parse', '--short', 'HEAD')}",
        f"- machine: {models[0] if models else 'unknown'}, {os.cpu_count()} cores, of which one runs the programs; "
        f"{platform.system()} {platform.machine()}; load average {load:.1f} when the measurements began",
        f"- compiler: {output_of('c++', '--version').splitlines()[0]}; flags: -O3 -DNDEBUG (CMake's Release) and the "
        "project's own",
        f"- peers: {peers.rstrip(', ')}; Python {platform.python_version()} compares the answers",
        f"- command: `scripts/bench-tool`; tasks: {', '.join(task.name for task in tasks)}; rounds: {counts}",
    ]


INTRO = """# Performance of the tool

This page compares `vanxml` with other tools that format, edit and check documents. `scripts/bench-tool` writes this
page from one run.

Each measurement covers a whole process, from its start to its end. The process reads a file that is in the cache of
the system. It writes its output to a file and does not flush it to the disk. `vanxml` also parses its result and
compares it with the document before it writes anything; the other tools do not. The tools take turns. Each value is
the least of all rounds, because other work on the machine only makes a program slower. The excess after + tells how
much larger the median is. CPU time is the time that a processor spends in the program, and in the system for the
program. Peak memory is the largest resident set.

Before any timing, the script checks that all tools give the same answers: it compares the canonical forms of their
results for the smallest documents, comments included. For `format`, the comparison ignores blank text in elements that
contain elements and no other text.

The script generates the documents. Each run generates the same ones:

- **orders**: elements with many attributes and short texts
- **book**: a document type with entities, comments, processing instructions, CDATA sections and mixed content
"""


CHECKS_NOTE = """Bold ratios miss the limit. The small documents are orders of about 3 KB, without a schema. The
documents with schemas are copies of `samples/orders.kxb`, which also has 3 KB."""


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("tool")
    arguments.add_argument("folder")
    arguments.add_argument("--quick", action="store_true")
    arguments.add_argument("--filter", default=".")
    arguments.add_argument("--page")
    options = arguments.parse_args()
    tasks = [task for task in TASKS if re.search(options.filter, task.name)]
    has_checks = re.search(options.filter, CHECKS) is not None
    if not tasks and not has_checks:
        sys.exit(f"no command matches '{options.filter}'")
    rounds = {SIZES[0]: QUICK_ROUNDS} if options.quick else ROUNDS
    load = os.getloadavg()[0]
    os.sched_setaffinity(0, {os.cpu_count() - 1})
    samples, largest, checks = {}, {}, []
    with tempfile.TemporaryDirectory(dir=options.folder) as name:
        folder = pathlib.Path(name)
        for kind in KINDS:
            for size, count in rounds.items() if tasks else ():
                samples |= measure_document(tasks, options.tool, kind, size, count, folder)
            if tasks and not options.quick:
                largest[kind] = measure_largest(options.tool, kind, folder)
        if has_checks:
            checks += measure_small(options.tool, rounds[SIZES[0]], folder)
            for kind in KINDS:
                checks += measure_memory(options.tool, kind, QUICK_LARGEST if options.quick else LARGEST, folder)
        require_small_parent(samples, folder)
    lines = []
    if tasks:
        lines += ["## Goals", "", "Each row contains ratios. Bold ratios exceed the limit.", ""]
        lines += goals(samples, largest)
    if checks:
        lines += ["## check and query", "", CHECKS_NOTE, ""] + check_table(checks)
    note = "Bold numbers are multiples of vanxml's value. Brackets contain the value and the excess."
    for task in tasks:
        lines += [f"## {task.name}", "", task.note, "", note, ""] + table(samples, task)
    if not options.page:
        print("\n".join(lines))
        return
    with open(options.page, "w", encoding="utf-8") as page:
        page.write("\n".join([INTRO] + setting(load, rounds, tasks) + [""] + lines))


if __name__ == "__main__":
    main()
