"""Runs the trials, and adds their figures up over runs.

Usage: stress.py BUILD-FOLDER [--figures FOLDER] [--trial NAME]… [--hours H | --rounds N]

With --hours it goes on until the time is over or Ctrl-C; the next run goes on from the figures kept in FOLDER, where
findings are kept too. The trials take turns so that each gets the same time, over all runs. The exit code is 1 when
something was found, 77 where this system does not allow a place of our own.
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

STOPPING = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


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
    if (threads / "Corvel.app/Contents/MacOS/corvel").exists():
        made["threads"] = checkers.Threads(scene, threads)
    for target in sorted((build.parent / "fuzz/tests/fuzz").glob("fuzz_*")):
        name = f"fuzz {target.name[5:]}"
        made[name] = fuzzing.Fuzz(target, book.folder, book.of(name))
    return made


def run(name, trial, book):
    """One step. How many things were found."""
    began = time.monotonic()
    found = 0
    try:
        figures = trial.step()
    except Finding as finding:
        print(f"FOUND {name}: {finding}", flush=True)
        book.note(name, finding)
        figures = {"findings": 1}
        found = 1
    book.add(name, figures, time.monotonic() - began)
    print(f"{name}: {round(time.monotonic() - began, 1)} s", flush=True)
    return found


def minutes_of(figures):
    """Of the processors where a trial counts them: by the clock, one that was starved would have had its share."""
    return figures.get("processor minutes", figures.get("minutes", 0))


def run_for(seconds, chosen, book):
    """Always the trial that has had the least time in all runs so far. How many things were found."""
    end = time.monotonic() + seconds
    found = 0
    while time.monotonic() < end:
        name = min(chosen, key=lambda name: minutes_of(book.of(name)))
        found += run(name, chosen[name], book)
    return found


def stop(*_):
    """One Ctrl-C may arrive twice, from the terminal and from the process outside."""
    for number in STOPPING:
        signal.signal(number, signal.SIG_IGN)
    raise KeyboardInterrupt


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
    for number in STOPPING:
        signal.signal(number, stop)
    folder = tempfile.mkdtemp(prefix="stress-")
    book = Book(options.figures or pathlib.Path(folder) / "figures")
    scene = trials.Scene(options.build.resolve(), folder)
    chosen = make_trials(scene, options.build.resolve(), book, brief=options.hours is None)
    if options.trial:
        unknown = set(options.trial) - set(chosen)
        if unknown:
            parser.error(f"no such trial here: {', '.join(unknown)}; there are: {', '.join(chosen)}")
        chosen = {name: chosen[name] for name in options.trial}
    if not all(isinstance(trial, fuzzing.Fuzz) for trial in chosen.values()):
        scene.prepare()
    found = 0
    try:
        if options.hours:
            found = run_for(3600 * options.hours, chosen, book)
        else:
            found = sum(run(*trial, book) for _ in range(options.rounds) for trial in chosen.items())
    except KeyboardInterrupt:
        print("stopped; the next run goes on from here")
    print(book.table())
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
