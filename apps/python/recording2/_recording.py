"""Opening recordings, asking them, and changing their bookmarks."""

from __future__ import annotations

import dataclasses
import os
import warnings
from collections.abc import Iterable, Iterator, Sequence
from typing import Union

import numpy as np

from . import _core
from ._times import Time, as_array, as_datetime, as_text, duration_of
from ._values import BearingTable, Bearings, Levels, Spectra, Values, from_core

Path = Union[str, bytes, "os.PathLike[str]"]
Value = Union[float, bool, str, Levels, Bearings, None]

_US_PER_MS = 1000.0


class DamageWarning(UserWarning):
    """A place of a recording is damaged; everything that is whole was given all the same."""


@dataclasses.dataclass(frozen=True)
class Damage:
    """A place of a file that a sound recording would not have."""

    path: str
    offset: int
    """Where in the file, bytes."""
    text: str


@dataclasses.dataclass(frozen=True)
class File:
    """One of the files of a Recording."""

    path: str
    device: str
    device_type: str
    start: np.datetime64 | None
    """UTC; None where it does not tell."""
    duration: np.timedelta64
    """Milliseconds."""
    offset_ms: float
    """Of its start, since the start of the first file."""
    records: int
    bytes: int


@dataclasses.dataclass(frozen=True)
class Type:
    """A kind of value that a device recorded."""

    device: str
    code: int
    """Its number in the recording."""
    keyword: str
    path: str
    """Of the value in the station's tree."""


@dataclasses.dataclass(frozen=True)
class Record:
    """One change of one value."""

    ms: float | None
    """Milliseconds since the start of the (first) recording; None where its time is lost."""
    time: np.datetime64 | None
    """The same, UTC; None where one of both is not known."""
    device: str
    keyword: str
    code: int
    path: str
    """The file that it stands in."""
    data: bytes
    """As it is recorded."""
    value: Value
    """A number, bool or str; Levels, Bearings; None where it is not understood or was not asked for."""


@dataclasses.dataclass(frozen=True)
class State:
    """What a value was at a moment."""

    device: str
    keyword: str
    code: int
    ms: float
    """Since when it was that, milliseconds since the start of the (first) recording."""
    time: np.datetime64 | None
    """The same, UTC."""
    value: Value
    data: bytes
    """The record that made it so."""


@dataclasses.dataclass(frozen=True)
class Bookmark:
    """A moment with a text."""

    ms: float
    """Milliseconds since the start of the (first) recording."""
    time: np.datetime64 | None
    """UTC; None where the recording does not tell when it began."""
    text: str
    path: str
    """The file that it stands in."""


class Bookmarks(Sequence):
    """The bookmarks of a recording by time: recording.bookmarks[0], len(recording.bookmarks), loops.

    A change is stored in the file at once, whole or not at all; a damaged file is not changed. Only a recording of one
    file can be changed.
    """

    def __init__(self, recording: Recording) -> None:
        self._recording = recording

    def _all(self) -> list[Bookmark]:
        description = self._recording._description
        found = [Bookmark(ms, as_datetime(ms, description["start_us"]), text, path)
                 for ms, text, path in description["bookmarks"]]
        return sorted(found, key=lambda bookmark: bookmark.ms)

    def __len__(self) -> int:
        return len(self._recording._description["bookmarks"])

    def __getitem__(self, index):
        return self._all()[index]

    def __repr__(self) -> str:
        return repr(self._all())

    def add(self, at: Time, text: str) -> None:
        """Adds a bookmark. at: from 1 ms to the length of the recording, and no other one there. text: Latin-1."""
        self._change(_core.add_bookmark, at, text)

    def remove(self, at: Time) -> None:
        """Removes the bookmark at exactly that time ("bookmark:TEXT" finds it by its text)."""
        self._change(_core.remove_bookmark, at)

    def rename(self, at: Time, text: str) -> None:
        """Gives the bookmark at exactly that time another text, of Latin-1 characters."""
        self._change(_core.rename_bookmark, at, text)

    def _change(self, change, at: Time, *text: str) -> None:
        recording = self._recording
        if len(recording._paths) != 1:
            raise _core.RequestError("Bookmarks are changed in one file: open that one by itself.")
        change(recording._paths[0], recording._moment("at", at), *text)
        recording.refresh()


def open(path: Path | Iterable[Path]) -> Recording:
    """Opens a recording.

    path: a ".rec" file; a directory, whose ".rec" files (not those of directories in it; one that cannot be read is an
    error that names it) are put on one axis of time; or several of these. Recordings
    of one device that follow each other, such as the parts of a long one, are taken as one.

    Raises FileError for what is no recording, cannot be read or was not closed yet ("rectool cat --follow" shows
    recordings while they grow, "rectool recover" mends those that a crash left behind).
    """
    if isinstance(path, (str, bytes, os.PathLike)):
        return Recording(_files(path))
    paths = [file for one in path for file in _files(one)]
    if not paths:
        raise _core.RequestError("No file was given.")
    return Recording(paths)


def _files(path: Path) -> list[bytes]:
    name = os.fsencode(path)
    if not name:
        raise _core.RequestError("An empty text is no name of a file.")
    if b"\0" in name:
        raise _core.RequestError("The name of a file has no NUL.")
    if not os.path.isdir(name):
        return [name]
    try:
        found = sorted(os.path.join(name, entry) for entry in os.listdir(name) if entry.lower().endswith(b".rec"))
    except OSError as error:
        raise _core.FileError(f"{os.fsdecode(name)}: the directory cannot be read: {error.strerror}.") from error
    if not found:
        raise _core.FileError(f"{os.fsdecode(name)}: There is no recording (*.rec) in the directory.")
    return found


class Recording:
    """One or several recording files on one axis of time. Made by recording2.open().

    Opening reads headers and tables only (16 bytes of memory a record while they are read); every call then reads the
    files anew, so nothing has to be closed. Any number of threads may use it.
    """

    def __init__(self, paths: list[bytes]) -> None:
        self._paths = list(paths)
        self.refresh()

    def refresh(self) -> None:
        """Looks at headers and tables again, as another program may have changed bookmarks."""
        self._description = _core.describe(self._paths)
        self._warn(self._description)

    def __repr__(self) -> str:
        return (f"<recording2.Recording of {', '.join(self.devices) or 'an unnamed device'}: {len(self.files)} file(s), "
                f"from {self.start}, {self.duration}>")

    @property
    def files(self) -> list[File]:
        """The files by their start."""
        return [File(part["path"], part["device"], part["device_type"],
                     _start(part["start_ms"]),
                     duration_of(part["length_ms"]), part["offset_ms"], part["records"], part["bytes"])
                for part in self._description["files"]]

    @property
    def device(self) -> str:
        """The name of the device; of several, with " + " between them."""
        return " + ".join(self.devices)

    @property
    def devices(self) -> list[str]:
        """The names of the devices, each once, in the order of their files."""
        return list(dict.fromkeys(part["device"] for part in self._description["files"]))

    @property
    def start(self) -> np.datetime64 | None:
        """Start of the first file, UTC, datetime64[us]; None where it does not tell."""
        return as_datetime(0, self._description["start_us"])

    @property
    def duration(self) -> np.timedelta64:
        """From the start of the first file to the end of the last one, in milliseconds."""
        return duration_of(self._description["duration_ms"])

    @property
    def types(self) -> list[Type]:
        """What was recorded, device by device; a type that several files of a device have is there once."""
        return list(dict.fromkeys(Type(*entry) for entry in self._description["types"]))

    @property
    def keywords(self) -> list[str]:
        """The keywords of the types, each once."""
        return list(dict.fromkeys(entry.keyword for entry in self.types))

    @property
    def bookmarks(self) -> Bookmarks:
        """The bookmarks by time; add(), remove() and rename() change them in the file."""
        return Bookmarks(self)

    @property
    def damage(self) -> list[Damage]:
        """What is damaged in headers and tables. What is in records is told by a DamageWarning of what reads them."""
        return [Damage(*place) for place in self._description["damage"]]

    def spectra(self, keyword: str | None = None, start: Time = None, stop: Time = None, *, low_hz: float | None = None,
                high_hz: float | None = None, every: int = 1, complete: bool = False,
                device: str | None = None) -> Spectra:
        """The spectra of a keyword as one array.

        keyword: such as "RFSPECTRUM" or "IFSPECTRUM"; None: the first of these two that was recorded.
        start, stop: span of the times of measurement, both included (see help(recording2)).
        low_hz, high_hz: only channels whose middle lies there, both included.
        every: only the first of so many spectra.
        complete: False: the levels that each record brought, the others nan, and nothing for records without a level
            (as "rectool export" writes them). True: the levels in force after each record (as "rectool cat" shows).
        device: its name, where several devices have the keyword.

        Memory is that of the result: 4 bytes a level.

        Raises RequestError when the channels changed within the span (spectra_by_range() takes those), when there is
        nothing in the span, and for a keyword that was not recorded.
        """
        return self._spectra(keyword, start, stop, low_hz, high_hz, every, complete, device, False)[0]

    def spectra_by_range(self, keyword: str | None = None, start: Time = None, stop: Time = None, *,
                         low_hz: float | None = None, high_hz: float | None = None, every: int = 1,
                         complete: bool = False, device: str | None = None) -> list[Spectra]:
        """The same for a keyword whose channels changed: one Spectra for each range of channels, in the order of their
        first spectrum; [] when there is nothing in the span. A range that comes back goes on in its array."""
        return self._spectra(keyword, start, stop, low_hz, high_hz, every, complete, device, True)

    def values(self, keyword: str, start: Time = None, stop: Time = None, *, device: str | None = None) -> Values:
        """Every plain value of a keyword ("FREQUENCY", "LEVEL", ...) with its time, in the order of recording.

        start, stop, device: as for spectra(). Nothing in the span: arrays of length 0.
        Raises RequestError for a keyword that was not recorded or that holds spectra or bearings.
        """
        found = _core.values(self._paths, str(keyword), device or "", *self._span(start, stop))
        self._warn(found, found["keyword"])
        if "texts" in found:
            values = np.array(found["texts"], dtype=object)
        else:
            values = found["numbers"].astype(bool) if found["booleans"] else found["numbers"]
        since = found["since_start_us"]
        return Values(found["keyword"], found["device"], found["unit"], as_array(since, found["start_us"]),
                      since / _US_PER_MS, values)

    def bearings(self, keyword: str = "DFSPECTRUM", start: Time = None, stop: Time = None, *,
                 device: str | None = None) -> BearingTable:
        """Every bearing that a direction finder took, as "rectool map" takes them: also one with the same result as the
        one before, and none twice where a record repeats all channels.

        start, stop, device: as for spectra(). Nothing in the span: arrays of length 0.
        """
        found = _core.bearings(self._paths, str(keyword), device or "", *self._span(start, stop))
        self._warn(found, found["keyword"])
        since = found["since_start_us"]
        return BearingTable(found["keyword"], found["device"], as_array(since, found["start_us"]),
                            since / _US_PER_MS, **found["columns"])

    def records(self, type: str | int | None = None, start: Time = None, stop: Time = None, *,
                device: str | None = None, decode: bool = True) -> Iterator[Record]:
        """The records one after the other, file after file.

        type: a keyword or a number; None: all.
        start, stop: span of the times that records are filed under (as "rectool cat").
        decode: False: Record.value is None, which is quicker.

        Where arrays do, spectra() and values() are quicker.
        """
        text = "" if type is None else str(type)
        cursor = _core.Records(self._paths, text, device or "", *self._span(start, stop), decode)
        return self._iterate(cursor)

    def state(self, at: Time = None, *, device: str | None = None) -> dict[str, State]:
        """What every value was at a moment, by keyword (of several devices by "DEVICE: KEYWORD").

        at: see help(recording2); None: the end. device: only this one.
        """
        found = _core.state(self._paths, device or "", as_text("at", at, self._start_us))
        several = len({entry[0] for entry in found}) > 1
        states = (State(device=name, keyword=keyword, code=code, ms=ms, time=as_datetime(ms, self._start_us),
                        value=from_core(value), data=data) for name, keyword, code, ms, value, data in found)
        return {f"{state.device}: {state.keyword}" if several else state.keyword: state for state in states}

    @property
    def _start_us(self) -> int:
        return self._description["start_us"]

    def _span(self, start: Time, stop: Time) -> tuple[str, str]:
        return (as_text("start", start, self._start_us), as_text("stop", stop, self._start_us, is_start=False))

    def _moment(self, name: str, at: Time) -> int:
        """Milliseconds of the recording."""
        text = as_text(name, at, self._start_us)
        if not text:
            raise _core.RequestError(f"{name} is None, which is no time.")
        return int(text) if text.isdecimal() else int(_core.moment(self._paths, text))

    def _spectra(self, keyword, start, stop, low_hz, high_hz, every, complete, device, by_range) -> list[Spectra]:
        if isinstance(every, bool) or int(every) != every or every < 1:
            raise _core.RequestError(f"every: expected a whole number from 1 on, found {every!r}.")
        if keyword is None:
            keyword = next((word for word in ("RFSPECTRUM", "IFSPECTRUM") if word in self.keywords), "RFSPECTRUM")
        found = _core.spectra(self._paths, str(keyword), device or "", *self._span(start, stop), low_hz, high_hz,
                              int(every), bool(complete), by_range)
        self._warn(found, found["keyword"])
        return [Spectra(found["keyword"], found["device"], as_array(since, found["start_us"]), since / _US_PER_MS,
                        frequencies, levels) for since, frequencies, levels in found["series"]]

    def _iterate(self, cursor) -> Iterator[Record]:
        start_us = cursor.start_us
        for ms, device, keyword, code, path, data, value in cursor:
            yield Record(ms, as_datetime(ms, start_us), device, keyword, code, path, data, from_core(value))
        self._warn_of(cursor.damage)

    def _warn(self, found: dict, keyword: str = "") -> None:
        self._warn_of(found["damage"])
        if found.get("not_understood"):
            warnings.warn(f"{found['not_understood']} record(s) of {keyword} not understood and passed over.",
                          DamageWarning, stacklevel=4)

    @staticmethod
    def _warn_of(damage: list) -> None:
        for path, offset, text in damage[:100]:
            warnings.warn(f"{path}: damaged at {offset}: {text}", DamageWarning, stacklevel=5)
        if len(damage) > 100:
            warnings.warn(f"and {len(damage) - 100} more findings.", DamageWarning, stacklevel=5)


def _start(start_ms: int) -> np.datetime64 | None:
    return np.datetime64(start_ms, "ms") if 0 < start_ms <= 253_402_300_799_999 else None
