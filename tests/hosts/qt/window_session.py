"""A person's session with the window: what a screen reader sees, and what mouse and keys do there.

Everything is private to the session: a display of its own, a message bus of its own, folders of its own. Controls are
found by role and accessible name and pressed where they stand, so that nothing here knows a coordinate.
"""
import atexit
import os
import pathlib
import shutil
import subprocess
import sys
import time

PRIVATE = "QUILLOMAT_WINDOW_SESSION"
NEEDED = ["Xvfb", "xdotool", "dbus-run-session", "import"]
started = []
LAUNCHERS = ["/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"]


def missing():
    """The names of what the machine lacks for such a session."""
    absent = [name for name in NEEDED if shutil.which(name) is None]
    if not any(os.path.exists(launcher) for launcher in LAUNCHERS):
        absent.append("at-spi2-core")
    if interpreter() is None:
        absent.append("pyatspi")
    return absent


def interpreter():
    """The Python that has the bindings: the system's, where the first one on the path is another."""
    for python in (sys.executable, "/usr/bin/python3"):
        if subprocess.run([python, "-c", "import pyatspi"], capture_output=True).returncode == 0:
            return python
    return None


def start_display(screen):
    for attempt in range(10):
        # A number that servers looking for the lowest free one do not come to.
        display = ":" + str(1000 + (os.getpid() + attempt * 997) % 30000)
        server = subprocess.Popen(["Xvfb", display, "-screen", "0", screen, "-nolisten", "tcp",
                                   "-noreset"],
                                  stderr=subprocess.DEVNULL)
        environment = dict(os.environ, DISPLAY=display, **{PRIVATE: "1"})
        for _ in range(100):
            asked = subprocess.run(["xdotool", "getdisplaygeometry"], env=environment, capture_output=True)
            if asked.returncode == 0 and server.poll() is None:
                return server, environment
            if server.poll() is not None:
                break
            time.sleep(0.1)
        server.terminate()
        server.wait()
    raise SystemExit("no display can be started")


def rerun_privately(screen="1400x1000x24"):
    """Starts this very script again on a display and a bus of its own; returns only inside of those."""
    if os.environ.get(PRIVATE):
        return
    absent = missing()
    if absent:
        print("skipped: not installed:", ", ".join(absent))
        sys.exit(77)
    server, environment = start_display(screen)
    for name in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS", "QT_QPA_PLATFORM"):
        environment.pop(name, None)
    try:
        status = subprocess.call(["dbus-run-session", "--", interpreter(), *sys.argv], env=environment)
    finally:
        server.terminate()
        server.wait()
    sys.exit(status)


def launch_accessibility():
    """Once for all sessions of this process, whose bindings stay with the first bus that they have met."""
    if not started:
        started.append(subprocess.Popen([next(path for path in LAUNCHERS if os.path.exists(path)),
                                         "--launch-immediately"], stderr=subprocess.DEVNULL))
        atexit.register(started[0].terminate)


class Session:
    def __init__(self, program, folder, *options, size=(360, 740), environment=None):
        self.folder = pathlib.Path(folder)
        self.pictures = self.folder / "pictures"
        self.documents = self.folder / "documents"
        for directory in (self.pictures, self.documents, self.folder / "home", self.folder / "run"):
            directory.mkdir(parents=True, exist_ok=True)
        (self.folder / "run").chmod(0o700)
        launch_accessibility()
        self.environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                                XDG_PICTURES_DIR=str(self.pictures), HOME=str(self.folder / "home"),
                                XDG_RUNTIME_DIR=str(self.folder / "run"), **{"LC_ALL": "C.UTF-8", **(environment or {})})
        self.program = subprocess.Popen([program, "--documents", str(self.documents), *options],
                                        env=self.environment)
        import pyatspi
        self.atspi = pyatspi
        self.application = self.wait_for(self.find_application, "the program on the accessibility bus", 30)
        self.window = self.wait_for(self.find_window, "the window", 20)
        subprocess.run(["xdotool", "windowmove", self.window, "0", "0", "windowsize", self.window, str(size[0]),
                        str(size[1]), "windowfocus", self.window], check=True)
        time.sleep(0.4)

    def close(self):
        self.program.terminate()
        self.program.wait()

    # Looking --------------------------------------------------------------------------------------------------------
    def wait_for(self, look, what, seconds=10.0):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if self.program.poll() is not None:
                raise AssertionError(f"the program ended while waiting for {what}")
            try:
                found = look()
            except Exception:  # the tree changes while it is read
                found = None
            if found:
                return found
            time.sleep(0.05)
        raise AssertionError(f"no {what}; there is: {sorted(set(self.names()))}")

    def find_application(self):
        for application in self.atspi.Registry.getDesktop(0):
            if application is not None and application.get_process_id() == self.program.pid:
                return application
        return None

    def find_window(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(self.program.pid)],
                               capture_output=True, text=True).stdout.split()
        return found[-1] if found else None

    def nodes(self):
        """Everything that shows, with what stands in front of it last."""
        waiting = [self.application]
        while waiting:
            node = waiting.pop(0)
            try:
                children = [child for child in node if child is not None]
            except Exception:
                continue
            for child in children:
                try:
                    showing = child.getState().contains(self.atspi.STATE_SHOWING)
                except Exception:
                    continue
                if showing:
                    yield child
                    waiting.append(child)

    def names(self):
        for node in self.nodes():
            try:
                if node.name:
                    yield node.name
            except Exception:
                continue

    def find(self, name, enabled=True):
        for node in self.nodes():
            if node.name != name:
                continue
            if (node.description != "Not available") == enabled:
                return node
        return None

    def expect(self, name, seconds=10.0, enabled=True):
        return self.wait_for(lambda: self.find(name, enabled), f'"{name}"', seconds)

    def expect_gone(self, name, seconds=10.0):
        self.wait_for(lambda: self.find(name) is None, f'leaving of "{name}"', seconds)

    def middle(self, node):
        box = node.queryComponent().getExtents(self.atspi.DESKTOP_COORDS)
        return box.x + box.width // 2, box.y + box.height // 2

    # Doing ----------------------------------------------------------------------------------------------------------
    def settle(self, node_name):
        """Waits until the control has come to rest, so that a press lands on it."""
        last = None
        for _ in range(60):
            node = self.expect(node_name)
            now = self.middle(node)
            if now == last:
                return node, now
            last = now
            time.sleep(0.1)
        raise AssertionError(f'"{node_name}" does not come to rest')

    def click(self, name):
        _, (x, y) = self.settle(name)
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)

    def press(self, name):
        """The press action, as a screen reader does it."""
        node, _ = self.settle(name)
        action = node.queryAction()
        for index in range(action.nActions):
            if action.getName(index).lower() == "press":
                action.doAction(index)
                return
        raise AssertionError(f'"{name}" cannot be pressed')

    def key(self, *keys):
        subprocess.run(["xdotool", "key", *keys], check=True)

    def drag(self, start, end):
        subprocess.run(["xdotool", "mousemove", str(start[0]), str(start[1]), "mousedown", "1"], check=True)
        for step in range(1, 11):
            x = start[0] + (end[0] - start[0]) * step // 10
            y = start[1] + (end[1] - start[1]) * step // 10
            subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
            time.sleep(0.02)
        subprocess.run(["xdotool", "mouseup", "1"], check=True)

    def wheel(self, at, clicks):
        button = "4" if clicks > 0 else "5"
        subprocess.run(["xdotool", "mousemove", str(at[0]), str(at[1]), "click", "--repeat", str(abs(clicks)), button],
                       check=True)

    def shoot(self, path):
        subprocess.run(["import", "-window", self.window, str(path)], check=True)
