"""The recording of the case bookmarks after all its bookmarks were removed."""

import rewritten

file = rewritten.up_to("bookmarks", 590)

file.add_block(590, [(b"0" * 36, "the bookmarks that were removed; reads as entries without a text")])
