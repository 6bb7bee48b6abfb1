"""The session of doc/python.md prints what stands there."""

import doctest
import os
import pathlib
import re
import subprocess

import pytest

DOCUMENT = pathlib.Path(__file__).resolve().parents[2] / "doc" / "python.md"


def test_the_session_prints_what_it_shows(tmp_path, monkeypatch):
    pytest.importorskip("pandas")
    text = DOCUMENT.read_text(encoding="utf-8")
    made = re.search(r"^    recstation (.+)$", text, re.MULTILINE)[1].split()
    monkeypatch.chdir(tmp_path)
    for folder in ("recordings", "doc"):
        (tmp_path / folder).mkdir()
    subprocess.run([os.environ["RECSTATION"], *made], check=True)
    session = re.sub(r"^```.*$", "", text, flags=re.MULTILINE)  # what ends a block is no output
    examples = doctest.DocTestParser().get_doctest(session, {}, DOCUMENT.name, str(DOCUMENT), 0)
    assert len(examples.examples) > 20
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS)
    told = []
    failed, _ = runner.run(examples, out=told.append)
    assert failed == 0, "".join(told)
