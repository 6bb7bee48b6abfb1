"""The recording of the case channelranges after it was given bookmarks."""

import recfile
import rewritten

file = rewritten.up_to("channelranges", 701)
rewritten.set_bookmarks_at(file, 701)

file.add_block(701, recfile.bookmark_table([
    (100, b"starts"),
    (4000, b"ends"),
]))
