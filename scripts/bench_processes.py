#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Whole processes on a sealed database beside KeePassXC's command line on the same entries.

usage: scripts/bench_processes.py [--runs N] [SIZE...]      (sizes: 1000 10000)

Both programs open the file from the key, do one thing, and the one that adds an entry writes the
file again. The derivation of a key is work on purpose, whose amount the format sets: the line
"open" is the smallest database, that is derivation and start alone; the column "beyond open"
leaves it aside. The peer gets the shortest derivation that it accepts, 100 ms. Files lie in memory.
Needs the bench build of vault_process and Debian's keepassxc.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

PROGRAM = Path(__file__).resolve().parent.parent / "build/bench/bin/vault_process"
KEY = "bench-key-1"


def measure(command, text, runs):
    """Medians of wall and processor time, in milliseconds."""
    walls, processors = [], []
    for _ in range(runs):
        start = time.monotonic()
        child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.PIPE)
        child.stdin.write(text.encode())
        child.stdin.close()
        errors = child.stderr.read()
        _, status, usage = os.wait4(child.pid, 0)
        walls.append(1000 * (time.monotonic() - start))
        processors.append(1000 * (usage.ru_utime + usage.ru_stime))
        if status != 0:
            raise SystemExit(f"{command}: {errors.decode()}")
    return statistics.median(walls), statistics.median(processors)


def medians(pairs):
    return [statistics.median(column) for column in zip(*pairs)]


class Ours:
    name = "keeper"

    def __init__(self, folder, size):
        self.file = f"{folder}/{size}.kvdb"
        self.xml = f"{folder}/{size}.xml"
        with open(self.xml, "wb") as xml:
            subprocess.run([PROGRAM, "make", self.file, KEY, str(size)], check=True, stdout=xml)

    def run(self, what, runs):
        if what == "add":
            return medians(self.addOnce() for _ in range(runs))
        number = ["01010101"] if what == "show" else []
        return measure([PROGRAM, "list" if what == "open" else what, self.file, KEY, *number], "",
                       runs)

    def addOnce(self):
        kept = self.file + ".kept"
        shutil.copy(self.file, kept)
        times = measure([PROGRAM, "add", self.file, KEY, "0199"], "", 1)
        os.replace(kept, self.file)
        return times


class Peer:
    name = "keepassxc-cli"

    def __init__(self, folder, size, xml):
        self.file = f"{folder}/{size}.kdbx"
        subprocess.run(["keepassxc-cli", "import", "-q", "-p", "-t", "100", xml, self.file],
                       check=True, input=f"{KEY}\n{KEY}\n".encode(), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def run(self, what, runs):
        command = {
            "open": ["ls", "-q", self.file],
            "list": ["ls", "-q", "-R", "-f", self.file],
            "show": ["show", "-q", "-s", self.file, "010101/网络对象 0"],
            "add": ["add", "-q", "-u", "user", self.file],
        }[what]
        if what != "add":
            return measure(["keepassxc-cli", *command], KEY + "\n", runs)
        return medians(measure(["keepassxc-cli", *command, f"entry {i}"], KEY + "\n", 1)
                       for i in range(runs))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("sizes", nargs="*", type=int, default=[1000, 10000])
    parser.add_argument("--runs", type=int, default=7)
    options = parser.parse_args()
    memory = "/dev/shm" if os.path.isdir("/dev/shm") else None
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        os.environ["TMPDIR"] = folder
        small = Ours(folder, 1)
        opening = {}
        for program in (small, Peer(folder, 1, small.xml)):
            opening[program.name] = program.run("open", options.runs)
            print(f"{'open':6} {1:7} {program.name:14} wall {opening[program.name][0]:8.1f} ms  "
                  f"processor {opening[program.name][1]:8.1f} ms", flush=True)
        for size in options.sizes:
            ours = Ours(folder, size)
            for what in ("list", "show", "add"):
                for program in (ours, Peer(folder, f"{size}-{what}", ours.xml)):
                    wall, processor = program.run(what, options.runs)
                    beyond = processor - opening[program.name][1]
                    print(f"{what:6} {size:7} {program.name:14} wall {wall:8.1f} ms  "
                          f"processor {processor:8.1f} ms  beyond open {beyond:8.1f} ms",
                          flush=True)


if __name__ == "__main__":
    main()
