"""What the programs here share: an isolated place to run in, renders, and proofs that nothing is left.

The place has process numbers, shared memory and temporary files of its own (namespaces of Linux), so that whatever is
found there after a run was left by it, and nothing that happens there touches anybody else.
"""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
MARK = "CORVEL_STRESS_PLACE"


def isolate():
    """Goes on in a place of our own; ends with SKIPPED where the system does not allow that. Call it first."""
    if os.environ.get(MARK):
        # The temporary folder is memory of this place alone and goes with it.
        for folder in ("/dev/shm", os.environ[MARK]):
            subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2g", "tmpfs", folder], check=True)
        os.environ["TMPDIR"] = tempfile.tempdir = os.environ[MARK]
        os.environ.pop("CORVEL_TEMP_DIR", None)
        return
    folder = tempfile.mkdtemp(prefix="corvel-stress-")
    spaces = ["--mount", "--pid", "--fork", "--mount-proc", "--kill-child"]
    if os.geteuid() != 0:
        spaces = ["--user", "--map-root-user"] + spaces
    try:
        if subprocess.run(["unshare", *spaces, "true"], check=False, stderr=subprocess.DEVNULL).returncode != 0:
            print("skipped: no namespaces to be had here")
            sys.exit(SKIPPED)
        # Should this process be killed, so is what it has started.
        command = ["setpriv", "--pdeathsig", "KILL", "unshare", *spaces, sys.executable, *sys.argv]
        inner = subprocess.Popen(command, env={**os.environ, MARK: folder})
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            # The one inside stops, with all that it has started, and this one after it.
            signal.signal(number, lambda number, _: [os.kill(child, number) for child in children(inner.pid)])
        sys.exit(inner.wait())
    finally:
        os.rmdir(folder)


def make_frames(folder, count, width=64, height=48, first=1):
    """Frames that differ from each other, as files that need no library to write. The pattern that names them."""
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    for number in range(first, first + count):
        row = bytes((7 * number + x * 3 + c * 50) & 255 for x in range(width) for c in range(3))
        rows = b"".join(row[3 * (y % width):] + row[:3 * (y % width)] for y in range(height))
        (folder / f"f.{number:06}.ppm").write_bytes(b"P6\n%d %d\n255\n" % (width, height) + rows)
    return str(folder / "f.######.ppm")


def bundle_with(corvel, worker, folder):
    """A copy of corvel's bundle whose helper is another program; the path of its corvel."""
    original = pathlib.Path(corvel).resolve().parents[1]
    copy = pathlib.Path(folder) / "Corvel.app" / "Contents"
    shutil.copytree(original, copy, symlinks=False)
    helper = copy / "Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32"
    helper.unlink()
    shutil.copy(worker, helper)
    return str(copy / "MacOS/corvel")


def alive(process):
    try:
        state = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="latin-1").rpartition(")")[2].split()[0]
    except OSError:
        return False
    return state not in "ZX"


def children(process):
    """Numbers of the living processes that `process` has started."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                fields = (entry / "stat").read_text(encoding="latin-1").rpartition(")")[2].split()
            except OSError:
                continue
            if fields[1] == str(process) and fields[0] not in "ZX":
                found.append(int(entry.name))
    return found


def wait_until(condition, seconds=60.0):
    """Whether `condition` became true; the seconds only bound the wait for something that never comes."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.002)
    return True


class Run:
    """A program under way, with what it says on standard error in a file."""

    def __init__(self, command, folder, env=None):
        self.log = pathlib.Path(tempfile.mkstemp(prefix="log-", dir=folder)[1])
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                                            stdout=subprocess.DEVNULL, stderr=log,
                                            env=None if env is None else {**os.environ, **env})
        self.pid = self.process.pid

    def text(self):
        return self.log.read_text(encoding="utf-8", errors="replace")

    def says(self, words, seconds=60.0):
        """Waits until it has said `words`, or has ended."""
        wait_until(lambda: words in self.text() or self.process.poll() is not None, seconds)
        return words in self.text()

    def helper(self):
        """The helper's process number, once there is one; 0 where the host ended before."""
        found = []

        def look():
            found[:] = children(self.pid)
            return found or self.process.poll() is not None

        wait_until(look)
        return found[0] if found else 0

    def end(self, seconds=60.0):
        """The exit code as the shell tells it; None where it hangs, and then it is killed."""
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            return None


def reap():
    """In a place of our own, orphans become our children."""
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
    except ChildProcessError:
        pass


def processes():
    """All living processes of this place but this one and what it runs in."""
    ours = {os.getpid(), 1}
    return [int(entry.name) for entry in pathlib.Path("/proc").iterdir()
            if entry.name.isdigit() and int(entry.name) not in ours and alive(int(entry.name))]


def leftovers():
    """Shared files, semaphores and folders of bridges."""
    found = list(pathlib.Path("/dev/shm").iterdir())
    found += [path for path in pathlib.Path(tempfile.gettempdir()).iterdir()
              if path.name.startswith("corvel-memory-") or path.name == "processbridge"]
    return sorted(map(str, found))


def frame_sums(movie):
    """A checksum of each decoded frame, in order. An empty list for what cannot be read."""
    command = ["ffmpeg", "-v", "error", "-i", str(movie), "-map", "0:v:0", "-f", "framemd5", "-"]
    result = subprocess.run(command, capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)
    lines = [line for line in result.stdout.splitlines() if line and not line.startswith("#")]
    return [line.rpartition(",")[2].strip() for line in lines]
