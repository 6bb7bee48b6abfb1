"""What is recorded from Python is what a station would record."""

import datetime
import os
import subprocess
import threading

import numpy as np
import pytest

import recording2
from conftest import cat, rectool

START = datetime.datetime(2026, 11, 21, 10)


def test_what_is_recorded_is_read_again(tmp_path):
    levels = np.round(np.random.default_rng(1).normal(-100, 5, (50, 400)), 2).astype(np.float32)
    frequencies = np.arange(430e6, 440e6, 25e3)
    with recording2.Recorder(tmp_path, "RX 9", "Test", start=START, spectra={"RFSPECTRUM": frequencies},
                             values={"LEVEL": -1, "OPERATEMODE": "Scan", "SQUELCHSTATE": False}) as recorder:
        for number, row in enumerate(levels):
            recorder.spectrum("RFSPECTRUM", row, at=100 + number * 10)
            recorder.set("LEVEL", number / 8, at=100 + number * 10 + 5)
        recorder.set("OPERATEMODE", "Fix")
        recorder.set("SQUELCHSTATE", True, at=START + datetime.timedelta(seconds=2))
    assert "sound" in rectool("verify", *recorder.files)
    recording = recording2.open(tmp_path)
    assert (recording.device, recording.files[0].device_type) == ("RX 9", "Test")
    assert recording.start == np.datetime64(START)
    spectra = recording.spectra()
    assert np.array_equal(spectra.levels, levels) and np.array_equal(spectra.frequencies, frequencies)
    assert spectra.ms.tolist() == list(range(100, 600, 10))
    assert recording.values("LEVEL").values.tolist() == [-1] + [number / 8 for number in range(50)]
    assert recording.values("LEVEL").ms[1:].tolist() == list(range(105, 605, 10))
    assert recording.values("OPERATEMODE").values.tolist() == ["Scan", "Fix"]
    assert recording.values("SQUELCHSTATE").values.tolist() == [False, True]
    assert recording.state(1000)["OPERATEMODE"].value == "Fix"


def test_the_records_are_those_of_a_station_with_the_same_values(tmp_path):
    """recstation's own recorder, fed the same changes, writes the same texts."""
    feed = tmp_path / "feed.jsonl"
    spectrum = '"path": "/Devices/Rx1/Scn/RfSpectrum"'
    feed.write_text(
        f'{{"at": 0, {spectrum}, "create": "levels", "range": {{"start": 1e6, "step": 1e3, "count": 3}}}}\n'
        '{"at": 0, "path": "/LEVEL", "create": "number", "value": 5}\n'
        '{"at": 0, "record": "On"}\n'
        '{"at": 500, "path": "/LEVEL", "set": 7.5}\n'
        f'{{"at": 1000, {spectrum}, "cells": [-10, null, -30.25], "time": 1000}}\n')
    station = tmp_path / "station"
    station.mkdir()
    subprocess.run([os.environ["RECSTATION"], "-q", "-o", station, "feed", feed, "--keep-at", "--start",
                    "2026-11-21T10:00:00Z"], check=True)
    ours = tmp_path / "ours"
    ours.mkdir()
    with recording2.Recorder(ours, "UNKNOWN", start=START, values={"LEVEL": 5},
                             spectra={"RFSPECTRUM": [1e6, 1.001e6, 1.002e6]}) as recorder:
        recorder.set("LEVEL", 7.5, at=500)
        recorder.spectrum("RFSPECTRUM", [-10, np.nan, -30.25], at=1000)

    def texts(path):
        return sorted((record["timeMs"], record["keyword"], record["data"]["text"]) for record in cat(path))

    assert texts(recorder.files[0]) == texts(next(station.glob("*.rec")))


def test_an_error_within_the_recording_loses_nothing(tmp_path):
    with pytest.raises(ZeroDivisionError):
        with recording2.Recorder(tmp_path, "RX", values={"LEVEL": 1}) as recorder:
            recorder.set("LEVEL", 2, at=10)
            raise ZeroDivisionError
    assert recording2.open(recorder.files).values("LEVEL").values.tolist() == [1, 2]
    recorder.close()
    with pytest.raises(recording2.RequestError, match="The recorder is closed"):
        recorder.set("LEVEL", 3)


def test_a_recorder_that_nobody_closes_is_closed(tmp_path):
    recorder = recording2.Recorder(tmp_path, "RX", values={"LEVEL": 1})
    assert list(tmp_path.glob("*.tmp"))
    del recorder
    assert len(list(tmp_path.glob("*.rec"))) == 1


@pytest.mark.parametrize("arguments, sentence", [
    (dict(values={"LEVLE": 1}), 'The recorder knows no keyword "LEVLE". Did you mean LEVEL'),
    (dict(journal="disk"), 'journal: expected "process", "power" or "off"'),
    (dict(spectra={"RFSPECTRUM": []}), "expected the frequencies of one channel or more"),
    (dict(spectra={"RFSPECTRUM": [np.nan]}), "expected the frequencies of one channel or more"),
    (dict(start=datetime.datetime(1970, 1, 1)), "recordings begin from 1970"),
    (dict(values={"DEVICENAME": "x"}), "DEVICENAME has an argument of its own: device"),
    (dict(values={"LEVEL": 1}, spectra={"LEVEL": [1]}), "LEVEL is given as a value and as a spectrum"),
    (dict(device_type="\u2192"), "a header has Latin-1 characters only"),
])
def test_what_cannot_be_recorded_is_told_before_a_file_is_made(tmp_path, arguments, sentence):
    with pytest.raises(recording2.RequestError, match=sentence):
        recording2.Recorder(tmp_path, "RX", **arguments)
    assert not list(tmp_path.iterdir())


def test_a_folder_that_is_not_there_is_told(tmp_path):
    with pytest.raises(recording2.FileError, match="There is no such directory"):
        recording2.Recorder(tmp_path / "none", "RX")


def test_a_folder_where_no_file_can_be_made_is_told():
    with pytest.raises(recording2.FileError, match="cannot be written|no file can be made there"):
        recording2.Recorder("/proc", "RX", values={"LEVEL": 1})


def test_changes_that_cannot_be_are_told_and_the_recording_goes_on(tmp_path):
    with recording2.Recorder(tmp_path, "RX", values={"LEVEL": 1}, spectra={"IFSPECTRUM": [1e6, 2e6]}) as recorder:
        for change, sentence in ((lambda: recorder.set("FREQUENCY", 1), "was not given a value FREQUENCY"),
                                 (lambda: recorder.set("LEVEL", "high"), "LEVEL did not begin as a text"),
                                 (lambda: recorder.spectrum("LEVEL", [1]), "LEVEL did not begin as a spectrum"),
                                 (lambda: recorder.spectrum("IFSPECTRUM", [1, 2, 3]), "has 2 channels: 3 levels"),
                                 (lambda: recorder.spectrum("IFSPECTRUM", [[1, 2]]), "found 2 dimensions"),
                                 (lambda: recorder.set("LEVEL", 2, at=-1), "expected milliseconds"),
                                 (lambda: recorder.set("LEVEL", 2, at=1e30), "to the end of 2500"),
                                 (lambda: recording2.Recorder(tmp_path, "RX"), "close it first")):
            with pytest.raises(recording2.RequestError, match=sentence):
                change()
        told = []

        def elsewhere():
            try:
                recorder.set("LEVEL", 9)
            except recording2.RequestError as error:
                told.append(str(error))

        thread = threading.Thread(target=elsewhere)
        thread.start()
        thread.join()
        assert told == ["A recorder is used by the thread that made it."]
        recorder.set("LEVEL", 3, at=100)
        with pytest.raises(recording2.RequestError, match="Time does not go back"):
            recorder.set("LEVEL", 4, at=50)
    assert recording2.open(recorder.files).values("LEVEL").values.tolist() == [1, 3]
