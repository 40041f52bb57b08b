"""Reads the help texts of vanxml as data, so that the manual pages and the completions know what the tool knows."""

import dataclasses
import re
import subprocess

TIMEOUT = 60  # seconds for one run of the tool


@dataclasses.dataclass
class Option:
    """An option, or an operand if it has no names."""
    operand: str  # the name of an operand, such as "FILE"
    names: list  # of an option, such as ["-o", "--output"]
    value: str  # the placeholder, such as "OUT" or "auto|NAME"; empty for a flag
    default: str
    description: str
    group: str  # the title above the option
    is_repeatable: bool = False
    is_required: bool = False
    excludes: list = dataclasses.field(default_factory=list)

    def alternatives(self):
        """The parts of the placeholder: words to write as they are, and kinds of values in capital letters."""
        parts = self.value.split("|") if self.value else []
        return [part for part in parts if is_word(part)], [part for part in parts if not is_word(part)]


@dataclasses.dataclass
class Command:
    words: list  # such as ["schema", "show"]; empty for the tool
    description: str
    operands: list
    options: list
    commands: list
    examples: list  # lines

    def all_commands(self):
        """This command and all below it."""
        yield self
        for each in self.commands:
            yield from each.all_commands()


def is_word(alternative):
    return re.fullmatch(r"[a-z0-9.-]+", alternative) is not None


def parse_label(label, description, group, is_operand):
    """Parses a label such as "-o,--output OUT Excludes: --check"."""
    label, *excludes = re.split(r" Excludes: ", label)
    words = label.split()
    names = words.pop(0)
    option = Option(names if is_operand else "", [] if is_operand else names.split(","), "", "", description, group)
    if is_operand and (not words or words[0] in ("TEXT", "...", "REQUIRED")):
        words[:1] = [names] + [word for word in words[:1] if word != "TEXT"]
    option.is_required = "REQUIRED" in words
    option.is_repeatable = "..." in words
    words = [word for word in words if word not in ("REQUIRED", "...")]
    if len(words) == 2 and (default := re.fullmatch(r"\[(.+)\]", words[1])):  # newer versions of CLI11
        option.default = default[1]
        words.pop()
    if len(words) > 1:
        raise ValueError(f"cannot read the label '{label}'")
    if words:
        option.value = words[0]
        if default := re.fullmatch(r"(.+)=([a-z0-9.-]+)", option.value):
            option.value, option.default = default.groups()
    option.excludes = excludes[0].split() if excludes else []
    return option


def parse_entries(lines):
    """Returns the label and the description of each entry of a list. Newer versions of CLI11 wrap descriptions."""
    entries = []
    for line in lines:
        if line.startswith(" " * 20):
            entries[-1][1].append(line.strip())
        else:
            label, *description = re.split(r"  +", line.strip(), maxsplit=1)
            entries.append((label, description))
    return [(label, " ".join(description)) for label, description in entries]


def parse_help(words, text):
    """Returns the command of a help text, and the names of the commands below it."""
    lines = text.splitlines()
    description = " ".join(lines[:next(i for i, line in enumerate(lines) if line.startswith("Usage: "))])
    command = Command(words, description, [], [], [], [])
    names = []
    blocks = re.split(r"\n{2,}", "\n".join(lines[len(description.splitlines()) + 1:]).strip("\n"))
    for i, block in enumerate(blocks):
        title, *rest = block.splitlines()
        if title in ("Example:", "Examples:"):
            command.examples = "\n\n".join(["\n".join(rest), *blocks[i + 1:]]).splitlines()
            break
        if not title.endswith(":"):
            raise ValueError(f"cannot read the help of {words}: '{title}'")
        for label, text_of_entry in parse_entries(rest):
            if title.lower() == "subcommands:":
                names.append(label)
            elif title.lower() == "positionals:":
                command.operands.append(parse_label(label, text_of_entry, "", True))
            else:
                command.options.append(parse_label(label, text_of_entry, title[:-1].capitalize(), False))
    return command, names


def read_command(program, words=()):
    """Returns a command with all commands below it. `program` is the tool, with the words in front of it."""
    result = subprocess.run([*program, "help", *words], capture_output=True, timeout=TIMEOUT, check=True)
    command, names = parse_help(list(words), result.stdout.decode().replace("\r\n", "\n"))
    command.commands = [read_command(program, [*words, name]) for name in names]
    return command


def document_patterns(command):
    """The patterns of the documents that the tool selects in folders."""
    for each in command.all_commands():
        for option in each.options:
            if "--include" in option.names:
                return re.findall(r"\*\.\w+", option.description)
    raise ValueError("no command has the option --include")
