#!/usr/bin/env python3
"""The recording of the case channelranges, cleared and rebuilt with fewer definitions."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import recfile
import rewritten

file = rewritten.up_to("channelranges", 674)

file.add_block(674, recfile.range_table([11, 4000]))
file.add(bytes(14), "left of the cleared table; a time of 0 ends it")

if __name__ == "__main__":
    recfile.main("ranges_rebuilt", file)
