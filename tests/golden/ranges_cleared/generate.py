#!/usr/bin/env python3
"""The recording of the case channelranges after its channel range table was cleared."""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import recfile
import rewritten

file = rewritten.up_to("channelranges", 674)

file.add_block(674, [(bytes(32), "the cleared table: 27 bytes, zeroed 8 at a time")])

if __name__ == "__main__":
    recfile.main("ranges_cleared", file)
