"""A recording that was closed before anything was stored in it."""

import recfile

file = recfile.File(recfile.header(
    start_hz=90_000_000, stop_hz=120_000_000, step_hz=100_000, min_level=0, max_level=120,
    start_ms=1_700_000_000_000, stop_ms=1_700_000_000_000,
    job=b"Not available", name=b"", kind=b"UNKNOWN",
    types_at=0, records_at=0, times_at=0, ranges_at=0, bookmarks_at=0, automatic=False))
