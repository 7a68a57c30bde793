"""A desktop of its own for one test: X server, window manager, session bus and accessibility bus.

Nothing of the desktop the test is started from is used or changed, and nothing is left running.
"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time


class TestFailure(Exception):
    pass


def wait_for(what, condition, seconds=60.0, every=0.1):
    """The first true value of condition(); fails, naming what was waited for, after that many seconds."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise TestFailure(f"waited {seconds:g} s in vain for {what}")
        time.sleep(every)


class Desktop:
    """Use as a context manager. Sets os.environ, so that what is started later belongs to the desktop."""

    def __init__(self, width=1400, height=1000):
        self.size = f"{width}x{height}x24"
        self.folder = tempfile.mkdtemp(prefix="quillmere-end-to-end-")
        self.processes = []

    def __enter__(self):
        try:
            self._isolate()
            self._start_display()
            self._start_session_bus()
            self._start_window_manager()
            self.start(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
            return self
        except BaseException:
            self._print_logs()
            self.__exit__(*sys.exc_info())
            raise

    def __exit__(self, *_):
        for process in reversed(self.processes):
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGTERM)
        for process in reversed(self.processes):
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def log(self, program):
        """What a program wrote to its outputs."""
        with open(self.path(os.path.basename(program) + ".log"), encoding="utf-8") as file:
            return file.read()

    def start(self, command, **options):
        """Starts a program in a process group of its own; it is ended with the desktop."""
        log = open(self.path(os.path.basename(command[0]) + ".log"), "ab")
        options.setdefault("stdout", log)
        options.setdefault("stderr", log)
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def _print_logs(self):
        for name in sorted(os.listdir(self.folder)):
            if name.endswith(".log"):
                print(f"{name}: {self.log(name.removesuffix('.log'))}", file=sys.stderr)

    def _isolate(self):
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "AT_SPI_BUS_ADDRESS",
                     "DBUS_SESSION_BUS_ADDRESS", "QT_QPA_PLATFORM", "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR",
                     "XDG_CURRENT_DESKTOP"):
            os.environ.pop(name, None)
        for name, folder in (("HOME", "home"), ("XDG_CONFIG_HOME", "config"), ("XDG_DATA_HOME", "data"),
                             ("XDG_CACHE_HOME", "cache"), ("XDG_RUNTIME_DIR", "runtime"), ("TMPDIR", "tmp")):
            os.makedirs(self.path(folder), mode=0o700)
            os.environ[name] = self.path(folder)
        os.environ.update(LC_ALL="C.UTF-8", LANGUAGE="", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", NO_AT_BRIDGE="0",
                          GTK_A11Y="atspi")

    def _start_display(self):
        server = self.start(["Xvfb", "-displayfd", "1", "-screen", "0", self.size, "-nolisten", "tcp"],
                            stdout=subprocess.PIPE)
        number = server.stdout.readline().decode().strip()
        if not number:
            raise TestFailure("Xvfb has not started")
        os.environ["DISPLAY"] = ":" + number

    def _start_session_bus(self):
        bus = self.start(["dbus-daemon", "--session", "--nofork", "--print-address=1",
                          "--address=unix:path=" + self.path("runtime", "bus")], stdout=subprocess.PIPE)
        address = bus.stdout.readline().decode().strip()
        if not address:
            raise TestFailure("dbus-daemon has not started")
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = address

    def _start_window_manager(self):
        manager = self.start(["openbox", "--sm-disable"])

        def is_there():
            if manager.poll() is not None:
                raise TestFailure("openbox has ended")
            answer = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True,
                                    text=True, check=False)
            return "window id" in answer.stdout

        wait_for("the window manager", is_there)


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=20, stdout=subprocess.DEVNULL)


def press(*keys):
    xdotool("key", "--delay", "20", *keys)


def write(text):
    xdotool("type", "--delay", "8", text)


def move_to(x, y):
    xdotool("mousemove", x, y)


def click(x, y):
    xdotool("mousemove", x, y, "click", 1)


def drag(start, end):
    """Holds the left button on the way, as a hand does it."""
    steps = 8
    xdotool("mousemove", *start, "mousedown", 1)
    for step in range(1, steps + 1):
        x = start[0] + (end[0] - start[0]) * step // steps
        y = start[1] + (end[1] - start[1]) * step // steps
        xdotool("mousemove", x, y)
    xdotool("mouseup", 1)
