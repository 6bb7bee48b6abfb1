"""The recording of the case bookmarks_added with more channel ranges than its table has room for."""

import recfile
import rewritten

file = rewritten.up_to("bookmarks_added", 674)

file.add_block(674, recfile.range_table([10, 100, 101, 200]))
file.add(b"6#starts", "what is left of the first bookmark, whose time was overwritten")
for data, meaning in recfile.bookmark_table([(4000, b"ends")]):
    file.add(data, meaning)
