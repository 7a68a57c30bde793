"""What assistive technology is told of a program, and the pointer on what it names.

Import this when the desktop runs: the accessibility library looks for its bus at once.
"""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import desktop  # noqa: E402
from desktop import TestFailure, wait_for  # noqa: E402

Atspi.set_timeout(5000, 20000)


class Thing:
    """One thing on the screen. It may be gone by the time it is used: then it counts as not showing."""

    def __init__(self, accessible):
        self.accessible = accessible
        self.name = accessible.get_name() or ""
        # Until 2024 it was called a push button.
        self.role = "button" if accessible.get_role() == Atspi.Role.PUSH_BUTTON else accessible.get_role_name()

    def is_showing(self):
        try:
            return self.accessible.get_state_set().contains(Atspi.StateType.SHOWING)
        except GLib.Error:
            return False

    def value(self):
        return self.accessible.get_value_iface().get_current_value()

    def text(self):
        # An Accessible has a get_text of its own in newer versions.
        return Atspi.Text.get_text(self.accessible, 0, Atspi.Text.get_character_count(self.accessible))

    def box(self):
        box = self.accessible.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def middle(self):
        x, y, width, height = self.box()
        return x + width // 2, y + height // 2

    def click(self):
        desktop.click(*self.middle())


class Screen:
    """The windows of one process."""

    def __init__(self, process):
        self.process = process

    def _application(self):
        root = Atspi.get_desktop(0)
        root.clear_cache()
        for index in range(root.get_child_count()):
            child = root.get_child_at_index(index)
            if child is not None and child.get_process_id() == self.process.pid:
                return child
        return None

    def things(self):
        """Everything showing, in the order of the tree."""
        application = self._application()
        if application is None:
            return
        waiting = [application]
        while waiting:
            accessible = waiting.pop()
            try:
                accessible.clear_cache()
                children = [accessible.get_child_at_index(i) for i in range(accessible.get_child_count())]
                waiting.extend(child for child in reversed(children) if child is not None)
                thing = Thing(accessible)
            except GLib.Error:
                continue  # it went away meanwhile
            if thing.is_showing():
                yield thing

    def find(self, name, role=None):
        """The first thing of that name and role, or None. A name that ends in … may go on."""
        for thing in self.things():
            if role is not None and thing.role != role:
                continue
            if thing.name == name or (name.endswith("…") and thing.name.startswith(name[:-1])):
                return thing
        return None

    def wait(self, name, role=None, seconds=60.0, every=0.1):
        """Reading the whole window is work for the program, too: ask seldom for what takes long."""
        def look():
            if self.process.poll() is not None:
                raise TestFailure(f"the program has ended with {self.process.returncode}; "
                                  f"still waited for: {name}")
            return self.find(name, role)

        try:
            return wait_for(f"“{name}”", look, seconds, every)
        except TestFailure as failure:
            raise TestFailure(f"{failure}; the window shows:\n{self.describe()}") from None

    def wait_until_gone(self, name):
        wait_for(f"“{name}” to go away", lambda: self.find(name) is None)

    def describe(self):
        return "\n".join(f"  {thing.role}: {thing.name}" for thing in self.things())
