"""The conversation with `corvel node`: each request is answered by one line, whatever it is.

Usage: NodeTest.py CORVEL
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
CORVEL = sys.argv.pop(1)
BALL = HERE.parents[2] / "examples/ball/ball.####.exr"


class NodeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="corvel node ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        self.environment.update(XDG_CONFIG_HOME=folder.name, CORVEL_TEMP_DIR=folder.name)

    def start(self, *arguments):
        self.sut = subprocess.Popen([CORVEL, "node", *map(str, arguments)], env=self.environment, text=True,
                                    stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(self.end)
        return json.loads(self.sut.stdout.readline())

    def end(self):
        """Ends the node by the end of its input; answers what was left on standard output and its messages."""
        if self.sut.stdin.closed:
            return None
        rest, messages = self.sut.communicate()
        self.assertEqual(self.sut.returncode, 0)
        self.assertEqual(list((self.folder / "processbridge").glob("*")), [])
        return rest, [json.loads(line) for line in messages.splitlines()]

    def say(self, line):
        self.sut.stdin.write(line + "\n")
        self.sut.stdin.flush()
        return json.loads(self.sut.stdout.readline())

    def ask(self, what, **more):
        return self.say(json.dumps({"do": what, **more}))

    @staticmethod
    def value(state, name):
        return next(knob["value"] for knob in state["knobs"] if knob["name"] == name)

    @staticmethod
    def entry(state, name):
        knob = next(knob for knob in state["knobs"] if knob["name"] == name)
        return knob["entries"][knob["value"]]

    def test_greets_with_its_state_and_says_nothing_more_by_itself(self):
        state = self.start()
        self.assertIsNone(state["error"])
        self.assertIsNone(state["input"])
        self.assertIn("codec", [knob["name"] for knob in state["knobs"]])
        self.assertLessEqual({"review", "editorial", "archive"}, {preset["name"] for preset in state["presets"]})
        self.assertEqual(self.end(), ("", []))

    def test_knobs_are_those_that_the_list_of_knobs_has(self):
        listed = subprocess.run([CORVEL, "knobs", "--json"], env=self.environment, capture_output=True, text=True,
                                check=True)
        listed = json.loads(listed.stdout)
        self.assertEqual(self.start()["knobs"], listed["knobs"] if isinstance(listed, dict) else listed)

    def test_sets_a_knob(self):
        self.start()
        state = self.ask("set", knob="codec", value="apch")
        self.assertIsNone(state["error"])
        self.assertEqual(self.entry(state, "codec"), "apch\tProRes 422 HQ")

    def test_what_is_refused_is_said_and_changes_nothing(self):
        before = self.start()
        for request, reason in [
                ('{"do": "set", "knob": "codec", "value": "none of them"}', "none of them"),
                ('{"do": "set", "knob": "colour", "value": "1"}', "colour"),
                ('{"do": "set", "knob": "codec"}', 'lacks the text "value"'),
                ('{"do": "set", "knob": "codec", "value": 3}', 'lacks the text "value"'),
                ('{"do": "dance"}', 'no request "dance"'),
                ('{"do": "preset", "name": "nobody\'s"}', "nobody's"),
                ('{"do": "delete", "name": "review"}', "review"),
                ('{}', 'lacks the text "do"'),
                ('[]', "no JSON object"),
                ('{"do": "set"', "no JSON object"),
                ('', "no JSON object")]:
            with self.subTest(request):
                state = self.say(request)
                self.assertIn(reason, state["error"])
                self.assertEqual(state["knobs"], before["knobs"])
        self.assertIsNone(self.ask("reset")["error"])

    def test_several_knobs_are_set_with_the_codec_first(self):
        self.start()
        state = self.ask("knobs", knobs={"settings": "alpha=straight", "codec": "ap4h", "writeTimeCode": True})
        self.assertIsNone(state["error"])
        self.assertEqual(self.entry(state, "codec"), "ap4h\tProRes 4444")
        self.assertEqual(self.value(state, "settings"), "alpha=straight")
        self.assertTrue(self.value(state, "writeTimeCode"))

    def test_the_input_decides_what_it_knows(self):
        state = self.start(BALL)
        told = state["input"]
        self.assertEqual((told["path"], told["first"], told["last"], told["frames"]),
                         (str(BALL), 1001, 1048, "1001-1048"))
        self.assertEqual((told["width"], told["height"], told["bits"], told["alpha"]), (640, 360, 16, True))
        self.assertEqual((told["timecode"], told["reel"]), ("01:00:00:00", "A001_BALL"))
        rate = self.value(state, "fps")
        self.assertEqual(self.value(self.ask("set", knob="fps", value="12"), "fps"), 12)
        self.assertEqual(self.value(self.ask("input"), "fps"), rate)

    def test_an_input_that_cannot_be_opened_is_a_message_and_none(self):
        for name in ("none.####.exr", "none.mov"):
            with self.subTest(name):
                self.assertIsNone(self.start(self.folder / name)["input"])
                self.assertIsNone(self.ask("set", knob="quality", value="Low")["error"])
                rest, messages = self.end()
                self.assertEqual(rest, "")
                self.assertIn(name, messages[-1]["text"])
                self.assertEqual((messages[-1]["event"], messages[-1]["level"]), ("message", "error"))

    def test_presets_are_saved_turned_to_and_deleted(self):
        self.start()
        self.ask("set", knob="quality", value="Low")
        saved = self.ask("save", name="mine", description="for a test")
        mine = next(preset for preset in saved["presets"] if preset["name"] == "mine")
        self.assertEqual((mine["description"], mine["shipped"], mine["knobs"]["quality"]), ("for a test", False, "Low"))
        first = self.ask("reset")
        self.assertNotEqual(self.value(first, "quality"), 1)
        self.assertEqual(self.value(self.ask("preset", name="mine"), "quality"), 1)
        self.assertNotIn("mine", [preset["name"] for preset in self.ask("delete", name="mine")["presets"]])

    def test_without_a_display_the_settings_dialog_answers_at_once(self):
        self.start()
        before = self.ask("set", knob="settings", value="threads=2")
        state = self.ask("press", knob="advanced")
        self.assertIsNone(state["error"])
        self.assertEqual(state["knobs"], before["knobs"])
        _, messages = self.end()
        self.assertIn("display", " ".join(message["text"] for message in messages))

    def test_ends_with_the_program_that_has_started_it(self):
        # Its standard input stays open, so that only the death can be what ends the node.
        starter = subprocess.Popen(["sh", "-c", 'exec 3<&0; "$0" node <&3 3<&- & echo $!; wait', CORVEL],
                                   env=self.environment, text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        node = int(starter.stdout.readline())
        self.assertIsNone(json.loads(starter.stdout.readline())["error"])
        starter.send_signal(signal.SIGKILL)
        starter.wait()
        self.assertEqual(starter.stdout.read(), "")  # ends when nobody has the writing end
        self.assertFalse(pathlib.Path(f"/proc/{node}/exe").exists())
        self.assertIn("the program that wanted the node is gone", starter.stderr.read())
        for pipe in (starter.stdin, starter.stdout, starter.stderr):
            pipe.close()


if __name__ == "__main__":
    unittest.main()
