"""Renders of which every access is checked, by valgrind or by the thread sanitizer."""

import pathlib
import subprocess

import harness
from findings import expect

TESTS = pathlib.Path(__file__).resolve().parents[1]
SUPPRESSIONS = TESTS / "valgrind-suppressions.txt"
SUPPRESSED_RACES = TESTS / "thread-suppressions.txt"
VALGRIND = ["valgrind", "-q", "--vgdb=no", "--error-exitcode=99", "--leak-check=full",
            "--errors-for-leak-kinds=definite", "--show-leak-kinds=definite", "--num-callers=24",
            f"--suppressions={SUPPRESSIONS}"]
PATIENCE = 900.0  # seconds


class Leaks:
    """No invalid access, and nothing lost: in turn the worker that renders, the one that reads, the host, and one
    program after the other of the worker's unit tests."""

    def __init__(self, scene):
        self.scene = scene
        self.logs = scene.folder / "memcheck"
        self.corvel = None  # one whose worker runs under valgrind, once it is made
        self.programs = sorted(path for name in ("worker_core", "worker_codec", "worker_sound", "worker_movie")
                               for path in (scene.build / "tests/unit" / name).glob("*_test") if path.is_file())
        units = [lambda program=program: self.unit(program) for program in self.programs]
        self.turns = [self.worker, self.host, *units]

    def step(self):
        expect(self.programs, "the unit tests are not built")
        self.turns.append(self.turns.pop(0))
        figures = self.turns[-1]()
        harness.reap()
        return figures

    def unit(self, program):
        result = subprocess.run([*VALGRIND, program], capture_output=True, text=True, errors="replace", check=False)
        expect(result.returncode != 99, program, result.stderr[-3000:])
        return {"test programs": 1}

    def worker(self):
        """A movie is rendered, and another is made from it; that takes one worker that reads and two that write."""
        valgrind = " ".join([*VALGRIND, f"--log-file={self.logs}.%p"])
        self.corvel = self.corvel or self.scene.wrapped_helper("valgrind", f'exec {valgrind} REAL "$@"')
        self.scene.clear()
        self.run(self.scene.command(self.corvel))
        self.expect_right()
        again = self.scene.out / "again.mov"
        self.run([self.corvel, "render", self.scene.movie, "-o", again, "--codec", "0", "--progress", "json"])
        expect(harness.frame_sums(again) == self.scene.sums, "the movie made from the movie differs")
        return {"renders by a checked worker": 2, "movies read by a checked worker": 1}

    def host(self):
        self.scene.clear()
        self.run([*VALGRIND, f"--log-file={self.logs}.%p", *self.scene.command()])
        self.expect_right()
        return {"renders by a checked host": 1}

    def run(self, command):
        """Valgrind does not know the call by which host and worker watch each other, nor what confines them."""
        shim = self.scene.build / "tests/children/old_kernel/libold_kernel.so"
        run = harness.Run(command, self.scene.folder, {"LD_PRELOAD": str(shim), "CORVEL_HELPER_CONFINEMENT": "off"})
        code = run.end(PATIENCE)
        logs = list(self.logs.parent.glob(self.logs.name + ".*"))
        told = "".join(log.read_text(encoding="utf-8", errors="replace") for log in logs if log.is_file())
        for log in logs:
            log.unlink()
        expect(logs, "valgrind has not run")
        expect(not told, told[:3000])
        expect(code == 0, "exit code", code, run.text()[-600:])

    def expect_right(self):
        expect(harness.frame_sums(self.scene.movie) == self.scene.sums, "the movie differs")


class Threads:
    """Host and worker built with the thread sanitizer: a render, and one from the movie it has made."""

    def __init__(self, scene, build):
        self.scene = scene
        self.corvel = pathlib.Path(build) / "Corvel.app/Contents/MacOS/corvel"

    def step(self):
        self.scene.clear()
        self.run(self.scene.command(self.corvel))
        expect(harness.frame_sums(self.scene.movie) == self.scene.sums, "the movie differs")
        self.run([self.corvel, "render", self.scene.movie, "-o", self.scene.out / "again.mov", "--codec", "0",
                  "--progress", "json"])
        return {"renders": 2}

    def run(self, command):
        log = self.scene.folder / "races"
        # The sanitizer loads libraries in the program's place, and does not know where the program looks for them. A
        # confined worker could not write down what was found.
        frameworks = self.corvel.parents[1] / "Frameworks"
        options = f"log_path={log}:exitcode=0:suppressions={SUPPRESSED_RACES}"
        run = harness.Run(command, self.scene.folder, {"TSAN_OPTIONS": options, "LD_LIBRARY_PATH": str(frameworks),
                                                       "CORVEL_HELPER_CONFINEMENT": "off"})
        code = run.end(PATIENCE)
        logs = list(self.scene.folder.glob("races.*"))
        reports = [path.read_text(encoding="utf-8", errors="replace") for path in logs]
        for path in logs:
            path.unlink()
        expect(not reports, *[report[:3000] for report in reports])
        expect(code == 0, "exit code", code, run.text()[-600:])
