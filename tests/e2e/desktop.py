# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of its own for the end-to-end tests: X server, window manager, home; keys and mouse."""
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

KEY = "Abc123-x"
SECOND = "second77"
LOGIND = "org.freedesktop.login1"
PATIENCE = float(os.environ.get("KEEPER_E2E_PATIENCE", "60"))


def check(truth, what):
    if not truth:
        sys.exit(f"failed: {what}")


class Desktop:
    def __init__(self, keeper, has_bus=False):
        self.keeper = keeper
        self._has_bus = has_bus
        self._others = []

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory()
        self.home = Path(self._folder.name)
        self.sealed = self.home / "Documents/MORV - Alice/Alice.kvdb"
        (self.home / "run").mkdir(mode=0o700)
        read_end, write_end = os.pipe()
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[write_end],
            stderr=subprocess.DEVNULL,
        )
        os.close(write_end)
        # To the end of the line: the server dies if its number cannot be written whole.
        with os.fdopen(read_end) as numbers:
            display = ":" + numbers.readline().strip()
        self.env = {k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "QT_", "DBUS_"))}
        self.env |= {
            "DISPLAY": display,
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(self.home / "run"),
            "QT_QPA_PLATFORM": "xcb",
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent",
        }
        if self._has_bus:
            bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True)
            self._others.append(bus)
            address = bus.stdout.readline().strip()
            self.env |= {"DBUS_SESSION_BUS_ADDRESS": address, "DBUS_SYSTEM_BUS_ADDRESS": address}
        self._manager = subprocess.Popen(
            ["openbox"], env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        # A window that comes while the manager starts is left lying; an answered wish shows that it works.
        self.wait_for(
            lambda: self.x("set_num_desktops", "2") or self.x("get_num_desktops") == "2", "the window manager"
        )
        return self

    def __exit__(self, *_):
        for process in (*self._others, self._manager, self._server):
            process.terminate()
            process.wait()
        self._folder.cleanup()

    def wait_for(self, condition, what):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            result = condition()
            if result:
                return result
            time.sleep(0.1)
        if "KEEPER_E2E_PICTURE" in os.environ:
            subprocess.run(["import", "-window", "root", os.environ["KEEPER_E2E_PICTURE"]], env=self.env)
        sys.exit(f"gave up waiting for: {what}; active window: {self.active_title()!r}; X server: {self._server.poll() or 'runs'}")

    def x(self, *words):
        return subprocess.run(["xdotool", *words], env=self.env, capture_output=True, text=True).stdout.strip()

    def active_title(self):
        return self.x("getactivewindow", "getwindowname")

    def window(self, title):
        self.wait_for(lambda: self.active_title() == title, f"the window {title}")

    def press(self, *keys):
        for key in keys:
            self.x("key", "--clearmodifiers", key)
            time.sleep(0.06)

    def type_text(self, text):
        self.x("type", "--delay", "15", text)
        time.sleep(0.1)

    def drag(self, start, end):
        self.x("mousemove", *map(str, start), "mousedown", "1")
        for step in range(1, 9):
            at = [round(a + (b - a) * step / 8) for a, b in zip(start, end)]
            self.x("mousemove", *map(str, at))
            time.sleep(0.08)
        time.sleep(0.3)
        self.x("mouseup", "1")

    def picture(self):
        """Width and the rows of pixels of the whole screen."""
        data = subprocess.run(["import", "-window", "root", "-depth", "8", "ppm:-"], env=self.env, capture_output=True).stdout
        head, size, depth, pixels = data.split(b"\n", 3)
        width, height = map(int, size.split())
        return width, [pixels[y * width * 3 : (y + 1) * width * 3] for y in range(height)]

    def start(self):
        return subprocess.Popen([self.keeper], env=self.env)

    def dbus(self, *words):
        done = subprocess.run(["dbus-send", "--system", *words], env=self.env, capture_output=True, text=True)
        check(done.returncode == 0, f"{words}: {done.stderr}")
        return done.stdout

    def mock_logind(self):
        """The session's manager, with methods "Sleep" and "Shutdown" that tell of their beginning and end."""
        # The interpreter that the package belongs to, whatever else stands first in the path.
        command = ["/usr/bin/python3", "-m", "dbusmock", "--template", "logind"]
        self._others.insert(0, subprocess.Popen(command, env=self.env, stdout=subprocess.DEVNULL))
        self.env["XDG_SESSION_ID"] = "c7"
        names = ["--print-reply", "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames"]
        self.wait_for(lambda: LOGIND in self.dbus(*names), "the mock of logind")
        self.logind("DBus.Mock.AddSession", "string:c7", "string:seat0", "uint32:1000", "string:alice", "boolean:true")
        for method in ("Sleep", "Shutdown"):
            code = f"self.EmitSignal('{LOGIND}.Manager', 'PrepareFor{method}', 'b', [args[0]])"
            self.logind("DBus.Mock.AddMethod", "string:a.b.Test", f"string:{method}", "string:b", "string:", f"string:{code}")

    def logind(self, method, *arguments, path=""):
        method = method if method.startswith("a.b.") else f"org.freedesktop.{method}"
        return self.dbus("--print-reply", f"--dest={LOGIND}", f"/org/freedesktop/login1{path}", method, *arguments)

    def ended(self, program, what):
        self.wait_for(lambda: program.poll() is not None, what)
        return program.returncode

    def working_copies(self):
        return list((self.home / ".local/state/morvane-keeper").glob("*.tmp"))

    def make_user(self):
        """Leaves the first session of a new user open."""
        program = self.start()
        self.window("登录 - Morvane Keeper")
        self.press("Return")
        self.window("新建用户 - Morvane Keeper")
        self.type_text("Alice")
        self.press("Return", "ctrl+a")
        self.type_text(KEY)
        self.press("Return", "ctrl+a")
        self.type_text(SECOND)
        self.press("Return", "Return")
        self.window("Morvane Keeper - Alice")
        return program

    def open_from_menu(self, menu, letter, title):
        time.sleep(0.6)
        self.press(menu)
        time.sleep(0.4)
        self.press(letter)
        self.window(title)

    def turn_columns(self):
        self.open_from_menu("alt+g", "c", "设置列级加密")
        self.type_text(SECOND)
        self.press("Return")
        self.window("Morvane Keeper")  # to go on?
        self.press("Return")
        time.sleep(0.5)
        self.window("Morvane Keeper")  # done
        self.press("Return")
        self.window("设置列级加密")
        self.press("Escape")
        self.window("Morvane Keeper - Alice")

    def log_in(self):
        time.sleep(0.5)
        self.type_text(KEY)
        self.press("Return")

    def close(self, program, what):
        self.press("alt+F4")
        check(self.ended(program, what) == 0, "the program ends well")
        check(not self.working_copies(), "no working copy is left after a clean exit")
