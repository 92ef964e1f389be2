"""Movies joined without encoding, beside the same frames rendered in one pass.

Usage: JoinTest.py CORVEL WALK_MOVIE
"""

import pathlib
import sys
import unittest

import Movies
from Movies import run

Movies.MoviesTest.corvel = sys.argv.pop(1)
Movies.MoviesTest.walk_movie = sys.argv.pop(1)

# Of twelve frames: chunks of different lengths, one of a single frame.
CHUNKS = [(1001, 1005), (1006, 1006), (1007, 1012)]
MOVIE = ["--timecode", "01:00:00:00", "--reel", "A001", "--metadata", "title=Opening", "--metadata", "com.shop.id=7"]


class Join(Movies.MoviesTest):
    frames = 12

    def chunks(self, *options, ranges=None):
        return [self.render(f"chunk{first}.mov", first, last, *options) for first, last in ranges or CHUNKS]

    def join(self, chunks, *options, output="out.mov"):
        return run(self.corvel, "join", *chunks, "-o", self.folder / output, *options)

    def joined(self, chunks, *options):
        done = self.join(chunks, *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.folder / "out.mov"

    def expect_refused(self, chunks, *words, options=()):
        done = self.join(chunks, *options)
        self.assertEqual(done.returncode, 1, done.stdout)
        for word in words:
            self.assertIn(word, done.stderr)
        self.assertFalse((self.folder / "out.mov").exists())
        return done.stderr

    def test_intra_codecs_give_the_movie_of_one_pass_at_every_rate(self):
        for name, codec in Movies.INTRA_CODECS.items():
            for rate in Movies.RATES:
                with self.subTest(codec=name, rate=rate):
                    options = [*codec, "--fps", rate]
                    one_pass = self.render("one.mov", 1001, 1012, *options, *MOVIE, "--audio", self.wav, "-y")
                    chunks = self.chunks(*options, *MOVIE, "-y", ranges=[(1001, 1005), (1006, 1012)])
                    movie = self.joined(chunks, "--audio", self.wav, "-y")
                    self.expect_same_movie(movie, one_pass)

    def test_long_gop_chunks_decode_whole_without_missing_or_doubled_frames(self):
        for codec in ("avc1", "hvc1"):
            with self.subTest(codec=codec):
                options = ["--codec", codec, "--keyframerate", "0", "--fps", "23.976", "-y"]
                movie = self.joined(self.chunks(*options), "-y")
                self.assertEqual(Movies.numbers_in(movie), list(range(1001, 1013)))
                times = sorted(packet["pts"] for packet in Movies.packets(movie, "v"))
                self.assertEqual(times, [1001 * frame for frame in range(12)])
                keys = [frame for frame, packet in enumerate(Movies.packets(movie, "v")) if "K" in packet["flags"]]
                self.assertEqual(keys, [0, 5, 6])

    def test_sound_begins_at_a_frame(self):
        one_pass = self.render("one.mov", 1001, 1012, "--fps", "29.97", "--audio", self.wav, "--audio-offset", "5",
                               "--audio-units", "frames")
        movie = self.joined(self.chunks("--fps", "29.97"), "--audio", self.wav, "--audio-offset", "5", "--audio-units",
                            "frames")
        self.expect_same_movie(movie, one_pass)

    def test_time_code_reel_and_metadata_can_be_given(self):
        one_pass = self.render("one.mov", 1001, 1012, *MOVIE)
        self.expect_same_movie(self.joined(self.chunks(), *MOVIE), one_pass, with_sound=False)

    def test_index_can_stand_behind_the_frames(self):
        movie = self.joined(self.chunks(), "--no-fast-start")
        content = movie.read_bytes()
        self.assertGreater(content.index(b"moov"), content.index(b"mdat"))

    def test_every_difference_is_named_with_both_values(self):
        chunks = self.chunks("--codec", "apch", "--fps", "24", ranges=[(1001, 1003)])
        other = self.render("other.mov", 1004, 1006, "--codec", "ap4h", "--fps", "25", "--format", "64x32")
        self.expect_refused([*chunks, other], str(other), "codec: apch and ap4h", "size: 256 x 128 and 64 x 32",
                            "frame rate: ")

    def test_frame_counts_are_checked(self):
        self.expect_refused(self.chunks(), "chunk1006.mov: holds 1 frame, not 2", options=["--frames", "5,2,6"])

    def test_a_chunk_cut_short_is_named_and_so_is_one_that_is_missing(self):
        chunks = self.chunks("--codec", "apch")
        chunks[1].write_bytes(chunks[1].read_bytes()[:-100])
        chunks[2].unlink()
        said = self.expect_refused(chunks, "chunk1006.mov: ", "chunk1007.mov: ")
        self.assertNotIn("chunk1001.mov: ", said)

    def test_a_last_frame_that_cannot_be_decoded_is_named(self):
        chunks = self.chunks("--codec", "apch")
        damaged = bytearray(chunks[2].read_bytes())
        last = damaged.rindex(b"icpf")
        damaged[last:] = bytes(len(damaged) - last)
        chunks[2].write_bytes(damaged)
        self.expect_refused(chunks, "chunk1007.mov: it is damaged: its last frame")

    def test_a_frame_longer_than_a_time_code_can_count_is_refused(self):
        chunk = self.render("one.mov", 1001, 1001, *MOVIE)
        damaged = bytearray(chunk.read_bytes())
        duration = damaged.index(b"stts") + 16
        damaged[duration:duration + 4] = b"\x80\0\0\0"
        chunk.write_bytes(damaged)
        self.expect_refused([chunk], "one.mov: the movie's index is damaged: its frames last for ever")

    def test_what_is_no_movie_is_refused(self):
        self.expect_refused([self.source.parent / "in.1001.png", *self.chunks()], "in.1001.png", "no movie")

    def test_an_existing_output_is_refused_and_replaced_when_asked_for(self):
        chunks = self.chunks()
        output = self.folder / "out.mov"
        output.write_text("mine")
        self.assertEqual(self.join(chunks).returncode, 1)
        self.assertEqual(output.read_text(), "mine")
        self.joined(chunks, "-y")
        self.assertEqual(Movies.numbers_in(output), list(range(1001, 1013)))

    def test_a_link_is_followed(self):
        (self.folder / "elsewhere").mkdir()
        (self.folder / "out.mov").symlink_to("elsewhere/real.mov")
        self.joined(self.chunks())
        self.assertTrue((self.folder / "out.mov").is_symlink())
        self.assertTrue((self.folder / "elsewhere/real.mov").is_file())

    def test_names_with_dashes_and_spaces_are_names(self):
        chunk = self.render("-a b.mov", 1001, 1003)
        done = run(self.corvel, "join", "-o", "out.mov", "--", chunk.name, cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)


if __name__ == "__main__":
    unittest.main()
