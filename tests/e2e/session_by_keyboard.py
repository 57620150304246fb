#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A session as a person has it, by key presses alone: wizard, close, wrong key, right key, crash,
recovery, and the end of the desktop session. Then the sealed file is looked at with morvane-cli.

usage: session_by_keyboard.py MORVANE-KEEPER MORVANE-CLI
"""
import hashlib
import signal
import subprocess
import sys
import time

from desktop import KEY, Desktop, check


def make_user(desk):
    program = desk.make_user()
    check(len(desk.working_copies()) == 1, "a session has one working copy")
    check(desk.sealed.stat().st_size > 0, "a new user has a sealed file from the start")
    desk.close(program, "the end of the first session")
    check(list((desk.sealed.parent / "我的备份").glob("*.kvdb")), "the exit made a backup")


def log_in_after_a_wrong_key(desk):
    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    time.sleep(0.5)
    desk.type_text("abc123-x")
    desk.press("Return")
    desk.window("Morvane Keeper")  # asks whether to try again
    desk.press("Return")
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window("Morvane Keeper")  # tells of the failed attempt
    desk.press("Return")
    desk.window("Morvane Keeper - Alice")
    return program


def crash_and_recover(desk, program):
    before = desk.sealed.read_bytes()
    program.send_signal(signal.SIGKILL)
    desk.ended(program, "the killed program")
    check(len(desk.working_copies()) == 1, "the working copy survives a crash")
    check(desk.sealed.read_bytes() == before, "a crash leaves the sealed file alone")
    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window("Morvane Keeper")  # tells of the recovery
    desk.press("Return")
    desk.window("Morvane Keeper - Alice")
    program.terminate()
    check(desk.ended(program, "the end on SIGTERM") == 0, "SIGTERM ends the session in order")
    check(not desk.working_copies(), "SIGTERM seals the database")


def check_sealed_file(desk, cli):
    key_file = desk.home / "file-key"
    key_file.write_text(hashlib.md5(KEY.encode()).hexdigest().upper())
    plain = desk.home / "unsealed"
    subprocess.run(
        [cli, "decrypt", "--cipher", "aes", "--key-file", str(key_file), str(desk.sealed), str(plain)], check=True
    )
    content = plain.read_bytes()
    check(len(content) > 0 and len(content) % 4096 == 0, "the unsealed file is whole pages")
    check(b"SQLite format" not in content and b"tb_Entry" not in content, "its pages are enciphered")
    for path in desk.home.rglob("*"):
        if path.is_file() and path != key_file:
            check(KEY.encode() not in path.read_bytes(), f"no key in clear in {path.name}")


with Desktop(sys.argv[1]) as desk:
    make_user(desk)
    crash_and_recover(desk, log_in_after_a_wrong_key(desk))
    check_sealed_file(desk, sys.argv[2])
print("ok")
