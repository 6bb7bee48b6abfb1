#!/usr/bin/env python3
"""The recording of the case bookmarks after all its bookmarks were removed."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import recfile
import rewritten

file = rewritten.up_to("bookmarks", 590)

file.add_block(590, [(b"0" * 36, "the bookmarks that were removed; reads as entries without a text")])

if __name__ == "__main__":
    recfile.main("bookmarks_emptied", file)
