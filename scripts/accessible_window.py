"""Drives Tidewell's window as a person with assistive technology would: through the accessibility bus.

Needs the environment that scripts/virtual-desktop gives, or a desktop. Everything waits for a condition, never for a
time; a wait that is not met within PATIENCE says what it waited for and what it saw.
"""

import contextlib
import os
import signal
import sqlite3
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 60  # seconds that a step may take on a slow and busy machine


def wait_until(condition, what, describe=lambda: ""):
    """The first true value of `condition`."""
    deadline = time.monotonic() + PATIENCE
    context = GLib.MainContext.default()
    while True:
        while context.iteration(False):
            pass
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}\n{describe()}")
        time.sleep(0.02)


def let_scans_run_on(database):
    """Puts a view that never comes to an end in the place of the messages: a scan runs until the process ends."""
    with contextlib.closing(sqlite3.connect(database)) as connection:
        connection.executescript("""
            ALTER TABLE message RENAME TO kept;
            CREATE VIEW message AS
              WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)
              SELECT i AS ROWID, 900000000 + i % 1000 AS date, 0 AS is_from_me, NULL AS text FROM n""")


class Node:
    """One accessible object. What has gone from the screen has no role, no name and no children."""

    def __init__(self, accessible):
        self._accessible = accessible

    def _ask(self, question, otherwise):
        try:
            return question(self._accessible)
        except (GLib.Error, AttributeError):
            return otherwise

    @property
    def role(self):
        return self._ask(lambda node: node.get_role_name(), "")

    @property
    def name(self):
        return self._ask(lambda node: node.get_name(), "")

    @property
    def process(self):
        return self._ask(lambda node: node.get_process_id(), None)

    @property
    def children(self):
        """The visible ones. Qt 6.4 does not tell those that are scrolled away from those that are hidden."""
        def those(node):
            found = [node.get_child_at_index(index) for index in range(node.get_child_count())]
            return [child for child in map(Node, filter(None, found)) if child.has(Atspi.StateType.VISIBLE)]
        return self._ask(those, [])

    @property
    def descendants(self):
        for child in self.children:
            yield child
            yield from child.descendants

    def has(self, state):
        return self._ask(lambda node: node.get_state_set().contains(state), False)

    @property
    def showing(self):
        return self.has(Atspi.StateType.SHOWING)

    @property
    def focused(self):
        return self.has(Atspi.StateType.FOCUSED)

    @property
    def focusable(self):
        return self.has(Atspi.StateType.FOCUSABLE)

    @property
    def checked(self):
        return self.has(Atspi.StateType.CHECKED)

    @property
    def actions(self):
        def names(node):
            action = node.get_action_iface()
            return [action.get_action_name(index) for index in range(action.get_n_actions())] if action else []
        return self._ask(names, [])

    def press(self):
        """Does what a press of the control does: its first action that is not taking the focus."""
        index = next(index for index, name in enumerate(self.actions) if name != "SetFocus")
        with contextlib.suppress(GLib.Error):  # a press that ends the application goes unanswered
            self._accessible.get_action_iface().do_action(index)

    def click(self):
        """Clicks into its middle with the mouse."""
        place = self._accessible.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        middle = (str(place.x + place.width // 2), str(place.y + place.height // 2))
        subprocess.run(["xdotool", "mousemove", *middle, "click", "1"], check=True)

    def outline(self, depth=0):
        """The tree below as lines of role and name, two blanks a level; what takes focus has a star."""
        lines = []
        for child in self.children:
            lines.append(f"{'  ' * depth}{child.role}: {child.name}{' *' if child.focusable else ''}")
            lines += child.outline(depth + 1)
        return lines


class Tidewell:
    """A running Tidewell. `alerts` holds what it has announced. Ends it when the block that it is made for ends.

    `program` is the command; `home` the home folder, which holds Library/Messages/chat.db.
    """

    _EVENTS = ("object:announcement", "object:state-changed:showing")

    def __init__(self, program, home=None, environment=None):
        settings = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **(environment or {}))
        if home:
            settings["HOME"] = str(home)
        command = [str(part) for part in (program if isinstance(program, list) else [program])]
        self.process = subprocess.Popen(command, env=settings, start_new_session=True)
        self.alerts = []
        self._root = None
        self._menu = None
        self._listener = Atspi.EventListener.new(self._hear)
        for event in self._EVENTS:
            self._listener.register(event)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        with contextlib.suppress(GLib.Error):
            for event in self._EVENTS:
                self._listener.deregister(event)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()

    def _hear(self, event):
        with contextlib.suppress(GLib.Error):
            if not self._root or event.source.get_process_id() != self._root.process:
                return
            if event.type == "object:announcement":
                self.alerts.append(event.any_data)
            elif event.source.get_role() == Atspi.Role.POPUP_MENU:
                self._menu = Node(event.source)

    def _connected(self):
        """The application's root on the accessibility bus."""
        if self.process.poll() is not None:
            raise AssertionError(f"Tidewell ended with status {self.process.returncode}")
        if self._root is None or not self._root.children:
            family = processes_of(os.getpgid(self.process.pid))
            desktop = Node(Atspi.get_desktop(0))
            roots = [root for root in desktop.children if root.process in family and root.name == "tidewell"]
            self._root = roots[0] if roots else None
            if self._root:
                self._root._accessible.set_cache_mask(Atspi.Cache.NONE)
        return self._root

    def find_now(self, role, name=None):
        root = self._connected()
        if not root:
            return None
        return next((node for node in root.descendants
                     if node.role == role and (name is None or node.name == name) and node.showing), None)

    def find(self, role, name=None):
        """The first object of that role and name on the screen, as soon as there is one."""
        return wait_until(lambda: self.find_now(role, name), f"{role} “{name}”", self.picture)

    def fill_the_display(self):
        """Makes the window as large as the display, so that nothing is scrolled away."""
        search = ["xdotool", "search", "--onlyvisible", "--name", "^Tidewell$"]
        found = lambda: subprocess.run(search, stdout=subprocess.PIPE, text=True).stdout.split()  # noqa: E731
        frame = self.wait_for(found, "the window to be on the display")[0]
        subprocess.run(["xdotool", "windowmove", frame, "0", "0", "windowsize", frame, "100%", "100%"], check=True)

    def menu(self):
        """The menu that popped up last. Such menus stand outside of the application's tree."""
        return self.wait_for(lambda: self._menu, "a menu")

    def names(self, role):
        root = self._connected()
        return [node.name for node in root.descendants if node.role == role] if root else []

    def wait_for(self, condition, what):
        return wait_until(condition, what, self.picture)

    def nodes(self):
        root = self._connected()
        return list(root.descendants) if root else []

    @property
    def in_front(self):
        return any(node.role == "frame" and node.has(Atspi.StateType.ACTIVE) for node in self.nodes())

    @property
    def visible(self):
        return any(node.role == "frame" and node.showing for node in self.nodes())

    def focused_control(self):
        """What has the focus of the keyboard, or nothing."""
        focused = [node for node in self.nodes() if node.focused and node.role != "frame"]
        return focused[-1] if focused else None  # a scope of focus comes before what it holds

    def picture(self):
        """The whole tree, as lines for people."""
        root = self._connected()
        return "\n".join(root.outline()) if root else "nothing on the accessibility bus"

    def wait_for_end(self):
        """The exit status."""
        wait_until(lambda: self.process.poll() is not None, "the end of the process")
        return self.process.returncode


def processes_of(group):
    """The ids of the processes in a process group."""
    found = set()
    for entry in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(ProcessLookupError):
            if os.getpgid(int(entry)) == group:
                found.add(int(entry))
    return found
