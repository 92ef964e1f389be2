"""Renders in chunks by processes of this machine, beside the same frames rendered in one pass.

Usage: LocalFarmTest.py CORVEL WALK_MOVIE
"""

import json
import os
import signal
import subprocess
import sys
import time
import unittest

import Movies
from Movies import run

Movies.MoviesTest.corvel = sys.argv.pop(1)
Movies.MoviesTest.walk_movie = sys.argv.pop(1)


def wait_for(condition, seconds=120):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "it never came"
        time.sleep(0.02)


class LocalFarm(Movies.MoviesTest):
    frames = 24

    def setUp(self):
        super().setUp()
        self.movie = self.folder / "out.mov"
        self.state = self.folder / ".out.mov.farm.json"
        self.chunks = self.folder / ".out.mov.farm"

    def words(self, *options, frames=6, jobs=2):
        return [str(word) for word in (self.corvel, "render", self.source, "-o", self.movie, "--farm", "local",
                                       "--chunk-frames", frames, "--jobs", jobs, *options)]

    def farm(self, action, *options):
        return run(self.corvel, "farm", action, self.movie, *options)

    def start(self, *options, **chunks):
        return subprocess.Popen(self.words(*options, **chunks), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True, start_new_session=True)

    def chunk_files(self):
        return sorted(path.name for path in self.chunks.glob("[0-9][0-9][0-9][0-9].mov"))

    def hide_frame(self, number):
        """A source of links in which one frame is missing; gives the frame's link."""
        folder = self.folder / "frames"
        folder.mkdir()
        for path in self.source.parent.glob("in.*.png"):
            (folder / path.name).symlink_to(path)
        hidden = folder / f"in.{number}.png"
        hidden.unlink()
        hidden.write_text("no picture")
        self.source = folder / "in.%04d.png"
        return hidden

    def test_a_render_is_that_of_one_pass_with_everything_in_it(self):
        options = ["--codec", "apch", "--fps", "23.976", "--timecode", "01:00:00:00", "--reel", "A001", "--audio",
                   self.wav, "--metadata", "title=Opening", "--channels", "rgba", "--audio-offset", "3",
                   "--audio-units", "frames"]
        done = run(*self.words(*options, "--progress", "json"))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.expect_same_movie(self.movie, self.render("one.mov", 1001, 1024, *options))
        events = [json.loads(line) for line in done.stderr.splitlines()]
        self.assertEqual(events[0], {"event": "start", "total": 24, "width": Movies.WIDTH, "height": Movies.HEIGHT,
                                     "output": str(self.movie)})
        self.assertEqual(events[-1], {"event": "end", "exit": 0, "output": str(self.movie)})
        counts = [event["done"] for event in events if event["event"] == "frame"]
        self.assertEqual(counts, sorted(counts))
        self.assertEqual(counts[-1], 24)

    def test_index_and_order_of_frames_are_those_of_one_pass(self):
        options = ["--no-fast-start", "--reverse", "--hold", "2", "--step", "3", "--frames", "1002-1023", "--codec",
                   "png "]
        done = run(*self.words(*options))
        self.assertEqual(done.returncode, 0, done.stderr)
        one_pass = self.folder / "one.mov"
        self.assertEqual(run(self.corvel, "render", self.source, "-o", one_pass, *options).returncode, 0)
        self.expect_same_movie(self.movie, one_pass, with_sound=False)
        content = self.movie.read_bytes()
        self.assertGreater(content.index(b"moov"), content.index(b"mdat"))

    def test_a_chunk_that_fails_is_named_and_only_it_is_rendered_again(self):
        broken = self.hide_frame(1009)
        done = run(*self.words("--codec", "apch"))
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("chunk 2 (frames 1007-1012) failed on ", done.stderr)
        self.assertIn("in.1009.png", done.stderr)
        self.assertIn("is tried again", done.stderr)
        self.assertFalse(self.movie.exists())
        self.assertEqual(self.chunk_files(), ["0001.mov", "0003.mov", "0004.mov"])
        status = self.farm("status").stdout
        self.assertIn("3 of 4 chunks, 18 of 24 frames, not under way", status)
        self.assertIn("chunk 2 (frames 1007-1012) failed on ", status)
        before = {name: os.stat(self.chunks / name).st_ino for name in self.chunk_files()}
        broken.unlink()
        broken.symlink_to(LocalFarm.source.parent / "in.1009.png")
        # What is there but damaged is rendered again as well.
        whole = (self.chunks / "0004.mov").read_bytes()
        (self.chunks / "0004.mov").write_bytes(whole[:-50])
        done = self.farm("resume", "--progress", "plain")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(before), 3)
        self.assertIn("2 of 4 chunks are rendered", done.stderr)
        self.assertIn("chunk 4 (frames 1019-1024) is rendered again", done.stderr)
        self.expect_same_movie(self.movie, self.render("one.mov", 1001, 1024, "--codec", "apch"), with_sound=False)
        self.assertIn("done", self.farm("status").stdout)

    def test_an_interrupt_keeps_finished_chunks_and_cancel_says_where_they_are(self):
        process = self.start("--codec", "apch", frames=2, jobs=1)
        wait_for(lambda: len(self.chunk_files()) >= 2)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(), 130)
        process.stderr.close()
        self.assertTrue(self.state.exists())
        done = self.farm("cancel")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(str(self.chunks), done.stdout)
        self.assertEqual(sorted(path.name for path in self.chunks.iterdir()), self.chunk_files())
        self.assertFalse(self.state.exists())
        for path in self.chunks.iterdir():
            path.unlink()
        self.chunks.rmdir()

    def test_cancel_ends_a_render_that_is_under_way(self):
        process = self.start("--codec", "apch", frames=2, jobs=1)
        wait_for(lambda: self.chunk_files())
        self.assertIn("under way", self.farm("status").stdout)
        self.assertEqual(self.farm("cancel").returncode, 0)
        self.assertEqual(process.wait(), 130)
        process.stderr.close()
        self.assertEqual(sorted(path.name for path in self.chunks.iterdir()), self.chunk_files())
        for path in self.chunks.iterdir():
            path.unlink()
        self.chunks.rmdir()

    def test_of_two_submitters_one_is_refused(self):
        processes = [self.start("--codec", "apch") for _ in range(2)]
        exits = sorted(process.wait() for process in processes)
        said = [process.stderr.read() for process in processes]
        for process in processes:
            process.stderr.close()
        # The second comes while the first is at work, or finds its movie.
        self.assertEqual(exits, [0, 2], said)
        self.assertTrue(any("already" in text for text in said))
        self.assertEqual(Movies.numbers_in(self.movie), list(range(1001, 1025)))

    def test_an_engine_that_was_killed_is_resumed(self):
        process = self.start("--codec", "apch", frames=2, jobs=1)
        wait_for(lambda: len(self.chunk_files()) >= 2)
        process.kill()
        process.wait()
        process.stderr.close()
        wait_for(lambda: run("pgrep", "-f", self.chunks).returncode == 1)
        done = self.farm("resume", "--progress", "none")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(Movies.numbers_in(self.movie), list(range(1001, 1025)))

    def test_a_dry_run_names_the_chunks_and_leaves_nothing(self):
        done = run(*self.words("--dry-run"))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("24 frames in 4 chunks\nchunk 1 (frames 1001-1006)\n", done.stdout)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_what_cannot_be_is_refused(self):
        self.movie.write_text("mine")
        self.assertEqual(run(*self.words()).returncode, 2)
        self.assertEqual(self.movie.read_text(), "mine")
        self.movie.unlink()
        self.assertEqual(run(*self.words("--advanced")).returncode, 2)
        self.assertEqual(run(*self.words("--frames", "5000-5010")).returncode, 3)
        self.assertEqual(self.farm("resume").returncode, 3)
        self.assertEqual(self.farm("cancel").returncode, 3)
        self.assertEqual(self.farm("status").returncode, 3)


if __name__ == "__main__":
    unittest.main()
