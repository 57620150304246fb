#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A session as a person has it, by key presses alone: wizard, close, wrong key, right key, crash,
recovery, and the end of the desktop session. Then the sealed file is looked at with morvane-cli.

usage: session_by_keyboard.py MORVANE-KEEPER MORVANE-CLI
"""
import hashlib
import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

KEEPER, CLI = sys.argv[1], sys.argv[2]
KEY = "Abc123-x"
PATIENCE = 60


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.1)
    sys.exit(f"gave up waiting for: {what}; active window: {active_title()!r}")


def x(*words):
    return subprocess.run(["xdotool", *words], env=ENV, capture_output=True, text=True).stdout.strip()


def active_title():
    return x("getactivewindow", "getwindowname")


def window(title):
    wait_for(lambda: active_title() == title, f"the window {title}")


def press(*keys):
    for key in keys:
        x("key", "--clearmodifiers", key)
        time.sleep(0.15)


def type_text(text):
    x("type", "--delay", "40", text)
    time.sleep(0.3)


def start():
    return subprocess.Popen([KEEPER], env=ENV)


def ended(program, what):
    wait_for(lambda: program.poll() is not None, what)
    return program.returncode


def working_copies():
    return list((HOME / ".local/state/morvane-keeper").glob("*.tmp"))


def check(truth, what):
    if not truth:
        sys.exit(f"failed: {what}")


def make_user():
    program = start()
    window("登录 - Morvane Keeper")
    press("Return")
    window("新建用户 - Morvane Keeper")
    type_text("Alice")
    press("Return", "ctrl+a")
    type_text(KEY)
    press("Return", "ctrl+a")
    type_text("second77")
    press("Return", "Return")
    window("Morvane Keeper - Alice")
    check(len(working_copies()) == 1, "a session has one working copy")
    check(SEALED.stat().st_size > 0, "a new user has a sealed file from the start")
    press("alt+F4")
    check(ended(program, "the end of the first session") == 0, "the program ends well")
    check(not working_copies(), "no working copy is left after a clean exit")
    check(list((SEALED.parent / "我的备份").glob("*.kvdb")), "the exit made a backup")


def log_in_after_a_wrong_key():
    program = start()
    window("登录 - Morvane Keeper")
    time.sleep(0.5)
    type_text("abc123-x")
    press("Return")
    window("Morvane Keeper")  # asks whether to try again
    press("Return")
    window("登录 - Morvane Keeper")
    log_in()
    window("Morvane Keeper")  # tells of the failed attempt
    press("Return")
    window("Morvane Keeper - Alice")
    return program


def log_in():
    time.sleep(0.5)
    type_text(KEY)
    press("Return")


def crash_and_recover(program):
    before = SEALED.read_bytes()
    program.send_signal(signal.SIGKILL)
    ended(program, "the killed program")
    check(len(working_copies()) == 1, "the working copy survives a crash")
    check(SEALED.read_bytes() == before, "a crash leaves the sealed file alone")
    program = start()
    window("登录 - Morvane Keeper")
    log_in()
    window("Morvane Keeper")  # tells of the recovery
    press("Return")
    window("Morvane Keeper - Alice")
    program.terminate()
    check(ended(program, "the end on SIGTERM") == 0, "SIGTERM ends the session in order")
    check(not working_copies(), "SIGTERM seals the database")


def check_sealed_file():
    key_file = HOME / "file-key"
    key_file.write_text(hashlib.md5(KEY.encode()).hexdigest().upper())
    plain = HOME / "unsealed"
    subprocess.run(
        [CLI, "decrypt", "--cipher", "aes", "--key-file", str(key_file), str(SEALED), str(plain)], check=True
    )
    content = plain.read_bytes()
    check(len(content) > 0 and len(content) % 4096 == 0, "the unsealed file is whole pages")
    check(b"SQLite format" not in content and b"tb_Entry" not in content, "its pages are enciphered")
    for path in HOME.rglob("*"):
        if path.is_file() and path != key_file:
            check(KEY.encode() not in path.read_bytes(), f"no key in clear in {path.name}")


with tempfile.TemporaryDirectory() as folder:
    HOME = Path(folder)
    SEALED = HOME / "Documents/MORV - Alice/Alice.kvdb"
    (HOME / "run").mkdir(mode=0o700)
    read_end, write_end = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=[write_end],
        stderr=subprocess.DEVNULL,
    )
    os.close(write_end)
    ENV = {k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "QT_", "DBUS_"))}
    ENV |= {
        "DISPLAY": ":" + os.read(read_end, 16).decode().strip(),
        "HOME": folder,
        "XDG_RUNTIME_DIR": str(HOME / "run"),
        "QT_QPA_PLATFORM": "xcb",
        "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
        "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent",
    }
    manager = subprocess.Popen(["openbox"], env=ENV, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        make_user()
        crash_and_recover(log_in_after_a_wrong_key())
        check_sealed_file()
    finally:
        for process in (manager, server):
            process.terminate()
            process.wait()
print("ok")
