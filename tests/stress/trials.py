"""The trials: each does one unit of work when it is called and answers figures to add to those of earlier runs.

A figure whose name begins with "worst" or "most" is a maximum, every other one is a sum. What should not have happened is raised
as Finding.
"""

import os
import pathlib
import random
import shutil
import signal
import subprocess
import time

import harness

FRAMES = 90
STOP_BOUND = 20.0  # seconds after which a program counts as hanging


class Finding(Exception):
    """Something that was promised did not hold."""


def expect(condition, *facts):
    if not condition:
        raise Finding(" | ".join(map(str, facts)))


class Scene:
    """Frames on disk, and the movie that an undisturbed render makes of them."""

    def __init__(self, build, folder):
        self.build = pathlib.Path(build)
        self.corvel = self.build / "Corvel.app/Contents/MacOS/corvel"
        self.folder = pathlib.Path(folder)
        self.frames = harness.make_frames(self.folder / "frames", FRAMES)
        self.out = self.folder / "out"
        self.clear()
        began = time.monotonic()
        expect(self.render().end() == 0, "the undisturbed render fails")
        self.seconds = time.monotonic() - began
        self.sums = harness.frame_sums(self.movie)
        expect(len(self.sums) == FRAMES, "the undisturbed movie has", len(self.sums), "frames")

    @property
    def movie(self):
        return self.out / "out.mov"

    def clear(self):
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        for log in self.folder.glob("log-*"):
            log.unlink()

    def command(self, corvel=None, output=None):
        return [corvel or self.corvel, "render", self.frames, "-o", output or self.movie, "--codec", "0", "--format",
                "1280x720", "--timecode", "01:00:00:00", "--progress", "json"]

    def render(self, corvel=None, env=None):
        return harness.Run(self.command(corvel), self.folder, env)

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


class Kill:
    """Kills the worker, the host or both at a random moment of a render, from its start to after its end."""

    def __init__(self, scene, whom):
        self.scene = scene
        self.whom = whom
        self.done = []  # (when, frames that the host had told as done)

    def step(self):
        scene = self.scene
        scene.clear()
        self.done = [(0.0, 0)]
        run = scene.render()
        # A third each for the start, the frames and the end, whose lengths differ.
        moment = random.random() * scene.seconds * random.choice((0.15, 0.9, 1.1))
        self.watch(run, time.monotonic() + moment)
        killed = self.kill(run)
        began = time.monotonic()
        code = run.end(STOP_BOUND)
        host_seconds = time.monotonic() - began
        expect(code is not None, "the host hangs", run.text()[-300:])
        ended = harness.wait_until(lambda: not any(map(harness.alive, killed + self.helpers)), STOP_BOUND)
        seconds = time.monotonic() - began
        expect(ended, "an orphan lives on")
        figures = {"kills": 1, "worst seconds to the end": round(seconds, 2)} if killed else {"too late": 1}
        if self.whom == "worker" and killed:
            expect(code in (0, 4), "exit code", code, run.text()[-300:])
            figures["worst seconds to the host's end"] = round(host_seconds, 2)
        figures["at the " + self.phase(run)] = 1
        figures["frames read back"] = self.check_movie(code)
        scene.check_clean()
        return figures

    def watch(self, run, until):
        while time.monotonic() < until and run.process.poll() is None:
            self.done.append((time.monotonic(), run.text().count('"event":"frame"')))
            time.sleep(0.02)

    def kill(self, run):
        self.helpers = harness.children(run.pid)
        victims = {"worker": self.helpers, "host": [run.pid], "both": [run.pid, *self.helpers]}[self.whom]
        self.killed_at = time.monotonic()
        killed = []
        for victim in victims:
            if harness.alive(victim):
                os.kill(victim, signal.SIGKILL)
                killed.append(victim)
        return killed

    @staticmethod
    def phase(run):
        text = run.text()
        if '"event":"frame"' not in text:
            return "start"
        return "end" if f'"done":{FRAMES},' in text else "frames"

    def check_movie(self, code):
        """Every frame that was done a second before the kill is there, and all are right."""
        safe = max(count for when, count in self.done if when <= self.killed_at - 1.0 or count == 0)
        movie = self.scene.partial()
        sums = harness.frame_sums(movie) if movie else []
        expect(sums == self.scene.sums[:len(sums)], "frames differ in", movie)
        expect(len(sums) >= safe, "only", len(sums), "of", safe, "frames are readable")
        expect(code != 0 or len(sums) == FRAMES, "exit code 0 for", len(sums), "frames")
        return len(sums)


class FullDisk:
    """The disk is full from the n-th write of the movie on; n goes up from run to run."""

    def __init__(self, scene, done):
        self.scene = scene
        self.next = int(done.get("runs", 0))

    def step(self):
        scene = self.scene
        scene.clear()
        self.next += 1
        if self.next % 2:
            figures = self.small_disk()
        else:
            figures = self.failing_write(self.next // 2)
        scene.check_clean()
        return {"runs": 1, **figures}

    def failing_write(self, number):
        inject = f"inject=pwrite64,pwritev:error=ENOSPC:when={number}+"
        line = f"exec strace -D -f -qq -o /dev/null -e trace=pwrite64,pwritev -e {inject} REAL \"$@\""
        folder = self.scene.folder / f"full{number}"
        try:
            return self.judge(self.scene.render(self.scene.wrapped_helper(folder.name, line)), "failing writes")
        finally:
            shutil.rmtree(folder)

    def small_disk(self):
        size = 16 + 24 * (self.next // 2 % 120)  # kB
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}k", "tmpfs", self.scene.out], check=True)
        try:
            return self.judge(self.scene.render(), "small disks")
        finally:
            subprocess.run(["umount", self.scene.out], check=True)

    def judge(self, run, name):
        code = run.end()
        movie = self.scene.partial()
        sums = harness.frame_sums(movie) if movie else []
        expect(sums == self.scene.sums[:len(sums)], "frames differ in", movie)
        if code == 0:
            expect(len(sums) == FRAMES, "exit code 0 for", len(sums), "frames")
            return {"runs that had room": 1}
        expect(code in (1, 3), "exit code", code, run.text()[-600:])
        expect("No space left on device" in run.text(), "no reason is told:", run.text()[-600:])
        return {name: 1, "frames read back": len(sums)}


class Signals:
    """A thousand signals a second to both processes: the movie is the undisturbed one."""

    def __init__(self, scene):
        self.scene = scene

    def step(self):
        self.scene.clear()
        storm = self.scene.build / "tests/children/signal_storm/libsignal_storm.so"
        run = self.scene.render(env={"LD_PRELOAD": str(storm)})
        code = run.end()
        expect(code == 0, "exit code", code, run.text()[-600:])
        expect(harness.frame_sums(self.scene.movie) == self.scene.sums, "the movie differs")
        self.scene.check_clean()
        return {"renders": 1}


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


class Leaks:
    """The worker's unit tests under valgrind: no invalid access, nothing lost. One program a step, in turn.

    Not the worker itself: valgrind does not know the call by which it watches its host.
    """

    def __init__(self, scene):
        self.scene = scene
        self.programs = sorted(path for name in ("worker_core", "worker_codec", "worker_sound", "worker_movie")
                               for path in (scene.build / "tests/unit" / name).glob("*_test") if path.is_file())

    def step(self):
        expect(self.programs, "the unit tests are not built")
        self.programs.append(self.programs.pop(0))
        program = self.programs[-1]
        command = ["valgrind", "-q", "--error-exitcode=99", "--leak-check=full", "--errors-for-leak-kinds=definite",
                   program]
        result = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False)
        expect(result.returncode != 99, program, result.stderr[-3000:])
        harness.reap()
        return {"programs": 1}


class Threads:
    """Host and worker built with the thread sanitizer."""

    def __init__(self, scene, build):
        self.scene = scene
        self.corvel = pathlib.Path(build) / "Corvel.app/Contents/MacOS/corvel"

    def step(self):
        self.scene.clear()
        log = self.scene.folder / "races"
        run = self.scene.render(self.corvel, {"TSAN_OPTIONS": f"log_path={log}:exitcode=0"})
        code = run.end(600)
        expect(code == 0, "exit code", code, run.text()[-600:])
        reports = [path.read_text(encoding="utf-8", errors="replace") for path in self.scene.folder.glob("races.*")]
        for path in self.scene.folder.glob("races.*"):
            path.unlink()
        expect(not reports, *[report[:3000] for report in reports])
        expect(harness.frame_sums(self.scene.movie) == self.scene.sums, "the movie differs")
        return {"renders": 1}
