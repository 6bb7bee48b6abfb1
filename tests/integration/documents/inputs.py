"""The files and programs that the examples of the documents name."""
import json
import pathlib
import random
import re
import shutil
import subprocess
import wave

START = "2023-11-14T22:12:20Z"  # of recordings: the documents show times of that minute
DAY = "2026-11-21"
CHANGES = "\n".join(json.dumps(line) for line in (
    {"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50},
    {"at": 0, "record": "On"},
    {"at": 1500, "path": "/LEVEL", "set": -31.5})) + "\n"
SWEEPS = "".join(f"{DAY}, 08:00:{second:02}, 2400000000, 2405000000, 1000000.00, 20, -64.72, -63.36, -60.91, -61.74, -58.5\n"
                 for second in range(5, 30, 5))
DRIVE = "".join(f"$GPRMC,0800{second:02},A,52{second:02}.0000,N,01330.0000,E,10.0,90.0,211126,,,A\n"
                f"$HEHDT,{100 + second},T\n" for second in range(40))
BEARINGS = ("date,time,station,latitude,longitude,frequency,azimuth\n" +
            "".join(f"{DAY},08:00:{second:02},E1,4.64,-75.5,433.5,{100 + second}\n" for second in range(10, 30)))
TELEMETRY = """\
Date;Time;GID;Station;Gradosx;minx;segx;Northing;Gradosy;miny;segy;Easting;altitude;frec;channel;dial;Azimuth;species
01/14/17;5:31;1;E1;4;38;24.2;4.640055556;75;32;50;-74.45277778;1942;150.015;A;1;163;Myadestes ralloides
01/14/17;5:41;2;E1;4;38;24.2;4.640055556;75;32;50;-74.45277778;1942;150.015;A;1;165;Myadestes ralloides
"""
STATION = "".join(f'[{name}]\nValuePath = "/Devices/{device}"\nStatusValuePath = "/Devices/{device}Status"\n'
                  f'RecordingPath = "recordings"\nRecordDF = {df}\n'
                  for name, device, df in (("receiver", "Rx1", "false"), ("df", "Df1", "true")))
SIGMF = json.dumps({"global": {"core:datatype": "cu8", "core:sample_rate": 2e6, "core:version": "1.0.0"},
                    "captures": [{"core:sample_start": 0, "core:frequency": 1090e6,
                                  "core:datetime": f"{DAY}T08:00:10Z"}], "annotations": []})
# Programs that stand for whatever measures, and what each prints.
TOOLS = {"receiver-driver": "changes.jsonl", "hackrf_sweep": "sweep.csv", "rtl_power": "sweep.csv",
         "sweep_tool": "sweep.csv", "rtl-driver": "samples.cu8"}


def make(fixtures, programs):
    """Once: everything that costs time."""
    for name, text in {"changes.jsonl": CHANGES, "sweep.csv": SWEEPS, "drive.log": DRIVE, "bearings.csv": BEARINGS,
                       "bare.csv": "1772352000,150.015,163,x\n",
                       "exported.csv": "time,device,frequency_hz,azimuth_deg,heading_deg\n1772352000,N,150015000,163,2\n",
                       "kraken.csv": "1772352000250, 134, 0.4, -48, 151880000, UCA, 100, N, 1, 2, 3, 3, GPS, R, R, R, R\n",
                       "telemetry.csv": TELEMETRY, "channels.csv": "433.5M,25k,alarm\n", "station.toml": STATION, "x.sigmf-meta": SIGMF}.items():
        (fixtures / name).write_text(text, encoding="utf-8")
    (fixtures / "samples.cu8").write_bytes(random.Random(1).randbytes(200_000))
    with wave.open(str(fixtures / "samples.wav"), "wb") as file:
        file.setparams((2, 2, 192_000, 0, "NONE", ""))
        file.writeframes(random.Random(2).randbytes(400_000))
    (fixtures / "bin").mkdir()
    for tool, output in TOOLS.items():
        path = fixtures / "bin" / tool
        path.write_text(f"#!/bin/sh\nexec cat {fixtures / output}\n", encoding="utf-8")
        path.chmod(0o755)
    subprocess.run([programs / "recstation", "-q", "-o", fixtures, "sim", "--duration", "100s", "--start", START],
                   check=True, capture_output=True)
    for name, pattern in (("receiver", "*RX_1*.rec"), ("finder", "*DF_1*.rec")):
        recording = next(fixtures.glob(pattern)).rename(fixtures / f"{name}.rec")
        subprocess.run([programs / "rectool", "bookmark", "add", recording, "70000", "alarm", "--yes"], check=True,
                       capture_output=True)
    def rectool(*arguments):
        subprocess.run([programs / "rectool", *arguments], check=True, capture_output=True, cwd=fixtures)

    shutil.copyfile(fixtures / "receiver.rec", fixtures / "marked.rec")
    rectool("bookmark", "add", "marked.rec", "61500", "begin", "--yes")
    rectool("cut", "receiver.rec", "--to", "50000", "-o", "first.rec")
    rectool("cut", "receiver.rec", "--from", "50001", "-o", "second.rec")
    rectool("merge", "receiver.rec", "finder.rec", "-o", "both.rec", "--separate")
    whole = (fixtures / "receiver.rec").read_bytes()
    (fixtures / "damaged.rec").write_bytes(whole[:len(whole) // 2])


def prepare(directory, fixtures):
    """The directory that the examples of one place run in."""
    (directory / "storage").mkdir()
    (directory / "archive.toml").write_text(
        f'[archive]\nDirectory = "{directory / "archive"}"\nStorage = "{directory / "storage"}"\n', encoding="utf-8")


def provide(directory, command, fixtures):
    """Files that a command names, where nothing before it has made them."""
    words = re.findall(r"[^\s|;\"']+", command)
    for before, word in zip(["", *words], words):
        content = content_for(command, before, word)
        path = directory / word
        if word == "station.toml" or before == "-o" and path.suffix == "" and "--make-output" not in words:
            (directory / ("recordings" if word == "station.toml" else word)).mkdir(parents=True, exist_ok=True)
        if before in ("-o", "--output") or word.startswith("/") or content is None or path.exists():
            continue
        path.parent.mkdir(parents=True, exist_ok=True)
        if path.suffix == ".gz":
            with path.open("wb") as out:
                subprocess.run(["gzip", "-c", fixtures / content], check=True, stdout=out)
            continue
        shutil.copyfile(fixtures / content, path)
        if path.suffix == ".sigmf-data":
            shutil.copyfile(fixtures / "x.sigmf-meta", path.with_suffix(".sigmf-meta"))
    if "*.rec" in words and not any(directory.glob("*.rec")):
        shutil.copyfile(fixtures / "receiver.rec", directory / "recording.rec")


def content_for(command, before, word):
    """Which of the files made stands for the one that a command names."""
    if any(c in word for c in "*?"):
        return None
    kinds = {".jsonl": "changes.jsonl", ".toml": "station.toml", ".log": "drive.log", ".cu8": "samples.cu8",
             ".sigmf-data": "samples.cu8", ".bin": "samples.cu8", ".wav": "samples.wav", ".tmp": "damaged.rec"}
    suffix = pathlib.PurePath(word).suffix
    if word == "archive.toml":
        return None
    if suffix in (".csv", ".gz"):
        if word in ("channels.csv", "bare.csv", "exported.csv", "kraken.csv"):
            return word
        if "telemetr" in word:
            return "telemetry.csv"
        return "sweep.csv" if before == "sweep" else "bearings.csv"
    if suffix == ".rec":
        for pattern, recording in ((r"repair|damaged", "damaged.rec"), (r"bookmark rm", "marked.rec"),
                                   (r"range rebuild", "both.rec")):
            if re.search(pattern, command):
                return recording
        if word in ("first.rec", "second.rec"):
            return word
        finder = re.search(r"\bmap\b|bearings|\bfix|^df\.|DF_", command if before != "merge" else word)
        return "finder.rec" if finder or word.startswith("df") else "receiver.rec"
    return kinds.get(suffix)
