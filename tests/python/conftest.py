"""Recordings that tests share, and rectool."""

import json
import os
import pathlib
import shutil
import subprocess

import pytest

import recording2


def rectool(*arguments):
    """Its standard output."""
    command = [os.environ["RECTOOL"], *map(str, arguments)]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def cat(path, *options):
    return [json.loads(line) for line in rectool("cat", "--json", path, *options).splitlines()]


@pytest.fixture(scope="session")
def simulated(tmp_path_factory):
    """A folder with the recordings of a simulated receiver and direction finder."""
    folder = tmp_path_factory.mktemp("simulated")
    subprocess.run([os.environ["RECSTATION"], "-q", "-o", folder, "sim", "--duration", "10s", "--start",
                    "2026-11-21T10:00:00Z"], check=True)
    return folder


@pytest.fixture(scope="session")
def receiver_file(simulated):
    return next(simulated.glob("*RX_1*.rec"))


@pytest.fixture(scope="session")
def finder_file(simulated):
    return next(simulated.glob("*DF_1*.rec"))


@pytest.fixture
def receiver_copy(receiver_file, tmp_path):
    return pathlib.Path(shutil.copy(receiver_file, tmp_path))


@pytest.fixture
def receiver(receiver_file):
    return recording2.open(receiver_file)
