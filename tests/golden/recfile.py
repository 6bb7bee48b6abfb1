"""Puts recording files together byte by byte, each piece with its meaning.

Knows nothing of the library: it is the second opinion that the library is compared with. Positions and times are
given by the cases themselves, so that nothing is worked out here the way the library works it out.
"""

import struct

HEADER_AREA = 500


def number(value):
    """A decimal number and its separator."""
    return b"%d#" % value


def real(value):
    """A 32-bit float with at most six significant digits and its separator."""
    single = struct.unpack("<f", struct.pack("<f", value))[0]
    return b"%g#" % single


def time(milliseconds):
    """Eight bytes, the lowest first, and the separator."""
    return struct.pack("<Q", milliseconds) + b"#"


def string(text):
    """The length in bytes, a separator, and the bytes themselves."""
    return number(len(text)) + text


class File:
    """The pieces of a file in file order."""

    def __init__(self, header):
        self.pieces = []
        length = 0
        for data, meaning in header:
            self.add(data, meaning)
            length += len(data)
        if length > HEADER_AREA - 1:
            raise ValueError("the header does not fit into its area")
        self.add(b"0" * (HEADER_AREA - 1 - length), "rest of the header area, never read")
        self.add(b"#", "end of the header area")

    @property
    def size(self):
        return sum(len(data) for data, _ in self.pieces)

    def add(self, data, meaning):
        self.pieces.append((data, meaning))

    def add_block(self, position, pieces):
        """Adds a block and makes sure that it lies where the header says."""
        if self.size != position:
            raise ValueError(f"a block that should lie at {position} lies at {self.size}")
        for data, meaning in pieces:
            self.add(data, meaning)

    def content(self):
        return b"".join(data for data, _ in self.pieces)

    def table(self):
        """The pieces as a Markdown table."""
        lines = ["| Offset | Length | Bytes | Meaning |", "|---:|---:|---|---|"]
        offset = 0
        for data, meaning in self.pieces:
            lines.append(f"| {offset} | {len(data)} | `{legible(data)}` | {meaning} |")
            offset += len(data)
        return "\n".join(lines) + "\n"


def legible(data):
    """Bytes as text, those that cannot be shown in a table cell as \\xNN; long runs of one byte are shortened."""
    if len(data) > 40 and len(set(data)) == 1:
        return f"{legible(data[:3])}... ({len(data)} times)"
    return "".join(chr(b) if 0x20 <= b < 0x7F and chr(b) not in "`|\\" else f"\\x{b:02x}" for b in data)


def header(*, major=2, minor=0, start_hz, stop_hz, step_hz, min_level, max_level, start_ms, stop_ms, job, name, kind,
           types_at, records_at, times_at, ranges_at, bookmarks_at, automatic):
    return [
        (number(major), "major version"),
        (number(minor), "minor version"),
        (real(start_hz), f"start frequency {start_hz:,} Hz"),
        (real(stop_hz), f"stop frequency {stop_hz:,} Hz"),
        (real(step_hz), f"step width {step_hz:,} Hz"),
        (number(min_level), "minimum level"),
        (number(max_level), "maximum level"),
        (time(start_ms), f"start time, {start_ms:,} ms since 1970"),
        (time(stop_ms), f"stop time, {stop_ms:,} ms since 1970"),
        (string(job), "job id: its length, then the text"),
        (string(name), "device name: its length in bytes, then Latin-1 text"),
        (string(kind), "device type: its length, then the text"),
        (number(types_at), "position of the type table" + absent(types_at)),
        (number(records_at), "position of the first record" + absent(records_at)),
        (number(times_at), "position of the time table" + absent(times_at)),
        (number(ranges_at), "position of the channel range table" + absent(ranges_at)),
        (number(bookmarks_at), "position of the bookmark table" + absent(bookmarks_at)),
        (number(1 if automatic else 0), "started " + ("automatically" if automatic else "by an operator")),
    ]


def absent(position):
    return "" if position else " (there is none)"


def type_table(entries):
    pieces = [(number(len(entries)), f"type table: number of entries ({len(entries)})")]
    for type_number, value_type, keyword, path in entries:
        pieces += [
            (number(type_number), f"type number {type_number}"),
            (number(value_type), f"value type {value_type}"),
            (string(keyword), "keyword: its length, then the text"),
            (string(path), "value path: its length, then Latin-1 text"),
        ]
    return pieces


def records(entries):
    pieces = []
    for code, data, remark in entries:
        pieces += [
            (number(code), f"record: command code {code}"),
            (number(len(data)), f"{len(data)} byte{'s' * (len(data) > 1)} of data follow"),
            (data, f"data: {remark}"),
        ]
    return pieces


def time_table(entries):
    pieces = []
    for milliseconds, position, remark in entries:
        pieces += [
            (time(milliseconds), f"time table: {milliseconds:,} ms, {remark}"),
            (number(position), f"... belongs to the record at {position}"),
        ]
    return pieces


def range_table(times):
    return [(time(t), f"channel range table: the record at {t:,} ms defines a channel range") for t in times]


def bookmark_table(entries):
    pieces = []
    for milliseconds, text in entries:
        pieces += [
            (time(milliseconds), f"bookmark at {milliseconds:,} ms"),
            (string(text), "its text: the length, then the text"),
        ]
    return pieces
