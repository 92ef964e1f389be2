"""A display that exists only in memory, for tests of windows: no window manager, one keyboard.

Nothing here waits for a time: every wait is for something to be seen, and gives up after PATIENCE with what was
seen instead.
"""

import os
import subprocess
import tempfile
import time

PATIENCE = 60  # seconds


def wait_for(what, look):
    """Calls `look` until it answers something that counts as true, and returns that."""
    deadline = time.monotonic() + PATIENCE
    while True:
        seen = look()
        if seen:
            return seen
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}")
        time.sleep(0.03)


class VirtualDisplay:
    def __init__(self, size="1600x1200"):
        read_end, write_end = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{size}x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[write_end], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as numbers:
            self.name = ":" + numbers.readline().strip()
        self.folder = tempfile.TemporaryDirectory(prefix="corvel windows ")
        self.environment = {**os.environ, "DISPLAY": self.name, "XDG_CONFIG_HOME": self.folder.name,
                            "XDG_RUNTIME_DIR": self.folder.name, "QT_ACCESSIBILITY": "0"}
        for name in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM"):
            self.environment.pop(name, None)

    def close(self):
        self.server.terminate()
        self.server.wait()
        self.folder.cleanup()

    def xdotool(self, *arguments):
        result = subprocess.run(["xdotool", *arguments], env=self.environment, capture_output=True, text=True,
                                check=False)
        return result.stdout.split()

    def titles(self):
        """The titles of the windows that can be seen, by window."""
        found = {}
        for window in self.xdotool("search", "--onlyvisible", "--name", "."):
            name = subprocess.run(["xdotool", "getwindowname", window], env=self.environment, capture_output=True,
                                  text=True, check=False)
            if name.returncode == 0:
                found[window] = name.stdout.strip()
        return found

    def window(self, title):
        """Waits for a window with exactly that title."""
        def look():
            return next((window for window, name in self.titles().items() if name == title), None)
        try:
            return wait_for(f"the window “{title}”", look)
        except AssertionError as error:
            raise AssertionError(f"{error}; there are {sorted(self.titles().values())}") from None

    def keys(self, window, *keys):
        """Presses keys in a window, one after the other."""
        self.xdotool("windowfocus", "--sync", window)
        self.xdotool("key", "--clearmodifiers", "--delay", "30", *keys)

    def type(self, window, text):
        self.xdotool("windowfocus", "--sync", window)
        self.xdotool("type", "--delay", "30", text)

    def screenshot(self, window, path):
        subprocess.run(["import", "-silent", "-window", window, str(path)], env=self.environment, check=True)
