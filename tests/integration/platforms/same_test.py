"""Runs the programs of two systems and expects the same bytes of both, and each to read what the other wrote.

Usage: same_test.py TEST NATIVE_FOLDER OTHER_FOLDER EMULATOR: where recstation and rectool of this system lie, where those
of the other system do (with ".exe"), and what runs those. Exit code 77: there are no programs of this system.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

NATIVE, OTHER, EMULATOR = (pathlib.Path(argument).resolve() for argument in sys.argv[2:5])
START = "2026-03-01T08:00:00Z"

LOG = """Time;Station;Latitude;Longitude;Azimuth;Frequency
2026-03-01T08:00:01Z;E1;48.1;11.5;163;150.015
2026-03-01T08:00:02.5Z;E1;48.1;11.5;164.25;150.015
2026-03-01T08:00:04Z;E2;48.2;11.6;221;151.2
"""
SWEEP = "".join(
    f"2026-11-21, 08:00:0{second}, 2400000000, 2405000000, 1000000.00, 20, -64.{second}2, -63.36, -60.91, -61.74, -58.58\n"
    for second in range(8)
)
FEED = "".join(
    [
        '{"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "N\\u00fcrnberg"}\n',
        '{"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}\n',
        '{"at": 0, "record": "On"}\n',
        *(f'{{"at": {50 * i + 0.125}, "path": "/LEVEL", "set": {-30 - i / 7}}}\n' for i in range(200)),
        '{"at": 20000, "record": "Off"}\n',
    ]
)


class Programs:
    """The programs of one system, run in a folder of their own."""

    def __init__(self, command, folder):
        self.command = command
        self.folder = folder

    def run(self, program, *arguments, codes=(0,)):
        """Standard output and exit code; paths in arguments are relative to the folder."""
        done = subprocess.run(
            self.command(program) + list(arguments), cwd=self.folder, capture_output=True, stdin=subprocess.DEVNULL,
            check=False, timeout=100,
        )
        if done.returncode not in codes:
            raise AssertionError(f"{program} {arguments}: exit code {done.returncode}\n{done.stderr.decode()}")
        return done.stdout

    def write(self, name, text):
        (self.folder / name).write_bytes(text.encode())

    def recordings(self):
        """Their bytes by name."""
        return {path.name: path.read_bytes() for path in sorted(self.folder.glob("*.rec"))}


class Same(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        folders = [pathlib.Path(folder.name) / name for name in ("native", "other")]
        for path in folders:
            path.mkdir()
        self.both = [
            Programs(lambda program: [str(NATIVE / program)], folders[0]),
            Programs(lambda program: [str(EMULATOR), str(OTHER / (program + ".exe"))], folders[1]),
        ]

    def record(self, *source, files=None):
        """The recordings that both systems make, after a comparison."""
        found = []
        for programs in self.both:
            for name, text in (files or {}).items():
                programs.write(name, text)
            programs.run("recstation", "-o", ".", "--quiet", *source)
            found.append(programs.recordings())
        self.assertNotEqual(found[0], {})
        self.assertEqual(list(found[0]), list(found[1]))
        for name, content in found[0].items():
            self.assertTrue(content == found[1][name], f"{name} is not the same")
        return found[0]

    def expect_same(self, *arguments, codes=(0,)):
        """The same output of rectool, as it stands."""
        native, other = (programs.run("rectool", *arguments, codes=codes) for programs in self.both)
        self.assertTrue(native == other, f"{arguments}:\n{native[:2000]!r}\n{other[:2000]!r}")
        return native

    def test_simulations_of_one_seed_are_the_same_bytes(self):
        for seed in ("1", "7", "18446744073709551615"):
            with self.subTest(seed=seed):
                self.record("sim", "--seed", seed, "--duration", "20s", "--start", START)
                for programs in self.both:
                    for name in programs.recordings():
                        (programs.folder / name).unlink()

    def test_a_long_simulation_is_the_same_bytes(self):
        self.record("sim", "--seed", "3", "--duration", "10min", "--start", START)

    def test_feeds_and_logs_are_the_same_bytes(self):
        self.record("feed", "changes.jsonl", "--start", START, files={"changes.jsonl": FEED})
        self.record("sweep", "night.csv", files={"night.csv": SWEEP})

    def test_each_reads_the_others(self):
        names = list(self.record("sim", "--seed", "5", "--duration", "5s", "--start", START))
        for name in names:
            for verb in ("info", "types", "cat", "verify", "bookmark list", "range list"):
                self.expect_same(*verb.split(), name, codes=(0, 3))
                if verb != "verify":
                    self.expect_same(*verb.split(), name, "--json", codes=(0, 3))

    def test_edited_recordings_are_the_same_bytes(self):
        name = next(iter(self.record("sim", "--seed", "5", "--duration", "5s", "--start", START)))
        self.expect_same("range", "rebuild", name, "--yes")
        self.expect_same("bookmark", "add", name, "1500", "M\u00fcnchen", "--yes")
        self.expect_same("cut", name, "--from", "1000", "--to", "3000", "-o", "first.rec")
        self.expect_same("cut", name, "--from", "3001", "-o", "second.rec")
        self.expect_same("merge", "first.rec", "second.rec", "-o", "merged.rec")
        native, other = (programs.recordings() for programs in self.both)
        self.assertEqual(list(native), list(other))
        self.assertTrue(native == other)


if __name__ == "__main__":
    if not (NATIVE / "recstation").exists() or not (NATIVE / "rectool").exists():
        print(f"there are no programs of this system in {NATIVE}")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "Same.test_" + sys.argv[1]], verbosity=2)
