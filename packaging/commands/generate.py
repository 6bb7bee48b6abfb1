#!/usr/bin/env python3
"""Makes man pages and the completion of bash and zsh of what a program tells with --print-command-tree.

Usage: generate.py TREE.json FOLDER --section N --version VERSION
"""

import argparse
import json
import pathlib
import sys

sys.dont_write_bytecode = True
import completion  # noqa: E402
import manpages  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("tree", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--section", required=True)
    parser.add_argument("--version", required=True)
    arguments = parser.parse_args()
    tree = json.loads(arguments.tree.read_text(encoding="utf-8"))
    name = tree["name"]
    manpages.write(tree, arguments.folder / "man" / f"man{arguments.section}", arguments.section, arguments.version)
    for shell, file, text in (("bash", name, completion.for_bash(tree)), ("zsh", f"_{name}", completion.for_zsh(tree))):
        (arguments.folder / shell).mkdir(parents=True, exist_ok=True)
        (arguments.folder / shell / file).write_text(text, encoding="utf-8")


main()
