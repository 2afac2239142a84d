#!/usr/bin/env python3
"""Asks the shells that are there to complete command lines of ssfind, and looks through the manual pages.

Usage: check_pages.py FOLDER
"""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import time

# A command line, and what a shell must make of its end or offer.
LINES = {"ssfind --so": "--sort", "ssfind --sort mod": "modified", "ssfind --exclude x --sort na": "name", "ssfind --color ne": "never",
         "ssfind --files-from lis": "list.txt", "ssfind fold": "folder/", "ssfind --no-su": "--no-subfolders"}


def ask_bash(pages, line):
    script = f"""source {pages}/ssfind.bash
compopt() {{ :; }}
COMP_LINE='{line}'; COMP_WORDS=({line}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
_ssfind; for reply in "${{COMPREPLY[@]}}"; do [ -d "$reply" ] && reply+=/; echo "$reply"; done"""
    return subprocess.run(["bash", "--norc", "-c", script], check=True, capture_output=True,
                          text=True).stdout.split()


def ask_fish(pages, line):
    script = f"source {pages}/ssfind.fish; complete -C '{line}'"
    lines = subprocess.run(["fish", "--no-config", "-c", script], check=True, capture_output=True,
                           text=True, env=dict(os.environ, HOME=os.getcwd())).stdout.splitlines()
    return [line.split("\t")[0] for line in lines]


def ask_zsh(pages, line):
    """Its completion works on a terminal only; what it does to the line shows there."""
    process, terminal = pty.fork()
    if process == 0:
        os.environ.update(TERM="dumb", PS1="> ", HOME=os.getcwd())
        os.execlp("zsh", "zsh", "-f", "-i")
    start = f"unset zle_bracketed_paste; fpath=({pages} $fpath); autoload -U compinit; compinit -u -D; echo rea''dy\n"
    seen = ""

    def read_until(pattern):
        nonlocal seen
        end = time.monotonic() + 60
        while not re.search(pattern, seen) and time.monotonic() < end:
            if select.select([terminal], [], [], 1)[0]:
                try:
                    seen += os.read(terminal, 4096).decode(errors="replace")
                except OSError:
                    break

    os.write(terminal, start.encode())
    read_until(r"ready\r?\n")
    seen = ""
    os.write(terminal, (line + "\t").encode())
    read_until(re.escape(LINES[line]))
    answer = seen
    os.write(terminal, b"\x03\nexit\n")
    os.close(terminal)
    os.waitpid(process, 0)
    return re.findall(r"[\w./-]+", answer)


def main():
    pages = pathlib.Path(sys.argv[1]).resolve()
    work = pages / "completed"
    shutil.rmtree(work, ignore_errors=True)
    (work / "folder").mkdir(parents=True)
    (work / "list.txt").touch()
    os.chdir(work)
    faults, asked = [], []
    for shell, ask in (("bash", ask_bash), ("fish", ask_fish), ("zsh", ask_zsh)):
        if shutil.which(shell) is None:
            continue
        asked.append(shell)
        for line, expected in LINES.items():
            if expected not in (answers := ask(pages, line)):
                faults.append(f"{shell}: {line} gives {answers}")

    interface = (pages / "searchsystem.3").read_text()
    for name in ("SS_SearchStart", "CFStringCreateWithCString", "PFMainLoopDispatch", "PFGetVersion"):
        if not re.search(rf"^[\w *]*\b{name}\(", interface, re.MULTILINE):
            faults.append(f"searchsystem.3 does not declare {name}")
    for leak in ("SEARCHSYSTEM_SYMBOL", "SEARCHSYSTEM_EXPORT", "__cplusplus", "#endif", "#include \""):
        if leak in interface:
            faults.append(f"searchsystem.3 holds {leak}")
    for page in ("ssfind.1", "searchsystem.3"):
        if shutil.which("mandoc"):
            report = subprocess.run(["mandoc", "-Tlint", "-Wwarning", pages / page], check=False,
                                    capture_output=True, text=True).stdout
            faults += [line for line in report.splitlines() if "missing date" not in line]
    print("\n".join(faults) if faults else "completions of " + ", ".join(asked))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
