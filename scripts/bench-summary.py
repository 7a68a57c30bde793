#!/usr/bin/env python3
"""Joins the JSON reports of several benchmark programs into one file and prints them as one table.

Usage: bench-summary.py OUTPUT REPORT...
"""
import json
import sys
from pathlib import Path

TIME_UNITS = ("ns", "us", "ms", "s")


def read_report(path: Path) -> dict | None:
    """A report, or None for a program of which the filter left nothing."""
    text = path.read_text()
    return json.loads(text) if text.strip() else None


def readable_time(value: float, unit: str) -> str:
    index = TIME_UNITS.index(unit)
    while value >= 1000 and index + 1 < len(TIME_UNITS):
        value /= 1000
        index += 1
    return f"{value:.3g} {TIME_UNITS[index]}"


def main() -> None:
    output = Path(sys.argv[1])
    joined: dict = {"context": None, "benchmarks": []}
    for path in map(Path, sys.argv[2:]):
        report = read_report(path)
        if report is None:
            continue
        joined["context"] = joined["context"] or report["context"]
        for benchmark in report["benchmarks"]:
            joined["benchmarks"].append({"program": path.stem, **benchmark})
    output.write_text(json.dumps(joined, indent=1) + "\n")

    rows = [
        (b["program"], b["name"], readable_time(b["real_time"], b["time_unit"]), readable_time(b["cpu_time"], b["time_unit"]))
        for b in joined["benchmarks"]
        if "real_time" in b
    ]
    if not rows:
        sys.exit("No benchmark ran.")
    rows.insert(0, ("program", "benchmark", "time", "processor"))
    widths = [max(len(row[i]) for row in rows) for i in range(4)]
    print()
    for program, name, time, cpu in rows:
        print(f"{program:<{widths[0]}}  {name:<{widths[1]}}  {time:>{widths[2]}}  {cpu:>{widths[3]}}")
    print(f"\nAll figures: {output}")


if __name__ == "__main__":
    main()
