"""Measures what sealed processes cost on top of reading documents, for deep.py."""

import random

from comparison import print_table
from measuring import side_by_side

SIZES = [(0, 20_000), (20_000, 100_000), (100_000, 400_000)]
MOST, TIMES = 50, 8


def measure_seal(tools, documents, options):
    rows = []
    for least, most in SIZES:
        chosen = [path for path in documents if least <= path.stat().st_size < most]
        chosen = random.Random(3).sample(chosen, min(MOST, len(chosen)))
        if not chosen:
            continue
        listed = options.cache / "sealed.txt"
        listed.write_text("".join(f"{path}\n" for path in sorted(chosen)))
        command = [tools["seal_cost"], "--times", TIMES, listed]
        series = side_by_side({"here": command, "sealed": [*command, "--sealed"]}, options.rounds)
        here, sealed = (series[label].minimum("cpu_ms") / (len(chosen) * TIMES)
                        for label in ("here", "sealed"))
        rows.append([f"{least / 1000:.0f} to {most / 1000:.0f} kB", str(len(chosen)),
                     f"{here:.2f}", f"{sealed:.2f}", f"{sealed - here:.2f}"])
    print("\nProcessor time of all processes for a document:")
    print_table(["size", "documents", "read here, ms", "sealed, ms", "the seal, ms", "lrrrr"], rows)
