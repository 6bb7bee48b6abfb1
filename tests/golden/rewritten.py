"""Recordings whose tables were rewritten: the pieces of another golden file up to a position, with a new tail."""

import pathlib
import runpy

import recfile

HERE = pathlib.Path(__file__).resolve().parent


def up_to(case, position):
    """The pieces of that case that lie in front of the position."""
    file = runpy.run_path(str(HERE / case / "generate.py"))["file"]
    kept = 0
    offset = 0
    while offset < position:
        offset += len(file.pieces[kept][0])
        kept += 1
    if offset != position:
        raise ValueError(f"{position} is within a piece of {case}")
    del file.pieces[kept:]
    return file


def set_bookmarks_at(file, position):
    """Gives the header a position of the bookmark table that it did not have."""
    field, rest = (find(file, meaning) for meaning in ("position of the bookmark table", "rest of the header area"))
    new = recfile.number(position)
    longer = len(new) - len(file.pieces[field][0])
    file.pieces[field] = (new, "position of the bookmark table")
    filler, meaning = file.pieces[rest]
    file.pieces[rest] = (filler[longer:], meaning)


def find(file, meaning):
    return next(i for i, piece in enumerate(file.pieces) if piece[1].startswith(meaning))
