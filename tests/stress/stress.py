"""Runs the trials, and adds their figures up over runs.

Usage: stress.py BUILD-FOLDER [--figures FOLDER] [--trial NAME]… [--hours H | --rounds N]

With --hours it goes on until the time is over or Ctrl-C; the next run goes on from the figures kept in FOLDER, where
findings are kept too. The trials take turns. The exit code is 1 when something was found, 77 where this system does
not allow a place of our own.
"""

import argparse
import fcntl
import json
import pathlib
import shutil
import signal
import sys
import tempfile
import time

import checkers
import fuzzing
import harness
import kills
import trials
from findings import Finding


class Book:
    """The figures of all runs: kept after every step, so that nothing is lost whenever a run is stopped.

    Several runs may add to the same book at once.
    """

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self.file = self.folder / "figures.json"
        self.figures = self.read()

    def read(self):
        return json.loads(self.file.read_text(encoding="utf-8")) if self.file.exists() else {}

    def of(self, trial):
        return self.figures.get(trial, {})

    def add(self, trial, figures, seconds):
        with open(self.folder / "lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.figures = self.read()
            kept = self.figures.setdefault(trial, {})
            for name, value in {**figures, "minutes": seconds / 60}.items():
                before = kept.get(name, 0)
                kept[name] = max(before, value) if name.startswith(("worst", "most")) else before + value
            new = self.file.with_suffix(".new")
            new.write_text(json.dumps(self.figures, indent=1, sort_keys=True), encoding="utf-8")
            new.replace(self.file)
            (self.folder / "figures.md").write_text(self.table() + "\n", encoding="utf-8")

    def note(self, trial, finding):
        with open(self.folder / "findings.txt", "a", encoding="utf-8") as log:
            log.write(f"{time.strftime('%F %T')} {trial}: {finding}\n")

    def table(self):
        rows = ["| trial | figures |", "|---|---|"]
        for trial, figures in sorted(self.figures.items()):
            texts = [f"{name} {round(value, 2):g}" for name, value in sorted(figures.items())]
            rows.append(f"| {trial} | {', '.join(texts)} |")
        return "\n".join(rows)


def make_trials(scene, build, book, brief):
    made = {f"kills of {whom}": kills.Kill(scene, whom) for whom in ("worker", "host", "both")}
    made["full disk"] = trials.FullDisk(scene, book.of("full disk"))
    made["small disk"] = trials.SmallDisk(scene, book.of("small disk"))
    made["kills at calls"] = kills.KillAtCall(scene, book.of("kills at calls"))
    made["limits"] = trials.Limits(scene, book.of("limits"))
    made["signals"] = trials.Signals(scene)
    made["long render"] = trials.LongRender(scene, 10_000 if brief else 100_000)
    made["controllers"] = trials.Controllers(scene, 20 if brief else 200)
    if shutil.which("valgrind"):
        made["leaks"] = checkers.Leaks(scene)
    threads = build.parent / "tsan"
    if (threads / "Corvel.app").exists():
        made["threads"] = checkers.Threads(scene, threads)
    for target in sorted((build.parent / "fuzz/tests/fuzz").glob("fuzz_*")):
        made[f"fuzz {target.name[5:]}"] = fuzzing.Fuzz(target, book.folder)
        made[f"coverage {target.name[5:]}"] = fuzzing.Coverage(target, book.folder)
    return made


def run_in_turn(chosen, book, over):
    """One step of each trial in turn until `over`. How many things were found."""
    found = 0
    while True:
        for name, trial in chosen.items():
            if over():
                return found
            began = time.monotonic()
            try:
                figures = trial.step()
            except Finding as finding:
                print(f"FOUND {name}: {finding}", flush=True)
                book.note(name, finding)
                figures = {"findings": 1}
                found += 1
            book.add(name, figures, time.monotonic() - began)
            print(f"{name}: {round(time.monotonic() - began, 1)} s", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--figures", type=pathlib.Path)
    parser.add_argument("--trial", action="append")
    parser.add_argument("--hours", type=float)
    parser.add_argument("--rounds", type=int, default=1)
    options = parser.parse_args()
    harness.isolate()
    # Also where a shell that does not wait has them ignored.
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, signal.default_int_handler)
    folder = tempfile.mkdtemp(prefix="stress-")
    book = Book(options.figures or pathlib.Path(folder) / "figures")
    scene = trials.Scene(options.build.resolve(), folder)
    chosen = make_trials(scene, options.build.resolve(), book, brief=options.hours is None)
    if options.trial:
        unknown = set(options.trial) - set(chosen)
        if unknown:
            parser.error(f"no such trial here: {', '.join(unknown)}; there are: {', '.join(chosen)}")
        chosen = {name: chosen[name] for name in options.trial}
    end = time.monotonic() + 3600 * (options.hours or 0)
    steps = iter(range(options.rounds * len(chosen)))
    over = (lambda: time.monotonic() > end) if options.hours else (lambda: next(steps, None) is None)
    found = 0
    try:
        found = run_in_turn(chosen, book, over)
    except KeyboardInterrupt:
        print("stopped; the next run goes on from here")
    print(book.table())
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
