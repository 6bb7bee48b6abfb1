"""A small recording with a type table and records whose data and times are awkward."""

import recfile

LATE = 4_294_967_297  # does not fit into 32 bits

file = recfile.File(recfile.header(
    start_hz=90_012_345, stop_hz=120_000_000, step_hz=0.025, min_level=-30, max_level=100,
    start_ms=1_700_000_000_123, stop_ms=1_704_294_967_420,
    job=b"A1B2", name="Empfänger Süd".encode("latin-1"), kind=b"Receiver",
    types_at=500, records_at=695, times_at=1030, ranges_at=0, bookmarks_at=0, automatic=True))

file.add_block(500, recfile.type_table([
    (46, 4, b"FREQUENCY", b"/FREQUENCY"),
    (36, 3, b"LEVEL", b"/LEVEL"),
    (1, 6, b"RFSPECTRUM", b"/Receivers/1/Scn/RfSpectrum"),
    (6, 5, b"MODULATION", b"/Receivers/1/Mon/DEMODULATION"),
    (0, -1, b"SITE", "/Gerät/Ort".encode("latin-1")),
    (47, 2, b"DEVICE_CAPTION", b""),
]))

file.add_block(695, recfile.records([
    (46, b"100000000", "a text without special bytes"),
    (36, b"-31.5", "stored with the time of the record before"),
    (1, bytes(range(256)), "every byte value once, NUL and \"#\" among them"),
    (36, b"-32", "stored with an earlier time"),
    (36, b"#1#2#", "separators only look like fields; a record without data was stored before and left no bytes"),
    (7, b"\x00", "a single NUL, of a type that the type table does not name"),
    (0, b"Nord", "the type number 0"),
    (-2147483648, b"9#9#", "the lowest command code"),
]))

file.add_block(1030, recfile.time_table([
    (10, 695, "as it was stored"),
    (11, 709, "stored with 10, which was taken"),
    (12, 719, "stored with 10, which was taken, as was 11"),
    (13, 981, "stored with 5, raised to 12, which was taken"),
    (200, 989, "stored with 150, raised to the time of the record without data"),
    (LATE, 999, "as it was stored"),
    (LATE + 1, 1004, "stored with the time before"),
    (LATE + 1000, 1012, "as it was stored"),
]))
