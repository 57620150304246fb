#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over src/, two units at a time, and remembers what was clean.

usage: tidy.py BUILD-FOLDER, one that joins several files to a unit: most of the time goes into the
toolkit's headers, which are then read once a unit. A unit is checked again when its preprocessed text,
its flags or the configuration changes.
"""
import hashlib
import json
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def fingerprint(entry: dict, config: bytes) -> str:
    words = [w for w in shlex.split(entry["command"]) if w != "ccache"]
    out = words.index("-o")
    del words[out : out + 2]
    words = [w for w in words if w != "-c"] + ["-E"]
    text = subprocess.run(words, cwd=entry["directory"], capture_output=True, check=True).stdout
    return hashlib.sha256(config + entry["command"].encode() + text).hexdigest()


def check(entry: dict, build: Path, config: bytes, cache: Path) -> str:
    mark = cache / fingerprint(entry, config)
    if mark.exists():
        return ""
    run = subprocess.run(
        ["clang-tidy", "--quiet", "-p", str(build), entry["file"]], cwd=ROOT, capture_output=True, text=True
    )
    if run.returncode == 0:
        mark.touch()
        return ""
    return f"{run.stdout}{run.stderr}"


def main() -> int:
    build = Path(sys.argv[1]).resolve()
    cache = build / "tidy-clean"
    cache.mkdir(exist_ok=True)
    config = (ROOT / ".clang-tidy").read_bytes()
    entries = {
        e["file"]: e
        for e in json.loads((build / "compile_commands.json").read_text())
        if (e["file"].startswith(f"{ROOT}/src/") or "/Unity/" in e["file"]) and "_autogen/" not in e["file"]
    }
    with ThreadPoolExecutor(2) as pool:
        faults = [r for r in pool.map(lambda e: check(e, build, config, cache), entries.values()) if r]
    print("\n".join(faults) if faults else f"clang-tidy: {len(entries)} units clean")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
