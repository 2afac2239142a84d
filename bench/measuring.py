"""Running programs side by side, and their figures."""

import os
import statistics
import subprocess


class ToolError(Exception):
    """A program of ours did not do its work."""


def environment():
    """Everybody's: without a locale the peers compare names fastest; dates are in one time zone."""
    return {**os.environ, "LC_ALL": "C", "TZ": "UTC0"}


def run(command, **options):
    command = [str(part) for part in command]
    try:
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True,
                              env=environment(), **options).stdout
    except OSError as error:
        raise ToolError(f"{command[0]}: {error.strerror}") from error
    except subprocess.CalledProcessError as error:
        what = f"{' '.join(command)}: exit code {error.returncode}"
        printed = (error.stdout or "") + (error.stderr or "")
        raise ToolError(f"{what}\n{printed}".rstrip()) from error


def figures(command):
    """The key=value output of a program."""
    pairs = (line.partition("=") for line in run(command).splitlines())
    return {key: float(value) for key, _, value in pairs}


class Series:
    """The figures of one program over all rounds."""

    def __init__(self):
        self.rounds = []

    def add(self, values):
        self.rounds.append(values)

    def values(self, key):
        return [values[key] for values in self.rounds]

    def median(self, key="total_ms"):
        return statistics.median(self.values(key))

    def minimum(self, key="total_ms"):
        return min(self.values(key))

    def maximum(self, key="total_ms"):
        return max(self.values(key))


def side_by_side(commands, rounds):
    """Runs the commands in turn, round after round; `commands` maps labels to commands."""
    series = {label: Series() for label in commands}
    for _ in range(rounds):
        for label, command in commands.items():
            series[label].add(figures(command))
    return series


def timed(tools, command, output=None):
    """The command that runs `command` on a pipe and prints what it cost."""
    options = [] if output is None else ["--output", output]
    return [tools["run_timed"], *options, *command]


def answer(tools, command, scratch):
    """The lines that a command prints, in byte order."""
    output = scratch / "answer"
    result = figures(timed(tools, command, output))
    # Exit code 1 may mean that nothing was found.
    if result["exit"] > 1:
        raise ToolError(f"{' '.join(command)}: exit code {result['exit']:.0f}")
    lines = sorted(output.read_bytes().split(b"\n")[:-1])
    output.unlink()
    return lines
