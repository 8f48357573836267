"""The facts about a machine that stand beside every result."""

import datetime
import os
import subprocess


def _first_line(*command):
    try:
        lines = subprocess.run(command, capture_output=True, text=True, check=False).stdout.splitlines()
    except FileNotFoundError:
        return ""
    return lines[0].strip() if lines else ""


def _processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        for line in file:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return "unknown"


def _memory_gigabytes():
    return round(os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 1e9, 1)


def version_of(package):
    """The version of a package of Debian; empty where it is not installed."""
    return _first_line("dpkg-query", "-W", "-f=${Version}\n", package)


def facts():
    """What a reader needs to judge a time, with the load at this moment."""
    return {
        "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
        "cores": os.cpu_count(),
        "processor": _processor(),
        "memory_gb": _memory_gigabytes(),
        "kernel": os.uname().release,
        "mesa": version_of("libgl1-mesa-dri"),
        "compiler": _first_line("g++", "--version"),
        "commit": _first_line("git", "rev-parse", "--short", "HEAD"),
        "load": round(os.getloadavg()[0], 2),
    }
