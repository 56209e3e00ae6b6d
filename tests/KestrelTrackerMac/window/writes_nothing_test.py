#!/usr/bin/python3
"""Start, scan and quit leave nothing on the disk and open no connection to anywhere: strace watches all of it.

As root it runs as another user, whom nothing lets write beyond the home folder. The home is empty but for the
history and a font, and there is no cache of that font.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOMEONE_ELSE = 65534
DESKTOP = Path(__file__).resolve().parents[3] / "scripts" / "virtual-desktop"

WATCHED = ("open,openat,openat2,creat,rename,renameat,renameat2,unlink,unlinkat,mkdir,mkdirat,rmdir,symlink,"
           "symlinkat,link,linkat,truncate,mknod,mknodat,chmod,fchmodat,chown,lchown,fchownat,utimensat,setxattr,socket")

ALLOWED_PLACES = ("/dev/", os.environ.get("XDG_RUNTIME_DIR", "/nonexistent") + "/")
SIDE_FILES = ("Library/Messages/chat.db-shm", "Library/Messages/chat.db-wal")


def calls(trace):
    """The calls that succeeded, as (name, arguments), put together where another thread came between."""
    unfinished = {}
    for line in trace.splitlines():
        thread, _, call = line.partition(" ")
        call = call.strip()
        if call.endswith("<unfinished ...>"):
            unfinished[thread] = call.removesuffix("<unfinished ...>")
            continue
        if match := re.match(r"<\.\.\. \w+ resumed>(.*)", call):
            call = unfinished.pop(thread, "") + match[1]
        match = re.match(r"(\w+)\((.*)\)\s+= (-?\d+|\?)", call)
        if match and match[3] != "?" and int(match[3]) >= 0:
            yield match[1], match[2]


def offences(trace, home):
    """What wrote, or spoke to anyone beyond this machine."""
    found = []
    for name, arguments in calls(trace):
        if name == "socket":
            bad = not arguments.startswith(("AF_UNIX,", "AF_LOCAL,"))
        elif name in ("open", "openat", "openat2"):
            bad = re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND|O_TMPFILE", arguments)
        else:
            bad = True
        paths = re.findall(r'"((?:[^"\\]|\\.)*)"', arguments)
        harmless = paths and all(path.startswith(ALLOWED_PLACES) or path in [f"{home}/{file}" for file in SIDE_FILES]
                                 for path in paths)
        if bad and not harmless:
            found.append(f"{name}({arguments})")
    return found


class Reading(unittest.TestCase):
    """The reading of the trace itself: it would be worth little if it saw nothing."""

    def test_writes_and_connections_are_seen(self):
        trace = "\n".join([
            '1 openat(AT_FDCWD</>, "/home/a/.cache/x", O_WRONLY|O_CREAT, 0666) = 3',
            '1 openat(AT_FDCWD</>, "/home/a/read", O_RDONLY) = 3',
            '1 openat(AT_FDCWD</>, "/home/a/refused", O_RDWR) = -1 EACCES (Permission denied)',
            '1 openat(AT_FDCWD</>, "/dev/dri/card0", O_RDWR|O_CLOEXEC) = 3',
            '1 mkdir("/home/a/.cache", 0777 <unfinished ...>',
            '2 socket(AF_INET, SOCK_STREAM, IPPROTO_IP) = 5',
            '1 <... mkdir resumed>) = 0',
            '1 socket(AF_UNIX, SOCK_STREAM|SOCK_CLOEXEC, 0) = 3',
            '1 rename("/tmp/a", "/tmp/b") = 0',
            '1 openat(AT_FDCWD</>, "/home/a/Library/Messages/chat.db-shm", O_RDWR|O_CREAT, 0644) = 3',
        ])
        self.assertEqual([offence.split("(")[0] for offence in offences(trace, "/home/a")],
                         ["openat", "socket", "mkdir", "rename"])


def window_case():
    """Made only where there is a desktop to show windows on."""
    from window_test_case import PROGRAM, WindowTestCase, press_until

    class WritesNothing(WindowTestCase):
        def files(self):
            return sorted(str(path.relative_to(self.home)) for path in self.home.rglob("*"))

        def setUp(self):
            super().setUp()
            # A font of the user's own, which no cache of the system knows.
            fonts = self.home / ".local" / "share" / "fonts"
            fonts.mkdir(parents=True)
            some_font = subprocess.check_output(["fc-list", "-f", "%{file}\\n"], text=True).splitlines()[0]
            shutil.copy(some_font, fonts)

        def start_scan_and_quit(self, also_watched="", *strace_options):
            self.write_history(messages=20_000, days=120)
            before = self.files()
            trace = self.home.with_name(self.home.name + ".trace")
            self.addCleanup(trace.unlink, missing_ok=True)
            window = self.start_ready(["strace", "-f", "-qq", "-s", "400", "-o", trace, "-e", f"trace={WATCHED}{also_watched}",
                                       *strace_options, PROGRAM])
            window.find("push button", "Scan Locally").press()
            window.find("push button", "Scan Again")
            window.wait_for(lambda: window.in_front, "the window to be in front")
            press_until("alt+F4", lambda: window.process.poll() is not None, "the application to end")
            self.assertEqual(window.wait_for_end(), 0)
            self.assertEqual(offences(trace.read_text(errors="replace"), self.home), [])
            left = set(self.files()) - set(before) - set(SIDE_FILES)
            self.assertEqual(left, set())

        def test_from_start_to_quit(self):
            self.start_scan_and_quit()

        def test_without_a_kernel_that_forbids_it(self):
            # Nothing but the kernel keeps fontconfig from writing a cache where it finds none, so it finds one.
            subprocess.run(["fc-cache"], env=dict(os.environ, HOME=str(self.home)), check=True)
            # strace changes the answer only to what it watches.
            self.start_scan_and_quit(",landlock_create_ruleset", "-e", "inject=landlock_create_ruleset:error=ENOSYS")

    return WritesNothing


def run_on_a_desktop():
    """Runs this file again on a desktop, for root as another user in a place that this one can read."""
    place = tempfile.mkdtemp(prefix="tidewell-someone-")
    try:
        as_other, environment = [], dict(os.environ)
        if os.geteuid() == 0:
            os.chmod(place, 0o755)
            for name in ("TIDEWELL", "TIDEWELL_SAMPLE_HISTORY"):
                environment[name] = shutil.copy(os.environ[name], place)
            for folder in ("scripts", "tests/KestrelTrackerMac/window"):
                shutil.copytree(DESKTOP.parents[1] / folder, Path(place) / folder,
                                ignore=shutil.ignore_patterns("__pycache__"))
            environment["PYTHONPATH"] = f"{place}/scripts"
            as_other = ["setpriv", f"--reuid={SOMEONE_ELSE}", f"--regid={SOMEONE_ELSE}", "--clear-groups"]
            home = Path(place) / "home"
            home.mkdir()
            os.chown(home, SOMEONE_ELSE, SOMEONE_ELSE)
            environment.update(HOME=str(home), TMPDIR="/tmp")
            environment.pop("XDG_RUNTIME_DIR", None)
            script, desktop = Path(place) / "tests/KestrelTrackerMac/window" / Path(__file__).name, \
                Path(place) / "scripts/virtual-desktop"
        else:
            script, desktop = Path(__file__), DESKTOP
        return subprocess.run([*as_other, desktop, "--window-manager", "/usr/bin/python3", "-B", "-W", "ignore::DeprecationWarning",
                               script, "--here"],
                              env=environment, cwd="/").returncode
    finally:
        shutil.rmtree(place)


if __name__ == "__main__":
    if sys.argv[1:] == ["--here"]:
        WritesNothing = window_case()
        unittest.main(argv=sys.argv[:1], verbosity=2)
    sys.exit(run_on_a_desktop())
