#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over src/, two files at a time, and remembers what was clean.

A file is checked again when its preprocessed text, its flags or the configuration changes: the
configured tools spend seconds a file on the toolkit's headers, and most files did not change.
"""
import hashlib
import json
import re
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
    name = Path(entry["file"]).relative_to(ROOT).as_posix()
    mark = cache / fingerprint(entry, config)
    if mark.exists():
        return ""
    run = subprocess.run(
        ["clang-tidy", "--quiet", "-p", str(build), entry["file"]], cwd=ROOT, capture_output=True, text=True
    )
    if run.returncode == 0:
        mark.touch()
        return ""
    return f"{name}:\n{run.stdout}{run.stderr}"


def main() -> int:
    build = Path(sys.argv[1]).resolve()
    cache = build / "tidy-clean"
    cache.mkdir(exist_ok=True)
    config = (ROOT / ".clang-tidy").read_bytes()
    entries = {
        e["file"]: e
        for e in json.loads((build / "compile_commands.json").read_text())
        if re.match(re.escape(str(ROOT / "src")) + "/", e["file"])
    }
    with ThreadPoolExecutor(2) as pool:
        faults = [r for r in pool.map(lambda e: check(e, build, config, cache), entries.values()) if r]
    print("\n".join(faults) if faults else f"clang-tidy: {len(entries)} files clean")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
