#!/usr/bin/python3
"""Measures the desktop application on a display of its own: the time from its start to its first frame, its
memory at rest, and the longest pauses of its window in a full run.

    cmake --preset release && cmake --build --preset release
    scripts/bench-window.py
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "release")
PROGRAM = os.path.join(ROOT, "Sources", "QuillmereApp", "quillmere")
RESPONSIVENESS = os.path.join(ROOT, "Benchmarks", "QuillmereApp", "WindowResponsiveness")
STARTS = 9


def processor_milliseconds(process):
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return 1000 * (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def start(environment):
    """The program, its milliseconds to the first frame, and its processor time until then."""
    begin = time.monotonic()
    process = subprocess.Popen([PROGRAM], env=environment, stderr=subprocess.PIPE)
    for line in process.stderr:
        if b"time in renderer" in line or b"Frame rendered" in line:
            return process, 1000 * (time.monotonic() - begin), processor_milliseconds(process)
    sys.exit("The program has not drawn a frame.")


def memory(process):
    with open(f"/proc/{process.pid}/smaps_rollup", encoding="ascii") as rollup:
        sizes = dict(line.split(":") for line in rollup if ":" in line and "kB" in line)
    return {key: int(sizes[key].split()[0]) / 1024 for key in ("Rss", "Pss")}


def main():
    with tempfile.TemporaryDirectory() as home:
        server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1400x1000x24", "-nolisten", "tcp"],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        environment = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home, XDG_DATA_HOME=home, XDG_RUNTIME_DIR=home,
                           DISPLAY=":" + server.stdout.readline().decode().strip(), QSG_RENDER_TIMING="1",
                           QT_LOGGING_RULES="qt.scenegraph.time*=true")
        environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        try:
            clock, processor = [], []
            for number in range(STARTS):
                process, milliseconds, used = start(environment)
                clock.append(milliseconds)
                processor.append(used)
                if number == STARTS - 1:
                    time.sleep(5)
                    sizes = memory(process)
                process.terminate()
                process.wait()
        finally:
            server.terminate()
            server.wait()
    print(f"first frame: median {statistics.median(clock):.0f} ms, least {min(clock):.0f} ms, "
          f"processor time {statistics.median(processor):.0f} ms")
    print(f"memory at rest: {sizes['Rss']:.0f} MiB resident, {sizes['Pss']:.0f} MiB with shared pages divided")
    return subprocess.call([RESPONSIVENESS])


if __name__ == "__main__":
    sys.exit(main())
