#!/usr/bin/env python3
"""Exports random sweeps as CSV and HDF5, reads them as their users do, and compares them with what rectool cat shows.

Usage: export_test.py csv|hdf5 RECTOOL RECSTATION. Exit code 77: what reads the format is missing.
"""
import csv
import datetime
import json
import math
import pathlib
import random
import resource
import subprocess
import sys
import tempfile

from programs import run

SKIPPED = 77
EPOCH = datetime.datetime(1970, 1, 1)


def level(chance):
    return "nan" if chance.random() < 0.05 else f"{chance.uniform(-140, 20):.2f}"


def write_sweeps(path):
    """Sweeps of two ranges that take turns, with microseconds, gaps and steps that are no binary fractions."""
    chance = random.Random(20261122)
    time = datetime.datetime(2026, 3, 1, 8, 0, 0, 123456)
    with open(path, "w", encoding="ascii") as file:
        for _ in range(12):
            for low, step, bins in ((88e6, 25e3 / 3, 37), (86e6, 12.5e3, 500)):
                for _ in range(chance.randint(1, 30)):
                    time += datetime.timedelta(microseconds=chance.randint(1000, 2_000_000))
                    levels = ", ".join(level(chance) for _ in range(bins))
                    file.write(f"{time:%Y-%m-%d, %H:%M:%S.%f}, {low!r}, {low + step * bins!r}, {step!r}, 1, {levels}\n")


def record(recstation, folder, sweeps):
    folder.mkdir()
    run(recstation, "-q", "-o", folder, "sweep", sweeps)
    (recording,) = folder.glob("*.rec")
    return recording


def frequency(channels, index):
    if "startHz" in channels:
        return channels["startHz"] + channels["stepHz"] * index
    return channels["channelsHz"][index]


def sweeps_of(rectool, recording):
    """What cat shows: (microseconds since 1970, range, levels), without the state at the start."""
    shown = []
    for line in run(rectool, "cat", "--json", "--type", "RFSPECTRUM", recording).splitlines():
        value = json.loads(line)["value"]
        if any(cell is not None for cell in value["cells"]):
            shown.append((value["timeStampUs"], value["range"], value["cells"]))
    return shown


def check_full(rectool, recording, output, *format_and_options):
    """No file may grow past a size, as on a full disk: nothing is left behind, and what was there stays."""
    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (20_000, 20_000))
    output.write_text("old", encoding="ascii")
    command = [rectool, "export", *format_and_options, recording, "-o", output, "--force"]
    done = subprocess.run(command, capture_output=True, text=True, check=False, preexec_fn=limit)
    assert done.returncode == 2, (done.returncode, done.stderr)
    assert "could not be written; is the disk full? File too large. Nothing was written." in done.stderr, done.stderr
    assert output.read_text(encoding="ascii") == "old"
    assert not list(output.parent.glob("*.part*")), "an unfinished file was left"


def micros(text):
    time = datetime.datetime.fromisoformat(text.removesuffix("Z"))
    return (time - EPOCH) // datetime.timedelta(microseconds=1)


def check_killed(rectool, recording, output):
    """Whenever it is killed, an export leaves nothing under its name, and the next one works."""
    command = [rectool, "export", "csv", "--form", "sweep", recording, "-o", output]
    for _ in range(20):
        started = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while started.poll() is None and not output.with_name(output.name + ".part").exists():
            pass
        started.kill()
        if started.wait() == 0:
            output.unlink()  # it was done before
            continue
        assert not output.exists(), "an unfinished file has the name"
        break
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0 and output.stat().st_size > 0, done.stderr
    left = output.with_name(output.name + ".part")
    assert ("an earlier run left" in done.stderr) == left.exists(), done.stderr


def check_bearings(rectool, recstation, folder):
    """Bearings as they were taken, by the lines that map draws. @return recording and rows"""
    (folder / "df").mkdir()
    run(recstation, "-q", "-o", folder / "df", "sim", "--duration", "30s", "--start", "2026-11-21T10:00:00Z")
    (recording,) = (folder / "df").glob("*DF_1*.rec")
    run(rectool, "export", "csv", "--form", "bearings", recording, "-o", folder / "bearings.csv")
    with open(folder / "bearings.csv", encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    lines = [feature for feature in json.loads(run(rectool, "map", recording, "--geojson"))["features"]
             if feature["properties"]["type"] == "bearing"]
    placed = [row for row in rows if row["latitude"]]
    assert len(placed) == len(lines) > 100, (len(placed), len(lines))
    for row, line in zip(placed, lines):
        shown = line["properties"]
        azimuth = (float(row["azimuth_deg"]) + float(row["heading_deg"] or 0)) % 360
        assert abs(math.remainder(azimuth - shown["azimuthDeg"], 360)) < 1e-5, (row, shown)
        assert float(row["frequency_hz"]) == shown["frequencyHz"]
        assert micros(row["time"]) // 1000 == micros(shown["time"]) // 1000
        longitude, latitude = line["geometry"]["coordinates"][0]
        assert abs(float(row["latitude"]) - latitude) < 1e-6 and abs(float(row["longitude"]) - longitude) < 1e-6
    return recording, rows


def check_csv(rectool, recstation, folder, recording):
    expected = sweeps_of(rectool, recording)
    run(rectool, "export", "csv", recording, "--type", "RFSPECTRUM", "-o", folder / "long.csv")
    with open(folder / "long.csv", encoding="utf-8", newline="") as file:
        found = [(micros(row["time"]), float(row["frequency_hz"]), float(row["value"])) for row in csv.DictReader(file)]
    wanted = [(us, frequency(channels, i), cell)
              for us, channels, cells in expected for i, cell in enumerate(cells) if cell is not None]
    differing = [pair for pair in zip(found, wanted) if pair[0] != pair[1]]
    assert found == wanted, f"{len(found)} lines instead of {len(wanted)}; they differ first in {differing[:1]}"

    run(rectool, "export", "csv", recording, "--form", "sweep", "-o", folder / "sweeps.csv")
    again = sweeps_of(rectool, record(recstation, folder / "again", folder / "sweeps.csv"))
    assert len(again) == len(expected), f"{len(expected)} sweeps came back as {len(again)}"
    for (us, channels, cells), (us_again, channels_again, cells_again) in zip(expected, again):
        assert (us, cells) == (us_again, cells_again), f"the sweep of {us} came back otherwise"
        for i in range(len(cells)):
            hz = frequency(channels, i)
            assert math.isclose(hz, frequency(channels_again, i), rel_tol=1e-14), f"{hz} Hz came back otherwise"
    check_full(rectool, recording, folder / "full.csv", "csv", "--form", "sweep")
    check_killed(rectool, recording, folder / "killed.csv")
    check_bearings(rectool, recstation, folder)
    return f"{len(expected)} sweeps, {len(wanted)} lines"


def check_hdf5(rectool, recstation, folder, recording):
    try:
        import h5py
        import numpy
    except ImportError as error:
        print(f"Skipped: {error}. Debian's python3-h5py has it.")
        sys.exit(SKIPPED)
    run(rectool, "export", "hdf5", recording, "-o", folder / "out.h5", "--unit", "dBm")
    expected = sweeps_of(rectool, recording)
    with h5py.File(folder / "out.h5") as file:
        groups = file["RFSPECTRUM"]
        assert set(groups) == {"range_1", "range_2"}, set(groups)
        found = []
        for group in groups.values():
            levels = group["level"]
            assert (levels.dtype, levels.compression, levels.shuffle) == (numpy.float32, "gzip", True)
            assert [axis.label for axis in levels.dims] == ["time", "frequency"]
            assert levels.dims[0][0] == group["time"] and levels.dims[1][0] == group["frequency"]
            assert levels.attrs["units"] == "dBm" and group["frequency"].attrs["units"] == "Hz"
            assert group["time"].attrs["units"] == "microseconds since 1970-01-01 00:00:00"
            found += [(int(us), list(group["frequency"][:]), row) for us, row in zip(group["time"][:], levels[:])]
        found.sort(key=lambda sweep: sweep[0])
        assert len(found) == len(expected), f"{len(found)} sweeps instead of {len(expected)}"
        for (us, channels, cells), (us_there, hz, row) in zip(expected, found):
            wanted = numpy.array([math.nan if cell is None else cell for cell in cells], numpy.float32)
            assert us == us_there and numpy.array_equal(wanted, row, equal_nan=True), f"the sweep of {us} differs"
            assert hz == [frequency(channels, i) for i in range(len(cells))]
        edges = file["STARTFREQ"]
        assert set(edges["value"][:]) == {88e6, 86e6} and edges["value"].dims[0][0] == edges["time"]
        assert file["DRVCOMMANDS/value"].asstr()[0] == "Panorama scan"
    check_full(rectool, recording, folder / "full.h5", "hdf5")
    finder, rows = check_bearings(rectool, recstation, folder)
    run(rectool, "export", "hdf5", finder, "-o", folder / "finder.h5")
    with h5py.File(folder / "finder.h5") as file:
        bearings = file["DFSPECTRUM"]
        assert list(bearings["time"][:]) == [micros(row["time"]) for row in rows]
        for column, name in (("azimuth", "azimuth_deg"), ("heading", "heading_deg"), ("level", "level"),
                             ("frequency", "frequency_hz"), ("latitude", "latitude"), ("quality", "quality")):
            wanted = numpy.array([float(row[name] or math.nan) for row in rows])
            assert numpy.array_equal(bearings[column][:], wanted, equal_nan=True), column
            assert bearings[column].dims[0][0] == bearings["time"]
    return f"{len(expected)} sweeps"


def main():
    check = {"csv": check_csv, "hdf5": check_hdf5}[sys.argv[1]]
    rectool, recstation = (pathlib.Path(path).resolve() for path in sys.argv[2:4])
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_sweeps(folder / "random.csv")
        print(check(rectool, recstation, folder, record(recstation, folder / "recorded", folder / "random.csv")))


if __name__ == "__main__":
    main()
