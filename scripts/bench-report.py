#!/usr/bin/env python3
"""Writes tables of ratios from the results of the benchmarks.

bench-report.py FOLDER [PAGE.md CHART.svg]

Without PAGE.md, prints the tables. A time is the fastest of the samples: other work on the machine only makes a sample
slower, for seconds at a time. The excess is the share by which the median of the samples is slower.
"""
import collections
import json
import pathlib
import platform
import statistics
import subprocess
import sys
import tempfile

OURS = "vancorexml"
FLOOR = "xerces-sax"
SMALL = "1000-small.kxa"  # the document of "validate" that is parsed a thousand times

GOALS_NOTE = (
    "Each row is a ratio. The limit is the largest value that the project accepts; "
    "the goal is the value that it aims at.")

# Each section: the task, the heading, and the library that the others are compared with.
SECTIONS = [
    ("parse", "Bytes to tree", FLOOR),
    ("parse-destroy", "Bytes to tree and its destruction", FLOOR),
    ("parse-file", "File to tree", FLOOR),
    ("small-documents", "2,000 small documents with one parser", FLOOR),
    ("write", "Tree to UTF-8", "pugixml"),
    ("write-cold", "Tree to UTF-8 in a cold heap", "pugixml"),
    ("save", "Tree to a file", "pugixml"),
    ("path-any", "`//name`", "pugixml"),
    ("path-named", "`/a/b/c`", "pugixml"),
    ("path-star", "`/a/*/c`", "pugixml"),
    ("copy", "Deep copy (and its destruction)", "libxml2"),
    ("compare", "Comparison of equal trees", "xerces-dom"),
    ("children", "100,000 insertions and removals among 10,000 children", "std-vector"),
    ("lightweight", "Bytes to lightweight tree and its destruction", "document-tree"),
    ("validate", "Validation against a schema", FLOOR),
    ("sanitize", "Colon sanitizer", "memcpy"),
]

# Notes below the headings of sections.
NOTES = {
    "sanitize": "The suffix of a name describes the document. `+few`: every hundredth start tag has an attribute "
                "`:mark`. `+many`: every start tag has an attribute `:mark`. `+colons`: every start tag has an "
                "attribute whose value contains colons. The sanitizer does not change such values.",
    "write-cold": "Before each write, the heap gives all free memory back to the system (`malloc_trim`), as if the "
                  "process had just begun.",
    "save": "The file is in `/dev/shm`, which is memory. On a disk, vancorexml also waits until the file is written, "
            "and only then replaces the old one.",
    "children": "Each round inserts a new element and removes it again: in front of all children, behind them, or in "
                "front of a child in the middle. A `std::vector` owns the same elements and knows the position.",
    "lightweight": "The column vancorexml is a parse into `StandaloneDOMElement`s, the column document-tree a parse "
                   "into a `DOM`.",
    "diagnostics": "`has-errors-everywhere` calls `HasErrors()` on each element. `record-and-ask` clears all errors, "
                   "records them again and then calls `HasErrors()` on each element. `collect` gets the texts of all "
                   "errors.",
    "validate": "`vancorexml` keeps a driver with its schema, `dom-parser` keeps a `DOMParser`, and `new-dom-parser` "
                "makes a `DOMParser` for each document.",
    "renames": "`one-thread` looks up a million fields among 1,050 renames. In `eight-threads`, each of eight "
               "threads does the same at the same time, on one core; the time is the total time divided by eight.",
}

# The tasks that no other library performs, and their headings.
TIMED_SECTIONS = [
    ("diagnostics", "Diagnostics: 101,000 elements, 100,000 errors"),
    ("renames", "Renames: a million fields"),
]


def read(path):
    """Reads all results in a folder.

    Returns the samples by (task, document, peer), the heap by (document, peer), and the counters by document. The
    samples of tasks with threads are bytes per second by (task, document, "threads:NUMBER").
    """
    samples = collections.defaultdict(list)
    heap = {}
    counters = collections.defaultdict(list)
    files = sorted(pathlib.Path(path).glob("*.json"))
    rows = [row for file in files for row in json.loads(file.read_text(encoding="utf-8"))["benchmarks"]]
    for row in rows:
        if row.get("run_type") != "iteration":
            continue
        parts = row["run_name"].split("/")
        task, document, peer = parts[0], parts[1], parts[2]
        if task.startswith("threads-"):
            samples[task, document, parts[-1]].append(row["bytes_per_second"])
            continue
        if task == "heap":
            heap[document, peer] = row["per_file_byte"]
            continue
        scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[row["time_unit"]]
        samples[task, document, peer].append(row["real_time"] * scale)
        if "per_element" in row:
            counters[document].append(row["per_element"])
    return samples, heap, counters


def excess(times):
    """Returns how much slower the median is than the fastest time, as a share of that."""
    return statistics.median(times) / min(times) - 1


def show(seconds):
    """Returns a time with its unit, such as "46.9 ms"."""
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= scale:
            return f"{seconds / scale:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def table(lines, samples, task, reference):
    """Appends the table of a task: a row for each document, a column for each library."""
    documents = list(dict.fromkeys(d for t, d, _ in samples if t == task))
    peers = list(dict.fromkeys(p for t, _, p in samples if t == task))
    if not documents:
        return
    lines.append("| document | " + " | ".join(peers) + " |")
    lines.append("|---|" + "---|" * len(peers))
    for document in documents:
        base = samples.get((task, document, reference))
        cells = []
        for peer in peers:
            values = samples.get((task, document, peer))
            if not values:
                cells.append("")
                continue
            text = f"{show(min(values))} +{excess(values) * 100:.0f} %"
            if base:
                text = f"**{min(values) / min(base):.2f}** ({text})"
            cells.append(text)
        lines.append(f"| {document} | " + " | ".join(cells) + " |")
    lines.append("")


def goals(samples, heap, counters):
    """Returns the lines of the table of goals: a row for each measure, a column for each document."""
    documents = list(dict.fromkeys(d for t, d, _ in samples if t in ("parse", "write")))

    def fastest(task, document, peer):
        return min(samples.get((task, document, peer)) or [0])

    def highest_rate(task, document, threads):
        return max(samples.get((task, document, threads)) or [0])

    def shown(above, below, digits):
        return f"{above / below:.{digits}f}" if above and below else ""

    def ratio(task, peer, other_task, other):
        row = []
        for document in documents:
            above, below = fastest(task, document, peer), fastest(other_task, document, other)
            row.append(shown(above, below, 2))
        return row

    heap_ratios = [shown(heap.get((d, OURS)), heap.get((d, "libxml2")), 2) for d in documents]
    sanitizer_ratios = [shown(fastest("sanitize", d, OURS), fastest("parse", d, OURS), 3) for d in documents]
    rows = [
        ("parse from memory ÷ bare Xerces-C pass", "1.40", "1.25", ratio("parse", OURS, "parse", FLOOR)),
        ("parse and destroy ÷ bare pass", "1.30", "1.20", ratio("parse-destroy", OURS, "parse-destroy", FLOOR)),
        ("parse from a file ÷ parse from memory", "1.10", "1.05", ratio("parse-file", OURS, "parse", OURS)),
        ("heap ÷ libxml2's heap", "1.00", "0.50", heap_ratios),
        ("write UTF-8 ÷ libxml2's write", "1.00", "", ratio("write", OURS, "write", "libxml2")),
        ("write UTF-8 ÷ pugixml's write", "2.00", "1.00", ratio("write", OURS, "write", "pugixml")),
        ("write UTF-8 in a cold heap ÷ pugixml's", "2.00", "1.00", ratio("write-cold", OURS, "write-cold", "pugixml")),
        ("write UTF-16 ÷ pugixml's write of UTF-8", "2.00", "1.00", ratio("write-utf16", OURS, "write", "pugixml")),
        ("write UTF-16 in a cold heap ÷ pugixml's write of UTF-8", "2.00", "1.00",
            ratio("write-utf16-cold", OURS, "write-cold", "pugixml")),
        ("save to a file ÷ pugixml's `save_file`", "2.00", "1.20", ratio("save", OURS, "save", "pugixml")),
        ("`//name` ÷ pugixml's", "1.00", "0.70", ratio("path-any", OURS, "path-any", "pugixml")),
        ("lightweight tree ÷ document tree, parse and destroy", "0.90", "0.70",
         ratio("lightweight", OURS, "lightweight", "document-tree")),
        ("sanitize a document that needs no change ÷ parse it from memory", "0.05", "0.02", sanitizer_ratios),
    ]
    lines = ["| measure | limit | goal | " + " | ".join(documents) + " |", "|---|---|---|" + "---|" * len(documents)]
    lines += [f"| {name} | {must} | {aim} | " + " | ".join(values) + " |" for name, must, aim, values in rows]
    lines.append("")
    validation = {
        d: shown(fastest("validate", d, OURS), fastest("validate", d, FLOOR), 2) for d in ("large.kxa", SMALL)}
    if any(validation.values()):
        ratios = ", ".join(f"{d} **{v}**" for d, v in validation.items() if v)
        lines.append(f"Validation ÷ bare Xerces-C validation: {ratios} (limit 1.05, goal 1.02).")
    children = list(dict.fromkeys(d for t, d, _ in samples if t == "children"))
    if children:
        ratios = ", ".join(
            f"{d} **{shown(fastest('children', d, OURS), fastest('children', d, 'std-vector'), 2)}**" for d in children)
        lines.append(f"Insertions and removals of children ÷ `std::vector`: {ratios} (limit 3.00, goal 1.50).")
    for task, name in (("threads-parse", "parse"), ("threads-copy", "deep copy")):
        read_by = list(dict.fromkeys(d for t, d, _ in samples if t == task))
        if read_by:
            ratios = ", ".join(
                f"{d} **{shown(highest_rate(task, d, 'threads:2'), highest_rate(task, d, 'threads:1'), 2)}**"
                for d in read_by)
            lines.append(f"Throughput of two threads ÷ one, {name}: {ratios} (at least 1.90, goal 1.95).")
    for peer, name in (("dom-parser", "one `DOMParser`"), ("new-dom-parser", "a new `DOMParser` for each document")):
        ratio_to_driver = shown(fastest("validate", SMALL, peer), fastest("validate", SMALL, OURS), 2)
        if ratio_to_driver:
            lines.append(f"{SMALL} validated by {name} ÷ by a driver that keeps its schema: **{ratio_to_driver}** "
                         "(limit 1.30, goal 1.05).")
    if counters:
        each = {d: min(v) for d, v in counters.items()}
        low, high = min(each.values()), max(each.values())
        costs = ", ".join(f"{d} {v * 1e9:.0f} ns" for d, v in each.items())
        ratio_of_costs = f"longest time ÷ shortest time **{high / low:.2f}** (limit 1.25, goal 1.10)"
        lines.append(f"Time per element to parse and destroy a document, by its size: {costs}; {ratio_of_costs}.")
    lines.append("")
    return lines


def command(*words):
    """Returns the output of a command, or "unknown" if it fails."""
    try:
        return subprocess.run(words, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return "unknown"


def package_versions(*packages):
    return command("dpkg-query", "-W", "-f", "${Package} ${Version}, ", *packages).rstrip(", ")


def setting(fewest, most):
    """Returns lines that describe the run. A task has at least `fewest` and at most `most` samples."""
    with open("/proc/cpuinfo", encoding="utf-8") as processors:
        models = [line.split(":", 1)[1].strip() for line in processors if line.startswith("model name")]
    cpu = models[0] if models else "unknown"
    versions = package_versions(
        "libxerces-c-dev", "qtbase5-dev", "libxml2-dev", "libtinyxml2-dev", "libpugixml-dev", "libbenchmark-dev")
    corpora = package_versions("ssg-debian", "shared-mime-info", "libvulkan-dev", "unicode-cldr-core")
    compiler = command("c++", "--version").splitlines()[0]
    return [
        f"- date: {command('date', '+%Y-%m-%d')}; revision {command('git', 'rev-parse', '--short', 'HEAD')}",
        f"- machine: {cpu}, one core of it, {platform.system()} {platform.machine()}",
        f"- compiler: {compiler}; flags: -O3 -DNDEBUG (CMake's Release) and the project's own",
        f"- peers: {versions}",
        f"- documents: {corpora}",
        f"- command: `scripts/bench`; {fewest} samples of each task; {most} samples of each task "
        "that needs precise times (the pattern `is_close` in `scripts/bench` selects these tasks)",
    ]


def chart(samples, path):
    """Draws bars: the time from bytes to tree as a multiple of the bare pass, in one group for each document."""
    documents = list(dict.fromkeys(d for t, d, _ in samples if t == "parse"))
    peers = list(dict.fromkeys(p for t, _, p in samples if t == "parse"))
    with tempfile.NamedTemporaryFile("w", suffix=".dat", encoding="utf-8") as data:
        data.write("document " + " ".join(peers) + "\n")
        for document in documents:
            base = min(samples["parse", document, FLOOR])
            ratios = (min(samples["parse", document, peer]) / base for peer in peers)
            data.write(document + " " + " ".join(f"{ratio:.3f}" for ratio in ratios) + "\n")
        data.flush()
        script = f"""
set terminal svg size 900,420 font "sans,12" background "white"
set output "{path}"
set title "Bytes to tree, as a multiple of a bare Xerces-C pass (lower is better)"
set style data histogram
set style histogram cluster gap 1
set style fill solid 0.85 border -1
set boxwidth 0.9
set grid ytics
set yrange [0:*]
set key outside right
plot for [i=2:{len(peers) + 1}] "{data.name}" using i:xtic(1) title columnheader(i)
"""
        subprocess.run(["gnuplot"], input=script, text=True, check=True)


def main():
    samples, heap, counters = read(sys.argv[1])
    lines = ["## Goals", "", GOALS_NOTE, ""] + goals(samples, heap, counters)
    for task, heading, reference in SECTIONS:
        body = []
        table(body, samples, task, reference)
        if body:
            note = f"Bold numbers are multiples of the time of {reference}. Brackets contain the time and the excess."
            lines += [f"## {heading}", "", note, ""]
            if task in NOTES:
                lines += [NOTES[task], ""]
            lines += body
    if heap:
        peers = list(dict.fromkeys(p for _, p in heap))
        lines += ["## Heap", "", "Heap bytes of the parsed document for each byte of the file.", ""]
        lines += ["| document | " + " | ".join(peers) + " |", "|---|" + "---|" * len(peers)]
        for document in dict.fromkeys(d for d, _ in heap):
            cells = [f"{heap[document, p]:.2f}" if (document, p) in heap else "" for p in peers]
            lines.append(f"| {document} | " + " | ".join(cells) + " |")
        lines.append("")
    for task, heading in TIMED_SECTIONS:
        rows = [(d, v) for (t, d, _), v in samples.items() if t == task]
        if rows:
            lines += [f"## {heading}", "", NOTES[task], "", "| task | time |", "|---|---|"]
            lines += [f"| {d} | {show(min(v))} +{excess(v) * 100:.0f} % |" for d, v in rows]
            lines.append("")
    if len(sys.argv) < 4:
        print("\n".join(lines))
        return
    chart(samples, sys.argv[3])
    intro = [
        "# Performance",
        "",
        "This page compares vancorexml with other XML libraries. `scripts/bench` writes this page from one run.",
        "",
        "vancorexml builds its tree from the events of Xerces-C. So the lower bound of its time is the time",
        "of a bare Xerces-C pass (`xerces-sax`): a parse of the same bytes with the same features and an empty",
        "handler.",
        "",
        "Before any timing, `scripts/bench` checks that all libraries give the same answers. Each library runs in",
        "separate processes, and the libraries take turns. Times are those of the fastest sample, because other work",
        "on the machine only makes samples slower. The excess after + tells how much slower the median sample is.",
        "",
    ]
    counts = [len(times) for (task, _, _), times in samples.items() if not task.startswith("threads-")]
    intro += setting(min(counts), max(counts)) + ["", "![Bytes to tree](performance.svg)", ""]
    with open(sys.argv[2], "w", encoding="utf-8") as page:
        page.write("\n".join(intro + lines))


if __name__ == "__main__":
    main()
