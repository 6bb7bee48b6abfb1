"""The recording of the case bookmarks with longer texts than before."""

import recfile
import rewritten

file = rewritten.up_to("bookmarks", 590)

file.add_block(590, recfile.bookmark_table([
    (2500, b"a longer text than the first one had"),
    (3000, b"third\x00#mark"),
    (4000, b""),
]))
