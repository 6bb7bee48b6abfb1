#!/usr/bin/env python3
"""Makes every golden file anew and compares it, and the table that explains it, with what is kept here.

With --update both are written instead; then the names of some cases may follow.
"""

import pathlib
import runpy
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
BEGIN = "<!-- generate.py --explain -->\n"
END = "<!-- end -->\n"


def made(case):
    """What the case's script makes: the recording, and its README.md with the table of the bytes."""
    file = runpy.run_path(str(case / "generate.py"))["file"]
    head, _, rest = (case / "README.md").read_text(encoding="utf-8").partition(BEGIN)
    _, _, tail = rest.partition(END)
    explained = head + BEGIN + file.table() + END + tail
    return {f"{case.name}.rec": file.content(), "README.md": explained.encode()}


def main():
    cases = sorted(script.parent for script in HERE.glob("*/generate.py"))
    if sys.argv[1:2] == ["--update"]:
        for case in (HERE / name for name in sys.argv[2:] or cases):
            for name, content in made(case).items():
                (case / name).write_bytes(content)
        return 0
    found = [f"{case.name}/{name} is not what generate.py makes (check.py --update)"
             for case in cases for name, content in made(case).items() if content != (case / name).read_bytes()]
    for difference in found:
        print(difference)
    print(f"{len(cases)} golden files made anew")
    return 1 if found or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
