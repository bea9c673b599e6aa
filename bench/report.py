#!/usr/bin/env python3
"""Runs the benchmarks of a build tree and reports them as one table of ratios.

    bench/report.py BUILD_DIR [--markdown FILE] [--json FILE] [--plots DIR] [--brief]

A Markdown file that exists keeps its text: only what stands between the lines
"<!-- begin NAME -->" and "<!-- end NAME -->" is replaced.
"""

import argparse
import datetime
import json
import os
import platform
import re
import statistics
import subprocess
import sys
from pathlib import Path

ROUNDS = 7
REPETITIONS = 15
REPETITIONS_OF_GROWTH = 3
SECONDS_PER_REPETITION = 0.02
MILLISECONDS_PER_REPLAY = 4000
GROWTHS = {
    "samples under one name": ("samples", "cost per sample (ns)", "bytes per sample"),
    "names": ("names", "cost per call (ns)", None),
}
SIDES = ("lapwing", "floor")


def output_of(command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


# One process for each row and round, short enough for the machine to be the same for all sides.
def run_row(program, row, brief):
    repetitions = 1 if brief else REPETITIONS_OF_GROWTH if row in GROWTHS else REPETITIONS
    return json.loads(output_of([
        program,
        f"--benchmark_filter=^{row}/",
        "--benchmark_format=json",
        f"--benchmark_repetitions={repetitions}",
        f"--benchmark_min_time={0.0001 if brief else SECONDS_PER_REPETITION}",
        "--benchmark_enable_random_interleaving=true",
    ]))


def run_benchmarks(program, brief):
    listed = output_of([program, "--benchmark_list_tests"]).splitlines()
    names = dict.fromkeys(line.split("/")[0] for line in listed)
    rounds = []
    for number in range(1 if brief else ROUNDS):
        print(f"round {number + 1}", file=sys.stderr)
        rounds.append({name: run_row(program, name, brief) for name in names})
    return rounds


def run_replay(folder, brief):
    lines = output_of([folder / "lapwing_replay", str(0 if brief else MILLISECONDS_PER_REPLAY)])
    return [json.loads(line) for line in lines.splitlines()]


# Times of one thread are its processor time, so that what else runs on the machine does not count;
# times of several are the wall's, so that waiting for each other does.
def nanoseconds(run):
    return run["real_time" if run["threads"] > 1 else "cpu_time"]


# The median time of each side, and of each size of each side where the row grows.
def medians_of(output):
    times = {}
    for run in output["benchmarks"]:
        if run["run_type"] == "iteration":
            _, side, *rest = run["run_name"].split("/")
            items = run.get("items_per_second")
            key = (side, int(rest[0])) if items else side
            times.setdefault(key, []).append(1e9 / items if items else nanoseconds(run))
    return {key: statistics.median(values) for key, values in times.items()}


# Sides are compared within each round: the machine may be another in the next.
def over_rounds(rounds, figure):
    return statistics.median(map(figure, rounds))


def row_of(name, context, rounds):
    def value(key):
        return context[f"{name}/{key}"]

    def time(side):
        return over_rounds(rounds, lambda times: times[side])

    def ratio(above, below):
        return over_rounds(rounds, lambda times: times[above] / times[below])

    def peer_of(peer):
        wanted = float(value(f"peer/{peer}"))
        faster = ratio(peer, "lapwing") if peer in rounds[0] else None
        return {"name": peer, "times_faster": faster, "wanted": wanted,
                "holds": None if faster is None or not wanted else faster >= wanted}

    bound = float(value("times floor"))
    peers = [key.split("/")[2] for key in context if key.startswith(f"{name}/peer/")]
    return {"name": name, "lapwing_ns": time("lapwing"), "floor_ns": time("floor"),
            "ratio": ratio("lapwing", "floor"), "bound": bound,
            "holds": ratio("lapwing", "floor") <= bound,
            "floor_does": value("floor does"), "peers": list(map(peer_of, peers))}


def bytes_of(output):
    return {run["run_name"].split("/")[2]: run["bytes per item"]
            for run in output["benchmarks"]
            if run["run_type"] == "iteration" and "bytes per item" in run}


def growth_of(output, rounds):
    sizes = bytes_of(output)
    return [{"size": size, "bytes": sizes.get(str(size)),
             **{side: over_rounds(rounds, lambda times: times[side, size]) for side in SIDES}}
            for size in sorted(size for side, size in rounds[0] if side == SIDES[0])]


def quantile(ordered, share):
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def lateness(values):
    ordered = sorted(value / 1e6 for value in values)
    return {"p50": quantile(ordered, 0.5), "p99": quantile(ordered, 0.99), "worst": ordered[-1],
            "earliest": ordered[0]}


def replay_of(kind):
    return {"load": kind["load"], "average_ms": kind["average_ms"],
            "stand_in_ms": kind["stand_in_ns"] / 1e6, "cut_ms": kind["stand_in_ns"] % 10**6 / 1e6,
            "calls": len(kind["lapwing"]),
            "lapwing": lateness(kind["lapwing"]), "bare": lateness(kind["bare"])}


def together(kinds, load):
    kinds = [kind for kind in kinds if kind["load"] == load and kind["stand_in_ns"] % 10**6 == 0]
    return {side: lateness([value for kind in kinds for value in kind[side]])
            for side in ("lapwing", "bare")}


def machine_of(context):
    return {
        "date": datetime.date.today().isoformat(),
        "cores": os.cpu_count(),
        "processor": first_match("/proc/cpuinfo", r"model name\s*: (.*)") or platform.machine(),
        "system": first_match("/etc/os-release", r'PRETTY_NAME="(.*)"') or platform.system(),
        "kernel": f"{platform.system()} {platform.release().split('-')[0]}",
        "compiler": context["compiler"],
        "build": context["build"].strip(),
    }


def first_match(file, pattern):
    if not Path(file).exists():
        return None
    found = re.search(pattern, Path(file).read_text())
    return found and found[1]


def measure(folder, brief):
    rounds = run_benchmarks(folder / "lapwing_bench", brief)
    context = next(iter(rounds[0].values()))["context"]
    medians = {name: [medians_of(outputs[name]) for outputs in rounds] for name in rounds[0]}
    kinds = run_replay(folder, brief)
    return {
        "machine": machine_of(context),
        "rows": [row_of(name, context, medians[name]) for name in medians if name not in GROWTHS],
        "growth": {name: growth_of(rounds[0][name], medians[name]) for name in GROWTHS},
        "replay": [replay_of(kind) for kind in kinds],
        "replay_together": {load: together(kinds, load) for load in ("idle", "busy")},
    }


def table(heads, lines):
    widths = [max(len(line[i]) for line in [heads, *lines]) for i in range(len(heads))]

    def row(cells):
        return "| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"

    return "\n".join([row(heads), row(["-" * width for width in widths]), *map(row, lines)])


def time_text(value):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.3g} {unit}"
    return f"{value:.3g} ns"


def verdict(holds):
    return {True: "yes", False: "**no**", None: ""}[holds]


def peer_text(peer):
    if peer["times_faster"] is None:
        return f"{peer['name']}: not installed"
    wanted = f" (at least {peer['wanted']:g}: {verdict(peer['holds'])})" if peer["wanted"] else ""
    return f"{peer['name']}: {peer['times_faster']:.1f} times faster{wanted}"


def rows_table(rows):
    return table(["row", "Lapwing", "floor", "ratio", "at most", "holds", "against peers"],
                 [[row["name"], time_text(row["lapwing_ns"]), time_text(row["floor_ns"]),
                   f"{row['ratio']:.2f}", f"{row['bound']:.2f}", verdict(row["holds"]),
                   "; ".join(map(peer_text, row["peers"]))] for row in rows])


def floors_table(rows):
    return table(["row", "what its floor does"], [[row["name"], row["floor_does"]] for row in rows])


def growth_table(name, points):
    head, cost, size = GROWTHS[name]
    return table([head, cost, "the floor's"] + ([size] if size else []),
                 [[f"{point['size']:,}", *(f"{point[side]:.1f}" for side in SIDES)] +
                  ([f"{point['bytes']:.1f}"] if size else []) for point in points])


def late_cells(kind):
    return [f"{kind[side][figure]:.2f}" for side in ("lapwing", "bare")
            for figure in ("p50", "p99", "worst")]


LATE_HEADS = ["p50", "p99", "worst", "bare p50", "bare p99", "bare worst"]


def replay_table(kinds):
    return table(["average", "stand-in", "cut", "calls", *LATE_HEADS],
                 [[f"{kind['average_ms']}", f"{kind['stand_in_ms']:g}", f"{kind['cut_ms']:g}",
                   str(kind["calls"]), *late_cells(kind)] for kind in kinds])


def together_table(loads):
    return table(["load", *LATE_HEADS, "p99 beyond the bare sleep's", "ends early"],
                 [[load, *late_cells(sides),
                   f"{sides['lapwing']['p99'] - sides['bare']['p99']:.2f}",
                   "**yes**" if sides["lapwing"]["earliest"] < 0 else "never"]
                  for load, sides in loads.items()])


def machine_text(machine):
    return ("{processor}, {cores} cores; {system}, {kernel}; {compiler}, {build}; {date}."
            .format(**machine))


def sections_of(results):
    sections = {"machine": machine_text(results["machine"]),
                "rows": rows_table(results["rows"]),
                "floors": floors_table(results["rows"]),
                "replay": together_table(results["replay_together"])}
    for load in ("idle", "busy"):
        sections[f"replay {load}"] = replay_table(
            [kind for kind in results["replay"] if kind["load"] == load])
    for name, points in results["growth"].items():
        sections[f"growth: {name}"] = growth_table(name, points)
    return sections


def write_markdown(file, sections):
    old = file.read_text() if file.exists() else "\n\n".join(
        f"<!-- begin {name} -->\n<!-- end {name} -->" for name in sections) + "\n"
    for name, text in sections.items():
        begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
        old = re.sub(f"{re.escape(begin)}.*?{re.escape(end)}",
                     lambda _: f"{begin}\n{text}\n{end}", old, flags=re.DOTALL)
    file.write_text(old)


def plot_script(name, points, file):
    count, cost, _ = GROWTHS[name]
    lines = [f"{point['size']} {point['lapwing']} {point['floor']}" for point in points]
    return "\n".join([
        "set terminal svg size 720,400 font 'sans-serif,13' background 'white'",
        f"set output '{file}'", f"set xlabel '{count}'", f"set ylabel '{cost}'",
        "set logscale x 10", "set format x '10^{%T}'", "set yrange [0:*]", "set grid",
        "set key left top", "$points << END", *lines, "END",
        "plot $points using 1:2 with linespoints lw 2 title 'Lapwing',"
        " $points using 1:3 with linespoints lw 2 dt 2 title 'floor'", ""])


def write_plots(folder, growths):
    folder.mkdir(parents=True, exist_ok=True)
    for name, points in growths.items():
        file = folder / f"growth-{name.replace(' ', '-')}.svg"
        subprocess.run(["gnuplot"], check=True, input=plot_script(name, points, file), text=True)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build_dir", type=Path)
    parser.add_argument("--markdown", type=Path, metavar="FILE")
    parser.add_argument("--json", type=Path, metavar="FILE")
    parser.add_argument("--plots", type=Path, metavar="DIR")
    parser.add_argument("--brief", action="store_true", help="run each benchmark once, shortly")
    return parser.parse_args()


def main():
    options = arguments()
    results = measure(options.build_dir / "bin", options.brief)
    sections = sections_of(results)
    for name in ("rows", *(name for name in sections if name.startswith(("growth", "replay")))):
        print(f"\n{name}\n{sections[name]}")
    if options.markdown:
        write_markdown(options.markdown, sections)
    if options.json:
        options.json.write_text(json.dumps(results, indent=2) + "\n")
    if options.plots:
        write_plots(options.plots, results["growth"])


if __name__ == "__main__":
    sys.exit(main())
