"""Recordings of a radio-monitoring station: read, mark and write ".rec" files with numpy.

    import recording2

    recording = recording2.open("night.rec")           # a file, a directory or several files on one axis of time
    spectra = recording.spectra("RFSPECTRUM")           # times (n,), frequencies (m,) in Hz, levels (n, m) in dB
    spectra.levels.max(axis=0)                          # the highest level of each channel
    recording.values("FREQUENCY").to_pandas()           # every frequency that was set, with its time
    recording.bearings().to_pandas()                    # every bearing that a direction finder took
    recording.state("bookmark:alarm")                   # what was in force at a moment
    recording.bookmarks.add(61500, "alarm")

Times. Wherever a time is asked for (start, stop, at) give
  * a number: milliseconds since the start of the recording (of the first one, where several are open),
  * a datetime (without a time zone: UTC) or numpy.datetime64 (UTC),
  * or a text as rectool takes it: "90s", "2026-11-21 10:00:05 UTC", "10:00:05 UTC", "bookmark:alarm-500".
Spans include both ends, and parts of a millisecond whole. Arrays of times are numpy.datetime64[us] in UTC; where a recording does not tell when it began
they are numpy.timedelta64[us] since its start.

Damage. Of a damaged recording everything that is whole is given, and a DamageWarning tells each place; see also
Recording.damage. warnings.simplefilter("error", recording2.DamageWarning) makes errors of them.

Threads. Any number of threads may read one Recording at the same time; reading lets other threads run and ends at
Ctrl-C. An iterator of records belongs to one thread at a time, a Recorder to the thread that made it, and a process has
one Recorder at a time.

Errors are recording2.RequestError (also a ValueError) and recording2.FileError (also an OSError), both
recording2.Error; their text is what rectool says.
"""

from __future__ import annotations

from ._core import Error, FileError, RequestError, __version__
from ._recorder import Recorder
from ._recording import Bookmark, Bookmarks, Damage, DamageWarning, File, Record, Recording, State, Type, open
from ._values import BearingTable, Bearings, Levels, Spectra, Values

__all__ = [
    "BearingTable", "Bearings", "Bookmark", "Bookmarks", "Damage", "DamageWarning", "Error", "File", "FileError", "Levels", "Record",
    "Recorder", "Recording", "RequestError", "Spectra", "State", "Type", "Values", "__version__", "open",
]
