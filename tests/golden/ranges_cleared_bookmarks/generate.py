"""The recording of the case bookmarks_added after its channel range table was cleared."""

import recfile
import rewritten

file = rewritten.up_to("bookmarks_added", 674)

file.add_block(674, [
    (bytes(27), "the cleared table, zeroed 8 bytes at a time"),
    (bytes(5) + b"\0\0\0#", "the time of the first bookmark: its first 5 bytes were zeroed as well"),
    (recfile.string(b"starts"), "its text: the length, then the text"),
])
for data, meaning in recfile.bookmark_table([(4000, b"ends")]):
    file.add(data, meaning)
