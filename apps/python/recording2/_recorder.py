"""Making recordings."""

from __future__ import annotations

import datetime
import os
from collections.abc import Mapping
from typing import Union

import numpy as np
import numpy.typing as npt

from . import _core
from ._times import microseconds

At = Union[float, int, datetime.datetime, np.datetime64, None]
Plain = Union[bool, float, int, str]


_OWN_ARGUMENTS = {"DEVICENAME": "device", "DEVICETYPE": "device_type", "DEVICE_CAPTION": "caption"}
_LATEST_US = 16_756_761_600_000_000  # the end of the year 2500


class Recorder:
    """Makes a recording with the station's own recorder: the bytes are those of a recording of a real device.

        with recording2.Recorder("recordings", "RX 9", values={"FREQUENCY": 433.92e6},
                                 spectra={"RFSPECTRUM": np.arange(430e6, 440e6, 25e3)}) as recorder:
            recorder.spectrum("RFSPECTRUM", levels, at=0)
            recorder.set("FREQUENCY", 434.5e6, at=250)
        recorder.files

    While it records, the file is "NAME.tmp" with a journal, from which "rectool recover" makes a recording after a
    crash; close(), or the end of "with", also after an error in it, gives it its name. After 500,000,000 bytes the
    recorder goes on in another file. An existing file is never replaced.

    One at a time in a process, and in the thread that made it.
    """

    def __init__(self, folder: str | os.PathLike[str], device: str, device_type: str = "Python", *,
                 start: datetime.datetime | np.datetime64 | None = None, values: Mapping[str, Plain] | None = None,
                 spectra: Mapping[str, npt.ArrayLike] | None = None, caption: str = "",
                 journal: str = "process") -> None:
        """Begins the recording.

        folder: an existing directory.
        device, device_type: what the header says, of Latin-1 characters. caption: begins the file's name.
        start: time of the recording's beginning, UTC; None: now.
        values: keywords ("FREQUENCY", "LEVEL", ... one of the station's 48) and what they begin with; whether one is
            a bool, a number or a text is decided here.
        spectra: keywords ("RFSPECTRUM", "IFSPECTRUM") and the middles of their channels, (m,) in Hz.
        journal: "process": a killed process loses nothing; "power": a power cut neither; "off".
        """
        self._core = None
        folder = os.fspath(folder)
        if not os.path.isdir(folder):
            raise _core.FileError(f"{folder}: There is no such directory.")
        if not os.access(folder, os.W_OK | os.X_OK):
            raise _core.FileError(f"{folder}: The directory cannot be written.")
        if journal not in ("process", "power", "off"):
            raise _core.RequestError(f'journal: expected "process", "power" or "off", found {journal!r}.')
        for name, text in (("device", device), ("device_type", device_type)):
            if any(ord(character) > 0xFF for character in text):
                raise _core.RequestError(f"{name}: a header has Latin-1 characters only, found {text!r}.")
        names = [*(values or {}), *(spectra or {})]
        for keyword in names:
            if keyword in _OWN_ARGUMENTS:
                raise _core.RequestError(f"{keyword} has an argument of its own: {_OWN_ARGUMENTS[keyword]}.")
            if names.count(keyword) > 1:
                raise _core.RequestError(f"{keyword} is given as a value and as a spectrum.")
        self._start_us = microseconds(start if start is not None else datetime.datetime.now(datetime.timezone.utc))
        if not 1_000_000 <= self._start_us < _LATEST_US:
            raise _core.RequestError("start: recordings begin from 1970-01-01 00:00:01 UTC to the end of 2500.")
        plain = [(keyword, self._plain(keyword, value)) for keyword, value in (values or {}).items()]
        channels = [(keyword, self._channels(keyword, hz)) for keyword, hz in (spectra or {}).items()]
        self._core = _core.Recorder(folder, device, device_type, caption, journal, self._start_us, plain, channels)

    @staticmethod
    def _plain(keyword: str, value: Plain) -> bool | float | str:
        if isinstance(value, (bool, np.bool_)):
            return bool(value)
        if isinstance(value, (int, float, np.integer, np.floating)):
            return float(value)
        if isinstance(value, str):
            return value
        raise TypeError(f"{keyword}: expected a bool, a number or a text, found {type(value).__name__}")

    @staticmethod
    def _channels(keyword: str, frequencies: npt.ArrayLike) -> list[float]:
        hz = np.asarray(frequencies, dtype=np.float64)
        if hz.ndim != 1 or not hz.size or not np.isfinite(hz).all():
            raise _core.RequestError(f"{keyword}: expected the frequencies of one channel or more in Hz.")
        return hz.tolist()

    def _us(self, at: At) -> int:
        if at is None:
            return self._core.now_us
        if isinstance(at, (datetime.datetime, np.datetime64)):
            us = microseconds(at)
        elif isinstance(at, (int, float, np.integer, np.floating)) and not isinstance(at, bool):
            if not np.isfinite(at) or at < 0:
                raise _core.RequestError(f"at: expected milliseconds since the start, found {at!r}.")
            us = self._start_us + round(float(at) * 1000)
        else:
            raise TypeError(f"at: expected milliseconds, a datetime or numpy.datetime64, found {type(at).__name__}")
        if not 0 <= us < _LATEST_US:
            raise _core.RequestError("at: recordings tell times to the end of 2500.")
        return us

    def set(self, keyword: str, value: Plain, at: At = None) -> None:
        """Changes a plain value; the same value again is no change, and no record.

        at: milliseconds since the start, or a time (UTC); not before the change before; None: the time of that one.
        """
        self._core.set(keyword, self._plain(keyword, value), self._us(at))

    def spectrum(self, keyword: str, levels: npt.ArrayLike, at: At = None, *, first: int = 0) -> None:
        """Records a spectrum, or some of its levels.

        levels: (k,) in the unit of the device, recorded to hundredths; nan: not measured. first: the channel that they
        begin with. at: as for set().
        """
        array = np.asarray(levels, dtype=np.float32)
        if array.ndim != 1:
            raise _core.RequestError(f"{keyword}: expected the levels of one spectrum, found {array.ndim} dimensions.")
        self._core.set_levels(keyword, first, array, self._us(at))

    def channels(self, keyword: str, frequencies: npt.ArrayLike, at: At = None) -> None:
        """Gives a spectrum other channels, (m,) in Hz, which are not measured yet. at: as for set()."""
        self._core.set_channels(keyword, self._channels(keyword, frequencies), self._us(at))

    def close(self) -> None:
        """Ends the recording and gives the file its name. Again: nothing."""
        self._core.close()

    @property
    def is_open(self) -> bool:
        return self._core.is_open

    @property
    def files(self) -> list[str]:
        """The files that were made, ".tmp" while they are recorded, as they are called then when it is closed."""
        return self._core.files

    def __enter__(self) -> Recorder:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<recording2.Recorder {'recording' if self.is_open else 'closed'}: {', '.join(self.files)}>"
