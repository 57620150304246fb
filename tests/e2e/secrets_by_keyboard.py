#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A person cares for the secrets: sets questions, resets the independent password by them, guards a
command, changes the login key, crashes, and runs out of chances.

usage: secrets_by_keyboard.py MORVANE-KEEPER
"""
import signal
import sys
import time

import desktop
from desktop import Desktop, check

MAIN = "Morvane Keeper - Alice"
BOX = "Morvane Keeper"


def agree(desk, behind):
    desk.window(BOX)
    time.sleep(0.2)
    desk.press("Return")
    desk.window(behind)


def set_questions(desk):
    desk.open_from_menu("alt+g", "q", "设置安全问题")
    for number in (1, 2, 3):
        desk.type_text(f"question{number}")
        desk.press("Tab")
        desk.type_text(f"answer{number}")
        desk.press("shift+Tab", "shift+Tab", "Down", "Tab")
    desk.press("Return")
    agree(desk, MAIN)


def reset_password(desk, password):
    desk.open_from_menu("alt+g", "i", "修改独立密码")
    desk.press(*["shift+Tab"] * 3, "space")  # the button for a forgotten password
    desk.window("回答安全问题")
    for answer in ("answer1", "ANSWER2"):
        desk.type_text(answer)
        desk.press("Return")
    agree(desk, "回答安全问题")
    for answer in ("answer2", "answer3"):
        desk.type_text(answer)
        desk.press("Return")
    agree(desk, "修改独立密码")
    desk.type_text(password)
    desk.press("Tab", "Tab")
    desk.type_text(password)
    desk.press("Return")
    agree(desk, MAIN)


def change_login_key(desk, key):
    desk.open_from_menu("alt+g", "s", "修改登录密钥")
    desk.type_text(desktop.KEY)
    desk.press("Tab", "Tab", "Tab")
    desk.type_text(key)
    desk.press("Tab", "Tab")
    desk.type_text(key)
    desk.press("Return")
    agree(desk, MAIN)
    desktop.KEY = key


def guard_original_size(desk):
    desk.open_from_menu("alt+g", "a", "权限管理")
    desk.press("Down", "space", "Return")
    desk.window(MAIN)


def ask_for_original_size(desk):
    desk.press("ctrl+m")
    time.sleep(0.5)
    desk.press("ctrl+m")
    desk.window("验证独立密码")


with Desktop(sys.argv[1]) as desk:
    program = desk.make_user()
    set_questions(desk)
    reset_password(desk, "third-88")
    guard_original_size(desk)
    change_login_key(desk, "Key-2-for-Alice")
    program.send_signal(signal.SIGKILL)
    desk.ended(program, "the killed program")

    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    agree(desk, MAIN)  # tells of the recovery
    ask_for_original_size(desk)
    desk.type_text("third-88")
    desk.press("Return")
    desk.window(MAIN)
    ask_for_original_size(desk)
    for left in (4, 3, 2, 1, 0):
        desk.type_text("second77")  # the one before
        desk.press("Return")
        desk.window(BOX)
        desk.press("Return")
        if left > 0:
            desk.window("验证独立密码")
    check(desk.ended(program, "the end of the chances") == 0, "the session ends in order")
    check(not desk.working_copies(), "and seals its database")
print("ok")
