#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Refuses a source or test file that no target builds: a test that is not compiled cannot fail."""
import json
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def main() -> int:
    built = {Path(entry["file"]).resolve() for entry in json.loads(Path(sys.argv[1]).read_text())}
    orphans = [
        path.relative_to(ROOT).as_posix()
        for folder in ("src", "tests")
        for path in sorted((ROOT / folder).rglob("*.cpp"))
        if path.resolve() not in built
    ]
    for orphan in orphans:
        print(f"{orphan}: no target builds this file")
    if not orphans:
        print("built files: no orphan")
    return 1 if orphans else 0


if __name__ == "__main__":
    sys.exit(main())
