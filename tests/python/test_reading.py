"""What is read is what rectool reads, to the last digit."""

import datetime
import json
import os
import signal
import subprocess
import threading
import warnings

import numpy as np
import pytest

import recording2
from conftest import cat, rectool

START = np.datetime64("2026-11-21T10:00:00.250")


def levels_of(record):
    return np.array([np.nan if cell is None else cell for cell in record["value"]["cells"]], dtype=np.float32)


def test_spectra_are_those_that_rectool_shows(receiver, receiver_file):
    shown = [record for record in cat(receiver_file) if record["keyword"] == "RFSPECTRUM"]
    spectra = receiver.spectra("RFSPECTRUM", complete=True)
    assert len(spectra) == len(shown)
    assert np.array_equal(spectra.levels, np.array([levels_of(record) for record in shown]), equal_nan=True)
    channels = shown[-1]["value"]["range"]
    assert np.array_equal(spectra.frequencies, channels["startHz"] + np.arange(channels["count"]) * channels["stepHz"])
    measured = [record["value"]["timeStampUs"] for record in shown if record["value"]["timeStampUs"]]
    assert np.array_equal(spectra.times[-len(measured):], np.array(measured, dtype="datetime64[us]"))
    assert spectra.levels.dtype == np.float32 and spectra.frequencies.dtype == np.float64


def test_spectra_are_those_that_rectool_exports(receiver, receiver_file, tmp_path):
    h5py = pytest.importorskip("h5py")
    try:
        rectool("export", "hdf5", receiver_file, "-o", tmp_path / "exported.h5")
    except subprocess.CalledProcessError:
        pytest.skip("rectool is built without HDF5")
    with h5py.File(tmp_path / "exported.h5") as file:
        group = file["RFSPECTRUM/range_1"]
        spectra = receiver.spectra()
        assert np.array_equal(group["level"][:], spectra.levels, equal_nan=True)
        assert np.array_equal(group["frequency"][:], spectra.frequencies)
        assert np.array_equal(group["time"][:], spectra.times.astype(np.int64))


def test_plain_values_are_those_that_rectool_shows(receiver, receiver_file):
    records = cat(receiver_file)
    for keyword in ("LEVEL", "FREQUENCY", "LOCATIONLATITUDE", "SQUELCHSTATE", "OPERATEMODE"):
        shown = [record for record in records if record["keyword"] == keyword]
        found = receiver.values(keyword)
        assert found.values.tolist() == [record["value"]["value"] for record in shown]
        assert found.ms.tolist() == [record["timeMs"] for record in shown]
        assert np.array_equal(found.times, START + np.array(found.ms).astype("timedelta64[ms]"))
    assert receiver.values("frequency").unit == "Hz"
    assert receiver.values("SQUELCHSTATE").values.dtype == bool


def test_records_are_those_that_rectool_shows(receiver, receiver_file):
    shown = cat(receiver_file)
    records = list(receiver.records())
    assert [(record.ms, record.keyword, record.code, record.data.decode()) for record in records] == [
        (record["timeMs"], record["keyword"], record["code"], record["data"]["text"]) for record in shown]
    for record, expected in zip(records, shown):
        if record.keyword == "RFSPECTRUM":
            assert np.array_equal(record.value.levels, levels_of(expected), equal_nan=True)
        else:
            assert record.value == expected["value"]["value"]
    some = list(receiver.records("TRUEHEADING", 2000, 4000, decode=False))
    assert some and {record.keyword for record in some} == {"TRUEHEADING"} and some[0].value is None
    assert [record.ms for record in some] == [
        record["timeMs"] for record in cat(receiver_file, "--type", "TRUEHEADING", "--from", "2000", "--to", "4000")]


def test_bearings_are_those_that_rectool_shows(finder_file):
    shown = [record for record in cat(finder_file) if record["keyword"] == "DFSPECTRUM"][-1]["value"]
    value = list(recording2.open(finder_file).records("DFSPECTRUM"))[-1].value
    assert isinstance(value, recording2.Bearings)
    for figure, name in (("azimuth", "azimuthDeg"), ("elevation", "elevationDeg"), ("level", "levelDb"),
                         ("quality", "quality")):
        expected = [np.nan if cell is None or cell[name] is None else cell[name] for cell in shown["cells"]]
        assert np.array_equal(getattr(value, figure), np.array(expected), equal_nan=True)


def test_all_bearings_are_those_that_rectool_maps(finder_file):
    bearings = recording2.open(finder_file).bearings()
    assert len(bearings) > 50
    try:
        mapped = json.loads(rectool("map", finder_file, "--geojson"))
    except subprocess.CalledProcessError:
        pytest.skip("rectool is built without GeographicLib")
    shown = [feature["properties"] for feature in mapped["features"]
             if feature["geometry"]["type"] == "LineString"]
    for ours, name in ((bearings.frequency, "frequencyHz"), (bearings.elevation, "elevationDeg"),
                       (bearings.level, "levelDb"), (bearings.quality, "quality")):
        assert ours.tolist() == [properties[name] for properties in shown]
    true = [(azimuth + properties["headingDeg"]) % 360 for azimuth, properties in zip(bearings.azimuth, shown)]
    assert np.allclose(true, [properties["azimuthDeg"] for properties in shown], atol=0.05)
    assert bearings.times.astype("datetime64[ms]").tolist() == [
        datetime.datetime.fromisoformat(properties["time"].rstrip("Z")) for properties in shown]
    late = recording2.open(finder_file).bearings(start=5000)
    assert np.array_equal(late.azimuth, bearings.azimuth[bearings.ms >= 5000])
    assert bearings.to_pandas().columns.tolist() == ["frequency", "azimuth", "elevation", "level", "quality"]


def test_the_state_is_the_one_that_rectool_shows(receiver, receiver_file):
    shown = json.loads(rectool("state", receiver_file, "--at", "5000", "--json"))["state"]
    state = receiver.state(5000)
    assert sorted(state) == sorted(entry["keyword"] for entry in shown)
    for entry in shown:
        found = state[entry["keyword"]]
        assert (found.ms, found.code) == (entry["timeMs"], entry["code"])
        if not isinstance(found.value, recording2.Levels):
            assert found.value == entry["value"]["value"]
    assert receiver.state()["LEVEL"].value == receiver.values("LEVEL").values[-1]
    assert receiver.state(5)== {}


def test_a_span_takes_numbers_dates_and_texts_with_both_ends(receiver):
    everything = receiver.spectra()
    expected = everything.levels[(everything.ms >= 2000) & (everything.ms <= 4000)]
    date = datetime.datetime(2026, 11, 21, 10, 0, 2, 250_000)
    for start, stop in ((2000, 4000), ("2s", "4s"), ("2026-11-21 10:00:02.250 UTC", 4000.9),
                        (date, date + datetime.timedelta(seconds=2)),
                        (START + np.timedelta64(2, "s"), START + np.timedelta64(4, "s")),
                        (date.replace(tzinfo=datetime.timezone.utc), np.float32(4000))):
        assert np.array_equal(receiver.spectra(start=start, stop=stop).levels, expected)
    assert len(receiver.spectra(start=datetime.datetime(2020, 1, 1))) == len(everything)


def test_channels_and_spectra_can_be_left_out(receiver):
    everything = receiver.spectra()
    some = receiver.spectra(low_hz=430e6, high_hz=435e6, every=7)
    chosen = (everything.frequencies >= 430e6) & (everything.frequencies <= 435e6)
    assert np.array_equal(some.frequencies, everything.frequencies[chosen])
    assert np.array_equal(some.levels, everything.levels[::7, chosen])


def test_a_folder_is_one_axis_of_time(simulated, receiver, finder_file):
    both = recording2.open(simulated)
    assert both.devices == ["DF 1", "RX 1"] and len(both.files) == 2
    assert both.start == np.datetime64("2026-11-21T10:00:00.200")
    spectra = both.spectra("RFSPECTRUM")
    assert np.array_equal(spectra.times, receiver.spectra().times)
    assert np.array_equal(spectra.ms, receiver.spectra().ms + 50)
    assert len(both.values("LEVEL", device="RX 1")) == len(receiver.values("LEVEL"))
    assert both.state(5000)["RX 1: LEVEL"].value == receiver.state(4950)["LEVEL"].value
    records = list(both.records(decode=False))
    assert len(records) == len(list(receiver.records())) + len(list(recording2.open(finder_file).records()))
    with pytest.raises(recording2.RequestError, match="Several devices have LEVEL: DF 1, RX 1"):
        both.values("LEVEL")
    with pytest.raises(recording2.RequestError, match='There is no device "RX 2" in the recordings'):
        both.values("LEVEL", device="RX 2")


def test_the_parts_of_a_recording_are_one(receiver, receiver_file, tmp_path):
    rectool("cut", receiver_file, "-o", tmp_path / "a.rec", "--to", "4999")
    rectool("cut", receiver_file, "-o", tmp_path / "b.rec", "--from", "5000")
    parts = recording2.open([tmp_path / "b.rec", tmp_path / "a.rec"])
    whole = receiver.spectra()
    joined = parts.spectra()  # and, once more, the spectrum in force that the second part begins with
    assert len(whole) <= len(joined) <= len(whole) + 2
    again, places = np.unique(joined.times, return_index=True)
    chosen = np.isin(again, whole.times)
    assert np.array_equal(again[chosen], whole.times)
    assert np.array_equal(joined.levels[places][chosen], whole.levels)


def test_ranges_that_change_are_refused_or_given_one_by_one(tmp_path):
    first, second = np.arange(1e6, 2e6, 1e5), np.array([1e6, 3e6, 7e6])
    with recording2.Recorder(tmp_path, "RX", spectra={"RFSPECTRUM": first}) as recorder:
        recorder.spectrum("RFSPECTRUM", np.arange(10.0), at=100)
        recorder.channels("RFSPECTRUM", second, at=200)
        recorder.spectrum("RFSPECTRUM", [1.25, np.nan, 3], at=200)
        recorder.channels("RFSPECTRUM", first, at=300)
        recorder.spectrum("RFSPECTRUM", -np.arange(10.0), at=300)
    recording = recording2.open(recorder.files)
    with pytest.raises(recording2.RequestError, match=r"more than one channel range .* spectra_by_range\(\)"):
        recording.spectra()
    one, other = recording.spectra_by_range()
    assert np.array_equal(one.levels, [np.arange(10), -np.arange(10)]) and np.array_equal(one.frequencies, first)
    assert np.array_equal(other.levels, [[1.25, np.nan, 3]], equal_nan=True)
    assert np.array_equal(other.frequencies, second)
    assert np.array_equal(recording.spectra(start=one.times[1]).levels, [-np.arange(10)])
    assert recording.spectra_by_range(start=one.times[1], low_hz=6.5e6) == []


@pytest.mark.parametrize("ask, sentence", [
    (lambda r: r.values("LEVLE"), r'There is no type "LEVLE" in the recording\. .* Did you mean LEVEL\?$'),
    (lambda r: r.values("RFSPECTRUM"), r"RFSPECTRUM holds a value for each channel: spectra\(\) gives its levels"),
    (lambda r: r.spectra("LEVEL"), "The records of LEVEL hold no spectrum"),
    (lambda r: r.spectra(start="sometime"), r'start: "sometime" is not a time of this recording'),
    (lambda r: r.spectra(start=5000, stop=4000), "start lies behind stop"),
    (lambda r: r.spectra(start=10**7), "start lies behind the end of the recording"),
    (lambda r: r.spectra(start=-1), "start lies before the start of the recording"),
    (lambda r: r.spectra(start=float("nan")), "start is not a number"),
    (lambda r: r.spectra(low_hz=1, high_hz=2), "has no channel from low_hz to high_hz"),
    (lambda r: r.spectra(every=0), "every: expected a whole number from 1 on, found 0"),
    (lambda r: r.spectra("IFSPECTRUM"), "There is no record of IFSPECTRUM"),
    (lambda r: r.bookmarks.add(10**7, "x"), "A bookmark stands at 1 ms to"),
])
def test_what_cannot_be_is_told(receiver, ask, sentence):
    with pytest.raises(recording2.RequestError, match=sentence) as error:
        ask(receiver)
    assert isinstance(error.value, ValueError)


def test_files_that_cannot_be_read_are_told(tmp_path):
    (tmp_path / "empty.rec").touch()
    (tmp_path / "other.rec").write_text("no recording")
    (tmp_path / "folder").mkdir()
    for path, sentence in (("none.rec", "There is no such file"), ("other.rec", "This is not a recording"),
                           ("empty.rec", "empty"), ("folder", r"There is no recording \(\*\.rec\) in the directory")):
        with pytest.raises(recording2.FileError, match=sentence) as error:
            recording2.open(tmp_path / path)
        assert isinstance(error.value, OSError) and path in str(error.value)
    with pytest.raises(recording2.RequestError):
        recording2.open("")
    with pytest.raises(TypeError):
        recording2.open(None)


def test_a_recording_that_is_being_written_is_refused(tmp_path):
    with recording2.Recorder(tmp_path, "RX", values={"LEVEL": 1.0}) as recorder:
        with pytest.raises(recording2.FileError) as error:
            recording2.open(recorder.files[0])
    assert error.value.path.endswith(".tmp")


def test_of_a_damaged_file_what_is_whole_is_given(receiver_copy, receiver):
    whole = receiver.spectra()
    with open(receiver_copy, "r+b") as file:
        file.seek(receiver_copy.stat().st_size // 2)
        file.write(b"\xff" * 20_000)
    damaged = recording2.open(receiver_copy)
    with pytest.warns(recording2.DamageWarning, match="damaged at"):
        spectra = damaged.spectra()
    assert len(whole) - 6 <= len(spectra) <= len(whole)
    with warnings.catch_warnings(), pytest.raises(recording2.DamageWarning):
        warnings.simplefilter("error")
        damaged.spectra()
    with pytest.raises(recording2.FileError, match="A damaged file is not changed"):
        damaged.bookmarks.add(1000, "x")


def test_times_that_no_date_can_tell_are_none(receiver_copy):
    """A damaged time table may say anything."""
    recording = recording2.open(receiver_copy)
    from recording2 import _times

    assert _times.as_datetime(1e300, recording._start_us) is None
    assert _times.as_datetime(2.0**63, recording._start_us) is None
    assert _times.duration_of(1e300) > np.timedelta64(0)


def test_bookmarks_are_stored_whole_or_not_at_all(receiver_copy):
    recording = recording2.open(receiver_copy)
    recording.bookmarks.add(1500, "über")
    recording.bookmarks.add(START + np.timedelta64(500, "ms"), "earlier")
    assert [(mark.ms, mark.text) for mark in recording.bookmarks] == [(500, "earlier"), (1500, "über")]
    assert "über" in rectool("bookmark", "list", receiver_copy)
    recording.bookmarks.rename("bookmark:über", "later")
    recording.bookmarks.remove(500)
    assert [mark.text for mark in recording2.open(receiver_copy).bookmarks] == ["later"]
    before = receiver_copy.read_bytes()
    for change in (lambda: recording.bookmarks.add(1500, "again"), lambda: recording.bookmarks.remove(2),
                   lambda: recording.bookmarks.add(3000, "\u2192")):
        with pytest.raises(recording2.RequestError, match="Nothing was changed"):
            change()
    assert receiver_copy.read_bytes() == before
    assert "sound" in rectool("verify", receiver_copy)


def test_threads_read_at_the_same_time(receiver):
    expected = receiver.spectra().levels
    found = []
    threads = [threading.Thread(target=lambda: found.append(receiver.spectra().levels)) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 4 and all(np.array_equal(levels, expected) for levels in found)


def test_an_iterator_of_one_thread_can_end_in_another(receiver):
    iterator = receiver.records()
    next(iterator)
    rest = []
    thread = threading.Thread(target=lambda: rest.extend(iterator))
    thread.start()
    thread.join()
    with pytest.raises(recording2.RequestError, match="There is no type"):
        receiver.values("NONE")
    assert len(rest) > 100


def test_ctrl_c_ends_reading(receiver):
    before = signal.signal(signal.SIGALRM, signal.default_int_handler)
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.02, 0.02)
        with pytest.raises(KeyboardInterrupt):
            while True:
                receiver.spectra()
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)


def test_pandas_gets_tables(receiver):
    pandas = pytest.importorskip("pandas")
    spectra = receiver.spectra()
    frame = spectra.to_pandas()
    assert frame.shape == spectra.levels.shape and np.shares_memory(frame.to_numpy(), spectra.levels)
    assert frame.index[0] == pandas.Timestamp(START) and frame.columns.name == "frequency"
    assert receiver.values("LEVEL").to_pandas().resample("1s").max().notna().all()


def test_a_name_that_is_no_utf8_is_a_name(receiver_copy):
    odd = os.fsencode(receiver_copy.parent) + b"/odd\xff.rec"
    os.rename(receiver_copy, odd)
    assert os.fsencode(recording2.open(odd).files[0].path) == odd
    assert len(recording2.open(receiver_copy.parent).spectra()) > 10


def test_help_says_shapes_and_units():
    import pydoc

    text = pydoc.render_doc(recording2.Recording) + pydoc.render_doc(recording2) + pydoc.render_doc(recording2.Recorder)
    for word in ("RequestError", "datetime64[us]", "spectra_by_range", "milliseconds", "low_hz", "DamageWarning"):
        assert word in text
    for name in recording2.__all__:
        assert name == "__version__" or getattr(recording2, name).__doc__
