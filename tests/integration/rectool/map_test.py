#!/usr/bin/env python3
"""Computes heat maps of bearings and tracks of levels anew, from what was put in, and compares them with rectool map.

Usage: map_test.py heat|track RECTOOL RECSTATION.
"""
import bisect
import json
import math
import pathlib
import random
import sys
import tempfile

from programs import run


def way(from_, to):
    """Azimuth in degrees and distance in metres on WGS84: T. Vincenty, Survey Review 23 (1975)."""
    a, f = 6378137.0, 1 / 298.257223563
    b = a * (1 - f)
    u1, u2 = (math.atan((1 - f) * math.tan(math.radians(place[0]))) for place in (from_, to))
    length = difference = math.radians(to[1] - from_[1])
    for _ in range(100):
        s, c = math.sin(difference), math.cos(difference)
        sin_sigma = math.hypot(math.cos(u2) * s, math.cos(u1) * math.sin(u2) - math.sin(u1) * math.cos(u2) * c)
        cos_sigma = math.sin(u1) * math.sin(u2) + math.cos(u1) * math.cos(u2) * c
        sigma = math.atan2(sin_sigma, cos_sigma)
        sin_alpha = math.cos(u1) * math.cos(u2) * s / sin_sigma
        cos2 = 1 - sin_alpha ** 2
        middle = cos_sigma - 2 * math.sin(u1) * math.sin(u2) / cos2
        k = f / 16 * cos2 * (4 + f * (4 - 3 * cos2))
        last, difference = difference, length + (1 - k) * f * sin_alpha * (
            sigma + k * sin_sigma * (middle + k * cos_sigma * (2 * middle ** 2 - 1)))
        if abs(difference - last) < 1e-13:
            break
    u = cos2 * (a * a - b * b) / (b * b)
    big = 1 + u / 16384 * (4096 + u * (-768 + u * (320 - 175 * u)))
    small = u / 1024 * (256 + u * (-128 + u * (74 - 47 * u)))
    delta = small * sin_sigma * (middle + small / 4 * cos_sigma * (2 * middle ** 2 - 1))
    azimuth = math.degrees(math.atan2(math.cos(u2) * math.sin(difference),
                                      math.cos(u1) * math.sin(u2) - math.sin(u1) * math.cos(u2) * math.cos(difference)))
    return azimuth, b * big * (sigma - delta)


STATIONS = ((49.45, 11.08), (49.52, 11.21))
TRANSMITTER = (49.5, 11.1)


def record_bearings(recstation, folder, sigma, chance):
    """Two direction finders with a recording each. @return recordings and (station, azimuth), the third ones elsewhere"""
    recordings, bearings = [], []
    for number, station in enumerate(STATIONS):
        log = folder / f"log{number}.csv"
        with open(log, "w", encoding="ascii") as file:
            file.write("date,time,frequency,azimuth,latitude,longitude,station\n")
            for i in range(60):
                azimuth = (way(station, TRANSMITTER)[0] + chance.gauss(0, sigma)) % 360
                if i % 10 == 9:
                    azimuth = chance.uniform(0, 360)
                azimuth = round(azimuth, 1)
                hz = 433.5 if i % 3 else 434.5
                bearings.append((station, azimuth, hz, i))
                file.write(f"2026-11-21,10:{i:02}:00,{hz},{azimuth},{station[0]},{station[1]},S{number}\n")
        out = folder / f"df{number}"
        out.mkdir()
        run(recstation, "-q", "-o", out, "bearings", log)
        recordings += out.glob("*.rec")
    return recordings, bearings


def evidence(place, bearings, sigma, reach):
    stray = 0.1
    height = (1 - stray) / stray * 360 / (sigma * math.sqrt(2 * math.pi))
    total, least, most = 0.0, 0, 0
    for station, azimuth in bearings:
        direction, distance = way(station, place)
        if distance <= reach:
            off = math.remainder(azimuth - direction, 360) / sigma
            total += math.log(1 + height * math.exp(-off * off / 2))
            least += abs(off) <= 2 - 0.06 / sigma  # directions are a twentieth of a degree apart
            most += abs(off) <= 2 + 0.06 / sigma
    return total, least, most


def check_heat(rectool, recstation, folder):
    sigma, reach = 2.5, 15000.0
    recordings, all_bearings = record_bearings(recstation, folder, sigma, random.Random(7))
    taken = [(station, azimuth) for station, azimuth, hz, _ in all_bearings if hz == 433.5]
    document = json.loads(run(rectool, "map", *recordings, "--heat", "--frequency", "433.5M", "--sigma", sigma,
                              "--length", "15km", "--cells", "60"))
    assert document["bearings"] == len(taken), (document["bearings"], len(taken))
    assert document["ofOtherChannels"] == len(all_bearings) - len(taken)
    cells = [feature for feature in document["features"] if feature["properties"]["type"] == "cell"]
    best, compared = None, 0
    for cell in cells:
        ring = cell["geometry"]["coordinates"][0]
        assert ring[0] == ring[-1] and len(ring) == 5
        place = ((ring[0][1] + ring[2][1]) / 2, (ring[0][0] + ring[2][0]) / 2)
        shown = cell["properties"]
        if best is None or shown["evidence"] > best[0]:
            best = (shown["evidence"], place)
        nearest = min(way(station, place)[1] for station in STATIONS)
        if nearest < 500 or any(abs(way(station, place)[1] - reach) < 30 for station in STATIONS):
            continue  # an azimuth of a few metres, and the end of a beam, are a matter of rounding
        expected, least, most = evidence(place, taken, sigma, reach)
        assert abs(shown["evidence"] - expected) < 0.02 + 0.003 * expected, (place, shown, expected)
        assert least <= shown["bearings"] <= most, (place, shown, least, most)
        assert shown["share"] <= 1
        compared += 1
    assert compared > 500, compared
    assert way(best[1], TRANSMITTER)[1] < 1000, best
    assert max(cell["properties"]["evidence"] for cell in cells) == document["highestEvidence"]
    stations = [feature for feature in document["features"] if feature["properties"]["type"] == "station"]
    assert sorted(tuple(reversed(feature["geometry"]["coordinates"])) for feature in stations) == sorted(STATIONS)
    assert sum(feature["properties"]["bearings"] for feature in stations) == len(taken)
    print(f"{compared} cells agree")


def in_force(rectool, recording, keyword):
    lines = run(rectool, "cat", recording, "--json", "--type", keyword).splitlines()
    return [(record["timeMs"], record["value"]["value"]) for record in map(json.loads, lines)]


def check_track(rectool, recstation, folder):
    run(recstation, "-q", "-o", folder, "sim", "--duration", "60s", "--start", "2026-11-21T10:00:00Z", "--seed", "3")
    (recording,) = folder.glob("*RX_1*.rec")
    document = json.loads(run(rectool, "map", recording, "--track", "--frequency", "433.5M"))
    traces = json.loads(run(rectool, "trace", recording, "--frequency", "433.5M", "--json"))["traces"]
    latitudes, longitudes = (in_force(rectool, recording, f"LOCATION{axis}") for axis in ("LATITUDE", "LONGITUDE"))

    def value_at(series, ms):
        place = bisect.bisect_right([time for time, _ in series], ms)
        return series[place - 1][1] if place else None

    compared = 0
    for trace in traces:
        expected = {}
        for ms, level in trace["samples"]:
            place = (value_at(latitudes, ms), value_at(longitudes, ms))
            if None not in place:
                expected.setdefault(place, []).append((ms, level))
        points = [feature for feature in document["features"] if feature["properties"]["type"] == "level" and
                  feature["properties"]["keyword"] == trace["keyword"]]
        shown = {}
        for point in points:
            shown.setdefault(tuple(point["geometry"]["coordinates"]), []).append(point["properties"])
        for (latitude, longitude), levels in expected.items():
            there = shown[(round(longitude, 7), round(latitude, 7))]
            assert sum(point["levels"] for point in there) == len(levels), (there, levels)
            assert max(point["max"] for point in there) == round(max(level for _, level in levels), 3)
            assert min(point["firstMs"] for point in there) == min(ms for ms, _ in levels)
            assert {point["maxMs"] for point in there} <= {ms for ms, _ in levels}
            if len(there) == 1:
                mean = 10 * math.log10(sum(10 ** (level / 10) for _, level in levels) / len(levels))
                assert abs(there[0]["mean"] - mean) < 0.002, (there, mean)
            compared += len(levels)
    assert compared > 50, compared
    print(f"{compared} levels agree")


def main():
    what, rectool, recstation = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        {"heat": check_heat, "track": check_track}[what](rectool, recstation, pathlib.Path(folder))


main()
