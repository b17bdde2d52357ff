#!/usr/bin/env python3
"""Runs the benches of the table and writes its lines as Markdown: millions of pixels a second at 8 bits, 16 bits and float.

Every line runs once for the warmth and then several times; the median counts. With two threads their gain follows in
brackets.
"""
from __future__ import annotations

import argparse
import json
import subprocess
import sys
from pathlib import Path

DEPTHS = ("8", "16", "32")


def rates(bench: Path, pattern: str, repetitions: int) -> dict[str, dict[tuple[str, int], float]]:
    """By line: millions of pixels a second by depth and number of threads."""
    words = [bench, f"--benchmark_filter=^table/.*({pattern})", f"--benchmark_repetitions={repetitions}",
             "--benchmark_min_time=0.1", "--benchmark_report_aggregates_only=true", "--benchmark_format=json"]
    done = subprocess.run(words, stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(f"{bench} failed with status {done.returncode}")
    lines: dict[str, dict[tuple[str, int], float]] = {}
    for run in json.loads(done.stdout)["benchmarks"]:
        if run["aggregate_name"] != "median":
            continue
        _, line, depth, *_ = run["run_name"].split("/")
        lines.setdefault(line, {})[depth, run["threads"]] = run["items_per_second"] / 1e6
    return lines


def cell(rate: dict[tuple[str, int], float], depth: str) -> str:
    one, two = rate.get((depth, 1)), rate.get((depth, 2))
    if one is None:
        return "-"
    return f"{one:,.0f}" + (f" ({two / one:.2f})" if two else "")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path, metavar="BUILD", help="folder of a built state, such as build/release")
    parser.add_argument("pattern", nargs="?", default="", metavar="PATTERN", help="only lines that this matches")
    parser.add_argument("--repetitions", type=int, default=5)
    arguments = parser.parse_args()
    lines = rates(arguments.build / "bin/qx_bench", arguments.pattern, arguments.repetitions)
    print("| work | 8 bits | 16 bits | float |\n|---|---|---|---|")
    for line, rate in lines.items():
        print(f"| {line} | " + " | ".join(cell(rate, depth) for depth in DEPTHS) + " |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
