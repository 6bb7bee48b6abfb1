"""Bookmarks of recordings, read and changed."""

from __future__ import annotations

import dataclasses
from collections.abc import Sequence
from typing import TYPE_CHECKING

import numpy as np

from . import _core
from ._times import Time, as_datetime

if TYPE_CHECKING:
    from ._recording import Recording


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
