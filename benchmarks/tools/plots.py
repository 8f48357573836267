"""The plots of docs/performance.md, as SVG by gnuplot.

A plot has no background, and all its colors are dark enough for a white page and bright enough for a black one.
"""

import os
import re
import subprocess

GRAY = "#7f8790"
COLORS = {"buffer": "#2f81d6", "chunks": "#d0762a", "memory": "#3a9a5b"}
TITLES = {"unchanged": "A frame of what is unchanged", "moving": "A frame of what moves", "first": "The first frame"}


def _gnuplot(script, path):
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    with open(path, encoding="utf-8") as file:
        text = file.read()
    # The name of the font, for machines that have others, and one file for the same numbers.
    text = text.replace('font-family="sans"', 'font-family="sans-serif"')
    text = re.sub(r"<desc>.*?</desc>", "<desc>Made by scripts/bench</desc>", text, flags=re.S)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def _heading(path, width, height):
    return f"""set terminal svg size {width},{height} font 'sans,13' noenhanced
set output '{path}'
set border 3 lc rgb '{GRAY}'
set tics nomirror textcolor rgb '{GRAY}'
set xlabel textcolor rgb '{GRAY}'
set ylabel textcolor rgb '{GRAY}'
set title textcolor rgb '{GRAY}'
set key textcolor rgb '{GRAY}'
set grid lc rgb '{GRAY}' lw 0.3
"""


def _block(name, rows):
    return f"${name} << EOD\n" + "\n".join(" ".join(str(value) for value in row) for row in rows) + "\nEOD\n"


def growth(series, folder):
    """One picture for particles and one for triangles, with a panel for each frame; dashes are the program by hand."""
    for kind in ("Particles", "Triangles"):
        path = os.path.join(folder, f"performance_growth_{kind.lower()}.svg")
        own = {key: values for key, values in series.items() if key[0] == kind}
        if not own:
            continue
        blocks = "".join(_block("_".join(key), values) for key, values in own.items())
        script = _heading(path, 1080, 420) + blocks + """set logscale xy
set xrange [700:25000000]
set xtics ('1,000' 1000, '10,000' 10000, '100,000' 100000, '1 M' 1000000, '10 M' 10000000)
set yrange [0.001:1000]
set ytics ('1 µs' 0.001, '10 µs' 0.01, '0.1 ms' 0.1, '1 ms' 1, '10 ms' 10, '0.1 s' 100, '1 s' 1000)
set key top left Left reverse samplen 2
set multiplot layout 1,3
"""
        for frame in ("unchanged", "moving", "first"):
            script += "" if frame == "unchanged" else "unset key\n"  # one for all panels
            script += f"set title '{TITLES[frame]}'\nset xlabel '{kind.lower()}'\n"
            curves = []
            for _, path_name, frame_name in [key for key in own if key[2] == frame]:
                block = f"${kind}_{path_name}_{frame_name}"
                color = COLORS[path_name]
                name = path_name if kind == "Particles" else "library"
                curves.append(f"{block} using 1:2 with linespoints pt 7 ps 0.5 lw 2 lc rgb '{color}' title '{name}'")
                curves.append(f"{block} using 1:3 with lines dt 2 lw 1.5 lc rgb '{color}' title '{name}, by hand'"
                              if kind == "Particles" else
                              f"{block} using 1:3 with lines dt 2 lw 1.5 lc rgb '{color}' title 'by hand'")
            script += "plot " + ", \\\n  ".join(curves) + "\n"
        _gnuplot(script + "unset multiplot\n", path)


def jobs(result, folder):
    """Bars of the wall time of each job."""
    path = os.path.join(folder, "performance_jobs.svg")
    programs = ["vl_viewport"] + (["f3d"] if any("f3d" in job["programs"] for job in result["jobs"]) else [])
    names = {"vl_viewport": "vl_viewport", "f3d": "F3D"}
    colors = {"vl_viewport": COLORS["buffer"], "f3d": COLORS["chunks"]}
    script = _heading(path, 1080, 80 + 44 * len(result["jobs"]))
    count = len(result["jobs"])
    tics = ", ".join(f"'{job['name']}' {count - row}" for row, job in enumerate(result["jobs"]))
    curves = []
    for shift, program in enumerate(programs):
        rows = []
        for row, job in enumerate(result["jobs"]):
            one = job["programs"].get(program)
            if one and "failed" not in one:
                middle = count - row + 0.2 - 0.4 * shift if len(programs) > 1 else count - row
                rows.append((0, middle, 0, one["wall_s"], middle - 0.18, middle + 0.18))
        script += _block(program, rows)
        curves.append(f"${program} using 1:2:3:4:5:6 with boxxyerror fs solid lc rgb '{colors[program]}' "
                      f"title '{names[program]}'")
    script += f"""unset grid
set grid x lc rgb '{GRAY}' lw 0.3
set lmargin 52
set yrange [0.4:{count + 0.6}]
set xrange [0:*]
set ytics ({tics})
set xlabel 'seconds on the wall'
set key top right
plot """ + ", ".join(curves) + "\n"
    _gnuplot(script, path)
