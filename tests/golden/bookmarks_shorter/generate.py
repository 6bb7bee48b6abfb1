"""The recording of the case bookmarks after its second bookmark was removed."""

import recfile
import rewritten

file = rewritten.up_to("bookmarks", 590)

file.add_block(590, recfile.bookmark_table([
    (2000, b"ok"),
]))
file.add(b"0" * 23, "what the table was longer before; reads as entries without a text")
