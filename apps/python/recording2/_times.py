"""Times as people give them, as recordings take them."""

from __future__ import annotations

import datetime
import math
from typing import Union

import numpy as np

Time = Union[float, int, str, datetime.datetime, np.datetime64, None]

_US_PER_MS = 1000
_MOST = 2**63 - 1


def microseconds(time: datetime.datetime | np.datetime64) -> int:
    """Since 1970 UTC."""
    if isinstance(time, datetime.datetime):
        zoned = time if time.tzinfo is not None else time.replace(tzinfo=datetime.timezone.utc)
        return (zoned - datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)) // datetime.timedelta(
            microseconds=1)
    if not isinstance(time, np.datetime64) or np.isnat(time):
        raise TypeError(f"expected a datetime or numpy.datetime64, found {time!r}")
    return int(time.astype("datetime64[us]").astype(np.int64))


def as_text(name: str, time: Time, start_us: int, *, is_start: bool = True) -> str:
    """What rectool takes; empty for None. Dates before the start are the start; parts of a millisecond are
    taken in."""
    from ._core import RequestError

    if time is None:
        return ""
    if isinstance(time, str):
        if not time:
            raise RequestError(f"{name} is an empty text, which is no time.")
        return time
    if isinstance(time, (datetime.datetime, np.datetime64)):
        if isinstance(time, np.datetime64) and np.isnat(time):
            raise RequestError(f"{name} is NaT, which is no time.")
        if start_us == 0:
            raise RequestError(f"{name} is a date, but the recording does not tell when it began: give milliseconds.")
        milliseconds = (microseconds(time) - start_us) / _US_PER_MS
    elif isinstance(time, (int, float, np.integer, np.floating)) and not isinstance(time, bool):
        milliseconds = float(time)
        if math.isnan(milliseconds):
            raise RequestError(f"{name} is not a number, which is no time.")
        if milliseconds < 0:
            raise RequestError(f"{name} lies before the start of the recording: {time:g} ms.")
    else:
        raise TypeError(f"{name}: expected milliseconds, a datetime, numpy.datetime64 or a text, "
                        f"found {type(time).__name__}")
    whole = math.floor(milliseconds) if is_start else math.ceil(milliseconds)
    return str(max(whole, 0))


def as_array(since_start_us: np.ndarray, start_us: int) -> np.ndarray:
    if start_us == 0:
        return since_start_us.view("timedelta64[us]")
    return (since_start_us + start_us).view("datetime64[us]")


def as_datetime(milliseconds: float | None, start_us: int) -> np.datetime64 | None:
    if milliseconds is None or start_us == 0:
        return None
    return date_of(start_us + round(milliseconds * _US_PER_MS))


def date_of(us: int) -> np.datetime64 | None:
    """None for what a damaged file may say and no date can."""
    return np.datetime64(us, "us") if abs(us) <= _MOST else None


def duration_of(milliseconds: float) -> np.timedelta64:
    return np.timedelta64(min(round(milliseconds), _MOST), "ms")
