#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A person locks the manager in the middle of an edit. While it is locked, no secret that was planted
is in its memory or in any file, and the private folder stays where it is; afterwards the edit goes on,
and after a crash the folder is free again.

usage: lock_by_keyboard.py MORVANE-KEEPER PRINT-ENTRIES
"""
import signal
import subprocess
import sys
import time

from desktop import KEY, SECOND, Desktop, check

MAIN = "Morvane Keeper - Alice"
LOCKED = "Morvane Keeper - 已锁定"
SAVED = ["saved-num-4711", "saved-pw-Xq7"]
TYPED = ["typed-num-0815", "typed-pw-Zk9", "typed remark Vw3"]
SECRETS = [KEY, SECOND, *SAVED, *TYPED]


def encodings(secret):
    return secret.encode(), secret.encode("utf-16-le")


def found_in_memory(process):
    found = set()
    with open(f"/proc/{process.pid}/maps") as maps, open(f"/proc/{process.pid}/mem", "rb", 0) as memory:
        for line in maps:
            span, rights = line.split()[:2]
            begin, end = (int(number, 16) for number in span.split("-"))
            if rights[0] != "r":
                continue
            try:
                memory.seek(begin)
                data = memory.read(end - begin)
            except (OSError, OverflowError):  # the kernel's own pages
                continue
            found |= {secret for secret in SECRETS if any(form in data for form in encodings(secret))}
    return found


def found_in_files(desk):
    return {
        (secret, str(path))
        for path in desk.home.rglob("*")
        if path.is_file()
        for secret in SECRETS
        if any(form in path.read_bytes() for form in encodings(secret))
    }


def type_entry(desk, title, number, password, remark=""):
    desk.press("ctrl+1", "Home", "Return", "ctrl+n")
    desk.type_text(title)
    desk.press("Tab", "Tab", "Tab")
    desk.type_text(number)
    desk.press("Tab")
    desk.type_text(password)
    if remark:
        desk.press("Tab", "Tab")
        desk.type_text(remark)


def can_rename(folder):
    """Whether it stays renamed. It is free again afterwards."""
    other = folder.with_name("elsewhere")
    subprocess.run(["mv", str(folder), str(other)], capture_output=True)
    time.sleep(0.5)
    if not other.exists():
        return False
    other.rename(folder)
    return True


def unlock_at_the_second_try(desk):
    desk.press("Return")
    desk.window("验证独立密码")
    desk.type_text("wrong1")
    desk.press("Return")
    desk.window("Morvane Keeper")  # one chance less
    desk.press("Return")
    desk.window("验证独立密码")
    desk.press("ctrl+a")
    desk.type_text(SECOND)
    desk.press("Return")
    desk.window(MAIN)


def lock_in_the_middle(desk, program):
    desk.turn_columns()
    type_entry(desk, "first", *SAVED)
    desk.press("ctrl+s")
    desk.window(MAIN)
    type_entry(desk, "second", *TYPED)
    desk.press("ctrl+a")  # the remark, which other programs can paste now
    time.sleep(0.5)
    check(set(TYPED) & found_in_memory(program), "the search finds what is there")
    desk.press("ctrl+l")
    desk.window(LOCKED)
    time.sleep(0.5)
    left = found_in_memory(program)
    check(not left, f"no secret in memory while locked: {left}")
    check(not found_in_files(desk), f"no secret in files while locked: {found_in_files(desk)}")
    folder = desk.sealed.parent
    check(not can_rename(folder), "the folder cannot be renamed while locked")
    subprocess.run(["rm", "-rf", str(folder)], capture_output=True)
    check(desk.sealed.exists(), "the folder cannot be deleted while locked")
    unlock_at_the_second_try(desk)
    check(can_rename(folder), "the folder is free after the unlocking")
    desk.press("ctrl+s")  # what was typed before the lock
    desk.window(MAIN)


def crash_while_locked(desk, program):
    desk.press("ctrl+l")
    desk.window(LOCKED)
    program.send_signal(signal.SIGKILL)
    desk.ended(program, "the killed program")
    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    check(can_rename(desk.sealed.parent), "the folder is free after a crash and a new start")
    desk.log_in()
    desk.window("验证独立密码")  # the columns are enciphered
    desk.type_text(SECOND)
    desk.press("Return")
    desk.window("Morvane Keeper")  # tells of the recovery
    desk.press("Return")
    desk.window(MAIN)
    return program


with Desktop(sys.argv[1]) as desk:
    program = desk.make_user()
    lock_in_the_middle(desk, program)
    program = crash_while_locked(desk, program)
    desk.turn_columns()  # off again, so that the rows can be read below
    desk.press("ctrl+l")
    desk.window(LOCKED)
    desk.press("Return")
    desk.window("验证独立密码")
    program.terminate()
    check(desk.ended(program, "the end of a locked session") == 0, "SIGTERM ends a locked session in order")
    check(not desk.working_copies(), "a locked session is sealed at its end")
    check(can_rename(desk.sealed.parent), "the folder is free after the end")
    check(not found_in_files(desk), f"no secret in files after the exit: {found_in_files(desk)}")
    rows = subprocess.run([sys.argv[2], str(desk.sealed), KEY], capture_output=True, text=True).stdout
    for text in ["first", "second", SAVED[1], TYPED[1]]:
        check(text in rows, f"{text} is in the sealed file")
print("ok")
