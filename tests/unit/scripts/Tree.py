"""A small tree of files to run a script of the project on."""

import os
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]


class TreeTest(unittest.TestCase):
    """Each test has an empty folder of its own, `self.tree`, which is gone afterwards."""

    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.tree = pathlib.Path(holder.name) / "a tree"  # with a blank: paths must be quoted everywhere
        self.tree.mkdir()

    def write(self, name, text, mode=0o644):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(mode)
        return path

    def run_command(self, *command, path_first=None, cwd=None, env=None):
        """The finished process; `path_first` is a folder that comes before all others in PATH."""
        environment = {**os.environ, **(env or {})}
        if path_first:
            environment["PATH"] = f"{path_first}:{environment['PATH']}"
        return subprocess.run([str(part) for part in command], cwd=cwd or self.tree, env=environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
