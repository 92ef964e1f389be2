"""What corvel does when its helper is stopped, silent, deaf or killed.

Usage: HostFaultsTest.py CORVEL SILENT-WORKER DEAF-WORKER
"""

import os
import pathlib
import re
import shutil
import signal
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "stress"))
import harness  # noqa: E402

CORVEL, SILENT_WORKER, DEAF_WORKER = sys.argv[1:4]


class HostFaults(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="faults-"))
        self.frames = harness.make_frames(self.folder / "frames", 400)
        self.movie = self.folder / "out.mov"

    def tearDown(self):
        harness.reap()
        left = harness.processes()
        for process in left:
            os.kill(process, signal.SIGKILL)
        self.assertEqual(left, [])
        self.assertEqual(harness.leftovers(), [])
        shutil.rmtree(self.folder)

    def render(self, *options, corvel=CORVEL):
        return harness.Run([corvel, "render", self.frames, "-o", self.movie, "--codec", "0", "--progress", "json",
                            "--format", "1280x720", *options], self.folder)

    def partial_movie(self):
        return next((path for path in self.folder.iterdir() if path.name.startswith(".")), None)

    def render_until_some_is_readable(self, *options):
        run = self.render(*options)
        self.assertTrue(harness.wait_until(lambda: self.partial_movie() and harness.frame_sums(self.partial_movie())),
                        run.text())
        return run

    def render_and_stop_helper(self, *options):
        run = self.render_until_some_is_readable(*options)
        os.kill(run.helper(), signal.SIGSTOP)
        return run

    def assert_partial_movie_named(self, run):
        found = re.search(r"what there is of the movie is in (\S+); corvel recover '(\S+)'", run.text())
        self.assertTrue(found, run.text())
        self.assertEqual(found[1], found[2])
        self.assertGreaterEqual(len(harness.frame_sums(found[1])), 1)

    def test_a_stopped_helper_is_named_and_given_up_in_time(self):
        run = self.render_and_stop_helper("--helper-timeout", "2")
        helper = run.helper()
        self.assertEqual(run.end(), 4, run.text())
        self.assertRegex(run.text(), rf"no progress for 1 s while \w+.* \(QuickTime helper, process {helper}, stopped\)")
        self.assertIn("the QuickTime helper has not answered in time", run.text())
        self.assert_partial_movie_named(run)

    def test_a_stopped_helper_can_be_given_up_by_interrupting_twice(self):
        run = self.render_and_stop_helper("--helper-timeout", "1000")
        self.assertTrue(run.says("no progress for 1"), run.text())
        # Two of a kind that come together would be one.
        run.process.send_signal(signal.SIGINT)
        run.process.send_signal(signal.SIGTERM)
        self.assertEqual(run.end(), 130, run.text())
        self.assert_partial_movie_named(run)

    def test_a_silent_helper_is_given_up_in_time(self):
        run = self.render("--helper-timeout", "1", corvel=harness.bundle_with(CORVEL, SILENT_WORKER, self.folder))
        self.assertEqual(run.end(), 4, run.text())
        self.assertRegex(run.text(), r"no progress for 1 s while setting up \(QuickTime helper, process \d+\)")

    def test_a_helper_that_is_deaf_to_being_ended_is_killed(self):
        corvel = harness.bundle_with(CORVEL, DEAF_WORKER, self.folder)
        run = harness.Run([corvel, "knobs"], self.folder)
        self.assertEqual(run.end(), 0, run.text())
        self.assertIn("the QuickTime helper does not end; it is killed", run.text())

    def test_a_killed_helper_ends_the_render(self):
        run = self.render_until_some_is_readable()
        os.kill(run.helper(), signal.SIGKILL)
        self.assertEqual(run.end(), 4, run.text())
        self.assertIn("the QuickTime helper died (signal 9) while", run.text())
        self.assert_partial_movie_named(run)

    def test_an_interrupt_while_the_helper_starts_is_remembered(self):
        run = self.render()
        run.helper()
        run.process.send_signal(signal.SIGINT)
        self.assertEqual(run.end(), 130, run.text())


if __name__ == "__main__":
    harness.isolate()
    unittest.main(argv=sys.argv[:1], verbosity=2)
