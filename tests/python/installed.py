"""Installs the module below a prefix, and imports it from there. Usage: installed.py CMAKE BUILD VERSION"""

import os
import pathlib
import subprocess
import sys
import tempfile

cmake, build, version = sys.argv[1:]
CHECK = """
import recording2, sys
assert recording2.__file__.startswith(sys.argv[1]), recording2.__file__
assert recording2.__version__ == sys.argv[2], recording2.__version__
with recording2.Recorder(sys.argv[1], "RX", values={"LEVEL": 1}) as recorder:
    recorder.set("LEVEL", 2, at=10)
assert recording2.open(recorder.files).values("LEVEL").values.tolist() == [1, 2]
"""

with tempfile.TemporaryDirectory() as prefix:
    for component in ("library", "python"):
        subprocess.run([cmake, "--install", build, "--prefix", prefix, "--component", component], check=True,
                       stdout=subprocess.DEVNULL)
    folder = f"{prefix}/lib/python{sys.version_info.major}.{sys.version_info.minor}/dist-packages"
    environment = {**os.environ, "PYTHONPATH": folder, "PYTHONDONTWRITEBYTECODE": "1"}
    environment.pop("LD_LIBRARY_PATH", None)
    subprocess.run([sys.executable, "-c", CHECK, prefix, version], check=True, env=environment)
    typed = pathlib.Path(folder, "recording2", "py.typed")
    assert typed.exists(), typed

    # As a package lays it, for the system's interpreter.
    staged = {**os.environ, "DESTDIR": prefix}
    subprocess.run([cmake, "--install", build, "--prefix", "/usr", "--component", "python"], check=True, env=staged,
                   stdout=subprocess.DEVNULL)
    assert pathlib.Path(prefix, "usr/lib/python3/dist-packages/recording2/__init__.py").exists()
