"""Runs the tests of the Python module. Usage: run.py RECTOOL RECSTATION REPORT [pytest's options]"""

import os
import pathlib
import sys

try:
    import pytest
except ImportError:
    print("Skipped: pytest is not there (python3-pytest).")
    sys.exit(77)

rectool, recstation, report, *options = sys.argv[1:]
os.environ["RECTOOL"] = rectool
os.environ["RECSTATION"] = recstation
folder = str(pathlib.Path(__file__).resolve().parent)
sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", f"--rootdir={folder}", f"--junitxml={report}", folder, *options]))
