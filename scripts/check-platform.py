#!/usr/bin/env python3
"""Checks that docs/porting.md names every source that calls the platform, and no other.

Such a source includes a header of POSIX, of Linux, of D-Bus or of a processor, asks the environment, or names what only
Linux has.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/porting.md"
HEADERS = (r"sys/|linux/|unistd\.h|fcntl\.h|dlfcn\.h|c?signal(\.h)?>|pwd\.h|grp\.h|pthread\.h|sched\.h|poll\.h|termios\.h"
           r"|spawn\.h|libintl\.h|dirent\.h|langinfo\.h|link\.h|execinfo\.h|SDL|alsa/|xcb/|X11/|QDBus|\w*mmintrin\.h"
           r"|immintrin\.h|arm_neon\.h|cpuid\.h|windows\.h|mach")
PLATFORM = re.compile(rf'^\s*#\s*include\s*[<"]({HEADERS})|\b((secure_)?getenv|strerrordesc_np)\s*\(|"/(proc|sys|dev)/',
                      re.M)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.S)


def callers() -> set[str]:
    found = set()
    for path in (ROOT / "Sources").rglob("*"):
        if path.suffix in (".cpp", ".h") and PLATFORM.search(COMMENT.sub("", path.read_text())):
            found.add(str(path.relative_to(ROOT)))
    return found


def main() -> None:
    listed = set(re.findall(r"^\| `(Sources/[^`]+)`", PAGE.read_text(), re.M))
    calling = callers()
    problems = [f"{source} calls the platform and is not in docs/porting.md" for source in sorted(calling - listed)]
    problems += [f"{source} is in docs/porting.md and does not call the platform" for source in sorted(listed - calling)]
    print("\n".join(problems) or f"{len(calling)} sources call the platform")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
