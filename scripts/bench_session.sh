#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Times the real program on a screen of its own (Xvfb, xdotool, openbox for the wizard): from its
# start to the painted login window, beside an empty window of the same toolkit; from Return behind
# the right key to the painted main window; and the exit on SIGTERM. With an empty database and with
# 100,000 entries. The home lies in memory, so that no disk's flush is measured.
# usage: scripts/bench_session.sh [RUNS [FOLDER-OF-PROGRAMS]]
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-10}
bin=$(realpath "${2:-build/bench/bin}")
python3 - "$runs" "$bin" <<'PY'
import os, statistics, subprocess, sys, time
sys.path.insert(0, "tests/e2e")
os.environ["TMPDIR"] = "/dev/shm"
from desktop import KEY, Desktop

runs, folder = int(sys.argv[1]), sys.argv[2]
keeper = f"{folder}/morvane-keeper"


def timed(desk, *arguments):
    out = subprocess.run([f"{folder}/session_timer", *arguments], env=desk.env,
                         capture_output=True, text=True, timeout=120).stdout
    return [float(word) for word in out.split()]


def medians(rows):
    return [statistics.median(column) for column in zip(*rows[1:])]


with Desktop(keeper) as desk:
    desk.close(desk.make_user(), "the end of the first session")
    # Without a window manager a window is on the screen as soon as the program maps it.
    desk._manager.terminate()
    desk._manager.wait()
    desk._manager = subprocess.Popen(["true"])
    for count in (0, 100_000):
        if count:
            subprocess.run([f"{folder}/fill_database", str(desk.sealed), KEY, str(count)], check=True)
        # By turns, so that a machine that slows down slows both.
        empties, sessions = [], []
        for _ in range(runs + 1):
            empties.append(timed(desk, "empty window", "", "", f"{folder}/empty_window"))
            sessions.append(timed(desk, "登录 - ", KEY, "Morvane Keeper - Alice", keeper))
        (empty,), (login, main, leaving) = medians(empties), medians(sessions)
        print(f"{count:>7} entries: start {login:.0f} ms ({login / empty:.2f} x {empty:.0f} ms of an empty window), "
              f"key to main window {main:.0f} ms, exit {leaving:.0f} ms", flush=True)
PY
