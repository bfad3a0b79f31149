"""Runs the benchmarks of a build and prints one table of what they reach and what they shall reach.

    python3 bench/table.py BIN [AREA...]

Every figure is a ratio within one run but for the few that a user feels as such: the start, the throughput of texts
and the memory. A row that misses its bound ends in "over"; the exit status is the number of such rows, at most 100.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

# Area, start of the benchmark's name, counter, bound, what it is. A bound below 0 is the least, else the most.
ROWS = [
    ("catalogue", "CatalogueLoad/installer", "ratio", 1.5, "walk of Uninstall keys of products / bare read"),
    ("catalogue", "CatalogueLoad/setup", "ratio_asked", 1.5, "walk of those of programs / bare read and questions"),
    ("catalogue", "CatalogueLoad", "growth", 1.33, "time per entry / that at 1,000"),
    ("recorded", "Parse", "bytes_per_second", -100e6, "bytes of registry texts a second"),
    ("reconcile", "ReconcileLists", "ratio", 1.0, "reconciliation / the rest of the load"),
    ("reconcile", "ReconcileLists", "growth", 1.5, "time per entry / that at 1,000"),
    ("packages", "ReadProduct", "of_limit", 1.3, "one package / bare fetch of the same rows"),
    ("packages", "LoadTables", "of_limit", 1.5, "all tables / bare fetch of the same rows"),
    ("packages", "LoadTables", "of_texts", 3.0, "bytes of loaded tables / bytes of their texts"),
    ("packages_store", "Packages", "ratio", 1.5, "store packages / bare reads"),
    ("gather", "Walk", "ratio", 1.5, "walk of a folder / bare enumeration"),
    ("gather", "Walk", "find", 2.0, "walk of a folder / find as a process"),
    ("gather", "Walk", "bytes_file", 600, "bytes held for a file beyond its path"),
    ("gather", "Estimate", "busy", -0.8, "share of the processors that estimates use"),
    ("gather", "Links", "again", 0.01, "second question after links / the first"),
    ("analysis", "AnalyzeProduct", "of_limit", 2.0, "analysis / tables and bare reads"),
    ("scans", "Scans", "ratio_asked", 1.5, "all scans / bare calls of the registry and questions after paths"),
]
PROGRAM_ROWS = [
    ("start", "list of the sample machine, ms", 30),
    ("memory", "list of 10,000 entries, peak MB", 150),
]


def benchmark(program):
    run = subprocess.run([program, "--benchmark_format=json"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                         check=True)
    return json.loads(run.stdout)["benchmarks"]


def list_start(roundup, root):
    """The fastest of many, in ms: what else the computer does does not count."""
    times = []
    for _ in range(20):
        start = time.perf_counter()
        subprocess.run([roundup, "list", "--machine", root / "samples/machine"], stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=True)
        times.append(time.perf_counter() - start)
    return min(times) * 1e3


def list_memory(roundup):
    """Peak memory in MB of one list of 10,000 Uninstall entries."""
    with tempfile.TemporaryDirectory() as folder:
        lines = ["Windows Registry Editor Version 5.00", ""]
        for i in range(10000):
            lines += [rf"[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\Program {i}]",
                      f'"DisplayName"="Program number {i}"', f'"DisplayVersion"="1.{i}"', '"Publisher"="A maker"',
                      rf'"InstallLocation"="C:\\Program Files\\Program {i}"', '"InstallDate"="20260101"',
                      rf'"UninstallString"="\"C:\\Program Files\\Program {i}\\uninstall.exe\""', ""]
        pathlib.Path(folder, "registry").mkdir()
        pathlib.Path(folder, "registry/uninstall.reg").write_text("\r\n".join(lines), encoding="utf-8")
        pathlib.Path(folder, "machine.ini").touch()
        child = os.fork()
        if child == 0:
            with open(os.devnull, "w", encoding="utf-8") as nowhere:
                os.dup2(nowhere.fileno(), 1)
                os.dup2(nowhere.fileno(), 2)
            os.execv(roundup, [roundup, "list", "--machine", folder])
        _, status, used = os.wait4(child, 0)
        if status != 0:
            sys.exit("the program did not list the machine with 10,000 entries")
        return used.ru_maxrss * 1024 / 1e6


def print_row(name, counter, value, bound, text):
    over = value > bound if bound > 0 else value < -bound
    shown = f"{value / 1e6:.0f} M" if value >= 1e6 else f"{value:.2f}"
    limit = f"<= {bound:g}" if bound > 0 else f">= {-bound / 1e6:.0f} M" if bound < -1e6 else f">= {-bound:g}"
    print(f"{name:<41} {counter:<17} {shown:>9}  {limit:<9} {text}{'  over' if over else ''}", flush=True)
    return over


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    wanted = sys.argv[2:] or list(dict.fromkeys([row[0] for row in ROWS] + [row[0] for row in PROGRAM_ROWS]))
    over = 0
    for area in wanted:
        rows = [row for row in ROWS if row[0] == area]
        for one in benchmark(folder / f"bench_{area}") if rows else []:
            name = one["name"].replace("/manual_time", "").replace("/real_time", "").split("/iterations")[0]
            for _, start, counter, bound, text in rows:
                if name.startswith(start) and counter in one:
                    over += print_row(f"{area} {name}", counter, one[counter], bound, text)
        for _, text, bound in (row for row in PROGRAM_ROWS if row[0] == area):
            roundup = folder / "roundup"
            value = list_start(roundup, folder.parents[2]) if area == "start" else list_memory(roundup)
            over += print_row(area, "", value, bound, text)
    return min(over, 100)


if __name__ == "__main__":
    sys.exit(main())
