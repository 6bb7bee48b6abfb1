#!/usr/bin/env python3
"""The recording of the case bookmarks with longer texts than before."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import recfile
import rewritten

file = rewritten.up_to("bookmarks", 590)

file.add_block(590, recfile.bookmark_table([
    (2500, b"a longer text than the first one had"),
    (3000, b"third\x00#mark"),
    (4000, b""),
]))

if __name__ == "__main__":
    recfile.main("bookmarks_longer", file)
