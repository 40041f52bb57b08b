#!/usr/bin/env python3
"""Writes the completions of vanxml for bash, zsh and fish.

    completions.py FOLDER VANXML...

Writes FOLDER/vanxml.bash, FOLDER/_vanxml and FOLDER/vanxml.fish. VANXML is the tool, possibly behind the words of an
emulator. The commands, options, choices and patterns of documents are those of `vanxml help`. The names of schemas are
not written: the completions call `vanxml schema list`.
"""

import argparse
import pathlib

import toolhelp

# Kinds of values, by the placeholder of an option or operand. Placeholders that are missing here have no completion.
DOCUMENTS = "documents"
FILES = "files"
SCHEMAS = "schemas"
COMMANDS = "commands"
KINDS = {"OUT": FILES, "LIST": FILES, "FILE.xsd": "*.xsd", "TABLE.csv": "*.csv"}


def shared_options(tool):
    """The options of the tool that every command has too."""
    return [option for option in tool.options if not {"--help", "--version"} & set(option.names)]


def options_of(command, tool):
    return command.options + (shared_options(tool) if command.words else [])


def kinds_of(command, option):
    """Returns the words and the kinds of values that an option or operand takes."""
    words, others = option.alternatives()
    kinds = []
    for each in others:
        if each == "NAME" and ("--schema" in option.names or command.words == ["schema", "show"]):
            kinds.append(SCHEMAS)
        elif each in ("FILE", "FOLDER"):
            # An operand is a document. An option names any other file.
            kinds.append(FILES if option.names else DOCUMENTS)
        elif each == "COMMAND":
            kinds.append(COMMANDS)
        elif each in KINDS:
            kinds.append(KINDS[each])
    return words, list(dict.fromkeys(kinds))


def operand_kinds(command):
    return list(dict.fromkeys(kind for operand in command.operands for kind in kinds_of(command, operand)[1]))


def quote(text):
    """Quotes a word for bash and zsh."""
    return "'" + text.replace("'", "'\\''") + "'"


def fish_quote(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


BASH = r"""# Completions of vanxml for bash, written by vanxml/shell/completions.py.

# Completes the names of files that match one of the patterns, and folders. If there are none, completes all files.
_vanxml_files()
{
    local pattern files=()
    compopt -o filenames 2>/dev/null
    for pattern in "$@"; do
        mapfile -t -O ${#files[@]} files < <(compgen -f -X "!$pattern" -- "$word")
    done
    mapfile -t -O ${#files[@]} files < <(compgen -d -- "$word")
    [ ${#files[@]} -gt 0 ] || mapfile -t files < <(compgen -f -- "$word")
    COMPREPLY+=("${files[@]}")
}

_vanxml_words()
{
    local found
    mapfile -t found < <(compgen -W "$*" -- "$word")
    COMPREPLY+=("${found[@]}")
}

# Completes values of these kinds: kinds of names, patterns of files, and words.
_vanxml_values()
{
    local kind name patterns=() words=()
    for kind in "$@"; do
        case $kind in
            documents) patterns+=(@DOCUMENTS@) ;;
            files) patterns+=('*') ;;
            schemas)
                while read -r name _; do
                    words+=("$name")
                done < <("${COMP_WORDS[0]/#"~/"/$HOME/}" schema list 2>/dev/null)
                ;;
            commands) words+=($(_vanxml_data "$named commands")) ;;
            '*'*) patterns+=("$kind") ;;
            word:*) words+=("${kind#word:}") ;;
        esac
    done
    [ ${#words[@]} -eq 0 ] || _vanxml_words "${words[@]}"
    [ ${#patterns[@]} -eq 0 ] || _vanxml_files "${patterns[@]}"
}

_vanxml_data()
{
    case $1 in
@DATA@
    esac
}

_vanxml()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous= command= named= only_operands= option kinds data= i
    COMPREPLY=()
    # bash splits "--option=value" into three words.
    if [ "$word" = = ]; then
        word=
        previous=${COMP_WORDS[COMP_CWORD-1]}
    elif [ "$COMP_CWORD" -gt 1 ] && [ "${COMP_WORDS[COMP_CWORD-1]}" = = ]; then
        previous=${COMP_WORDS[COMP_CWORD-2]}
    elif [ "$COMP_CWORD" -gt 0 ]; then
        previous=${COMP_WORDS[COMP_CWORD-1]}
    fi
    # The commands before this word. "help" names further commands.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        [ "${COMP_WORDS[i]}" = -- ] && only_operands=1 && break
        for option in $(_vanxml_data "$command commands"); do
            [ "${COMP_WORDS[i]}" = "$option" ] && command+=${command:+ }$option
        done
        [ "$command" = help ] && for option in $(_vanxml_data "$named commands"); do
            [ "${COMP_WORDS[i]}" = "$option" ] && [ "$option" != help ] && named+=${named:+ }$option
        done
    done
    [[ -z $only_operands && $previous == -* ]] && data=$(_vanxml_data "$command $previous")
    if [ -n "$data" ]; then
        set -f
        kinds=($data)
        set +f
        [ "${kinds[0]}" = value ] && _vanxml_values "${kinds[@]:1}"
    elif [[ -z $only_operands && $word == -* ]]; then
        _vanxml_words $(_vanxml_data "$command options")
    else
        _vanxml_words $(_vanxml_data "$command commands")
        set -f
        kinds=($(_vanxml_data "$command operands"))
        set +f
        _vanxml_values "${kinds[@]}"
    fi
}

complete -F _vanxml vanxml
"""


def bash_script(tool):
    data = []

    def add(key, words):
        if words:
            data.append(f"        {quote(key)}) echo {quote(' '.join(words))} ;;")

    for command in tool.all_commands():
        name = " ".join(command.words)
        add(f"{name} commands", [each.words[-1] for each in command.commands])
        add(f"{name} operands", operand_kinds(command))
        options = options_of(command, tool)
        add(f"{name} options", [each for option in options for each in option.names])
        for option in options:
            if option.value:
                words, kinds = kinds_of(command, option)
                for each in option.names:
                    add(f"{name} {each}", ["value", *(f"word:{word}" for word in words), *kinds])
    documents = " ".join(quote(pattern) for pattern in document_patterns(tool))
    return BASH.replace("@DATA@", "\n".join(data)).replace("@DOCUMENTS@", documents)


def document_patterns(tool):
    """The patterns that the tool selects in folders, and those of other XML documents."""
    return [*toolhelp.document_patterns(tool), "*.xml"]


ZSH = r"""#compdef vanxml
# Completions of vanxml for zsh, written by vanxml/shell/completions.py.

_vanxml_documents() { _files -g '(@DOCUMENTS@)(-.)' }

_vanxml_schemas() {
    local -a names
    names=(${${(f)"$(_call_program schemas vanxml schema list 2>/dev/null)"}%% *})
    _describe -t schemas schema names
}

@FUNCTIONS@
_vanxml "$@"
"""


ZSH_ACTIONS = {DOCUMENTS: "_vanxml_documents", FILES: "_files", SCHEMAS: "_vanxml_schemas", COMMANDS: "_vanxml_names"}


def zsh_action(command, option, functions):
    """The message and the action of a value, as _arguments reads them. Adds a function if the value has more kinds."""
    words, kinds = kinds_of(command, option)
    actions = [f"({' '.join(words)})"] if words else []
    actions += [ZSH_ACTIONS.get(kind, f'_files -g "{kind}(-.)"') for kind in kinds]
    message = option.value.replace("\\", "\\\\").replace(":", "\\:")
    if not actions:
        return f"{message}: "
    if len(actions) == 1:
        return f"{message}:{actions[0]}"
    name = "_".join(["_vanxml", *command.words, *option.names[-1:]])
    alternatives = " ".join(quote(f"values-{i}:value:{action}") for i, action in enumerate(actions))
    functions.append(f"{name}() {{ _alternative {alternatives} }}\n")
    return f"{message}:{name}"


def zsh_functions(command, tool):
    name = "_".join(["_vanxml", *command.words])
    specs = []
    functions = []
    for option in options_of(command, tool):
        text = option.description.replace("\\", "\\\\").replace("[", "\\[").replace("]", "\\]")
        names = sorted(option.names, key=len)
        others = " ".join([*names, *option.excludes])
        action = f":{zsh_action(command, option, functions)}" if option.value else ""
        for each in names:
            start = "*" if option.is_repeatable else f"({others})"
            value = "=" if option.value and each.startswith("--") else ""
            specs.append(quote(f"{start}{each}{value}[{text}]{action}"))
    if command.commands:
        specs += [quote(f"1:command:{name}_names"), quote("*::argument:->arguments")]
    else:
        for operand in command.operands:
            if operand.is_repeatable:
                specs.append(quote(f"*:{zsh_action(command, operand, functions)}"))
                break
            specs.append(quote(f":{zsh_action(command, operand, functions)}"))
    lines = [f"{name}() {{", "    local curcontext=$curcontext state line", "    typeset -A opt_args"]
    lines.append("    _arguments -S -C \\\n        " + " \\\n        ".join(specs))
    if command.commands:
        lines += ["    [[ $state == arguments ]] || return", "    case $words[1] in"]
        lines += [f"        {each.words[-1]}) {'_'.join(['_vanxml', *each.words])} ;;" for each in command.commands]
        lines.append("    esac")
    lines.append("}\n")
    if command.commands:
        names = [quote(f"{each.words[-1]}:{each.description}") for each in command.commands]
        lines += [f"{name}_names() {{", "    local -a names=(", *[f"        {each}" for each in names], "    )",
                  "    _describe -t commands command names", "}\n"]
    return "\n".join([*functions, *lines])


def zsh_script(tool):
    functions = "\n".join(zsh_functions(command, tool) for command in tool.all_commands())
    patterns = "|".join(document_patterns(tool))
    return ZSH.replace("@FUNCTIONS@", functions).replace("@DOCUMENTS@", patterns)


FISH = r"""# Completions of vanxml for fish, written by vanxml/shell/completions.py.

# True if the words of the command line that are no options begin with these commands. Without a command, true if there
# are no such words.
function __vanxml_is
    set -l words (commandline -opc)
    set -e words[1]
    set -l names
    for word in $words
        string match -q -- '-*' $word; or set -a names $word
    end
    if test (count $argv) -eq 0
        test (count $names) -eq 0
        return
    end
    test (count $names) -ge (count $argv); and test "$names[1..$(count $argv)]" = "$argv"
end

# True if the command needs a further command.
function __vanxml_needs_command
    __vanxml_is $argv; or return
    set -l words (commandline -opc)
    test (count (string match -v -- '-*' $words)) -eq (math 1 + (count $argv))
end

# Prints the files with one of these endings, and folders. If there are none, prints all files.
function __vanxml_files
    set -l files (complete -C "'' "(commandline -ct | string replace -r '^--[a-z-]+=' ''))
    set -l found (string match -r -- '.*(?:/|\.(?:'(string join '|' $argv)'))$' $files)
    test (count $found) -gt 0; and printf '%s\n' $found; or printf '%s\n' $files
end

function __vanxml_schemas
    vanxml schema list 2>/dev/null | string replace -r ' .*' ''
end

complete -c vanxml -f
"""


def fish_values(command, option, tool):
    """The values of an option or operand for -a."""
    words, kinds = kinds_of(command, option)
    values = list(words)
    for kind in kinds:
        if kind == DOCUMENTS:
            values.append("(__vanxml_files " + " ".join(each[2:] for each in document_patterns(tool)) + ")")
        elif kind == FILES:
            values.append("(__fish_complete_path (commandline -ct | string replace -r '^--[a-z-]+=' ''))")
        elif kind == SCHEMAS:
            values.append("(__vanxml_schemas)")
        elif kind == COMMANDS:
            values += [each.words[-1] for each in tool.commands]
        else:
            values.append(f"(__vanxml_files {kind[2:]})")
    return " ".join(values)


def fish_script(tool):
    lines = []
    for command in tool.all_commands():
        start = "complete -c vanxml -n " + fish_quote(" ".join(["__vanxml_is", *command.words]))
        if command.commands:
            need = fish_quote(" ".join(["__vanxml_needs_command", *command.words]))
            lines += [f"complete -c vanxml -n {need} -a {each.words[-1]} -d {fish_quote(each.description)}"
                      for each in command.commands]
        for option in options_of(command, tool):
            names = " ".join(f"-l {name[2:]}" if name.startswith("--") else f"-s {name[1:]}" for name in option.names)
            values = fish_values(command, option, tool)
            value = (" -x" + (f" -a {fish_quote(values)}" if values else "")) if option.value else ""
            lines.append(f"{start} {names}{value} -d {fish_quote(option.description)}")
        for operand in command.operands:
            if values := fish_values(command, operand, tool):
                lines.append(f"{start} -a {fish_quote(values)}")
    return FISH + "\n" + "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description="Writes the completions of vanxml.")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("vanxml", nargs="+")
    arguments = parser.parse_args()
    tool = toolhelp.read_command(arguments.vanxml)
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for name, script in (("vanxml.bash", bash_script), ("_vanxml", zsh_script), ("vanxml.fish", fish_script)):
        (arguments.folder / name).write_text(script(tool), encoding="utf-8")


if __name__ == "__main__":
    main()
