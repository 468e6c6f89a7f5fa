#!/usr/bin/env python3
"""Makes a picture and a table of what Google Benchmark wrote as JSON.

usage: performance.py RESULTS PICTURE DOCUMENT

RESULTS is the folder with the JSON files, PICTURE the SVG to write, and DOCUMENT the Markdown file
whose part between the two marks becomes the table.
"""

import json
import math
import os
import pathlib
import sys

BEGIN, END = "<!-- tools/bench --docs writes this -->", "<!-- up to here -->"

# benchmark, number of elements, what it is, unit, nanoseconds of the unit, goal
ROWS = [
    ("init", None, "`init` in a fresh process", "ms", 1e6, 1.4),
    ("scan", 10, "scan of 10 plugins, each", "µs", 1e3, 1.3),
    ("scan", 100, "scan of 100 plugins, each", "µs", 1e3, 1.3),
    ("scan", 1000, "scan of 1,000 plugins, each", "µs", 1e3, 1.3),
    ("scan", 3000, "scan of 3,000 plugins, each", "µs", 1e3, 1.3),
    ("rescan", 10, "rescan of 10 plugins, each", "µs", 1e3, 1.3),
    ("rescan", 100, "rescan of 100 plugins, each", "µs", 1e3, 1.3),
    ("rescan", 1000, "rescan of 1,000 plugins, each", "µs", 1e3, 1.3),
    ("rescan", 3000, "rescan of 3,000 plugins, each", "µs", 1e3, 1.3),
    ("addModule", 100, "`addModule` beside 3,000 modules", "µs", 1e3, 1.5),
    ("changeModule", 100, "`changeModule`, any of 3,000", "µs", 1e3, 1.5),
    ("subModule", 100, "`subModule`, any of 3,000", "µs", 1e3, 1.5),
    ("showModule", 100, "`showModule`, any of 3,000", "µs", 1e3, 1.5),
    ("echo of one write", 1000000, "echo of a million lines in one write, each", "ns", 1, 2.0),
    ("echo line by line", 1000000, "echo of a million lines in a million writes, each", "ns", 1, 2.0),
    ("50 MB of source", 50, "detection and rewriting of 50 MB, each MB", "µs", 1e3, 1.5),
    ("getService", None, "`getService<T>`", "ns", 1, 1.1),
    ("int", None, "call that sends and returns an int", "µs", 1e3, 1.15),
    ("1 MB", None, "call that sends and returns 1 MB", "µs", 1e3, 1.15),
    ("10,000 objects", None, "call that sends and returns 10,000 data objects", "µs", 1e3, 1.15),
]


def read(folder):
    """The quickest of all repetitions, in nanoseconds for each element: {(benchmark, size): {variant: time}}."""
    times = {}
    contexts = []
    for path in sorted(pathlib.Path(folder).glob("*.json")):
        result = json.loads(path.read_text())
        contexts.append(result["context"])
        for run in result["benchmarks"]:
            if run["run_type"] != "iteration" or run.get("error_occurred"):
                continue
            name, variant, *rest = run["name"].split("/")
            size = int(rest[0]) if rest and rest[0].isdigit() else None
            time = run["cpu_time" if {"manual_time", "real_time"}.isdisjoint(rest) else "real_time"] / (size or 1)
            variants = times.setdefault((name, size), {})
            variants[variant] = min(time, variants.get(variant, math.inf))
    return times, contexts


def machine(contexts):
    model = next((line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")), "?")
    loads = [context["load_avg"][0] for context in contexts if context.get("load_avg")]
    load = f", load average {min(loads):.1f} to {max(loads):.1f} meanwhile" if loads else ""
    system = os.uname()
    return f"{model}, {os.cpu_count()} processors, Debian 12, Linux {system.release.split('-')[0]}{load}"


def results(times):
    for name, size, label, unit, scale, goal in ROWS:
        pair = times.get((name, size), {})
        if "bare" in pair and "ours" in pair:
            yield label, unit, pair["bare"] / scale, pair["ours"] / scale, pair["ours"] / pair["bare"], goal


def short(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}"


def table(times, contexts):
    lines = [BEGIN, f"Measured on: {machine(contexts)}.", "", "| what | bare | ours | ratio | goal |",
             "|---|--:|--:|--:|--:|"]
    for label, unit, bare, ours, ratio, goal in results(times):
        lines.append(f"| {label} | {short(bare)} {unit} | {short(ours)} {unit} | {ratio:.2f} | {goal} |")
    return "\n".join([*lines, END])


class Svg:
    def __init__(self, width, height):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
            f'height="{height}" font-family="DejaVu Sans, sans-serif" font-size="12">',
            f'<rect width="{width}" height="{height}" fill="#ffffff"/>']

    def text(self, x, y, text, anchor="start", fill="#222222", **more):
        attributes = "".join(f' {key.replace("_", "-")}="{value}"' for key, value in more.items())
        text = text.replace("`", "").replace("&", "&amp;").replace("<", "&lt;")
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{fill}"{attributes}>{text}</text>')

    def rect(self, x, y, width, height, fill):
        self.parts.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" fill="{fill}"/>')

    def line(self, points, stroke, width=1.0, dash=""):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline points="{path}" fill="none" stroke="{stroke}" stroke-width="{width}"'
                          + (f' stroke-dasharray="{dash}"' if dash else "") + "/>")

    def __str__(self):
        return "\n".join([*self.parts, "</svg>", ""])


BARE, OURS, MISSED, GRID = "#9aa5b1", "#2f7ed8", "#d8722f", "#e3e6ea"


def plot_ratios(svg, rows, left, top, width, row_height):
    highest = min(8.0, max(2.0, *(max(ratio, goal) for *_, ratio, goal in rows)))

    def place(ratio):
        return left + width * min(ratio, highest) / highest

    bottom = top + len(rows) * row_height
    for ratio in range(int(highest) + 1):
        svg.line([(place(ratio), top - 4), (place(ratio), bottom)], BARE if ratio == 1 else GRID)
        svg.text(place(ratio), bottom + 16, f"{ratio}×", "middle", "#666666")
    for number, (label, _, _, _, ratio, goal) in enumerate(rows):
        y = top + number * row_height
        svg.text(left - 8, y + row_height * 0.62, label, "end")
        svg.rect(left, y + 3, place(ratio) - left, row_height - 7, OURS if ratio <= goal else MISSED)
        svg.line([(place(goal), y + 1), (place(goal), y + row_height - 2)], "#222222", 2)
        svg.text(max(place(ratio), place(goal)) + 6, y + row_height * 0.62, f"{ratio:.2f}")


def plot_scans(svg, times, left, top, width, height):
    series = [(f"{name}, {variant}", [(size, times[name, size][variant] / 1e3) for size in (10, 100, 1000, 3000)
                                      if variant in times.get((name, size), {})], color, dash)
              for name, dash in (("scan", ""), ("rescan", "5 3"))
              for variant, color in (("bare", BARE), ("ours", OURS))]
    series = [one for one in series if one[1]]
    if not series:
        return
    highest = max(time for _, points, _, _ in series for _, time in points)
    step = 10 ** math.floor(math.log10(highest))
    highest = math.ceil(highest / step) * step

    def place(size, time):
        return left + width * (math.log10(size) - 1) / (math.log10(3000) - 1), top + height * (1 - time / highest)

    for time in (highest * part / 4 for part in range(5)):
        svg.line([place(10, time), place(3000, time)], GRID)
        svg.text(left - 8, place(10, time)[1] + 4, f"{time:.0f} µs", "end", "#666666")
    for size in (10, 100, 1000, 3000):
        svg.text(place(size, 0)[0], top + height + 16, f"{size:,}", "middle", "#666666")
    for number, (label, points, color, dash) in enumerate(series):
        svg.line([place(*point) for point in points], color, 2, dash)
        y = top + 14 + number * 18
        svg.line([(left + 20, y - 4), (left + 50, y - 4)], color, 2, dash)
        svg.text(left + 58, y, label)


def picture(times):
    rows = list(results(times))
    row_height = 22
    ratios_height = len(rows) * row_height
    svg = Svg(860, ratios_height + 420)
    svg.text(20, 28, "Time beside the bare work of Qt, PythonQt and the C library", font_size=15, font_weight="bold")
    svg.text(20, 46, "The black mark is the goal. Bars end at 8.", fill="#666666")
    plot_ratios(svg, rows, 360, 64, 420, row_height)
    top = ratios_height + 130
    svg.text(20, top - 20, "Time for each plugin, by the number of plugins", font_size=15, font_weight="bold")
    plot_scans(svg, times, 90, top, 700, 240)
    return str(svg)


def main(results_folder, picture_path, document_path):
    times, contexts = read(results_folder)
    pathlib.Path(picture_path).write_text(picture(times))
    document = pathlib.Path(document_path)
    before, rest = document.read_text().split(BEGIN)
    after = rest.split(END)[1]
    document.write_text(before + table(times, contexts) + after)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
