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


def look_with_the_companion(desk, cli):
    """What morvane-cli tells of the database; nothing in the home may change by it."""

    def tell(*words, key=KEY):
        return subprocess.run([cli, *words], env=desk.env, input=key.encode(), capture_output=True, timeout=60)

    torn = desk.home / "torn.kvdb"
    torn.write_bytes(desk.sealed.read_bytes()[:-5000])
    before = {path: path.read_bytes() for path in desk.home.rglob("*") if path.is_file()}
    check(tell("users").stdout.decode() == f"* Alice\t{desk.sealed}\n", "users names Alice and her database")
    told = tell("info", str(desk.sealed))
    check(told.returncode == 0 and "登录尝试机会：10\n" in told.stdout.decode(), f"info: {told}")
    check(tell("info", str(torn)).returncode == 1, "info refuses a torn file")
    told = tell("verify", "--key-file", "-", str(desk.sealed))
    check(told.returncode == 0 and "保护：可以在本机登录（原新建机器）\n" in told.stdout.decode(), f"verify: {told}")
    for command, path, key in (("verify", desk.sealed, "abc123-x"), ("ls", desk.sealed, KEY + " "), ("verify", torn, KEY)):
        told = tell(command, "--key-file", "-", str(path), key=key)
        check(told.returncode == 1 and not told.stdout and told.stderr.count(b"\n") == 1, f"{command}: {told}")
    told = tell("ls", "--key-file", "-", str(desk.sealed))
    check(told.returncode == 0 and not told.stderr, f"ls: {told}")
    check(before == {path: path.read_bytes() for path in desk.home.rglob("*") if path.is_file()}, "a look changes nothing")


with Desktop(sys.argv[1]) as desk:
    make_user(desk)
    crash_and_recover(desk, log_in_after_a_wrong_key(desk))
    check_sealed_file(desk, sys.argv[2])
    look_with_the_companion(desk, sys.argv[2])
print("ok")
