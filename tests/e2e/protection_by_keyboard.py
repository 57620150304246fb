#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""The layers of protection as a person has them: column encryption on, a login that must give the
independent password, a crash in between, off again; and a copy for another machine.

usage: protection_by_keyboard.py MORVANE-KEEPER
"""
import signal
import sys

from desktop import SECOND, Desktop, check

ASKS = "验证独立密码"
MAIN = "Morvane Keeper - Alice"


def log_in_with_password(desk, is_recovery=False):
    desk.window("登录 - Morvane Keeper")
    desk.log_in()
    desk.window(ASKS)
    desk.type_text(SECOND)
    desk.press("Return")
    if is_recovery:
        desk.window("Morvane Keeper")
        desk.press("Return")
    desk.window(MAIN)


with Desktop(sys.argv[1]) as desk:
    program = desk.make_user()
    desk.turn_columns()
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
    desk.turn_columns()
    copy = desk.home / "copy.kvdb"
    desk.open_from_menu("alt+f", "d", "分派数据库")
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
