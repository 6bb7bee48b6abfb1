#!/usr/bin/env python3
"""Makes every golden file anew and compares it, and the table that explains it, with what is kept here.

With --update the tables in the README.md files are written instead.
"""

import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BEGIN = "<!-- generate.py --explain -->\n"
END = "<!-- end -->\n"


def generate(case, *arguments):
    command = [sys.executable, str(case / "generate.py"), *arguments]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def explained(case):
    """The case's README.md as it is, and as it should be."""
    text = (case / "README.md").read_text(encoding="utf-8")
    head, _, rest = text.partition(BEGIN)
    _, _, tail = rest.partition(END)
    return text, head + BEGIN + generate(case, "--explain") + END + tail


def differences(case, folder):
    generate(case, folder)
    for made in pathlib.Path(folder).iterdir():
        if made.read_bytes() != (case / made.name).read_bytes():
            yield f"{case.name}/{made.name} is not what generate.py makes"
        made.unlink()
    text, wanted = explained(case)
    if text != wanted:
        yield f"{case.name}/README.md does not explain the bytes (check.py --update)"


def main():
    cases = sorted(script.parent for script in HERE.glob("*/generate.py"))
    if sys.argv[1:] == ["--update"]:
        for case in cases:
            (case / "README.md").write_text(explained(case)[1], encoding="utf-8")
        return 0
    with tempfile.TemporaryDirectory() as folder:
        found = [difference for case in cases for difference in differences(case, folder)]
    for difference in found:
        print(difference)
    print(f"{len(cases)} golden files made anew")
    return 1 if found or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
