"""A recording with channel range definitions, whose table stands behind the time table."""

import recfile

file = recfile.File(recfile.header(
    start_hz=20_000_000, stop_hz=3_000_000_000, step_hz=25_000, min_level=-30, max_level=120,
    start_ms=1_600_000_000_000, stop_ms=1_600_000_005_000,
    job=b"", name=b"Direction finder", kind=b"DF",
    types_at=500, records_at=534, times_at=609, ranges_at=674, bookmarks_at=0, automatic=False))

file.add_block(500, recfile.type_table([
    (20, 7, b"DFSPECTRUM", b"/DfSpectrum"),
]))

file.add_block(534, recfile.records([
    (20, b"34;20e6 25e3 4", "a channel range, flagged"),
    (20, b"bearings", "not flagged"),
    (20, b"no range here", "flagged; the definition is the next record"),
    (20, b"x34;y", "stored with the same time, flagged as well"),
    (20, b"bearings", "not flagged"),
]))

file.add_block(609, recfile.time_table([
    (10, 534, "as it was stored"),
    (11, 554, "as it was stored"),
    (100, 567, "as it was stored"),
    (101, 586, "stored with 100, which was taken"),
    (4000, 596, "as it was stored"),
]))

# The times that the records got, not those that they were stored with.
file.add_block(674, recfile.range_table([10, 100, 101]))
