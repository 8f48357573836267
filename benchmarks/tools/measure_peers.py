#!/usr/bin/env python3
"""Measures the same scenes in other systems, and compares the pictures that they draw.

    measure_peers.py RESULT.json FOLDER [NAME...]

FOLDER holds the programs peer_*. A display must be there. The rounds of all systems take turns, so that other load affects all of
them; the result has the fastest frame. Pictures are drawn on llvmpipe, and compared with those of vl_raster_gl: of the pixels
that are not black in one of them, the share that is not black in both.
"""

import json
import os
import subprocess
import sys
import tempfile

import machine
import run_benchmarks

SYSTEMS = [("vl_raster_gl", "this library", ""), ("vtk", "VTK", "libvtk9-dev"),
           ("openscenegraph", "OpenSceneGraph", "libopenscenegraph-dev"), ("coin", "Coin", "libcoin-dev")]
KINDS = ("points", "triangles")
FRAMES = ("unchanged", "moving", "first")
ROUNDS = 3


def covered(path):
    """Which pixels of a PPM are not black, as a set of numbers."""
    with open(path, "rb") as file:
        parts = file.read().split(b"\n", 3)
    pixels = parts[3]
    return {i // 3 for i in range(0, len(pixels), 3) if pixels[i:i + 3] != b"\0\0\0"}


def draw(program, kind, folder):
    path = os.path.join(folder, f"{os.path.basename(program)}_{kind}.ppm")
    finished = subprocess.run([program, "--picture", kind, path], capture_output=True, text=True, check=False)
    return covered(path) if finished.returncode == 0 else None


def main(path, folder, names):
    result = {"machine": machine.facts(), "rounds": ROUNDS, "systems": []}
    entries = {}
    for name, title, package in SYSTEMS:
        if not names or name in names:
            entries[name] = {"name": title, "version": machine.version_of(package).split("+")[0] if package else "",
                             "times": {}, "failed": {}, "covered_in_both": {}}
    failed = False
    for _ in range(ROUNDS):
        for kind in KINDS:
            for frame in FRAMES:
                for name, entry in entries.items():
                    program = os.path.join(folder, "peer_" + name)
                    one = run_benchmarks.run(program, f"{kind}/{frame}/iterations:10/manual_time", [])
                    if one.get("error_occurred"):
                        print(name, kind, frame, one["error_message"], file=sys.stderr)
                        entry["failed"][f"{kind}/{frame}"] = one["error_message"].split(":")[0]
                        failed = failed or name == "vl_raster_gl"
                        continue
                    key = f"{kind}/{frame}"
                    entry["times"][key] = min(entry["times"].get(key, 1e9), round(one["fastest_ms"], 5))
    with tempfile.TemporaryDirectory() as pictures:
        for kind in KINDS:
            own = draw(os.path.join(folder, "peer_vl_raster_gl"), kind, pictures)
            for name, entry in entries.items():
                theirs = draw(os.path.join(folder, "peer_" + name), kind, pictures) if name != "vl_raster_gl" else None
                if own and theirs is not None:
                    entry["covered_in_both"][kind] = round(len(own & theirs) / len(own | theirs), 4)
    result["systems"] = list(entries.values())
    result["machine"]["load_in_the_end"] = round(os.getloadavg()[0], 2)
    for entry in result["systems"]:
        print(entry)
    with open(path, "w", encoding="utf-8") as file:
        json.dump(result, file, indent=1)
        file.write("\n")
    return failed


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2], sys.argv[3:]))
