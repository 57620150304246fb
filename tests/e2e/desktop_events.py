#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""What the desktop tells locks the manager, over an open question and with an edit that stays, and ends
it in order; sleep and shutdown wait for that. Services on a bus of its own tell it.

usage: desktop_events.py MORVANE-KEEPER PRINT-ENTRIES
"""
import subprocess
import sys
import time

from desktop import KEY, SECOND, Desktop, check

MAIN = "Morvane Keeper - Alice"
LOCKED = "Morvane Keeper - 已锁定"
SESSION = "/session/c7"


def unlock(desk):
    time.sleep(0.4)
    desk.press("Return")
    desk.window("验证独立密码")
    desk.type_text(SECOND)
    desk.press("Return")
    desk.window(MAIN)


def lock_screen(desk):
    desk.dbus("--type=signal", "/a/b", "org.freedesktop.ScreenSaver.ActiveChanged", "boolean:true")


def holds(desk):
    return "Morvane Keeper" in desk.logind("login1.Manager.ListInhibitors")


def lock_over_a_question(desk):
    desk.press("ctrl+1", "Home", "Return", "ctrl+n")
    desk.type_text("unfinished")
    desk.press("alt+F4")
    desk.window("Morvane Keeper")  # leave without saving?
    lock_screen(desk)
    desk.window(LOCKED)
    time.sleep(0.4)
    desk.press("alt+q")  # whoever cannot unlock cannot throw the edit away
    desk.window("验证独立密码")
    desk.press("Escape")
    desk.window(LOCKED)
    unlock(desk)
    desk.press("ctrl+s")
    time.sleep(0.5)


def lock_while_a_dialog_asks(desk):
    desk.open_from_menu("alt+g", "c", "设置列级加密")
    desk.logind("login1.Session.Lock", path=SESSION)
    desk.window(LOCKED)
    unlock(desk)
    desk.logind("login1.Session.SetLockedHint", "boolean:true", path=SESSION)
    desk.window(LOCKED)
    unlock(desk)


def sleep_when_locked(desk):
    check(holds(desk), "the sleep is held back")
    desk.logind("a.b.Test.Sleep", "boolean:true")
    desk.window(LOCKED)
    desk.wait_for(lambda: not holds(desk), "the machine may sleep")
    desk.logind("a.b.Test.Sleep", "boolean:false")
    desk.wait_for(lambda: holds(desk), "the next sleep is held back")
    unlock(desk)


def stay_open_without_the_option(desk):
    desk.open_from_menu("alt+g", "g", "自动保护")
    desk.press("alt+w")
    time.sleep(0.4)  # the toolkit shows the click
    desk.press("Return")  # which is for the frame of the option
    desk.window("自动锁定")
    desk.press("Return")
    desk.window("自动保护")
    desk.press("Escape")
    desk.window(MAIN)
    lock_screen(desk)
    time.sleep(1)
    desk.wait_for(lambda: desk.active_title() == MAIN, "it stays open where the person has said so")


with Desktop(sys.argv[1], has_bus=True) as desk:
    desk.mock_logind()
    program = desk.make_user()
    lock_over_a_question(desk)
    lock_while_a_dialog_asks(desk)
    sleep_when_locked(desk)
    stay_open_without_the_option(desk)
    desk.logind("a.b.Test.Shutdown", "boolean:true")
    desk.wait_for(lambda: not holds(desk), "the machine may go down")
    check(not desk.working_copies(), "the session is sealed when the machine may go down")
    check(desk.ended(program, "the session at the shutdown") == 0, "it ends in order")
    rows = subprocess.run([sys.argv[2], str(desk.sealed), KEY], capture_output=True, text=True).stdout
    check("unfinished" in rows, "the edit went on behind the lock")
    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.press("F1")
    desk.window("关于")
    program.terminate()
    check(desk.ended(program, "SIGTERM over a box of the login form") == 0, "it ends in order before a session, too")
print("ok")
