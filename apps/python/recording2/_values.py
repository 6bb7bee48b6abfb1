"""What is read: spectra, plain values, and the maps of single records."""

from __future__ import annotations

import dataclasses
from typing import TYPE_CHECKING

import numpy as np

from ._times import date_of

if TYPE_CHECKING:
    import pandas


@dataclasses.dataclass(frozen=True, eq=False)
class Spectra:
    """The spectra of one keyword over one range of channels: n of them, of m channels."""

    keyword: str
    device: str
    times: np.ndarray
    """(n,) datetime64[us], UTC: when each was measured (timedelta64[us] where the start is not known)."""
    ms: np.ndarray
    """(n,) float64: the same in milliseconds since the start of the (first) recording."""
    frequencies: np.ndarray
    """(m,) float64, Hz: the middle of each channel, in the order that they were recorded in."""
    levels: np.ndarray
    """(n, m) float32, in the unit of the device (dB...), to hundredths; nan: not measured."""

    def __len__(self) -> int:
        return len(self.times)

    def __repr__(self) -> str:
        low, high = (self.frequencies.min() / 1e6, self.frequencies.max() / 1e6) if len(self.frequencies) else (0, 0)
        return (f"<recording2.Spectra {self.keyword} of {self.device}: {len(self.times)} x {len(self.frequencies)} "
                f"levels, {low:g} to {high:g} MHz>")

    def to_pandas(self) -> pandas.DataFrame:
        """A row for each spectrum (index: time), a column for each channel (its frequency in Hz). Not copied."""
        import pandas

        return pandas.DataFrame(self.levels, index=pandas.Index(self.times, name="time"),
                                columns=pandas.Index(self.frequencies, name="frequency"), copy=False)


@dataclasses.dataclass(frozen=True, eq=False)
class Values:
    """Every value of a keyword, in the order of recording: n of them."""

    keyword: str
    device: str
    unit: str
    """Of the numbers: "Hz", "dB", "°"...; empty where there is none."""
    times: np.ndarray
    """(n,) datetime64[us], UTC (timedelta64[us] where the start is not known)."""
    ms: np.ndarray
    """(n,) float64: the same in milliseconds since the start of the (first) recording."""
    values: np.ndarray
    """(n,) float64; bool for switches; object (str) for texts and selections."""

    def __len__(self) -> int:
        return len(self.times)

    def __repr__(self) -> str:
        return f"<recording2.Values {self.keyword} of {self.device}: {len(self.times)} values>"

    def to_pandas(self) -> pandas.Series:
        """A pandas.Series over the times, with the keyword as its name."""
        import pandas

        return pandas.Series(self.values, index=pandas.Index(self.times, name="time"), name=self.keyword)


@dataclasses.dataclass(frozen=True, eq=False)
class Levels:
    """A spectrum as a record left it: what the record did not bring is what it was before."""

    frequencies: np.ndarray
    """(m,) float64, Hz; not to be changed, as records share it."""
    levels: np.ndarray
    """(m,) float32, in the unit of the device, to hundredths; nan: not measured."""
    measured: np.datetime64 | None
    """When, UTC; None where the spectrum does not say."""

    def __repr__(self) -> str:
        return f"<recording2.Levels of {len(self.levels)} channels, measured {self.measured}>"


@dataclasses.dataclass(frozen=True, eq=False)
class Bearings:
    """A direction finder's bearings as a record left them, one a channel; nan: not measured."""

    frequencies: np.ndarray
    """(m,) float64, Hz; not to be changed, as records share it."""
    azimuth: np.ndarray
    """(m,) float64, degrees from 0 to 360, relative to the antenna."""
    elevation: np.ndarray
    """(m,) float64, degrees from -90 to 90."""
    level: np.ndarray
    """(m,) float64, dB."""
    quality: np.ndarray
    """(m,) float64, 0 to 100."""
    measured: np.datetime64 | None
    """When, UTC; None where they do not say."""

    def __repr__(self) -> str:
        return f"<recording2.Bearings of {len(self.azimuth)} channels, measured {self.measured}>"


@dataclasses.dataclass(frozen=True, eq=False)
class BearingTable:
    """Every bearing that a direction finder took, in the order of recording: n of them. nan: not measured."""

    keyword: str
    device: str
    times: np.ndarray
    """(n,) datetime64[us], UTC: when each was taken (timedelta64[us] where the start is not known)."""
    ms: np.ndarray
    """(n,) float64: the same in milliseconds since the start of the (first) recording."""
    frequency: np.ndarray
    """(n,) float64, Hz: of the channel."""
    azimuth: np.ndarray
    """(n,) float64, degrees from 0 to 360, relative to the antenna: add TRUEHEADING for true bearings."""
    elevation: np.ndarray
    """(n,) float64, degrees from -90 to 90."""
    level: np.ndarray
    """(n,) float64, dB."""
    quality: np.ndarray
    """(n,) float64, 0 to 100."""

    def __len__(self) -> int:
        return len(self.times)

    def __repr__(self) -> str:
        return f"<recording2.BearingTable {self.keyword} of {self.device}: {len(self.times)} bearings>"

    def to_pandas(self) -> pandas.DataFrame:
        """A row a bearing (index: time), the figures as columns."""
        import pandas

        columns = {name: getattr(self, name) for name in ("frequency", "azimuth", "elevation", "level", "quality")}
        return pandas.DataFrame(columns, index=pandas.Index(self.times, name="time"))


def from_core(value: object) -> object:
    """A value of the extension module as this package gives it."""
    if not isinstance(value, dict):
        return value
    fields = dict(value)
    measured_us = fields.pop("measured_us")
    measured = date_of(measured_us) if measured_us else None
    return (Levels if "levels" in fields else Bearings)(measured=measured, **fields)
