"""The recording of the case channelranges after its channel range table was cleared."""

import rewritten

file = rewritten.up_to("channelranges", 674)

file.add_block(674, [(bytes(32), "the cleared table: 27 bytes, zeroed 8 at a time")])
