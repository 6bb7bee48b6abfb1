"""Lets systemd-analyze verify the services of a folder and rate how confined they are.

Usage: services_test.py TEST FOLDER PROGRAMS: where the services lie, and where the programs that they start do. Exit code
77: there is no systemd-analyze that can.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

FOLDER, PROGRAMS = (pathlib.Path(argument).resolve() for argument in sys.argv[2:4])
ANALYZE = shutil.which("systemd-analyze")
MOST_EXPOSED = 20  # tenths of what systemd calls exposure; 0 is nothing, 100 everything


def run(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, check=False, timeout=60)


class Services(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def put(self, service, text):
        """Under the name of an instance, and with the program of this build."""
        program = re.search(r"^ExecStart=(\S+)", text, re.MULTILINE).group(1)
        text = text.replace(f"ExecStart={program}", f"ExecStart={PROGRAMS / pathlib.Path(program).name}")
        path = pathlib.Path(self.folder.name) / service.name.replace("@.", "@north.")
        path.write_text(text, encoding="utf-8")
        return path

    def services(self):
        found = sorted(FOLDER.glob("*.service"))
        self.assertIn("recstation@.service", [service.name for service in found])
        return found

    def verify(self, service, text):
        result = run(ANALYZE, "verify", "--man=no", self.put(service, text))
        return (result.stdout + result.stderr + (f"exit code {result.returncode}" if result.returncode else "")).strip()

    def test_every_service_is_understood(self):
        for service in self.services():
            self.assertEqual(self.verify(service, service.read_text(encoding="utf-8")), "", service.name)

    def test_every_service_is_confined(self):
        for service in self.services():
            path = self.put(service, service.read_text(encoding="utf-8"))
            result = run(ANALYZE, "security", "--offline=true", f"--threshold={MOST_EXPOSED}", path)
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def test_mistakes_are_found(self):
        service = FOLDER / "recstation@.service"
        text = service.read_text(encoding="utf-8")
        self.assertIn("ProtectHom", self.verify(service, text.replace("ProtectHome=", "ProtectHom=")))
        self.assertIn("restart", self.verify(service, text.replace("Restart=always", "Restart=allways")).lower())
        open_service = re.sub(r"^(Protect|Private|Restrict|SystemCall|Capability).*\n", "", text, flags=re.MULTILINE)
        path = self.put(service, open_service)
        result = run(ANALYZE, "security", "--offline=true", f"--threshold={MOST_EXPOSED}", path)
        self.assertNotEqual(result.returncode, 0, result.stdout)

    def test_the_example_is_a_station(self):
        text = (FOLDER / "station.toml").read_text(encoding="utf-8")
        printed = run(PROGRAMS / "recstation", FOLDER / "station.toml", "--print-config")
        self.assertEqual(printed.returncode, 0, printed.stderr)
        for line in text.splitlines():
            if line and not line.startswith("#"):
                self.assertIn(line.partition(" #")[0].strip(), printed.stdout + 'journal = "power"')


if __name__ == "__main__":
    if ANALYZE is None or "--offline" not in run(ANALYZE, "--help").stdout:
        print("systemd-analyze is missing or too old: the services are not verified")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "Services.test_" + sys.argv[1]])
