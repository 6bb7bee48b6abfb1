"""Records the carrier of the tests' SoapySDR driver, and looks at what was recorded.

Usage: soapy_test.py TEST PROGRAMS DRIVERS PRELOADED: where recstation and rectool lie, where the driver does, and what
lets SoapySDRServer run without Avahi. Exit code 77: there is no SoapySDRServer.
"""

import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAMS, DRIVERS, PRELOADED = (pathlib.Path(argument).resolve() for argument in sys.argv[2:5])
ENVIRONMENT = {**os.environ, "SOAPY_SDR_PLUGIN_PATH": str(DRIVERS)}
PATIENCE_S = 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def answers(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def wait_for(condition):
    end = time.monotonic() + PATIENCE_S
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(condition)
        time.sleep(0.02)


class Soapy(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.mishap = self.folder / "mishap"
        self.mishap.write_text("")
        self.receiver = f"driver=carrier,mishap={self.mishap}"

    def recstation(self, *arguments, environment=None):
        return [PROGRAMS / "recstation", *arguments], {
            "cwd": self.folder,
            "env": environment or ENVIRONMENT,
            "text": True,
            "stdout": subprocess.PIPE,
            "stderr": subprocess.PIPE,
        }

    def record(self, *arguments, environment=None):
        command, how = self.recstation("-q", "--json", "--duration", "1s", "soapy", *arguments, environment=environment)
        result = subprocess.run(command, **how, timeout=PATIENCE_S, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)

    def rectool(self, *arguments):
        command = [PROGRAMS / "rectool", *arguments]
        result = subprocess.run(command, capture_output=True, text=True, cwd=self.folder, timeout=PATIENCE_S, check=True)
        return result.stdout

    def expect_carrier(self, summary):
        path = summary["files"][0]["path"]
        found = json.loads(self.rectool("emissions", "--json", path))["emissions"]
        self.assertEqual(len(found), 1, found)
        self.assertAlmostEqual(found[0]["centreHz"], 100.25e6, delta=1000)
        self.assertAlmostEqual(found[0]["max"], -20, delta=0.1)

    def test_a_carrier_is_recorded_at_its_frequency_and_level(self):
        summary = self.record(self.receiver, "--centre", "100M", "--rate", "1M")
        self.expect_carrier(summary)
        self.assertEqual(summary["sources"][0]["lost"], 0)

    def test_a_panorama_is_put_together_of_hops(self):
        summary = self.record(self.receiver, "--hop", "99.5M,100.5M", "--rate", "1M")
        self.expect_carrier(summary)
        info = json.loads(self.rectool("info", "--json", summary["files"][0]["path"]))["files"][0]["header"]
        self.assertEqual([info["startFrequencyHz"], info["stopFrequencyHz"]], [99e6, 101e6])

    def test_what_the_driver_loses_is_counted(self):
        self.mishap.write_text("overflow 1")
        summary = self.record(self.receiver, "--centre", "100M", "--rate", "1M")
        self.assertEqual(summary["sources"][0]["lost"], 1)
        self.expect_carrier(summary)

    def test_a_receiver_that_is_unplugged_shows_as_a_gap(self):
        command, how = self.recstation("-q", "soapy", self.receiver, "--centre", "100M", "--rate", "1M", "--json")
        with subprocess.Popen(command, **how) as station:
            wait_for(lambda: self.recorded() > 20)
            self.mishap.write_text("absent")
            self.assertIn("connection lost: STREAM_ERROR; trying again", station.stderr.readline())
            self.mishap.write_text("")
            self.assertIn("connected again", station.stderr.readline())
            before = self.recorded()
            wait_for(lambda: self.recorded() > before + 20)
            station.terminate()
            output, _ = station.communicate(timeout=PATIENCE_S)
        summary = json.loads(output)
        self.assertEqual(summary["sources"][0]["reconnects"], 1)
        levels = self.rectool("cat", "--type", "LEVEL", summary["files"][0]["path"])
        self.assertIn("nan", levels.lower())
        self.assertIn("is sound", self.rectool("info", summary["files"][0]["path"]))

    def test_a_driver_that_hangs_does_not_keep_recordings_from_being_closed(self):
        command, how = self.recstation("-q", "soapy", self.receiver, "--centre", "100M", "--rate", "1M", "--json")
        with subprocess.Popen(command, **how) as station:
            wait_for(lambda: self.recorded() > 20)
            self.mishap.write_text("hanging")
            wait_for(pathlib.Path(f"{self.mishap}.hangs").exists)
            station.terminate()
            output, told = station.communicate(timeout=PATIENCE_S)
        self.assertEqual(station.returncode, 3)
        summary = json.loads(output)
        self.assertIn("it hangs", summary["sources"][0]["failure"])
        self.assertIn("it hangs", told)
        self.assertIn("is sound", self.rectool("info", summary["files"][0]["path"]))

    def recorded(self):
        """Records, also of what is being written."""
        files = [*self.folder.glob("*.tmp"), *self.folder.glob("*.rec")]
        if not files:
            return 0
        try:
            return self.rectool("cat", "--type", "RFSPECTRUM", files[0].name).count("\n")
        except subprocess.CalledProcessError:
            return 0

    def test_a_receiver_behind_a_server_is_recorded_as_one_here(self):
        if shutil.which("SoapySDRServer") is None:
            print("SoapySDRServer is missing: SoapyRemote is not tried")
            sys.exit(77)
        port = free_port()
        server = subprocess.Popen(
            ["SoapySDRServer", f"--bind=127.0.0.1:{port}"],
            env={**ENVIRONMENT, "LD_PRELOAD": str(PRELOADED)},
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        try:
            wait_for(lambda: answers(port))
            remote = f"driver=remote,remote=tcp://127.0.0.1:{port},remote:driver=carrier,remote:prot=tcp"
            own = {key: value for key, value in ENVIRONMENT.items() if key != "SOAPY_SDR_PLUGIN_PATH"}
            self.expect_carrier(self.record(remote, "--centre", "100M", "--rate", "1M", environment=own))
        finally:
            server.kill()
            server.wait()

    def test_a_check_tells_what_it_shows(self):
        command, how = self.recstation("check", "--json", "soapy", self.receiver, "--centre", "100M", "--rate", "1M")
        found = json.loads(subprocess.run(command, **how, timeout=PATIENCE_S, check=True).stdout)
        spectrum = next(v for v in found["sources"][0]["values"] if v["path"].endswith("RfSpectrum"))
        self.assertEqual([spectrum["cells"], spectrum["lowestHz"]], [1024, 99.5e6])
        self.assertGreater(spectrum["perSecond"], 0)
        self.mishap.write_text("absent")
        result = subprocess.run(command[:2] + ["--wait", "1s"] + command[2:], **how, timeout=PATIENCE_S, check=False)
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertIn("no such receiver is plugged in", json.loads(result.stdout)["sources"][0]["problem"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "Soapy.test_" + sys.argv[1]])
