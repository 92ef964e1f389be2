"""Renders in chunks on a Slurm cluster of three nodes, beside the same frames rendered in one pass.

Usage: SlurmFarmTest.py CORVEL WALK_MOVIE

CORVEL_FARM_FRAMES (48) and CORVEL_FARM_RATES (23.976; several with commas between them) say how much of it: a long run
has 480 frames and every rate.
"""

import json
import os
import pathlib
import signal
import sys
import unittest

import cluster

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "integration/chunks"))
import Movies  # noqa: E402

Movies.MoviesTest.corvel = sys.argv.pop(1)
Movies.MoviesTest.walk_movie = sys.argv.pop(1)

CHUNKS = 8


def parents(pid):
    """The process numbers above a process, from the nearest up."""
    while pid > 1:
        status = pathlib.Path(f"/proc/{pid}/stat").read_text()
        pid = int(status.rpartition(")")[2].split()[1])
        yield pid


class SlurmFarm(Movies.MoviesTest):
    frames = int(os.environ.get("CORVEL_FARM_FRAMES", "48"))
    rates = os.environ.get("CORVEL_FARM_RATES", "23.976").split(",")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.last = cls.first + cls.frames - 1
        cls.cluster = cluster.Cluster().__enter__()
        cls.addClassCleanup(cls.cluster.__exit__)

    def setUp(self):
        super().setUp()
        self.movie = self.folder / "out.mov"
        self.chunks = self.folder / ".out.mov.farm"

    def submit(self, *options):
        return self.cluster.run(self.corvel, "render", self.source, "-o", self.movie, "--farm", "slurm", "--chunks",
                                CHUNKS, "--farm-retries", "0", "--threads", "1", *options)

    def farm(self, action, *options):
        return self.cluster.run(self.corvel, "farm", action, self.movie, *options)

    def expect_good(self, done):
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done

    def chunk_files(self):
        return sorted(path.name for path in self.chunks.glob("[0-9][0-9][0-9][0-9].mov"))

    def queue(self):
        return self.cluster.run("squeue", "-h", "-r", "-o", "%i %T").stdout.splitlines()

    def replace_frame(self, number):
        """A source of links in which one frame is another file, not there yet; gives that file."""
        folder = self.folder / "frames"
        folder.mkdir()
        for path in SlurmFarm.source.parent.glob("in.*.png"):
            (folder / path.name).symlink_to(path)
        self.source = folder / "in.%04d.png"
        replaced = folder / f"in.{number}.png"
        replaced.unlink()
        return replaced

    def put_back(self, frame):
        frame.unlink()
        frame.symlink_to(SlurmFarm.source.parent / frame.name)

    def kill_node_of_chunk(self, chunk):
        """Kills what runs on the chunk's node, as when its power fails."""
        node = json.loads((self.chunks / f"{chunk:04}.json").read_text())["node"]
        process, = self.processes_of_chunk(chunk)
        steps = [pid for pid in parents(process)
                 if pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().startswith(b"slurmstepd")]
        self.cluster.stop(node, signal.SIGKILL)
        os.kill(steps[0], signal.SIGKILL)
        return node

    def processes_of_chunk(self, chunk):
        words = [os.fsencode(word) for word in ("farm", "chunk", f"--chunk={chunk}", str(self.movie))]
        found = []
        for path in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
            try:
                line = path.read_bytes().split(b"\0")
            except OSError:
                continue
            if all(word in line for word in words):
                found.append(int(path.parent.name))
        return found

    def test_chunks_on_three_nodes_give_the_movie_of_one_pass(self):
        for name, codec in Movies.INTRA_CODECS.items():
            for rate in self.rates:
                with self.subTest(codec=name, rate=rate):
                    options = [*codec, "--fps", rate, "--timecode", "01:00:00:00", "--reel", "A001", "--audio", self.wav,
                               "-y"]
                    self.expect_good(self.submit(*options, "--wait", "--progress", "none"))
                    self.expect_same_movie(self.movie, self.render("one.mov", self.first, self.last, *options))

    def test_long_gop_chunks_miss_and_double_no_frame(self):
        self.expect_good(self.submit("--codec", "avc1", "--keyframerate", "0", "--wait"))
        self.assertEqual(Movies.numbers_in(self.movie), list(range(self.first, self.last + 1)))

    def test_progress_counts_all_chunks(self):
        done = self.expect_good(self.submit("--codec", "apch", "--wait", "--progress", "json"))
        events = [json.loads(line) for line in done.stderr.splitlines()]
        self.assertEqual(events[0]["total"], self.frames)
        self.assertEqual(events[-1], {"event": "end", "exit": 0, "output": str(self.movie)})

    def test_a_chunk_that_fails_is_named_with_its_node_and_nothing_is_joined(self):
        bad = self.replace_frame(self.first + 1)
        bad.write_text("no picture")
        done = self.submit("--codec", "apch", "--wait")
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertRegex(done.stderr, r"chunk 1 \(frames 1001-\d+\) failed on n[123]: .*in.1002.png")
        self.assertFalse(self.movie.exists())
        self.assertEqual(len(self.chunk_files()), CHUNKS - 1)
        self.put_back(bad)
        self.assertIn("chunks 1: job", self.expect_good(self.farm("resume", "--wait")).stdout)
        self.expect_same_movie(self.movie, self.render("one.mov", self.first, self.last, "--codec", "apch"),
                               with_sound=False)

    def test_a_dead_node_a_cut_chunk_and_a_new_controller_cost_only_the_chunks_that_were_hurt(self):
        gate = self.replace_frame(self.first + 1)
        os.mkfifo(gate)
        self.assertIn("join: job", self.expect_good(self.submit("--codec", "apch")).stdout)
        self.cluster.wait_for(lambda: len(self.chunk_files()) == CHUNKS - 1, 240)
        node = self.kill_node_of_chunk(1)
        self.cluster.wait_for(lambda: not self.processes_of_chunk(1))
        whole = (self.chunks / "0005.mov").read_bytes()
        (self.chunks / "0005.mov").write_bytes(whole[:-200])
        kept = {name: os.stat(self.chunks / name).st_mtime_ns for name in self.chunk_files() if name != "0005.mov"}
        self.cluster.stop("slurmctld")
        self.cluster.start("slurmctld")
        self.cluster.wait_for(self.queue)
        self.cluster.wait_for(lambda: not any(line.endswith(" RUNNING") for line in self.queue()), 120)
        self.put_back(gate)
        done = self.expect_good(self.farm("resume"))
        self.assertIn("chunks 1,5: job", done.stdout)
        self.assertIn("chunk 5 (frames ", done.stderr)
        self.assertEqual({name: os.stat(self.chunks / name).st_mtime_ns for name in kept if self.chunks.exists()}, kept)
        self.cluster.wait_for(lambda: not self.chunks.exists(), 240)
        self.expect_same_movie(self.movie, self.render("one.mov", self.first, self.last, "--codec", "apch"),
                               with_sound=False)
        self.cluster.start(node)
        self.cluster.wait_for(lambda: self.cluster.idle_nodes() == len(cluster.NODES))

    def test_cancel_leaves_only_finished_chunks_and_says_where(self):
        gate = self.replace_frame(self.first + 1)
        os.mkfifo(gate)
        self.expect_good(self.submit("--codec", "apch"))
        self.cluster.wait_for(lambda: len(self.chunk_files()) >= 1, 240)
        self.assertIn("under way", self.farm("status").stdout)
        self.assertEqual(self.submit("--codec", "apch").returncode, 2)
        done = self.expect_good(self.farm("cancel"))
        self.assertIn(str(self.chunks), done.stdout)
        self.assertEqual(self.queue(), [])
        self.assertEqual(sorted(path.name for path in self.chunks.iterdir()), self.chunk_files())
        self.assertEqual(self.hidden(), [self.chunks.name])
        for path in self.chunks.iterdir():
            path.unlink()
        self.chunks.rmdir()

    def test_what_slurm_refuses_is_said_and_leaves_nothing(self):
        done = self.submit("--partition", "nowhere")
        self.assertEqual(done.returncode, 4, done.stderr)
        self.assertIn("invalid partition", done.stderr)


if __name__ == "__main__":
    if cluster.missing_programs():
        print("missing:", *cluster.missing_programs())
        sys.exit(cluster.SKIPPED)
    unittest.main()
