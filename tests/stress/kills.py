"""Renders that are killed at a random moment of their life."""

import os
import pathlib
import random
import re
import signal
import tempfile
import time

import harness
from findings import expect

STOP_BOUND = 20.0  # seconds after which a program counts as hanging
PACE = 25  # milliseconds a half of a request takes in slow renders
LATE = 8  # moments that may be missed before a trial gives up

# What a request is for; any other one belongs to setting up.
REQUESTS = {"W00000000": "opening", "W00000001": "frames", "W00000002": "the end of the pictures",
         "W0000000c": "the time code", "W00000004": "closing"}
STEPS = ("the worker's start", "setting up", *REQUESTS.values(), "after closing")


def sweep(scene):
    """What is left goes with the next corvel that needs a worker, or when somebody asks for it."""
    harness.reap()
    if harness.leftovers() and random.random() < 0.5:
        code = harness.Run([scene.corvel, "codecs"], scene.folder).end()
        expect(code == 0, "the next corvel ends with", code)
        expect(not harness.leftovers(), "left after the next corvel:", harness.leftovers())
    scene.check_clean()


class Kill:
    """Kills the worker, the host or both at a random moment, from the start to the end.

    Half of the renders take as long as they take, the others are slow, so that each request has its share of the
    moments and some frames are older than a second. Half of the moments are anywhere in a render's life, the others
    shortly after a step of the protocol has begun.
    """

    def __init__(self, scene, whom):
        self.scene = scene
        self.whom = whom
        self.shim = scene.build / "tests/children/slow_bridge/libslow_bridge.so"
        self.lives = {}  # seconds, by pace

    def step(self):
        pace = random.choice((0, PACE))
        if pace not in self.lives:
            run = self.render(pace)
            expect(run.end() == 0, "the undisturbed render fails", run.text()[-300:])
            self.lives[pace] = time.monotonic() - run.began
            self.scene.check_clean()
        late = 0
        while late < LATE:
            run = self.render(pace)
            if random.random() < 0.5:
                self.wait_for_moment(run, self.lives[pace])
            else:
                self.wait_for_step(run, random.choice(STEPS))
            if self.kill(run):
                return {**self.judge(run), "too late": late}
            late += 1
            run.end()
            # The machine is faster now than when the life was measured.
            self.lives[pace] = 0.8 * self.lives[pace] + 0.2 * (run.ended - run.began)
        return {"too late": late}

    def render(self, pace):
        self.scene.clear()
        self.done = [(0.0, 0)]  # (when, frames that the host had told as done)
        run = self.scene.render(env={"LD_PRELOAD": str(self.shim), "CORVEL_PACE": str(pace)})
        run.began = run.ended = time.monotonic()
        return run

    def wait_for_moment(self, run, life):
        """From the victim's beginning to its usual end."""
        if self.whom == "worker":
            run.helper()
        begin = time.monotonic()
        end = random.uniform(begin, max(begin, run.began + life))
        while time.monotonic() < end and run.process.poll() is None:
            self.look(run)
            time.sleep(min(0.02, max(0.0, end - time.monotonic())))
        run.ended = time.monotonic()

    def wait_for_step(self, run, step):
        while self.step_of_bridge(run) != step and run.process.poll() is None:
            self.look(run)
            time.sleep(0.003)
        time.sleep(random.uniform(0.0, 1.6 * PACE / 1000))
        run.ended = time.monotonic()

    def look(self, run):
        self.done.append((time.monotonic(), run.text().count('"event":"frame"')))

    def kill(self, run):
        """Whether a living process was hit."""
        self.step_hit = self.step_of_bridge(run)
        victims = {"worker": self.helpers, "host": [run.pid], "both": [run.pid, *self.helpers]}[self.whom]
        self.killed_at = time.monotonic()
        self.killed = [victim for victim in victims if harness.alive(victim)]
        for victim in self.killed:
            os.kill(victim, signal.SIGKILL)
        return bool(self.killed)

    def step_of_bridge(self, run):
        """What the bridge does now, by the request that lies in its file."""
        self.helpers = harness.children(run.pid)
        for folder in ("/dev/shm", tempfile.gettempdir()):
            for file in pathlib.Path(folder).glob("corvel-memory-*/processbridge/*T"):
                try:
                    return REQUESTS.get(file.read_bytes()[:9].decode("latin-1"), "setting up")
                except OSError:
                    pass
        if '"event":"frame"' in run.text():
            return "after closing"
        return "the worker's start" if self.helpers else "the host's start"

    def judge(self, run):
        began = time.monotonic()
        code = run.end(STOP_BOUND)
        host_seconds = time.monotonic() - began
        expect(code is not None, "the host hangs", run.text()[-300:])
        ended = harness.wait_until(lambda: not any(map(harness.alive, self.killed + self.helpers)), STOP_BOUND)
        seconds = time.monotonic() - began
        expect(ended, "an orphan lives on")
        figures = {"kills": 1, "at " + self.step_hit: 1, "worst seconds to the end": round(seconds, 2),
                   "ended after more than a second": int(seconds > 1.0)}
        if self.whom == "worker":
            expect(code in (0, 4), "exit code", code, run.text()[-300:])
            figures["worst seconds to the host's end"] = round(host_seconds, 2)
        figures |= self.check_movie(run, code)
        sweep(self.scene)
        return figures

    def movie(self, run):
        """The file that a person would take: the finished movie, the one that is named, the hidden one."""
        if self.scene.movie.exists():
            return self.scene.movie
        named = re.search(r"what there is of the movie is in (\S+);", run.text())
        if named:
            return pathlib.Path(named[1])
        hidden = [path for path in self.scene.out.iterdir() if not path.name.endswith(".index")]
        return hidden[0] if hidden else None

    def check_movie(self, run, code):
        """Every frame that was done a second before the kill is there, and all are right."""
        safe = max(count for when, count in self.done if when <= self.killed_at - 1.0 or count == 0)
        movie = self.movie(run)
        sums = harness.frame_sums(movie) if movie else []
        expect(sums == self.scene.sums[:len(sums)], "frames differ in", movie)
        expect(len(sums) >= safe, "only", len(sums), "of", safe, "frames are readable")
        expect(code != 0 or len(sums) == len(self.scene.sums), "exit code 0 for", len(sums), "frames")
        return {"frames read back": len(sums), "frames older than a second": safe}




class KillAtCall:
    """The host is killed as it enters one of the calls by which it makes or removes something, one after the other."""

    CALLS = {"mkdir": 4, "flock": 1, "link": 2, "unlink": 6, "clone3": 6, "ftruncate": 12, "fallocate": 3, "rename": 1,
             "rmdir": 2}

    def __init__(self, scene, done):
        self.scene = scene
        # The first of each, then the second of each, …
        self.moments = sorted(((call, n + 1) for call, count in self.CALLS.items() for n in range(count)),
                              key=lambda moment: moment[1])
        self.next = int(done.get("runs", 0))

    def step(self):
        scene = self.scene
        scene.clear()
        call, number = self.moments[self.next % len(self.moments)]
        self.next += 1
        strace = ["strace", "-qq", "-o", "/dev/null", "-e", f"trace={call}", "-e",
                  f"inject={call}:signal=KILL:when={number}"]
        run = harness.Run([*strace, *scene.command()], scene.folder)
        code = run.end(STOP_BOUND)
        expect(code is not None, "the host hangs", run.text()[-300:])
        expect(harness.wait_until(lambda: harness.reap() or not harness.processes(), STOP_BOUND), "an orphan lives on")
        passing = self.passing_names() if call == "link" else []
        for path in passing:
            path.unlink()
        sweep(scene)
        return {"runs": 1, "kills" if code != 0 else "calls that did not come": 1, "passing names left": len(passing)}

    @staticmethod
    def passing_names():
        """What the C library calls a semaphore that has no name yet: nobody can tell whose it is."""
        return [path for path in pathlib.Path("/dev/shm").glob("sem.??????") if path.stat().st_nlink == 1]
