#!/usr/bin/env python3
"""Records from an HTTP server that answers as a KrakenSDR does, goes away, and answers rubbish."""
import http.server
import json
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

PATIENCE_S = 60
PROGRAMS = pathlib.Path()
START_MS = 1_795_384_000_000


def output(peak):
    return [0.47 if min((i - peak) % 360, (peak - i) % 360) < 4 else 0.1 for i in range(360)]


def line(number, frequency_hz, azimuth, clockwise):
    """A bearing as the older (clockwise) and the newer CSV have it."""
    theta = (360 - azimuth) % 360
    fields = [START_MS + 500 * number, azimuth if clockwise else theta, 0.5 + number, -40.5 - number, frequency_hz, "UCA", 100,
              "north", 52.5 + number / 1000, 13.25, 90, 90, "GPS", *"RRRR", *(f"{v:.2f}" for v in output(theta))]
    return ", ".join(str(field) for field in fields) + " \n"


def document(number, azimuth, clockwise):
    return line(number, 433_920_000, azimuth, clockwise) + line(number, 145_500_000, (azimuth + 90) % 360, clockwise)


def xml(number, azimuth):
    return (f"<DATA><STATION_ID>north</STATION_ID><TIME>{START_MS + 500 * number}</TIME><FREQUENCY>433.92</FREQUENCY>"
            f"<LOCATION><LATITUDE>52.5</LATITUDE><LONGITUDE>13.25</LONGITUDE><HEADING>90</HEADING></LOCATION>"
            f"<DOA>{(360 - azimuth) % 360}</DOA><PWR>59.5</PWR><CONF>50</CONF></DATA>")


class Finder(http.server.ThreadingHTTPServer):
    """Gives one answer after the other, the last one for ever; then tells that it was asked for that twice."""
    daemon_threads = True

    def __init__(self, answers, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.answers, self.asked, self.done = list(answers), 0, threading.Event()
        self.thread = threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.01})
        self.thread.start()

    def handle_error(self, request, client_address):
        pass  # who was answered too much went away

    def end(self):
        self.shutdown()
        self.server_close()
        self.thread.join()


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        finder = self.server
        answer = finder.answers[min(finder.asked, len(finder.answers) - 1)]
        finder.asked += 1
        status, body = answer if isinstance(answer, tuple) else (200, answer)
        body = body.encode()
        self.send_response(status)
        self.send_header("Content-Length", str(len(body) + (1000 if status == 206 else 0)))
        self.end_headers()
        self.wfile.write(body)
        if finder.asked > len(finder.answers):
            finder.done.set()

    def send_response(self, code, message=None):
        super().send_response(200 if code == 206 else code, message)

    def log_message(self, *arguments):
        pass


class Run:
    """recstation on a finder, until stop."""

    def __init__(self, folder, port, *options, path="DOA_value.html"):
        self.folder = folder
        self.process = subprocess.Popen(
            [PROGRAMS / "recstation", "-q", "--json", "-o", folder, "kraken", f"http://127.0.0.1:{port}/{path}", "--interval",
             "50ms", *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def stop(self):
        self.process.send_signal(signal.SIGINT)
        out, self.told = self.process.communicate(timeout=PATIENCE_S)
        self.summary = json.loads(out)
        self.source = self.summary["sources"][0]
        return records(self.summary["files"][0]["path"])


def run_program(program, *arguments, check=True):
    return subprocess.run([PROGRAMS / program, *arguments], capture_output=True, text=True, check=check, timeout=PATIENCE_S)


def records(path):
    return [json.loads(entry) for entry in run_program("rectool", "cat", "--json", path).stdout.splitlines()]


def bearings(entries):
    """The changes of the map that hold a bearing: time stamp, and cells by frequency."""
    found = []
    for entry in entries:
        if entry["keyword"] == "DFSPECTRUM" and any(entry["value"]["cells"]):
            cells = dict(zip(entry["value"]["range"]["channelsHz"], entry["value"]["cells"]))
            found.append((entry["value"]["timeStampUs"], cells))
    return found


def values(entries, keyword):
    return [entry["value"]["value"] for entry in entries if entry["keyword"] == keyword]


class Kraken(unittest.TestCase):
    def setUp(self):
        global START_MS
        START_MS = int(time.time() * 1000)
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def finder(self, answers, port=0):
        finder = Finder(answers, port)
        self.addCleanup(finder.end)
        return finder

    def record(self, answers, *options, path="DOA_value.html"):
        finder = self.finder(answers)
        run = Run(self.folder.name, finder.server_address[1], *options, path=path)
        self.assertTrue(finder.done.wait(PATIENCE_S))
        return run, run.stop()

    def test_live_and_from_a_file_the_recording_is_the_same(self):
        for clockwise in (True, False):
            documents = [document(number, 30 + 40 * number, clockwise) for number in range(4)]
            run, live = self.record([*documents, documents[-1]], "--source-time")
            log = pathlib.Path(self.folder.name, "kraken.csv")
            log.write_text("".join(documents), encoding="utf-8")
            made = run_program("recstation", "-q", "--json", "-o", self.folder.name, "bearings", log)
            filed = records(json.loads(made.stdout)["files"][0]["path"])
            # Live, the second frequency becomes a channel when it comes, and that empties the map.
            self.assertEqual(len(bearings(live)), 8)
            self.assertEqual(bearings(live)[2:], bearings(filed)[2:])
            azimuths = {time: cells[433_920_000.0]["azimuthDeg"] for time, cells in bearings(live) if 433_920_000.0 in cells
                        and cells[433_920_000.0]}
            self.assertEqual(list(azimuths.values())[-1], 150)
            for keyword in ("LOCATIONLATITUDE", "LOCATIONLONGITUDE", "TRUEHEADING", "FREQUENCY"):
                known = [value for value in values(live, keyword) if value]
                self.assertEqual(known, values(filed, keyword), keyword)
            self.assertEqual("counter-clockwise" in run.told, not clockwise)
            self.assertEqual("counter-clockwise" in made.stderr, not clockwise)
            self.assertEqual(run.source["used"], 8)

    def test_xml_is_mirrored_unless_told_otherwise(self):
        _, entries = self.record([xml(0, 30), xml(1, 70)], path="doa.xml")
        self.assertEqual([cells[433_920_000.0] for _, cells in bearings(entries)],
                         [{"azimuthDeg": azimuth, "elevationDeg": None, "levelDb": -40.5, "quality": 0.5}
                          for azimuth in (30.0, 70.0)])
        _, entries = self.record([xml(0, 30)], "--no-mirror", path="doa.xml")
        self.assertEqual(bearings(entries)[0][1][433_920_000.0]["azimuthDeg"], 330)

    def test_a_finder_that_goes_away_leaves_values_unknown_and_is_tried_again(self):
        finder = Finder([document(0, 30, True)])
        port = finder.server_address[1]
        run = Run(self.folder.name, port)
        self.assertTrue(finder.done.wait(PATIENCE_S))
        finder.end()
        for told in run.process.stderr:
            if "trying again" in told:
                break
        finder = self.finder([document(1, 70, True)], port)
        self.assertTrue(finder.done.wait(PATIENCE_S))
        entries = run.stop()
        maps = [any(entry["value"]["cells"]) for entry in entries if entry["keyword"] == "DFSPECTRUM"]
        first = maps.index(True)
        gap = maps.index(False, first)
        self.assertIn(True, maps[gap:])
        self.assertEqual(values(entries, "LOCATIONLATITUDE"), [None, 52.5, None, 52.501])
        self.assertEqual(values(entries, "TRUEHEADING"), [None, 90, None, 90])
        self.assertEqual(values(entries, "FREQUENCY"), [None, 433.92e6, 145.5e6, 433.92e6, 145.5e6], "it stays in the gap")
        self.assertEqual(run.source["reconnects"], 1)
        info = run_program("rectool", "info", "--json", run.summary["files"][0]["path"])
        header = json.loads(info.stdout)["files"][0]["header"]
        self.assertEqual((header["startFrequencyHz"], header["stopFrequencyHz"]), (145.5e6, 433.92e6))

    def test_what_was_heard_long_before_is_not_recorded_as_of_now(self):
        global START_MS
        START_MS -= 3_600_000
        old = document(0, 30, True)
        START_MS += 3_600_000
        run, entries = self.record([old, old, document(1, 70, True)])
        self.assertEqual({round(cell["azimuthDeg"]) for _, cells in bearings(entries) for cell in cells.values() if cell},
                         {70, 160})
        self.assertEqual(run.source["used"], 2)

    def test_a_finder_that_hears_nothing_is_reachable_and_a_silent_one_is_not(self):
        def check(port):
            found = run_program("recstation", "check", "-o", self.folder.name, "kraken",
                                f"http://127.0.0.1:{port}/DOA_value.html", check=False)
            return found.returncode, found.stdout.splitlines()[0]

        self.assertEqual(check(self.finder([""]).server_address[1]),
                         (3, "kraken: reachable, but it showed nothing within 5 s; --wait TIME gives it longer"))
        with socket.create_server(("127.0.0.1", 0)) as silent:
            port = silent.getsockname()[1]
            self.assertEqual(check(port), (2, f"kraken: not reachable: http://127.0.0.1:{port}/DOA_value.html: its answer did "
                                              "not come within 4 s"))

    def test_wrong_answers_are_told_once_and_tried_again(self):
        for wrong, told in [((404, "no"), "it answers 404 Not Found"),
                            ("<html><body>Index of /</body></html>", "it answers a page of HTML"),
                            ((206, document(0, 30, True)), "connection lost"),
                            ("x" * 2_000_000, "its answer is larger than 1 MiB")]:
            run, entries = self.record([wrong, wrong, document(0, 30, True)])
            self.assertEqual(run.told.count("trying again"), 1, run.told)
            self.assertIn(told, run.told)
            self.assertEqual(len(bearings(entries)), 2)
            self.assertEqual(run.source["reconnects"], 0)

    def test_lines_that_are_cut_are_counted_as_lost(self):
        whole = document(0, 30, True)
        run, entries = self.record([whole + line(1, 433_920_000, 70, True)[:60], "", whole])
        self.assertEqual(len(bearings(entries)), 2)
        self.assertEqual(run.source["lost"], 1)
        self.assertNotIn("trying again", run.told)

    def test_a_position_of_another_source_stays(self):
        _, entries = self.record([document(0, 30, True)], "--no-position", "--heading", "12")
        self.assertEqual(values(entries, "LOCATIONLATITUDE"), [])
        self.assertEqual(values(entries, "TRUEHEADING"), [12])

    def test_a_wrong_address_is_refused(self):
        for address in ("https://krakensdr/", "krakensdr:x", ""):
            run = run_program("recstation", "-o", self.folder.name, "kraken", address, check=False)
            self.assertEqual(run.returncode, 1, run.stderr)
            self.assertIn("an address such as http://krakensdr:8081/DOA_value.html", run.stderr)


if __name__ == "__main__":
    PROGRAMS = pathlib.Path(sys.argv.pop(1))
    unittest.main()
