"""The trials: each does one unit of work when it is called and answers figures to add to those of earlier runs.

A figure whose name begins with "worst" or "most" is a maximum, every other one is a sum. What should not have happened
is raised as Finding.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

import harness
from findings import Finding, expect

FRAMES = 48
LARGE = ("--format", "1280x720")


class Scene:
    """Frames on disk, and the movies that undisturbed renders make of them."""

    def __init__(self, build, folder):
        self.build = pathlib.Path(build)
        self.corvel = self.build / "Corvel.app/Contents/MacOS/corvel"
        self.folder = pathlib.Path(folder)
        self.frames = harness.make_frames(self.folder / "frames", FRAMES)
        self.out = self.folder / "out"
        self.known = {}
        self.sums = []  # of the movie without options, once this is prepared

    def prepare(self):
        """Renders undisturbed once; ends the program, saying what to do, where that fails already."""
        try:
            self.sums = self.undisturbed()
        except Finding as finding:
            sys.exit(f"stress.py: nothing can be tried with {self.corvel}: {finding}\n"
                     f"Where it is older than its sources, this makes it anew: ninja -C {self.build}")

    def undisturbed(self, *options):
        """The checksums of the frames of the movie that is rendered with these options."""
        if options not in self.known:
            self.clear()
            run = self.render(options=options)
            code = run.end()
            expect(code == 0, "an undisturbed render ends with", code, run.text()[-600:])
            self.known[options] = harness.frame_sums(self.movie)
            expect(len(self.known[options]) == FRAMES, "an undisturbed movie has", len(self.known[options]), "frames")
        return self.known[options]

    @property
    def movie(self):
        return self.out / "out.mov"

    def clear(self):
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        for log in self.folder.glob("log-*"):
            log.unlink()

    def command(self, corvel=None, output=None, options=()):
        codec = () if "--codec" in options else ("--codec", "0")
        return [corvel or self.corvel, "render", self.frames, "-o", output or self.movie, *codec,
                "--timecode", "01:00:00:00", "--progress", "json", *options]

    def render(self, corvel=None, env=None, options=()):
        return harness.Run(self.command(corvel, options=options), self.folder, env)

    def partial(self):
        """What is on disk of the movie, under whatever name."""
        return next((path for path in sorted(self.out.iterdir()) if path.is_file()), None)

    def wrapped_helper(self, name, line):
        """A copy of the bundle whose helper is started by a line of shell; REAL in it stands for the real one."""
        script = self.folder / f"{name}.sh"
        real = self.build / "Corvel.app/Contents/Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32"
        script.write_text(f"#!/bin/sh\n{line.replace('REAL', str(real))}\n", encoding="utf-8")
        script.chmod(0o755)
        return harness.bundle_with(self.corvel, script, self.folder / name)

    def check_clean(self):
        """Nothing is left after the sweep."""
        harness.reap()
        left = harness.processes()
        for process in left:
            os.kill(process, signal.SIGKILL)
        expect(not left, "processes left:", left)
        if harness.leftovers():
            sweep = harness.Run([self.corvel, "doctor", "--sweep"], self.folder)
            expect(sweep.end() == 0, "the sweep fails:", sweep.text())
        expect(not harness.leftovers(), "left after the sweep:", harness.leftovers())


def judge_full(scene, run, sums):
    """A render on a full disk ends with the reason, and what is on disk can be read."""
    code = run.end()
    expect(code is not None, "the host hangs", run.text()[-600:])
    movie = scene.partial()
    found = harness.frame_sums(movie) if movie else []
    expect(found == sums[:len(found)], "frames differ in", movie)
    if code == 0:
        expect(len(found) == FRAMES, "exit code 0 for", len(found), "frames")
        return {"runs that had room": 1}
    expect(code in (1, 3), "exit code", code, run.text()[-600:])
    expect("No space left on device" in run.text(), "no reason is told:", run.text()[-600:])
    return {"renders that failed": 1, "frames read back": len(found)}


class FullDisk:
    """The disk is full from the n-th write of the movie on; n goes up to LAST from run to run."""

    LAST = 500
    OPTIONS = ("--codec", "raw", *LARGE)  # several hundred writes

    def __init__(self, scene, done):
        self.scene = scene
        self.next = int(done.get("runs", 0))
        self.corvel = None

    def step(self):
        scene = self.scene
        number = self.next % self.LAST + 1
        sums = scene.undisturbed(*self.OPTIONS)
        calls = "pwrite64,pwritev"
        self.corvel = self.corvel or scene.wrapped_helper(
            "full", f'exec strace -D -f -qq -o /dev/null -e trace={calls} -e "$CORVEL_STRESS_INJECT" REAL "$@"')
        scene.clear()
        inject = f"inject={calls}:error=ENOSPC:when={number}+"
        figures = judge_full(scene, scene.render(self.corvel, {"CORVEL_STRESS_INJECT": inject}, self.OPTIONS), sums)
        scene.check_clean()
        self.next += 1
        return {"runs": 1, "most writes before the disk was full": number - 1, **figures}


class SmallDisk:
    """The movie goes to a file system of 16 kB and more, larger from run to run until the movie has room."""

    def __init__(self, scene, done):
        self.scene = scene
        self.next = int(done.get("runs", 0))

    def step(self):
        scene = self.scene
        sums = scene.undisturbed(*FullDisk.OPTIONS)
        scene.clear()
        size = 16 + 1100 * (self.next % 128)  # kB
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}k", "tmpfs", scene.out], check=True)
        try:
            figures = judge_full(scene, scene.render(options=FullDisk.OPTIONS), sums)
        finally:
            subprocess.run(["umount", scene.out], check=True)
        scene.check_clean()
        self.next += 1
        return {"runs": 1, **figures}


class Signals:
    """A thousand signals a second to both processes: the movie is the undisturbed one."""

    def __init__(self, scene):
        self.scene = scene

    def step(self):
        sums = self.scene.undisturbed(*LARGE)
        self.scene.clear()
        storm = self.scene.build / "tests/children/signal_storm/libsignal_storm.so"
        run = self.scene.render(env={"LD_PRELOAD": str(storm)}, options=LARGE)
        code = run.end()
        expect(code == 0, "exit code", code, run.text()[-600:])
        expect(harness.frame_sums(self.scene.movie) == sums, "the movie differs")
        self.scene.check_clean()
        return {"renders": 1}


class Limits:
    """Renders of pictures and of a movie with few descriptors or little memory: a movie, or an error that says why."""

    OFFER = [("nofile", count) for count in range(5, 40)]
    OFFER += [("as", mebibytes << 20) for mebibytes in range(80, 1000, 20)]
    REASON = re.compile(r"limit|memory|thread|failed to map|[Cc]annot allocate|[Tt]oo many open files|cannot map")

    def __init__(self, scene, done):
        self.scene = scene
        self.next = int(done.get("runs", 0))

    def step(self):
        scene = self.scene
        scene.clear()
        source = scene.folder / "source.mov"
        if not source.exists():
            expect(harness.Run(scene.command(output=source), scene.folder).end() == 0, "the undisturbed render fails")
        # A step that has no divisor in common with their count: a few runs see something of everything.
        resource, limit = self.OFFER[self.next * 17 % len(self.OFFER)]
        command = scene.command()
        if self.next // len(self.OFFER) % 2:
            command[2] = source
        self.next += 1
        run = harness.Run(["prlimit", f"--{resource}={limit}", *command], scene.folder)
        code = run.end()
        expect(code in (0, 1, 3, 4), resource, limit, "exit code", code, run.text()[-600:])
        expect(code == 0 or self.REASON.search(run.text()), resource, limit, "no reason is told:", run.text()[-600:])
        found = harness.frame_sums(scene.movie) if scene.movie.exists() else []
        # What there is of a movie is kept.
        whole = found == scene.sums if code == 0 else found == scene.sums[:len(found)]
        expect(whole, resource, limit, "the movie differs")
        scene.check_clean()
        return {"runs": 1, "movies" if code == 0 else "errors": 1}


class LongRender:
    """Many small frames in one render: memory, descriptors and mappings of both processes stay flat."""

    def __init__(self, scene, frames):
        self.scene = scene
        self.frames = frames

    @staticmethod
    def look(process):
        status = pathlib.Path(f"/proc/{process}/status").read_text(encoding="utf-8")
        resident = next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmRSS:"))
        maps = pathlib.Path(f"/proc/{process}/maps").read_text(encoding="utf-8").count("\n")
        return resident, len(os.listdir(f"/proc/{process}/fd")), maps

    def step(self):
        scene = self.scene
        scene.clear()
        still = harness.make_frames(scene.folder / "still", 1, 16, 16)
        run = harness.Run([scene.corvel, "render", still, "-o", scene.movie, "--codec", "0", "--missing", "hold",
                           "--frames", f"1-{self.frames}", "--progress", "plain"], scene.folder)
        helper = run.helper()
        looks = []
        while run.process.poll() is None:
            try:
                looks.append((self.look(run.pid), self.look(helper)))
            except (OSError, StopIteration):
                break
            time.sleep(0.2)
        code = run.end(600)
        expect(code == 0, "exit code", code, run.text()[-600:])
        self.expect_flat(looks)
        count = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "stream=nb_frames",
                                "-of", "csv=p=0", scene.movie], capture_output=True, text=True, check=True).stdout
        expect(int(count.strip().strip(",")) == self.frames, "the movie has", count.strip(), "frames")
        scene.check_clean()
        figures = {"renders": 1, "frames": self.frames}
        for place, who in enumerate(("host", "worker")):
            figures[f"most resident MB of the {who}"] = round(max(look[place][0] for look in looks) / 1024, 1)
            figures[f"most descriptors of the {who}"] = max(look[place][1] for look in looks)
            figures[f"most mappings of the {who}"] = max(look[place][2] for look in looks)
        return figures

    @staticmethod
    def expect_flat(looks):
        expect(len(looks) >= 4, "the render was too short to judge")
        # The first quarter is for what grows once; the last looks may see the end of the movie being made.
        steady = looks[len(looks) // 4:-1]
        half = len(steady) // 2
        for place, who in enumerate(("host", "worker")):
            for kind, (name, slack) in enumerate((("resident kB", 4096), ("descriptors", 2), ("mappings", 16))):
                before = max(look[place][kind] for look in steady[:half] or steady)
                after = max(look[place][kind] for look in steady[half:])
                # An index grows by some bytes a frame; that is what a movie is.
                growth = 0.15 * before if name == "resident kB" else 0
                expect(after <= before + slack + growth, who, name, before, after)


class Controllers:
    """Many renders of twenty frames at once: all movies are right."""

    def __init__(self, scene, count):
        self.scene = scene
        self.count = count

    def step(self):
        scene = self.scene
        scene.clear()
        runs = []
        for number in range(self.count):
            output = scene.out / f"{number}.mov"
            command = scene.command(output=output)
            runs.append((output, harness.Run([*command, "--frames", "1-20", "--threads", "1"], scene.folder)))
        for output, run in runs:
            code = run.end(600)
            expect(code == 0, "exit code", code, run.text()[-600:])
            expect(harness.frame_sums(output) == scene.sums[:20], output, "differs")
        scene.check_clean()
        return {"rounds": 1, "movies": self.count, "most at once": self.count}
