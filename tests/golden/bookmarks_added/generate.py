#!/usr/bin/env python3
"""The recording of the case channelranges after it was given bookmarks."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import recfile
import rewritten

file = rewritten.up_to("channelranges", 701)
rewritten.set_bookmarks_at(file, 701)

file.add_block(701, recfile.bookmark_table([
    (100, b"starts"),
    (4000, b"ends"),
]))

if __name__ == "__main__":
    recfile.main("bookmarks_added", file)
