#!/usr/bin/env python3
"""Runs benchmark programs, each benchmark in a process of its own, and writes all results to one JSON file.

    run_benchmarks.py RESULT.json PROGRAM... [-- OPTION...]

Mesa, told to draw nothing, keeps all that was sent until the process ends (2.3 GB for a pair of a million boxes); hence the
processes. Options go to the benchmarks, as in --benchmark_filter=Box2; with a filter, the file keeps the other results
that it had. The exit status tells whether a benchmark failed.
"""

import json
import os
import re
import subprocess
import sys
import tempfile

import machine


def names_of(program, options):
    listed = subprocess.run([program, *options, "--benchmark_list_tests"], capture_output=True, text=True, check=False)
    return [line for line in listed.stdout.splitlines() if line and not line.startswith("Failed to match")]


def run(program, name, options):
    """The result of one benchmark as a dictionary of Google Benchmark."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        command = [program, *options, f"--benchmark_filter=^{re.escape(name)}$",
                   f"--benchmark_out={out.name}", "--benchmark_out_format=json"]
        load = os.getloadavg()[0]
        finished = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        try:
            with open(out.name, encoding="utf-8") as file:
                result = json.load(file)["benchmarks"][0]
        except (ValueError, IndexError, KeyError):
            words = finished.stderr.strip().splitlines()
            reason = words[-1] if words else "no result"
            result = {"name": name, "error_occurred": True,
                      "error_message": f"ended with status {finished.returncode}: {reason}"}
    # Of the many fields, those that say something about a pair.
    dropped = ("family_index", "per_family_instance_index", "run_name", "run_type", "repetitions", "repetition_index",
               "threads", "cpu_time")
    kept = {key: value for key, value in result.items() if key not in dropped}
    kept["name"] = name
    kept["program"] = os.path.basename(program)
    kept["load"] = round(load, 2)
    return kept


def line_of(result):
    if result.get("error_occurred"):
        return f"{result['name']}: ERROR OCCURRED: {result.get('error_message', '')}"
    name = result["name"].split("/iterations:")[0]
    ratios = [f"{key} {value:.3g}" for key, value in result.items()
              if isinstance(value, float) and ("/" in key or key == "of_memcpy")]
    times = [f"{key} {value:.4g}" for key, value in result.items() if key.endswith(("_ms", "_ns", "_us"))]
    return f"{name:45} {', '.join(ratios + times)}"


def write(path, facts, results, former):
    """Writes the results, and those of a former run that have no successor."""
    fresh = {(result["program"], result["name"]) for result in results}
    kept = [result for result in former if (result["program"], result["name"]) not in fresh]
    facts["load_in_the_end"] = round(os.getloadavg()[0], 2)
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"machine": facts, "benchmarks": results + kept}, file, indent=1)
        file.write("\n")


def main(words):
    options = words[words.index("--") + 1:] if "--" in words else []
    words = words[:words.index("--")] if "--" in words else words
    path, programs = words[0], words[1:]
    facts = machine.facts()
    former = []
    if any(option.startswith("--benchmark_filter") for option in options) and os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            former = json.load(file)["benchmarks"]
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    results = []
    for program in programs:
        for name in names_of(program, options):
            results.append(run(program, name, options))
            print(line_of(results[-1]), flush=True)
            write(path, facts, results, former)  # each time: what interrupts the run does not take the results
    return any(result.get("error_occurred") for result in results)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))
