"""The recording of the case channelranges, cleared and rebuilt with fewer definitions."""

import recfile
import rewritten

file = rewritten.up_to("channelranges", 674)

file.add_block(674, recfile.range_table([11, 4000]))
file.add(bytes(14), "left of the cleared table; a time of 0 ends it")
