#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Small rules that no compiler knows; each message says why the rule stands."""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

RULES = [
    (
        re.compile(r"\b(sleep_for|QTest::qSleep|usleep|QThread::m?sleep)\b"),
        ("tests/",),
        "a fixed sleep is either too short on a loaded machine or too long on every other: wait for the condition",
    ),
    (re.compile(r"\bstd::(rand|mt19937|random_device)\b"), ("src/",), "random numbers come through the Random port"),
    (
        re.compile(r"QDateTime::currentDateTime|QDate::currentDate|system_clock::now"),
        ("src/crypto", "src/store", "src/app", "src/guard", "src/tools", "src/workspace", "src/ui"),
        "the time comes from the Clock port, or no test can set it",
    ),
    (re.compile(r"QMessageBox|QInputDialog|QFileDialog"), ("src/app", "src/guard", "src/store", "src/tools", "src/workspace"),
     "logic speaks to people through the Prompt port"),
    (re.compile(r"std::thread|std::jthread|QThread\b(?!>|::currentThread)|moveToThread|QtConcurrent"), ("src/",), "the program has one thread"),
]


def main() -> int:
    faults = []
    files = subprocess.run(
        ["git", "ls-files", "-co", "--exclude-standard", "*.cpp", "*.h"], cwd=ROOT, capture_output=True, text=True, check=True
    ).stdout.split()
    for name in files:
        text = (ROOT / name).read_text(encoding="utf-8")
        if "SPDX-License-Identifier" not in text[:400]:
            faults.append(f"{name}:1: no SPDX licence line")
        for number, line in enumerate(text.splitlines(), 1):
            if "NOLINT(style)" in line:
                continue
            code = line.split("//")[0]
            for pattern, places, why in RULES:
                if name.startswith(places) and pattern.search(code):
                    faults.append(f"{name}:{number}: {why}")
    print("\n".join(faults) if faults else "style: clean")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
