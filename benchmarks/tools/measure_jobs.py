#!/usr/bin/env python3
"""Measures whole jobs: a program starts, reads a file, writes a picture and ends.

    measure_jobs.py RESULT.json VIEWPORT FILES [--runs N] [--f3d PROGRAM]

VIEWPORT is the program vl_viewport, FILES the folder that vl_job_files has filled. Each job runs N times (5), one run of
each program after the other, so that other load affects all of them. The result has the fastest wall time, the least user
and system time, and the least peak of resident memory, as the kernel counts them for the process and its children.
A program that fails has no times but a reason. With --f3d a display must be there, as xvfb-run provides one.
"""

import argparse
import json
import os
import re
import sys
import tempfile
import time

import machine

SIZE = (1280, 720)

# What the table calls the job, its file, more options of vl_viewport, and those of F3D or None where F3D does not read it.
JOBS = [
    ("4 triangles, OBJ", "small.obj", [], []),
    ("1,000,000 triangles, PLY binary", "surface.ply", [], []),
    ("1,000,000 triangles, PLY text", "surface_text.ply", [], []),
    ("1,000,000 triangles, STL binary", "surface.stl", [], []),
    ("1,000,000 triangles, OBJ", "surface.obj", [], []),
    ("1,000,000 points, PLY binary", "points.ply", [], []),
    ("1,000,000 spheres, PLY binary", "points.ply", ["--particles", "spheres"], ["--point-sprites"]),
    ("1,000,000 points, LAMMPS dump", "points.lammpstrj", [], None),
    ("100 frames of 10,000 points, LAMMPS dump, the last frame", "frames.lammpstrj", [], None),
    ("100 frames of 10,000 points, LAMMPS dump, ten pictures", "frames.lammpstrj", ["--frames", "::10"], None),
]


def run(command, picture):
    """One run: its times in seconds and its memory in megabytes, or a reason why there are none."""
    for former in (picture, picture.replace("%04d", "0000")):
        if os.path.exists(former):
            os.remove(former)
    with tempfile.TemporaryFile() as said:
        start = time.monotonic()
        child = os.posix_spawn(command[0], command, os.environ,
                               file_actions=[(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
                                             (os.POSIX_SPAWN_DUP2, said.fileno(), 1),
                                             (os.POSIX_SPAWN_DUP2, said.fileno(), 2)])
        _, status, usage = os.wait4(child, 0)
        wall = time.monotonic() - start
        said.seek(0)
        words = said.read().decode(errors="replace").strip().splitlines()
    if status != 0 or not os.path.exists(picture.replace("%04d", "0000")):
        reason = words[-1] if words else "without a word"
        return {"failed": f"status {os.waitstatus_to_exitcode(status)}: {reason}"}
    return {"wall_s": wall, "cpu_s": usage.ru_utime + usage.ru_stime, "peak_mb": usage.ru_maxrss / 1024}


def least(runs):
    """The least of each number; other load only adds to them."""
    failed = [one for one in runs if "failed" in one]
    if failed:
        return failed[0]
    return {key: round(min(one[key] for one in runs), 3) for key in runs[0]}


def commands_of(job, options, pictures):
    """The command and the picture of each program for a job."""
    name, file, words, f3d_words = job
    source = os.path.join(options.files, file)
    stem = re.sub(r"[^a-z0-9]+", "_", name.lower())
    count = "_%04d" if "--frames" in words else ""
    own = os.path.join(pictures, f"{stem}{count}.png")
    commands = {"vl_viewport": ([options.viewport, source, "--size", f"{SIZE[0]}x{SIZE[1]}", *words, "--out", own], own)}
    if options.f3d and f3d_words is not None:
        other = os.path.join(pictures, f"{stem}_f3d.png")
        commands["f3d"] = ([options.f3d, source, "--dry-run", *f3d_words, f"--resolution={SIZE[0]},{SIZE[1]}", f"--output={other}"],
                           other)
    return commands


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("result")
    parser.add_argument("viewport")
    parser.add_argument("files")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--f3d")
    options = parser.parse_args()
    result = {"machine": machine.facts(), "runs": options.runs, "size": list(SIZE), "jobs": []}
    if options.f3d:
        result["f3d"] = machine.version_of("f3d")
    pictures = os.path.join(options.files, "pictures")
    os.makedirs(pictures, exist_ok=True)
    for job in JOBS:
        commands = commands_of(job, options, pictures)
        runs = {program: [] for program in commands}
        load = os.getloadavg()[0]
        for _ in range(options.runs):
            for program, (command, picture) in commands.items():
                runs[program].append(run(command, picture))
        entry = {"name": job[0], "bytes": os.path.getsize(os.path.join(options.files, job[1])), "load": round(load, 2),
                 "programs": {program: least(all_runs) for program, all_runs in runs.items()}}
        result["jobs"].append(entry)
        print(entry["name"], entry["programs"], flush=True)
    result["machine"]["load_in_the_end"] = round(os.getloadavg()[0], 2)
    os.makedirs(os.path.dirname(options.result) or ".", exist_ok=True)
    with open(options.result, "w", encoding="utf-8") as file:
        json.dump(result, file, indent=1)
        file.write("\n")
    return any("failed" in entry["programs"]["vl_viewport"] for entry in result["jobs"])


if __name__ == "__main__":
    sys.exit(main())
