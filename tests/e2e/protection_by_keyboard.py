#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""The layers of protection as a person has them: column encryption on, a login that must give the
independent password, a crash in between, off again; and a copy for another machine.

usage: protection_by_keyboard.py MORVANE-KEEPER
"""
import signal
import sys
import time

from desktop import Desktop, check

SECRET = "second77"
COLUMNS = "设置列级加密"
ASKS = "验证独立密码"
MAIN = "Morvane Keeper - Alice"


def open_from_menu(desk, menu, letter, title):
    time.sleep(0.6)
    desk.press(menu)
    time.sleep(0.4)
    desk.press(letter)
    desk.window(title)


def turn_columns(desk):
    open_from_menu(desk, "alt+g", "c", COLUMNS)
    desk.type_text(SECRET)
    desk.press("Return")
    desk.window("Morvane Keeper")  # to go on?
    desk.press("Return")
    time.sleep(0.5)
    desk.window("Morvane Keeper")  # done
    desk.press("Return")
    desk.window(COLUMNS)
    desk.press("Escape")
    desk.window(MAIN)


def log_in_with_password(desk, is_recovery=False):
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window(ASKS)
    desk.type_text(SECRET)
    desk.press("Return")
    if is_recovery:
        desk.window("Morvane Keeper")
        desk.press("Return")
    desk.window(MAIN)


with Desktop(sys.argv[1]) as desk:
    program = desk.make_user()
    turn_columns(desk)
    desk.close(program, "the session that turned it on")

    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window(ASKS)
    desk.type_text("wrong")
    desk.press("Return")
    desk.window("Morvane Keeper")  # so many chances left
    desk.press("Return")
    desk.window(ASKS)
    desk.press("Escape")
    log_in_with_password(desk)
    program.send_signal(signal.SIGKILL)
    desk.ended(program, "the killed program")

    program = desk.start()
    log_in_with_password(desk, is_recovery=True)
    turn_columns(desk)
    copy = desk.home / "copy.kvdb"
    desk.press("alt+f")
    time.sleep(0.4)
    desk.press("d")
    desk.window("分派数据库")
    desk.type_text(str(copy))
    desk.press("Return")
    desk.window("Morvane Keeper")  # done
    check(copy.stat().st_size > 0, "the copy is there")
    desk.press("Return")
    desk.window(MAIN)
    desk.close(program, "the session that turned it off")

    program = desk.start()
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window(MAIN)
    desk.close(program, "the session that is asked nothing")
print("ok")
