#!/usr/bin/env python3
"""Writes the manual pages of vanxml: vanxml.1, and one page for each command.

    man-pages.py FOLDER VERSION MANUAL VANXML...
    man-pages.py --compare MANUAL VANXML...

MANUAL is docs/vanxml.md, and VANXML the tool, possibly behind the words of an emulator. The synopses and the texts are
those of the manual, and the options and examples those of `vanxml help`. The date of the pages is the environment
variable SOURCE_DATE_EPOCH, or today. The second form writes nothing. It fails if the manual lacks a command or an
option of the tool, or the tool one of the manual.
"""

import argparse
import datetime
import os
import pathlib
import re
import sys

import toolhelp

FENCE = "```"
MENTIONED_OPTION = re.compile(r"(?<![\w-])--?[a-z][a-z-]*")


def escape(text):
    """Escapes text for roff. A hyphen of the text stays a hyphen."""
    text = text.replace("\\", r"\e")
    return re.sub(r"^([.'])", r"\\&\1", text)


def literal(text):
    """Text to be typed, with the minus sign of ASCII and without line breaks at its hyphens."""
    return text.replace("\\", r"\e").replace("-", r"\-").replace("'", r"\(aq").replace("`", r"\(ga") \
        .replace("^", r"\(ha").replace("~", r"\(ti")


def bold(text):
    return rf"\fB{literal(text)}\fP"


def italic(text):
    return rf"\fI{literal(text)}\fP"


def page_name(words):
    return "-".join(["vanxml", *words])


def reference(words):
    return rf"\fB{literal(page_name(words))}\fP(1)"


class Manual:
    """The sections of docs/vanxml.md."""

    def __init__(self, path):
        text = path.read_text(encoding="utf-8")
        start, *sections = re.split(r"^## ", text, flags=re.MULTILINE)
        self.sections = {}
        for section in sections:
            title, _, body = section.partition("\n")
            self.sections[title.strip()] = body.strip("\n")
        introduction, synopses, behind = start.split(FENCE + "\n", 2)
        self.introduction = introduction.partition("\n")[2].strip("\n")
        self.behind_synopses = behind.strip("\n")
        self.synopses = re.sub(r"\n +", " ", synopses).split("\n")

    def expand(self, text):
        """Replaces names such as FILE OPTIONS by the options that they stand for."""
        for entry in self.synopses:
            if name := re.match(r"([A-Z]+(?: OPTIONS)?):\s+(.*)", entry):
                text = text.replace(f"[{name[1]}]", name[2]).replace(f"{name[1]}…", f"{name[2]} …")
        return text

    def synopses_of(self, word):
        """The synopses of a command."""
        return [self.expand(entry) for entry in self.synopses if re.match(rf"vanxml {word}\b", entry)]


class Page:
    """Converts Markdown to roff."""

    def __init__(self, words, sections):
        self.lines = []
        self.words = words
        self.anchors = {}  # of the manual: the title
        for title in sections:
            anchor = re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-")
            self.anchors[anchor] = title

    def add(self, *lines):
        self.lines.extend(lines)

    def link(self, text, target):
        title = self.anchors.get(target.removeprefix("#"))
        if title is None:
            return self.inline(text)  # another file, or a subsection
        if title.startswith("vanxml "):
            page = reference(title.split()[1:2])
            return page if self.inline(text) == title else f"{self.inline(text)} (see {page})"
        place = rf"see \fI{escape(title)}\fP" + (f" in {reference([])}" if self.words else "")
        return f"{self.inline(text)} ({place})"

    def inline(self, text):
        """Converts code, bold text and links of a paragraph."""
        parts = re.split(r"(`` .*? ``|`[^`]+`|\*\*.+?\*\*|\[[^]]+\]\([^)]+\))", text)
        result = ""
        for i, part in enumerate(parts):
            if i % 2 == 0:
                result += part.replace("\\", r"\e")
            elif part.startswith("`"):
                result += bold(part.strip("`").strip() if part.startswith("``") else part[1:-1])
            elif part.startswith("**"):
                result += rf"\fI{self.inline(part[2:-2])}\fP"
            else:
                label, target = re.fullmatch(r"\[(.+)\]\((.+)\)", part).groups()
                result += self.link(label, target)
        return re.sub(r"^([.'])", r"\\&\1", result)

    def code(self, lines):
        if not self.lines[-1].startswith(".SH"):
            self.add(".PP")
        self.add(".RS 4", ".EX", *[re.sub(r"^([.'])", r"\\&\1", literal(line)) for line in lines], ".EE", ".RE")

    def table(self, lines):
        rows = [[cell.strip().replace(r"\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines]
        header, _, *rows = rows
        self.add(".TP", rf"\fI{self.inline(header[0])}\fP", rf"\fI{self.inline('; '.join(header[1:]))}\fP")
        for first, *others in rows:
            self.add(".TP", self.inline(first), self.inline("; ".join(others)))

    def markdown(self, text):
        lines = text.splitlines()
        depth = 0  # of nested lists
        i = 0
        while i < len(lines):
            line = lines[i]
            item = re.match(r"( *)(-|\d+\.) (.*)", line)
            if item:
                level = 2 if item[1] else 1
                if level > depth and depth > 0:
                    self.add(".RS 4")
                elif level < depth:
                    self.add(".RE")
                depth = level
                mark = r"\(bu 2" if item[2] == "-" else f"{item[2]} 4"
                self.add(f".IP {mark}", self.inline(item[3]))
            elif line.strip():
                if depth == 2:
                    self.add(".RE")
                depth = 0
            if line.startswith(FENCE):
                end = lines.index(FENCE, i + 1)
                self.code(lines[i + 1:end])
                i = end
            elif line.startswith("### "):
                self.add(f".SS {self.inline(line[4:])}")
            elif line.startswith("|"):
                end = next((k for k in range(i, len(lines)) if not lines[k].startswith("|")), len(lines))
                self.table(lines[i:end])
                i = end - 1
            elif line.strip() and not item:
                is_first = self.lines[-1].startswith((".SH", ".SS"))
                self.add(*([] if is_first else [".PP"]), self.inline(line))
            i += 1
        if depth == 2:
            self.add(".RE")

    def options(self, options):
        group = "Options"
        for option in options:
            if option.group not in ("", group):
                group = option.group
                self.add(f".SS {escape(group)}")
            names = ", ".join(bold(name) for name in option.names)
            words, _ = option.alternatives()
            value = "|".join(bold(each) if each in words else italic(each) for each in option.value.split("|"))
            if option.operand and option.operand not in option.value.split("|"):
                value = italic(option.operand)
            label = f"{names} {value}".strip()
            text = escape(option.description)
            if option.excludes:
                text += ". Not together with " + ", ".join(bold(each) for each in option.excludes)
            if option.default and not option.description.endswith("default"):
                text += f". The default is {bold(option.default)}"
            self.add(".TP", label, text + ".")

    def synopsis(self, synopses):
        self.add(".SH SYNOPSIS")
        for i, synopsis in enumerate(synopses):
            text = re.sub(r"[^\s|\[\]….]+", lambda word: self.synopsis_word(word[0]), synopsis)
            self.add(*([".br"] if i else []), text)

    @staticmethod
    def synopsis_word(word):
        return italic(word) if re.search(r"[A-Z]", word) and not word.startswith("-") else bold(word)

    def write(self, folder, version, date):
        name = page_name(self.words)
        start = [rf".\" Written by vanxml/shell/man-pages.py from docs/vanxml.md and vanxml help.",
                 f'.TH {name.upper()} 1 "{date}" "vanxml {version}" "User Commands"', ".nh", ".ad l"]
        (folder / f"{name}.1").write_text("\n".join(start + self.lines) + "\n", encoding="utf-8")


def summary(command):
    """The description of a command for the section NAME."""
    return command.description[:1].lower() + command.description[1:]


def write_examples(page, command):
    if command.examples:
        page.add(".SH EXAMPLES")
        indentation = min(len(line) - len(line.lstrip()) for line in command.examples if line.startswith(" "))
        code = [line[indentation:] for line in command.examples if line.startswith(" ")]
        page.code(code)
        text = [line for line in command.examples if line and not line.startswith(" ")]
        if text:
            page.add(".PP", *[escape(line) for line in text])


def write_tool(tool, manual):
    """The page of the tool: all sections of the manual but those of the commands."""
    page = Page([], manual.sections)
    page.add(".SH NAME", rf"vanxml \- {escape(summary(tool))}")
    page.synopsis([entry for entry in manual.synopses if entry.startswith("vanxml ")])
    for entry in manual.synopses:
        if entry and not entry.startswith("vanxml "):
            name, text = re.split(r":\s+", entry, maxsplit=1)
            page.add(".TP", italic(name), re.sub(r"[^\s|\[\]….]+", lambda word: page.synopsis_word(word[0]), text))
    page.add(".SH DESCRIPTION")
    page.markdown(manual.introduction)
    page.markdown(manual.behind_synopses)
    page.add(".SH COMMANDS")
    for command in tool.commands:
        page.add(".TP", reference(command.words), escape(command.description) + ".")
    page.add(".SH OPTIONS")
    page.options(tool.options)
    for title, body in manual.sections.items():
        if not title.startswith("vanxml ") and title != "On Windows":
            page.add(f".SH {title.upper()}")
            page.markdown(body)
    write_examples(page, tool)
    page.add(".SH SEE ALSO", ", ".join(reference(command.words) for command in tool.commands))
    return page


def write_command(command, tool, manual):
    word = command.words[0]
    page = Page(command.words, manual.sections)
    page.add(".SH NAME", rf"{literal(page_name(command.words))} \- {escape(summary(command))}")
    page.synopsis(manual.synopses_of(word))
    first, _, rest = manual.sections.get(f"vanxml {word}", command.description + ".").partition("\n\n")
    if first.endswith(":"):  # an example belongs to the first paragraph
        example, _, rest = rest.partition("\n\n")
        first += "\n\n" + example
    page.add(".SH DESCRIPTION")
    page.markdown(first)
    page.add(".SH OPTIONS")
    for each in command.all_commands():
        if each is not command:
            page.add(f".SS {escape('vanxml ' + ' '.join(each.words))}", escape(each.description) + ".")
        operands = [operand for operand in each.operands if operand.description]
        page.options(operands + each.options)
    if shared := shared_options(tool):
        page.add(".SS Options of all commands")
        page.options(shared)
    if rest:
        page.add(".SH DETAILS")
        page.markdown(rest)
    write_examples(page, command)
    page.add(".SH EXIT STATUS")
    page.markdown(manual.sections["Exit status"].split("\n\n")[0])
    others = [each for each in tool.commands if each is not command]
    page.add(".SH SEE ALSO", ", ".join(reference(words) for words in [[], *(each.words for each in others)]))
    return page


def shared_options(tool):
    """The options of the tool that every command has too."""
    return [option for option in tool.options if not {"--help", "--version"} & set(option.names)]


def find_differences(tool, manual):
    """Returns a line for each command and option that only the manual or only the tool has."""
    found = []
    words = [command.words[0] for command in tool.commands]
    titles = [title.removeprefix("vanxml ") for title in manual.sections if title.startswith("vanxml ")]
    found += [f"docs/vanxml.md has no section for the command '{word}'" for word in words if word not in titles]
    found += [f"there is no command '{word}', which docs/vanxml.md describes" for word in titles if word not in words]
    text = "\n".join([manual.behind_synopses, *manual.sections.values()])
    text = re.sub(r"^```.*?^```", "", text, flags=re.DOTALL | re.MULTILINE)
    mentioned = set(MENTIONED_OPTION.findall(" ".join(re.findall(r"`[^`\n]+`", text))))
    # The synopses need not list the options that the tool or every command has.
    commands = [each for each in tool.all_commands() if not each.commands]
    shared = set.intersection(*({name for option in each.options for name in option.names} for each in commands))
    shared |= {name for option in tool.options for name in option.names}
    found += [f"docs/vanxml.md does not mention the option {name}" for name in sorted(shared - mentioned)
              if name not in ("-h", "--help", "--version")]
    for command in tool.commands:
        word = command.words[0]
        options = [option for each in command.all_commands() for option in each.options]
        known = shared | {name for option in options for name in option.names}
        synopses = " ".join(manual.synopses_of(word))
        listed = set(MENTIONED_OPTION.findall(synopses))
        if not synopses:
            found.append(f"docs/vanxml.md has no synopsis of '{word}'")
        found += [f"'{word}' has no option {name}, which the synopsis in docs/vanxml.md has"
                  for name in sorted(listed - known)]
        for option in options:
            is_listed = listed & set(option.names) or shared & set(option.names)
            if not is_listed:
                found.append(f"the synopsis of '{word}' in docs/vanxml.md lacks {option.names[-1]}")
            elif not (mentioned | {"--help"}) & set(option.names):
                found.append(f"docs/vanxml.md does not describe {option.names[-1]} of '{word}'")
    return found


def main():
    parser = argparse.ArgumentParser(description="Writes the manual pages of vanxml.")
    if "--compare" in sys.argv:
        parser.add_argument("--compare", action="store_true", required=True)
    else:
        parser.add_argument("folder", type=pathlib.Path)
        parser.add_argument("version")
    parser.add_argument("manual", type=pathlib.Path)
    parser.add_argument("vanxml", nargs="+")
    arguments = parser.parse_args()
    manual = Manual(arguments.manual)
    tool = toolhelp.read_command(arguments.vanxml)
    if "compare" in arguments:
        sys.exit("\n".join(find_differences(tool, manual)) or None)
    seconds = os.environ.get("SOURCE_DATE_EPOCH")
    time = datetime.datetime.fromtimestamp(int(seconds), datetime.timezone.utc) if seconds else datetime.datetime.now()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for page in [write_tool(tool, manual), *(write_command(each, tool, manual) for each in tool.commands)]:
        page.write(arguments.folder, arguments.version, f"{time:%Y-%m-%d}")


if __name__ == "__main__":
    main()
