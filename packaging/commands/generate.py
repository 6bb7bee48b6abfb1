#!/usr/bin/env python3
"""Makes man pages and the completion of bash and zsh of what a program tells with --print-command-tree.

Usage: generate.py TREE.json FOLDER --section N --version VERSION [--other TREE.json]

The other tree is of a word before everything else, such as "recstation check".
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
    parser.add_argument("--other", type=pathlib.Path)
    arguments = parser.parse_args()
    tree = json.loads(arguments.tree.read_text(encoding="utf-8"))
    if arguments.other:
        other = json.loads(arguments.other.read_text(encoding="utf-8"))
        own = [option for option in other["options"] if option not in tree["options"]]
        tree["commands"].insert(0, {**other, "name": other["name"].split()[-1], "options": own, "commands": [], "footer": ""})
    name = tree["name"]
    manpages.write(tree, arguments.folder / "man" / f"man{arguments.section}", arguments.section, arguments.version)
    for shell, file, text in (("bash", name, completion.for_bash(tree)), ("zsh", f"_{name}", completion.for_zsh(tree))):
        (arguments.folder / shell).mkdir(parents=True, exist_ok=True)
        (arguments.folder / shell / file).write_text(text, encoding="utf-8")


main()
