"""Every drawing of the documents, drawn again from its text: the committed picture must say the same. Layout is left to
the version of Graphviz that is installed."""

import pathlib
import re
import subprocess
import unittest

DOCS = pathlib.Path(__file__).resolve().parents[3] / "docs"


def words(svg):
    return sorted(re.findall(r">([^<]+)</text>", svg))


class Pictures(unittest.TestCase):
    def test_pictures_say_what_their_sources_say(self):
        sources = sorted(DOCS.glob("*.dot"))
        self.assertTrue(sources)
        for source in sources:
            drawn = subprocess.run(["dot", "-Tsvg", str(source)], capture_output=True, text=True, check=True).stdout
            committed = (DOCS / "images" / f"{source.stem}.svg").read_text(encoding="utf-8")
            self.assertGreater(len(words(drawn)), 10, source)
            self.assertEqual(words(committed), words(drawn), f"{source}: draw it again with docs/draw.sh")


if __name__ == "__main__":
    unittest.main()
