#!/usr/bin/env python3
"""Makes the manual page of ssfind and the completions of three shells from what its --help says.

Usage: make_pages.py PROGRAM FOLDER
"""

import pathlib
import re
import subprocess
import sys

# What a shell completes by itself, and words that the program does not list.
COMPLETIONS = {"FILE": "files", "COMMAND": "commands", "KINDS": ["pdf", "exif", "pdf,exif"]}

OPTION = re.compile(r"^  (?:-(\w), |    )--([\w-]+)(?: ([A-Z]+))?(?:\s+(.*))?$")


class Option:
    def __init__(self, letter, name, value, text):
        self.letter, self.name, self.value, self.text = letter, name, value, text or ""
        self.words = COMPLETIONS.get(value, [])

    def names(self):
        return ([f"-{self.letter}"] if self.letter else []) + [f"--{self.name}"]

    def summary(self):
        """What fits on one line of a list of options."""
        return re.split(r"; | \(", self.text)[0]


def read_words(program, option):
    """The words that the option takes, as the program lists them when it is given another."""
    answer = subprocess.run([program, f"--{option.name}", "?"], check=False, capture_output=True, text=True)
    found = re.search(rf"--{option.name} is one of (.*)", answer.stderr)
    return found[1].split(", ")


def read_help(program):
    """The text before the options, the options by the headings of their groups, and the text behind."""
    text = subprocess.run([program, "--help"], check=True, capture_output=True, text=True).stdout
    blocks = text.rstrip().split("\n\n")
    groups, option = {}, None
    for block in blocks:
        heading, *lines = block.split("\n")
        if not any(OPTION.match(line) for line in lines):
            continue
        options = groups.setdefault(heading.rstrip(":"), [])
        for line in lines:
            if match := OPTION.match(line):
                option = Option(*match.groups())
                options.append(option)
            else:
                option.text = f"{option.text} {line.strip()}".lstrip()
    is_option = [any(OPTION.match(line) for line in block.split("\n")) for block in blocks]
    first, last = is_option.index(True), len(is_option) - is_option[::-1].index(True)
    return blocks[:first], groups, blocks[last:]


def escaped(text):
    return re.sub(r"(?m)^([.'])", r"\\&\1", text.replace("\\", r"\e").replace("-", r"\-"))


def manual_page(before, groups, behind, version):
    def verbatim(text):
        return [".nf", escaped(text), ".fi"]

    what, kinds, usage = before
    page = [f'.TH SSFIND 1 "" "SearchSystem {version}" "User Commands"', ".SH NAME",
            r"ssfind \- find images and documents by name, content and date", ".SH SYNOPSIS",
            ".B ssfind", escaped(usage.partition("ssfind ")[2]), ".SH DESCRIPTION", escaped(what),
            ".PP", *verbatim(kinds)]
    for heading, options in groups.items():
        page += [".SH OPTIONS"] if ".SH OPTIONS" not in page else []
        page.append(f".SS {escaped(heading)}")
        for option in options:
            names = ", ".join(rf"\fB{escaped(name)}\fR" for name in option.names())
            value = rf" \fI{option.value}\fR" if option.value else ""
            page += [".TP", names + value, escaped(option.text)]
    page.append(".SH DETAILS")
    for block in behind:
        if block.startswith("Exit codes: "):
            page += [".SH EXIT STATUS", escaped(block.removeprefix("Exit codes: "))]
        elif block.startswith("Examples:"):
            lines = [line[2:] for line in block.split("\n")[1:]]
            page += [".SH EXAMPLES", *verbatim("\n".join(lines))]
        else:
            page += [escaped(block), ".PP"]
    page += [".SH SEE ALSO", ".BR searchsystem (3)"]
    return "\n".join(line for at, line in enumerate(page)
                     if line != ".PP" or not page[at + 1].startswith(".S")) + "\n"


def bash_completion(options):
    cases = []
    for option in options:
        if option.value is None:
            continue
        if option.words in ("files", "commands"):
            answer = f'mapfile -t COMPREPLY < <(compgen -{option.words[0]} -- "$word")'
        else:
            answer = f'mapfile -t COMPREPLY < <(compgen -W "{" ".join(option.words)}" -- "$word")'
        cases.append(f"    {'|'.join(option.names())}) {answer}; return ;;")
    names = " ".join(name for option in options for name in option.names())
    return f"""# Completion of ssfind in bash.
_ssfind() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}}
  # The shell takes = for a word of its own.
  [ "$word" != = ] || word=
  [ "$before" != = ] || before=${{COMP_WORDS[COMP_CWORD - 2]}}
  compopt -o filenames
  case $before in
{chr(10).join(cases)}
  esac
  case $word in
    -*) compopt +o filenames; mapfile -t COMPREPLY < <(compgen -W "{names}" -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
  esac
}}
complete -F _ssfind ssfind
"""


def zsh_completion(options):
    def quoted(text):
        return re.sub(r"([\[\]:\\])", r"\\\1", text).replace("'", "'\\''")

    lines = []
    for option in options:
        ready = {"files": "_files", "commands": "_command_names -e"}
        action = (ready[option.words] if isinstance(option.words, str) else
                  f"({' '.join(option.words)})" if option.words else " ")
        value = f":{option.value}:{action}" if option.value else ""
        for name in option.names():
            equals = "=" if option.value not in (None, "COMMAND") and name.startswith("--") else ""
            lines.append(f"  '*{name}{equals}[{quoted(option.summary())}]{value}' \\")
    return "\n".join(["#compdef ssfind", "_arguments -s -S \\", *lines, "  '*:folder:_files -/'", ""])


def fish_completion(options):
    def quoted(text):
        return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"

    lines = ["# Completion of ssfind in fish.", "complete -c ssfind -f -a '(__fish_complete_directories)'"]
    for option in options:
        line = f"complete -c ssfind -l {option.name}"
        line += f" -s {option.letter}" if option.letter else ""
        if option.words == "files":
            line += " -r -F"
        elif option.words == "commands":
            line += " -x -a '(__fish_complete_command)'"
        elif option.value:
            line += " -x" + (f" -a {quoted(' '.join(option.words))}" if option.words else "")
        lines.append(f"{line} -d {quoted(option.summary())}")
    return "\n".join(lines) + "\n"


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    version = subprocess.run([program, "--version"], check=True, capture_output=True,
                             text=True).stdout.split()[1]
    before, groups, behind = read_help(program)
    options = [option for group in groups.values() for option in group]
    for option in options:
        if option.value in ("ORDER", "WHEN"):
            option.words = read_words(program, option)
    pages = {"ssfind.1": manual_page(before, groups, behind, version),
             "ssfind.bash": bash_completion(options), "_ssfind": zsh_completion(options),
             "ssfind.fish": fish_completion(options)}
    for name, text in pages.items():
        (folder / name).write_text(text)


if __name__ == "__main__":
    main()
