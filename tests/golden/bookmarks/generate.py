"""A recording with bookmarks and without channel range definitions."""

import recfile

file = recfile.File(recfile.header(
    start_hz=20, stop_hz=3000, step_hz=0.025, min_level=-30, max_level=100,
    start_ms=1_650_000_000_000, stop_ms=1_650_000_004_000,
    job=b"A1B2", name=b"Receiver 1", kind=b"RX",
    types_at=500, records_at=522, times_at=551, ranges_at=0, bookmarks_at=590, automatic=False))

file.add_block(500, recfile.type_table([
    (36, 3, b"LEVEL", b"/LEVEL"),
]))

file.add_block(522, recfile.records([
    (36, b"-31.5", "the first record"),
    (36, b"-30", "the second record"),
    (36, b"-29.25", "the third record"),
]))

file.add_block(551, recfile.time_table([
    (10, 522, "as it was stored"),
    (1500, 532, "as it was stored"),
    (3000, 540, "as it was stored"),
]))

file.add_block(590, recfile.bookmark_table([
    (2000, b"ok"),
    (3000, b"third\x00#mark"),
]))
