"""Man pages and completion as shells and man take them.

Usage: commands_test.py TEST FOLDER PROGRAMS: where man pages and completion lie, and where the programs do. Exit code 77:
what takes them is not installed.
"""

import gzip
import os
import pathlib
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

FOLDER, PROGRAMS = (pathlib.Path(argument).resolve() for argument in sys.argv[2:4])
NEEDS = {"man_reads_every_page_without_a_warning": "man", "zsh_completes_what_bash_does": "zsh"}
LONGEST_S = 30

# Offers what bash would for a line whose last word, or the word of the given number, is being typed.
DRIVER = """
source "$1/bash/$2"
COMP_CWORD=$3
COMP_WORDS=("${@:4}")
_"$2" 2>/dev/null
printf '%s\\n' "${COMPREPLY[@]}"
"""


def environment():
    return {**os.environ, "PATH": f"{PROGRAMS}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}


class Commands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def record(self):
        subprocess.run([PROGRAMS / "recstation", "-q", "-o", self.folder, "sim", "--duration", "2s"], check=True, capture_output=True)
        [recording] = self.folder.glob("*RX_1*.rec")
        return recording.rename(self.folder / "a night.rec")

    def bash(self, *words, at=None):
        result = subprocess.run(["bash", "-c", DRIVER, "bash", FOLDER, words[0], str(len(words) - 1 if at is None else at), *words],
                                cwd=self.folder, env=environment(), capture_output=True, text=True, timeout=LONGEST_S, check=True)
        return sorted(line for line in result.stdout.splitlines() if line)

    def test_man_reads_every_page_without_a_warning(self):
        pages = sorted((FOLDER / "man").glob("man*/*.gz"))
        names = {page.name for page in pages}
        self.assertLessEqual({"rectool.1.gz", "rectool-cat.1.gz", "rectool-plot-level.1.gz", "recstation-sweep.1.gz",
                              "recstation-check.1.gz", "recview.1.gz", "zelvod.8.gz"}, names)
        for page in pages:
            result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", page], env={**environment(), "MANWIDTH": "80"},
                                    capture_output=True, text=True, timeout=LONGEST_S, check=True)
            self.assertEqual(result.stderr, "", page.name)

    def test_pages_say_what_the_help_says(self):
        page = gzip.decompress((FOLDER / "man/man1/rectool-cat.1.gz").read_bytes()).decode()
        for heading in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES", "EXIT STATUS", "SEE ALSO"):
            self.assertIn(f".SH {heading}\n", page)
        shown = subprocess.run([PROGRAMS / "rectool", "cat", "--help"], capture_output=True, text=True, check=True).stdout
        for sentence in ("End at this time, which is shown too", "Print one JSON object a line"):
            self.assertIn(sentence, shown)
            self.assertIn(sentence, page)

    def test_bash_offers_verbs_options_and_choices(self):
        self.assertEqual(self.bash("rectool", "pl"), ["plot"])
        self.assertEqual(self.bash("rectool", "plot", ""), ["bearings", "level", "spectrum", "timeline"])
        self.assertEqual(self.bash("rectool", "cat", "--js"), ["--json"])
        self.assertEqual(self.bash("rectool", "cat", "--time", ""), ["local", "offset", "utc"])
        self.assertEqual(self.bash("rectool", "cat", "--time", "=", "u"), ["utc"])
        self.assertEqual(self.bash("rectool", "cat", "--from", ""), [])
        self.assertEqual(self.bash("recstation", "-o", "x", "sweep", "night.csv", "nm"), ["nmea"])
        self.assertIn("--output", self.bash("recstation", "sweep", "--"))
        self.assertEqual(self.bash("recstation", "ch"), ["check"])

    def test_bash_offers_recordings_folders_and_what_they_hold(self):
        recording = self.record()
        (self.folder / "folder").mkdir()
        (self.folder / "folder.txt").touch()
        self.assertEqual(self.bash("rectool", "cat", "a"), [recording.name])
        self.assertEqual(self.bash("rectool", "cat", "fol"), ["folder"])
        self.assertEqual(self.bash("recstation", "-o", "fol"), ["folder"])
        self.assertEqual(self.bash("recstation", "sweep", "fol"), ["folder", "folder.txt"])
        self.assertEqual(self.bash("rectool", "cat", "a\\ night.rec", "--type", "lev"), ["LEVEL"])
        self.assertEqual(self.bash("rectool", "cat", "--type", "lev", "a\\ night.rec", at=3), ["LEVEL"])
        (self.folder / "station.toml").write_text("[north]\nType = \"x\"\n[south]\n", encoding="utf-8")
        self.assertEqual(self.bash("recstation", "--config", "station.toml", "--record", "s"), ["south"])

    def test_bash_runs_nothing_that_a_recording_says(self):
        recording = self.record()
        recording.write_bytes(recording.read_bytes().replace(b"AFBANDWIDTH", b"$(>./owned)"))
        self.assertIn("LEVEL", self.bash("rectool", "cat", "a\\ night.rec", "--type", ""))
        self.assertEqual([file.name for file in self.folder.glob("owned")], [])

    def test_zsh_completes_what_bash_does(self):
        self.record()
        (self.folder / "station.toml").write_text("[north]\n[south]\n", encoding="utf-8")
        (self.folder / ".zshrc").write_text(f"PS1='ready> '\nfpath=({FOLDER}/zsh $fpath)\nautoload -Uz compinit\ncompinit -u -D\n"
                                            "tell() { print -rn -- $BUFFER >line.new && mv line.new line }\n"
                                            "zle -N tell\nbindkey '^]' tell\n", encoding="utf-8")
        for typed, completed in (("rectool pl", "rectool plot "), ("rectool plot tim", "rectool plot timeline "),
                                 ("rectool cat --js", "rectool cat --json "), ("rectool cat --time u", "rectool cat --time utc "),
                                 ("rectool cat a", "rectool cat a\\ night.rec "),
                                 ("rectool cat a\\ night.rec --type leve", "rectool cat a\\ night.rec --type LEVEL "),
                                 ("recstation -o . swe", "recstation -o . sweep "),
                                 ("recstation sweep --bin-frequency low", "recstation sweep --bin-frequency lower "),
                                 ("recstation --config station.toml --record s", "recstation --config station.toml --record south "),
                                 ("zelvod --set", "zelvod --set-up ")):
            self.assertEqual(self.zsh(typed).rstrip(), completed.rstrip(), typed)

    def zsh(self, typed):
        """The line that an interactive zsh has when it has completed one."""
        line = self.folder / "line"
        line.unlink(missing_ok=True)
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(self.folder)
            os.execvpe("zsh", ["zsh", "-i"], {**environment(), "ZDOTDIR": str(self.folder), "TERM": "dumb"})
        shown, sent, end = "", False, time.monotonic() + LONGEST_S
        while not line.exists() and time.monotonic() < end:
            if select.select([terminal], [], [], 0.05)[0]:
                shown += os.read(terminal, 4096).decode(errors="replace")
            if "ready> " in shown and not sent:
                os.write(terminal, f"{typed}\t\x1d".encode())
                sent = True
        os.kill(process, signal.SIGKILL)
        os.waitpid(process, 0)
        os.close(terminal)
        return line.read_text(encoding="utf-8") if line.exists() else shown


if __name__ == "__main__":
    program = NEEDS.get(sys.argv[1])
    if program and shutil.which(program) is None:
        print(f"{program} is not installed")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "Commands.test_" + sys.argv[1]])
