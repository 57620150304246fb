#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A person keeps entries: adds a directory and entries of each kind, changes, drags, bookmarks and
deletes them by keys and mouse, logs in again, and finds everything.

usage: entries_by_keyboard.py MORVANE-KEEPER PRINT-ENTRIES
"""
import subprocess
import sys
import time

from desktop import KEY, Desktop, check

MAIN = "Morvane Keeper - Alice"


def choose_root(desk, row):
    """The tree shows its three roots alone."""
    desk.press("ctrl+1", "Home", *["Down"] * row, "Return")


def add(desk, fields, shortcut="ctrl+n"):
    """Title, location, number (none for a file) and password; the save is by its shortcut."""
    desk.press(shortcut)
    desk.type_text(fields[0])
    desk.press("Tab")
    for text in fields[1:]:
        desk.press("Tab")
        if text:
            desk.type_text(text)
    desk.press("ctrl+s")
    desk.window(MAIN)


def fold_all(desk):
    """Only the three roots are open rows afterwards, so that "Down" counts them."""
    desk.press("ctrl+1", "Home", "Left", "Down", "Left", "Down", "Left", "Home")


def fill(desk):
    fold_all(desk)
    desk.press("alt+d", "n")
    desk.window("创建子目录")
    desk.press("ctrl+a")
    desk.type_text("mail")
    desk.press("Return")
    desk.window(MAIN)
    fold_all(desk)
    for row, (kind, place, number) in enumerate(
        [("web", "https://example.org/", "alice"), ("prg", "/usr/bin/prg", "bob"), ("fil", "/tmp/fil", "")]
    ):
        choose_root(desk, row)
        for i in (1, 2, 3):
            add(desk, [f"{kind}{i}", f"{place}{i}", number, f"pw-{kind}{i}"])
        fold_all(desk)


def find(desk, title):
    desk.press("ctrl+f", "ctrl+a")
    desk.type_text(title)


def change_and_delete(desk):
    find(desk, "web1")
    desk.press("F2", "ctrl+a")
    desk.type_text("web1-new")
    desk.press("ctrl+s")
    find(desk, "prg2")
    desk.press("ctrl+b")
    find(desk, "fil3")
    desk.press("alt+Delete")
    desk.window("Morvane Keeper")
    desk.press("alt+n")  # the entry alone
    desk.window(MAIN)
    find(desk, "prg3")
    desk.press("alt+Delete")
    desk.window("Morvane Keeper")
    desk.press("Return")  # no, as preset
    desk.window(MAIN)


def row_place(desk, row):
    """Middle of a row of the tree, seen by the selection that moves from it to the next."""
    desk.press("ctrl+1", "Home", *["Down"] * row)
    time.sleep(0.3)
    width, before = desk.picture()
    desk.press("Down")
    time.sleep(0.3)
    _, after = desk.picture()
    # The left part only: a clock runs at the right.
    part = slice(60 * 3, 300 * 3)
    changed = [y for y in range(len(before)) if before[y][part] != after[y][part]]
    check(len(changed) > 10, "the selection moves in the tree")
    return 100, changed[0] + (changed[-1] - changed[0]) // 4


def drag_into_directory(desk):
    """The tree shows: 01, its directory "mail", web1-new, web2, web3, 02, 03."""
    desk.x("windowsize", "--sync", desk.x("getactivewindow"), "1000", "700")
    desk.x("windowmove", "--sync", desk.x("getactivewindow"), "20", "40")
    fold_all(desk)
    desk.press("ctrl+1", "Home", "Right")
    desk.drag(row_place(desk, 3), row_place(desk, 1))
    desk.window("Morvane Keeper")
    desk.press("alt+y")
    desk.window(MAIN)


def kept(marked):
    """What must stand in the database: directories, and entries with password and bookmark."""
    entries = [
        ("0101", "web1-new", "web1"),
        ("010101", "web2", "web2"),
        ("0103", "web3", "web3"),
        ("0201", "prg1", "prg1"),
        ("0202", "prg2", "prg2"),
        ("0203", "prg3", "prg3"),
        ("0302", "fil1", "fil1"),
        ("0303", "fil2", "fil2"),
    ]
    rows = [["dir", number, title] for number, title in (("01", "网络对象"), ("0101", "mail"))]
    rows += [["dir", "02", "应用程序"], ["dir", "03", "用户文件"]]
    rows += [["ent", n, title, f"pw-{word}", "1" if title in marked else "0"] for n, title, word in entries]
    return sorted(rows)


def check_rows(desk, printer, marked):
    out = subprocess.run([printer, str(desk.sealed), KEY], capture_output=True, text=True, check=True).stdout
    rows = [line.split("\t") for line in out.splitlines()]
    rows = [row for row in rows if row[2] != "软件说明"]
    check(sorted(rows) == kept(marked), f"the database holds what was entered, not {rows}")


with Desktop(sys.argv[1]) as desk:
    program = desk.make_user()
    fill(desk)
    change_and_delete(desk)
    drag_into_directory(desk)
    desk.close(program, "the end of the session")
    check_rows(desk, sys.argv[2], ["prg2"])

    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window(MAIN)
    found = ["web1-new", "web2", "web3", "prg1", "prg3", "fil1", "fil2"]
    for title in found:
        find(desk, title)
        desk.press("ctrl+b")
    desk.close(program, "the end of the second session")
    check_rows(desk, sys.argv[2], [*found, "prg2"])
