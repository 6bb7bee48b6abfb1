#!/usr/bin/env python3
"""Runs the clients of doc/feed.md, in Python and in shell, and looks for their levels and times in the recordings."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

CLIENTS = {"python": [sys.executable, "-c"], "sh": ["sh", "-c"]}
LEVELS = [-31.5, -40.25, 7.0]
PATIENCE_S = 60


def code_of(document, language):
    found = re.findall(rf"^```{language}\n(.*?)^```", document, re.M | re.S)
    if len(found) != 1:
        raise SystemExit(f"doc/feed.md has {len(found)} blocks of {language}, expected 1")
    return found[0]


def record(client, programs, folder):
    levels = "\n".join(str(level) for level in LEVELS)  # the last line lacks its end
    fed = subprocess.run(client, input=levels, capture_output=True, text=True, timeout=PATIENCE_S, check=True).stdout
    subprocess.run([programs / "recstation", "-q", "-o", folder, "feed", "--strict"], input=fed, text=True, check=True,
                   capture_output=True, timeout=PATIENCE_S)
    return next(pathlib.Path(folder).glob("*.rec"))


def check(language, document, programs):
    with tempfile.TemporaryDirectory() as folder:
        before = time.time()
        recording = record([*CLIENTS[language], code_of(document, language)], programs, folder)
        after = time.time()
        def shown(verb, *more):
            return subprocess.run([programs / "rectool", verb, "--json", recording, *more], capture_output=True, text=True,
                                  check=True, timeout=PATIENCE_S).stdout
        found = [json.loads(line) for line in shown("cat", "--type", "LEVEL").splitlines()]
        assert [entry["value"]["value"] for entry in found] == LEVELS, found
        times = [entry["timeMs"] for entry in found]
        assert times == sorted(times), times
        assert times[-1] <= (after - before) * 1000, (times, after - before)
        assert recording.name.startswith("North_site"), recording
        year = time.gmtime(before).tm_year
        assert f"__{year}-" in recording.name or f"__{year + 1}-" in recording.name, recording


def main():
    document = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    programs = pathlib.Path(sys.argv[2])
    os.environ["TZ"] = "Asia/Kolkata"  # clients and recorder agree whatever the zone
    for language in CLIENTS:
        check(language, document, programs)
        print(f"{language}: recorded as fed")


main()
