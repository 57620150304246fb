#!/usr/bin/env python3
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""SIGKILL at random moments of the real program's login and exit. Whatever was saved before is there
afterwards, the sealed file is sound at every moment, and nothing is ever destroyed.

usage: killed_sessions.py MORVANE-KEEPER MORVANE-CLI [COUNT [SEED]]
"""
import random
import subprocess
import sys
import time

from desktop import KEY, Desktop, check

KEEPER, CLI = sys.argv[1:3]
COUNT = int(sys.argv[3]) if len(sys.argv) > 3 else 4
SEED = int(sys.argv[4]) if len(sys.argv) > 4 else 1
MAIN = "Morvane Keeper - Alice"
# How much longer than a login or an exit lasts a kill may come, so that each moment has its turn.
MARGIN = 1.2


class Campaign:
    def __init__(self, desk):
        self.desk = desk
        self.dice = random.Random(SEED)
        self.saved = []
        self.outcomes = {}

    def cli(self, *words):
        return subprocess.run([CLI, *words], env=self.desk.env, input=KEY.encode(), capture_output=True, timeout=60)

    def titles(self):
        told = self.cli("ls", "--key-file", "-", str(self.desk.sealed))
        check(told.returncode == 0, f"ls: {told.stderr.decode()}")
        return sorted(line.split("\t")[2] for line in told.stdout.decode().splitlines())

    def start(self):
        """Up to the moment when the typed key begins to work."""
        program = self.desk.start()
        self.desk.window("登录 - Morvane Keeper")
        self.desk.log_in()
        return program

    def reach_main(self):
        """Past what is told of the last session."""

        def is_there():
            title = self.desk.active_title()
            if title == "Morvane Keeper":
                self.desk.press("Return")
            return title == MAIN

        self.desk.wait_for(is_there, MAIN)

    def add_entry(self):
        title = f"entry{len(self.saved)}"
        self.desk.press("ctrl+1", "Home", "Return", "ctrl+n")
        self.desk.type_text(title)
        self.desk.press("Tab", "Tab", "Tab", "Tab")
        self.desk.type_text("pw")
        self.desk.press("ctrl+s")
        self.desk.window(MAIN)
        time.sleep(0.3)
        self.saved.append(title)

    def kill(self, program, what, longest):
        delay = self.dice.uniform(0, longest)
        time.sleep(delay)
        ended = program.poll() is not None
        program.kill()
        program.wait()
        copies = len(self.desk.working_copies())
        outcome = f"{what}: {'was over' if ended else 'killed'}, {copies} working copies"
        self.outcomes[outcome] = self.outcomes.get(outcome, 0) + 1
        after = f"after {delay:.3f} s of {what}, kill {sum(self.outcomes.values())}, seed {SEED}"
        check("* Alice\t" in self.cli("users").stdout.decode(), f"Alice is known {after}")
        told = self.cli("verify", "--key-file", "-", str(self.desk.sealed))
        check(told.returncode == 0, f"the sealed file is sound {after}: {told}")
        check(set(self.titles()) <= set(self.saved), f"nothing strange in the sealed file {after}")

    def run(self):
        self.desk.close(self.desk.make_user(), "the end of the first session")
        self.saved = self.titles()
        program = self.start()
        begin = time.monotonic()
        self.reach_main()
        login = (time.monotonic() - begin) * MARGIN
        begin = time.monotonic()
        program.terminate()
        program.wait()
        leaving = (time.monotonic() - begin) * MARGIN
        for i in range(COUNT):
            program = self.start()
            if i % 2 == 0:
                self.kill(program, "login", login)
                continue
            self.reach_main()
            self.add_entry()
            if self.dice.random() < 0.8:
                program.terminate()
            else:
                self.desk.x("key", "alt+F4")
            self.kill(program, "exit", leaving)
        program = self.start()
        self.reach_main()
        self.desk.close(program, "the last session")
        check(self.titles() == sorted(self.saved), f"all that was saved is there: {self.titles()}")


with Desktop(KEEPER) as desktop:
    campaign = Campaign(desktop)
    campaign.run()
    for name, times in sorted(campaign.outcomes.items()):
        print(f"{times:4} {name}")
print("ok")
