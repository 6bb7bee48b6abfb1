#!/usr/bin/env python3
"""What documents_test.py has to find, and what it has to let pass."""
import pathlib
import subprocess
import sys
import tempfile

DOCUMENT = """\
# A document

    $ mkdir recordings
    $ recstation -q -o recordings sim --duration 2s --start 2026-11-21T10:00:00Z
    $ rectool info recordings/*RX_1*.rec
      Started     1999-01-01 00:00:00.000 UTC,   by an operator
      {shown}

or, told apart by this line,

    {example}  # by another option

In words: `recstation --nonsense`. Its form is

    rectool info FILE...
"""
CASES = (("The file is sound.", "rectool --version", 4, 0),
         ("The file is broken.", "rectool --version", 4, 1),
         ("The file is sound.", "rectool info recordings/*RX_1*.rec --colour", 4, 1),
         ("The file is broken.", "recstation sweeep night.csv", 4, 2))


def main():
    root, programs = sys.argv[1:]
    wrong = 0
    with tempfile.TemporaryDirectory() as name:
        for shown, example, run, failed in CASES:
            document = pathlib.Path(name) / "document.md"
            document.write_text(DOCUMENT.format(shown=shown, example=example), encoding="utf-8")
            result = subprocess.run([sys.executable, pathlib.Path(__file__).parent / "documents_test.py", root, programs,
                                     document], capture_output=True, text=True)
            expected = f"{run} examples run, {failed} failed, 0 not run"
            if expected not in result.stdout or result.returncode != min(failed, 1):
                print(f"{shown} {example}: expected {expected}, got {result.returncode}:\n{result.stdout}{result.stderr}")
                wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
