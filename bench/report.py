#!/usr/bin/env python3
"""Runs the benchmarks of a build tree and reports what they measure.

    bench/report.py BUILD_DIR [--markdown FILE] [--json FILE] [--plots DIR] [--brief]

In the Markdown file, only what stands between the lines "<!-- begin NAME -->" and
"<!-- end NAME -->" is replaced.
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

ROUNDS = 5
REPETITIONS = 15
REPETITIONS_OF_GROWTH = 3
SECONDS_PER_REPETITION = 0.02
MILLISECONDS_PER_REPLAY = 1200
GROWTHS = {
    "samples under one name": ("samples", "cost per sample (ns)", "bytes per sample"),
    "names": ("names", "cost per call (ns)", None),
}
# Where the linker places a branch makes differences up to this, whatever the code.
INDISTINCT_NANOSECONDS = 1
SIDES = ("lapwing", "floor")
WAYS = {"emulator": "`TimingProfileEmulator`", "exact": "`Replayer`, exact",
        "economical": "`Replayer`, economical", "bare": "bare sleep"}
LOADS = ("idle", "busy")
# How late calls of an exact replay may be on an idle machine, in milliseconds.
EXACT = {"p50": 0.02, "p99": 0.1}


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
# times of several threads and of programs are the wall's, so that waiting for each other does.
def nanoseconds(run):
    return run["real_time" if "real_time" in run["run_name"].split("/") else "cpu_time"]


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


# Sides are compared within each round, since the machine may be slower in the next. The times are
# those of the round with the median ratio, and the ratio is that of the times as printed.
def compare(rounds, above, below):
    pairs = [[float(f"{times[side]:.4g}") for side in (above, below)] for times in rounds]
    pairs.sort(key=lambda pair: pair[0] / pair[1])
    ratios = [pair[0] / pair[1] for pair in pairs]
    middle = len(pairs) // 2
    return {above: pairs[middle][0], below: pairs[middle][1], "ratio": ratios[middle],
            "lowest": ratios[0], "highest": ratios[-1]}


def against_floor(name, bound, rounds):
    result = compare(rounds, "lapwing", "floor")
    excess = result["lapwing"] - result["floor"]
    return {"name": name, "bound": bound, "distinct": abs(excess) >= INDISTINCT_NANOSECONDS,
            "holds": result["ratio"] <= bound or excess < INDISTINCT_NANOSECONDS, **result}


def against_peer(name, peer, bound, rounds):
    if peer not in rounds[0]:
        return {"name": name, "peer": peer, "bound": bound, "ratio": None}
    result = compare(rounds, peer, "lapwing")
    return {"name": name, "peer": peer, "bound": bound, "distinct": True,
            "holds": result["ratio"] >= bound, "peer_time": result.pop(peer), **result}


def bytes_of(output):
    return {run["run_name"].split("/")[2]: run["bytes per item"]
            for run in output["benchmarks"]
            if run["run_type"] == "iteration" and "bytes per item" in run}


def growth_of(output, rounds):
    sizes = bytes_of(output)
    return [{"size": size, "bytes": sizes.get(str(size)),
             **{side: statistics.median(times[side, size] for times in rounds) for side in SIDES}}
            for size in sorted(size for side, size in rounds[0] if side == SIDES[0])]


def quantile(ordered, share):
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def figures_of(kinds, way):
    ordered = sorted(value / 1e6 for kind in kinds for value in kind[way]["late"])
    return {"p50": quantile(ordered, 0.5), "p99": quantile(ordered, 0.99), "worst": ordered[-1],
            "earliest": ordered[0],
            "spent": statistics.mean(value for kind in kinds for value in kind[way]["spent"])}


def replay_of(kinds):
    return {way: figures_of(kinds, way) for way in WAYS}


def replay_of_kind(kind):
    whole, cut = divmod(kind["stand_in_ns"], 10**6)
    return {"load": kind["load"], "average_ms": kind["average_ms"],
            "stand_in_ms": whole + cut / 1e6, "cut_ms": cut / 1e6,
            "calls": len(kind["bare"]["late"]), **replay_of([kind])}


def replay_by_load(kinds):
    return {load: replay_of([kind for kind in kinds if kind["load"] == load]) for load in LOADS}


def machine_of(context):
    cpuinfo = Path("/proc/cpuinfo")
    model = cpuinfo.exists() and re.search(r"model name\s*: (.*)", cpuinfo.read_text())
    return {
        "date": datetime.date.today().isoformat(),
        "cores": os.cpu_count(),
        "processor": model[1] if model else platform.machine(),
        "system": platform.freedesktop_os_release()["PRETTY_NAME"],
        "kernel": f"{platform.system()} {platform.release().split('-')[0]}",
        "compiler": context["compiler"],
        "build": context["build"].strip(),
    }


def measure(folder, brief):
    rounds = run_benchmarks(folder / "lapwing_bench", brief)
    context = next(iter(rounds[0].values()))["context"]
    medians = {name: [medians_of(outputs[name]) for outputs in rounds] for name in rounds[0]}
    kinds = run_replay(folder, brief)
    return {
        "machine": machine_of(context),
        "floors": [against_floor(name, float(context[f"{name}/times floor"]), medians[name])
                   for name in medians if name not in GROWTHS],
        "peers": [against_peer(name, key.split("/")[2], float(context[key]), medians[name])
                  for name in medians for key in context if key.startswith(f"{name}/peer/")],
        "growth": {name: growth_of(rounds[0][name], medians[name]) for name in GROWTHS},
        "replay": [replay_of_kind(kind) for kind in kinds],
        "replay_by_load": replay_by_load(kinds),
        "replay_without_cut": replay_by_load([kind for kind in kinds
                                              if kind["stand_in_ns"] % 10**6 == 0]),
    }


def table(heads, lines):
    widths = [max(len(line[i]) for line in [heads, *lines]) for i in range(len(heads))]

    def row(cells):
        return "| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"

    return "\n".join([row(heads), row(["-" * width for width in widths]), *map(row, lines)])


def time_text(value):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.4g} {unit}"
    return f"{value:.4g} ns"


def ratio_cells(result):
    holds = ("yes" if result["holds"] else "**no**") if result["distinct"] else "within 1 ns"
    return [f"{result['ratio']:.2f}", f"{result['lowest']:.2f} to {result['highest']:.2f}",
            f"{result['bound']:g}", holds]


def floors_table(results):
    return table(["row", "Lapwing", "floor", "ratio", "lowest to highest", "at most", "holds"],
                 [[result["name"], time_text(result["lapwing"]), time_text(result["floor"]),
                   *ratio_cells(result)] for result in results])


def peer_cells(result):
    if result["ratio"] is None:
        return ["not installed", *5 * [""]]
    return [time_text(result["peer_time"]), time_text(result["lapwing"]), *ratio_cells(result)]


def peers_table(results):
    return table(["row", "peer", "its time", "Lapwing", "times faster", "lowest to highest",
                  "at least", "holds"],
                 [[result["name"], result["peer"], *peer_cells(result)] for result in results])


def growth_table(name, points):
    head, cost, size = GROWTHS[name]
    return table([head, cost, "the floor's"] + ([size] if size else []),
                 [[f"{point['size']:,}", *(f"{point[side]:.1f}" for side in SIDES)] +
                  ([f"{point['bytes']:.1f}"] if size else []) for point in points])


LATE_HEADS = ["p50", "p99", "worst"]
EMULATOR_HEADS = [*LATE_HEADS, *(f"bare {head}" for head in LATE_HEADS)]
EMULATOR_WAYS = ("emulator", "bare")
REPLAYER_WAYS = ("exact", "economical")


def late_cells(kind, ways, digits):
    return [f"{kind[way][figure]:.{digits}f}" for way in ways for figure in LATE_HEADS]


def early_cell(figures):
    return "**yes**" if figures["earliest"] < 0 else "never"


def kind_cells(kind):
    return [f"{kind['average_ms']}", f"{kind['stand_in_ms']:g}"]


def emulator_table(kinds):
    return table(["average", "stand-in", "cut", "calls", *EMULATOR_HEADS],
                 [[*kind_cells(kind), f"{kind['cut_ms']:g}", str(kind["calls"]),
                   *late_cells(kind, EMULATOR_WAYS, 2)] for kind in kinds])


def emulator_summary(loads):
    return table(["load", *EMULATOR_HEADS, "p99 beyond the bare sleep's", "ends early"],
                 [[load, *late_cells(ways, EMULATOR_WAYS, 2),
                   f"{ways['emulator']['p99'] - ways['bare']['p99']:.2f}",
                   early_cell(ways["emulator"])] for load, ways in loads.items()])


def earliest_text(ways):
    return f"{min(figures['earliest'] for figures in ways):.4f}"


def replayer_table(kinds):
    return table(["average", "stand-in", "calls",
                  *(f"{way} {head}" for way in REPLAYER_WAYS for head in LATE_HEADS), "earliest"],
                 [[*kind_cells(kind), str(kind["calls"]), *late_cells(kind, REPLAYER_WAYS, 3),
                   earliest_text(kind[way] for way in REPLAYER_WAYS)] for kind in kinds])


def replayer_summary(loads):
    return table(["load", "call", *LATE_HEADS, "earliest", "ends early", "processor time"],
                 [[load, title, *late_cells(ways, [way], 3), earliest_text([ways[way]]),
                   early_cell(ways[way]), time_text(ways[way]["spent"])]
                  for load, ways in loads.items() for way, title in WAYS.items()])


def is_exact(figures):
    return all(figures[figure] <= most for figure, most in EXACT.items())


def exactness_text(results):
    figures = results["replay_by_load"]["idle"]["exact"]
    kinds = [kind["exact"] for kind in results["replay"] if kind["load"] == "idle"]
    late = " and ".join(f"{figures[figure]:.3f} ms late at {figure} (at most {most:g})"
                        for figure, most in EXACT.items())
    holds = "held" if is_exact(figures) else "**did not hold**"
    return (f"Exact replay on the idle machine was {late}. This {holds} for all calls together, "
            f"and held for {sum(map(is_exact, kinds))} of the {len(kinds)} kinds of calls.")


def machine_text(machine):
    return ("{processor}, {cores} cores; {system}, {kernel}; {compiler}, {build}; {date}."
            .format(**machine))


def sections_of(results):
    sections = {"machine": machine_text(results["machine"]),
                "floors": floors_table(results["floors"]),
                "peers": peers_table(results["peers"]),
                "replay": emulator_summary(results["replay_without_cut"]),
                "replayer": replayer_summary(results["replay_by_load"]),
                "replayer exactness": exactness_text(results)}
    for load in LOADS:
        kinds = [kind for kind in results["replay"] if kind["load"] == load]
        sections[f"replay {load}"] = emulator_table(kinds)
        sections[f"replayer {load}"] = replayer_table(kinds)
    for name, points in results["growth"].items():
        sections[f"growth: {name}"] = growth_table(name, points)
    return sections


def write_markdown(file, sections):
    page = file.read_text()
    for name, text in sections.items():
        begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
        page = re.sub(f"{re.escape(begin)}.*?{re.escape(end)}",
                      lambda _: f"{begin}\n{text}\n{end}", page, flags=re.DOTALL)
    file.write_text(page)


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
    for name, text in sections.items():
        print(f"\n{name}\n{text}")
    if options.markdown:
        write_markdown(options.markdown, sections)
    if options.json:
        options.json.write_text(json.dumps(results, indent=2) + "\n")
    if options.plots:
        write_plots(options.plots, results["growth"])


if __name__ == "__main__":
    sys.exit(main())
