#!/usr/bin/env python3
"""Computes what trace, emissions and occupancy say of a recording again with numpy, from what rectool cat shows.

Usage: answers_test.py sim|iq RECTOOL RECSTATION [SAMPLES]. Exit code 77: numpy or the samples are missing.
"""
import functools
import json
import math
import pathlib
import sys
import tempfile

from programs import run

SKIPPED = 77

try:
    import numpy
except ImportError:
    print("numpy is missing: python3-numpy.")
    sys.exit(SKIPPED)


def sweeps_of(rectool, recording):
    """Moments in ms, frequencies in Hz, levels in dB (sweep by channel, nan: not measured). One range is expected.

    A moment is that at which the sweep says it was measured; the record's time is in whole milliseconds, each its own.
    """
    start = json.loads(run(rectool, "info", recording, "--json"))["files"][0]["header"]["startMs"]
    moments, levels, channels = [], [], None
    for line in run(rectool, "cat", recording, "--json", "--type", "RFSPECTRUM").splitlines():
        record = json.loads(line)
        value = record["value"]
        if not value or not value["cells"] or all(cell is None for cell in value["cells"]):
            continue
        assert channels in (None, value["range"]), "the range changes"
        channels = value["range"]
        moments.append((value["timeStampUs"] - 1000 * start) / 1000 if value["timeStampUs"] else record["timeMs"])
        levels.append([math.nan if cell is None else cell for cell in value["cells"]])
    frequencies = channels["startHz"] + channels["stepHz"] * numpy.arange(channels["count"])
    return numpy.array(moments), frequencies, numpy.array(levels)


def power_mean(levels, axis=None):
    return 10 * numpy.log10(numpy.nanmean(10 ** (levels / 10), axis=axis))


def expect_near(what, ours, theirs, tolerance):
    ours, theirs = numpy.asarray(ours, dtype=float), numpy.asarray(theirs, dtype=float)
    assert ours.shape == theirs.shape, f"{what}: {ours.shape}, expected {theirs.shape}"
    worst = numpy.max(numpy.abs(ours - theirs), initial=0)
    assert worst <= tolerance, f"{what}: off by {worst}"


def check_trace(rectool, recording, moments, frequencies, levels):
    begin, end = numpy.percentile(moments, [20, 70]).astype(int)
    levels = numpy.where(numpy.isfinite(levels), levels, math.nan)
    for options, inside in (([], moments >= 0),
                            (["--from", begin, "--to", end], (moments >= begin) & (moments <= end))):
        (trace,) = json.loads(run(rectool, "trace", recording, "--json", "--type", "RFSPECTRUM", "--median",
                                  "--percentile", 90, *options))["traces"]
        got = trace["channels"]
        taken = levels[inside]
        expect_near("frequencies", [c["frequencyHz"] for c in got], frequencies, 1e-3)
        expect_near("highest", [c["max"] for c in got], numpy.nanmax(taken, axis=0), 1e-4)
        expect_near("lowest", [c["min"] for c in got], numpy.nanmin(taken, axis=0), 1e-4)
        expect_near("mean", [c["mean"] for c in got], power_mean(taken, axis=0), 1e-4)
        expect_near("median", [c["percentiles"]["50"] for c in got], numpy.nanmedian(taken, axis=0), 1e-4)
        expect_near("percentile", [c["percentiles"]["90"] for c in got], numpy.nanpercentile(taken, 90, axis=0), 1e-4)
        assert all(c["sweeps"] == n for c, n in zip(got, numpy.sum(~numpy.isnan(taken), axis=0)))
    at = math.ceil(moments[len(moments) // 3])
    (trace,) = json.loads(run(rectool, "trace", recording, "--json", "--type", "RFSPECTRUM", "--at", at))["traces"]
    expect_near("at", [c["level"] for c in trace["channels"]], levels[moments <= at][-1], 1e-4)


@functools.lru_cache(maxsize=None)
def student(probability, degrees):
    """The t that a variable of Student's distribution exceeds in neither direction: by plain integration."""
    angle = numpy.linspace(0, math.pi / 2, 400_001)  # t = sqrt(degrees) tan(angle)
    density = numpy.cos(angle) ** (degrees - 1)
    within = numpy.concatenate([[0], numpy.cumsum((density[1:] + density[:-1]) / 2)])
    return math.sqrt(degrees) * math.tan(numpy.interp(probability, within / within[-1], angle))


def cycles_of(on):
    """(on, length) of every cycle; what lies before the first beginning and after the last one is one or two."""
    begins = [i for i in range(1, len(on)) if on[i] and not on[i - 1]]
    edges = [0, *begins, len(on)]
    pieces = [(int(numpy.sum(on[a:b])), b - a) for a, b in zip(edges, edges[1:])]
    if len(pieces) > 1 and not (on[0] and not on[-1]):
        first, last = pieces[0], pieces.pop()
        pieces[0] = (first[0] + last[0], first[1] + last[1])
    return numpy.array(pieces, dtype=float), len(begins) + (1 if on[0] and not on[-1] else 0)


def interval_of(on):
    """By the regenerative method, as doc/rectool.md describes it; nothing where the cycles do not suffice for it."""
    cycles, count = cycles_of(on)
    share = numpy.mean(on)
    if count < 2 or share == 1:
        return None
    squares = numpy.sum((cycles[:, 0] - share * cycles[:, 1]) ** 2)
    variance = squares * count / (count - 1) / len(on) ** 2
    known = share * (1 - share) / variance if variance > 0 else math.inf
    samples = min(known, 50 * len(on)) / (1 + 2 / count)
    reach = student(0.95, count - 1) / math.sqrt(samples * share * (1 - share))
    odds = math.log(share / (1 - share))
    return [100 / (1 + math.exp(-(odds + side * reach))) for side in (-1, 1)]


def check_occupancy(rectool, recording, moments, frequencies, levels, threshold):
    answer = json.loads(run(rectool, "occupancy", recording, "--json", "--threshold", threshold))
    (found,) = answer["types"]
    expect_near("channels", [c["frequencyHz"] for c in found["channels"]], frequencies, 1e-3)
    with_interval = 0
    for channel, column in zip(found["channels"], levels.T):
        measured = ~numpy.isnan(column)
        on = column[measured] >= threshold
        assert channel["samples"] == len(on) and channel["occupied"] == numpy.sum(on), channel
        expect_near("percent", channel["percent"], 100 * numpy.mean(on), 1e-6)
        times = moments[measured]
        expect_near("revisit", channel["revisitMs"], (times[-1] - times[0]) / (len(times) - 1), 1e-3)
        expect_near("longest revisit", channel["longestRevisitMs"], numpy.max(numpy.diff(times)), 1e-3)
        interval = interval_of(on)
        if interval:
            expect_near("interval", [channel["low"], channel["high"]], interval, 1e-2)
            with_interval += 1
    assert with_interval > 5, f"only {with_interval} channels come and go"


def check_emissions(rectool, recording, moments, frequencies, levels, threshold):
    """With --below 200 a band reaches over every channel that was on, so each cell that is on lies in one."""
    answer = json.loads(run(rectool, "emissions", recording, "--json", "--threshold", threshold, "--below", 200,
                            "--type", "RFSPECTRUM"))
    width = frequencies[1] - frequencies[0]
    on = levels > threshold
    covered = numpy.zeros_like(on)
    boxes = []
    for emission in answer["emissions"]:
        rows = (moments >= emission["startMs"] - 1e-3) & (moments <= emission["stopMs"] + 1e-3)
        half = emission["bandwidthHz"] / 2
        columns = numpy.abs(frequencies - emission["centreHz"]) < half + width / 4
        boxes.append(numpy.outer(rows, columns))
        covered |= boxes[-1]
    assert not numpy.any(on & ~covered), f"{numpy.sum(on & ~covered)} cells that are on are in no emission"
    shared = sum(box.astype(int) for box in boxes) > 1
    alone = 0
    for emission, box in zip(answer["emissions"], boxes):
        if numpy.any(box & shared):
            continue
        alone += 1
        cells = numpy.where(box & on, levels, -numpy.inf)
        showing = numpy.any(box & on, axis=1)
        assert emission["sweeps"] == numpy.sum(showing), emission
        assert emission["startMs"] == moments[showing][0] and emission["stopMs"] == moments[showing][-1], emission
        expect_near("highest", emission["max"], numpy.max(cells), 1e-4)
        assert levels[moments == emission["maxMs"]].max(axis=0)[numpy.any(box, axis=0)].max() == numpy.max(cells)
        expect_near("mean", emission["mean"], power_mean(numpy.max(cells, axis=1)[showing]), 0.00501)
    assert alone > 5, f"only {alone} of {len(boxes)} emissions lie alone"


def main():
    what, rectool, recstation, *samples = sys.argv[1:]
    if what == "iq" and not pathlib.Path(samples[0]).exists():
        print(f"{samples[0]} is missing.")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        source = ["iq", samples[0], "--format", "cu8", "--rate", "2M", "--centre", "1090M", "--fft", 256,
                  "--average", 8] if what == "iq" else ["sim", "--duration", "90s", "--seed", 11]
        run(recstation, "-q", "-o", folder, *source)
        recordings = sorted(pathlib.Path(folder).glob("*.rec"))
        recording = next((each for each in recordings if "RX" in each.name), recordings[0])
        moments, frequencies, levels = sweeps_of(rectool, recording)
        check_trace(rectool, recording, moments, frequencies, levels)
        threshold = round(float(numpy.nanpercentile(levels, 97)), 1) + 0.05
        check_occupancy(rectool, recording, moments, frequencies, levels, threshold)
        check_emissions(rectool, recording, moments, frequencies, levels, threshold)
    return 0


if __name__ == "__main__":
    sys.exit(main())
