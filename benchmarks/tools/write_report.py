#!/usr/bin/env python3
"""Writes docs/performance.md and its plots from the results in JSON.

    write_report.py RESULTS DOCS

RESULTS is the folder with operations.json, growth.json, jobs.json and peers.json; what is missing is left out of the document.
The words are those of performance.template.md, in which {{name}} stands for a table. The plots are made by gnuplot.
"""

import json
import os
import re
import sys

import plots

TEMPLATE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "performance.template.md")
FRAMES = ("unchanged", "moving", "first")
NOT_MEASURED = "Not measured yet.\n"


def load(folder, name):
    path = os.path.join(folder, name)
    if not os.path.exists(path):
        return None
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def table(heading, alignment, rows):
    lines = ["| " + " | ".join(heading) + " |", "|" + "|".join(alignment) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def number(value):
    """Three digits that count, without an exponent."""
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.{1 if value >= 10 else 2 if value >= 1 else 3}f}"


def time_of(milliseconds):
    if milliseconds is None:
        return ""
    return f"{number(milliseconds * 1000)} µs" if milliseconds < 0.1 else f"{number(milliseconds)} ms"


def machines(results):
    rows = []
    for name, result in results.items():
        facts = result["machine"]
        rows.append([name, facts["date"], f"`{facts['commit']}`", f"{facts['cores']} cores, {facts['processor']}, "
                     f"{number(facts['memory_gb'])} GB", facts["mesa"],
                     re.sub(r"^g\+\+ \(.*\) ", "", facts["compiler"]),
                     f"{facts['load']} to {facts.get('load_in_the_end', facts['load'])}"])
    return table(["Results", "Date", "Commit", "Machine", "Mesa", "GCC", "Load"], ["---"] * 7, rows)


def ratio_of(result):
    """The ratio that a benchmark reports, with its name."""
    for key, value in result.items():
        if isinstance(value, (int, float)) and (("/" in key and "B/s" not in key) or key == "of_memcpy"):
            return key, value
    return None


def singles_of(result):
    """The times and bandwidths of both sides, as library_ns and memcpy_GB/s, or of this library alone, as MB/s."""
    pairs = [re.fullmatch(r"(?:(\w+?)_)?(ns|us|ms|GB/s|MB/s)", key) for key in result]
    return ", ".join(f"{(pair[1] or 'library').replace('_', ' ')} {number(result[pair[0]])} {pair[2].replace('us', 'µs')}"
                     for pair in pairs if pair)


def operations(result):
    rows = []
    for one in sorted(result["benchmarks"], key=lambda entry: entry["program"]):
        program = one["program"].replace("_benchmark", "")
        name = re.sub(r"/iterations:.*", "", one["name"])
        ratio = ratio_of(one)
        if one.get("error_occurred"):
            rows.append([program, name, "fails", "", ""])
        elif ratio:
            rows.append([program, name, f"{ratio[1]:.2f}", ratio[0].replace("/", " / ").replace("_", " "), singles_of(one)])
        else:
            rows.append([program, name, "", "", singles_of(one)])
    return table(["Program", "Operation", "Ratio", "of", "Single values"], ["---", "---", "---:", "---", "---"], rows)


def growth_series(result):
    """{("Particles", "buffer", "moving"): [(size, library ms, by hand ms)]}"""
    series = {}
    for one in result["benchmarks"]:
        parts = one["name"].split("/")
        if one.get("error_occurred") or len(parts) < 3:
            continue
        path, frame = parts[1].rsplit("_", 1)
        series.setdefault((parts[0], path, frame), []).append((int(parts[2]), one["library_ms"], one["other_ms"]))
    return {key: sorted(values) for key, values in series.items()}


def growth(result):
    rows = []
    for (kind, path, frame), values in growth_series(result).items():
        cells = []
        for size in (1000, 64000, 1000000, values[-1][0]):
            found = [value for value in values if value[0] == size]
            cells.append(f"{time_of(found[0][1])}, {found[0][1] / found[0][2]:.2f}" if found else "")
        rows.append([f"{kind}, {path}, {frame}", *cells])
    return table(["Frame", "1,000", "64,000", "1,000,000", "16,000,000 or 8,000,000"],
                 ["---", "---:", "---:", "---:", "---:"], rows)


def job_cells(one):
    if one is None:
        return ["", "", ""]
    if "failed" in one:
        return ["failed", "", ""]
    return [number(one["wall_s"]), number(one["cpu_s"]), number(one["peak_mb"])]


def jobs(result):
    has_f3d = "f3d" in result and any("f3d" in one["programs"] for one in result["jobs"])
    heading = ["Job", "File, MB", "Wall, s", "CPU, s", "Peak, MB"]
    if has_f3d:
        heading += ["F3D: wall, s", "CPU, s", "Peak, MB"]
    rows = []
    for one in result["jobs"]:
        row = [one["name"], number(one["bytes"] / 1e6), *job_cells(one["programs"]["vl_viewport"])]
        if has_f3d:
            row += job_cells(one["programs"].get("f3d"))
        rows.append(row)
    words = f"\nFastest of {result['runs']} runs each, in turns.\n"
    return table(heading, ["---"] + ["---:"] * (len(heading) - 1), rows) + words


def peers(result):
    """A row for each system, a column for each frame."""
    columns = [(kind, frame) for kind in ("points", "triangles") for frame in FRAMES]
    rows = []
    for system in result["systems"]:
        times = system.get("times", {})
        row = [f"{system['name']} {system['version']}".strip()]
        row += [time_of(times.get(f"{kind}/{frame}")) or "fails" for kind, frame in columns]
        covered = system.get("covered_in_both", {})
        row += [f"{100 * covered[kind]:.1f} %" if kind in covered else "" for kind in ("points", "triangles")]
        rows.append(row)
    heading = ["System"] + [f"{kind}, {frame}" for kind, frame in columns] + ["same pixels, points", "same pixels, triangles"]
    return table(heading, ["---"] + ["---:"] * 8, rows)


def main(folder, docs):
    results = {name: load(folder, name + ".json") for name in ("operations", "growth", "jobs", "peers")}
    results = {name: result for name, result in results.items() if result}
    makers = {"operations": operations, "growth": growth, "jobs": jobs, "peers": peers}
    tables = {name: makers[name](results[name]) if name in results else NOT_MEASURED for name in makers}
    tables["machines"] = machines(results)
    with open(TEMPLATE, encoding="utf-8") as file:
        text = file.read()
    for name, words in tables.items():
        text = text.replace("{{" + name + "}}\n", words + "\n")
    with open(os.path.join(docs, "performance.md"), "w", encoding="utf-8") as file:
        file.write(text)
    pictures = os.path.join(docs, "pictures")
    if "growth" in results:
        plots.growth(growth_series(results["growth"]), pictures)
    if "jobs" in results:
        plots.jobs(results["jobs"], pictures)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
