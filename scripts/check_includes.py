#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Refuses an include that points up the house, and a library header in a folder that must not see it.

The order of folders is the order of dependency: a folder includes itself and what stands below it.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent / "src"

ALLOWED = {
    "crypto": set(),
    "platform": {"crypto"},
    "store": {"platform", "crypto"},
    "app": {"store", "platform", "crypto"},
    "guard": {"app", "store", "platform", "crypto"},
    "tools": {"guard", "app", "store", "platform", "crypto"},
    "workspace": {"tools", "guard", "app", "store", "platform", "crypto"},
    "ui": {"workspace", "tools", "guard", "app", "store", "platform", "crypto"},
    "cli": {"tools", "guard", "app", "store", "platform", "crypto"},
}

# A library that only the named folders (or files, by prefix) may see.
FOREIGN = [
    (re.compile(r"^sqlcipher/|^sqlite3\.h"), ("platform/",)),
    (re.compile(r"^X11/|^xcb/"), ("platform/linux/",)),
    (re.compile(r"^QtDBus|^QDBus"), ("platform/linux/",)),
    (re.compile(r"^openssl/"), ("platform/database_checks", "platform/page_key")),
    (re.compile(r"^mcrypt\.h"), ()),
    (
        re.compile(
            r"^Qt(Widgets|Gui|Svg)\b|^Q(Widget|Dialog|MainWindow|Label|PushButton|LineEdit|MessageBox|"
            r"Application|GuiApplication|Icon|Pixmap|Painter|Clipboard|SystemTrayIcon|Menu|Action)\b"
        ),
        ("ui/", "main.cpp", "desktop_", "auto_guard_parts.", "protection_parts.", "platform/linux/"),
    ),
]

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def main() -> int:
    faults = []
    for path in sorted(p for p in ROOT.rglob("*") if p.suffix in {".h", ".cpp"}):
        relative = path.relative_to(ROOT).as_posix()
        folder = relative.split("/")[0] if "/" in relative else ""
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            quoted, target = match.group(1) == '"', match.group(2)
            where = f"src/{relative}:{number}"
            if quoted:
                top = target.split("/")[0]
                if folder == "" and "/" not in target:
                    continue  # the programs' own files, which may see all
                if "/" not in target or target.startswith("."):
                    faults.append(f'{where}: write the include from src/ on, as "folder/file.h": {target}')
                elif folder and top != folder and top not in ALLOWED.get(folder, set()):
                    faults.append(f"{where}: {folder}/ may not use {top}/: {target}")
                continue
            for pattern, places in FOREIGN:
                if pattern.search(target) and not relative.startswith(places):
                    faults.append(f"{where}: only {', '.join(places) or 'tests and benchmarks'} may include <{target}>")
    print("\n".join(faults) if faults else "includes: all point down")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
