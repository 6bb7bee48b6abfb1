#!/usr/bin/env python3
"""The virtual slots of CVTTypesData are the same in every compiler's layout.

clang prints the layout of the library's own header, which is read with a reduced standard library in place of the
target's: that one need not be there. Usage: slots_test.py CLANG FOLDER_OF_THE_LIBRARY
"""

import pathlib
import re
import subprocess
import sys
import tempfile

TARGETS = ("x86_64-pc-windows-msvc", "x86_64-w64-windows-gnu", "x86_64-linux-gnu")
EXPECTED = ["void add_item(S_TYPES)", "S_TYPES find_type(Long)", "bool find_type(Long, S_TYPES &)"]
# The object: the pointer to the slots, then the vector of three pointers; nothing in front of them.
EXPECTED_SIZE = 32
SOURCE = """
#define RECORDING2_STATIC
#include <recording2/recordmodel.h>
void use(Recording2::CVTTypesData& types) { types.add_item(types.find_type(1)); }
void Recording2::CVTTypesData::add_item(S_TYPES) {}
Recording2::CVTTypesData made;
"""


def printed_layout(clang, library, target):
    reduced = pathlib.Path(__file__).resolve().parent / "reduced"
    with tempfile.TemporaryDirectory() as folder:
        # The reduced headers take the place of those beside recordmodel.h, so that one stands where it is found alone.
        headers = pathlib.Path(folder) / "recording2"
        headers.mkdir()
        for name in ("recordmodel.h", "export.h"):
            (headers / name).write_text((library / name).read_text(encoding="utf-8"), encoding="utf-8")
        command = [clang, f"--target={target}", "-std=c++20", "-nostdinc", "-nostdinc++", "-I", str(reduced), "-I", folder,
                   "-x", "c++", "-", "-S", "-o", f"{folder}/code.ll", "-emit-llvm", "-Xclang", "-fdump-vtable-layouts", "-Xclang",
                   "-fdump-record-layouts"]
        result = subprocess.run(command, input=SOURCE, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"{target}: clang failed:\n{result.stderr}")
    return result.stdout


def slots(layout, target):
    """The operations in the order of their slots."""
    table = re.search(r"V(?:F)?Table indices for 'Recording2::CVTTypesData'.*\n((?:\s+\d+ \| .*\n)+)", layout)
    if table is None:
        sys.exit(f"{target}: no table of slots in what clang printed:\n{layout}")
    lines = re.findall(r"\d+ \| (.*)", table.group(1))
    return [re.sub(r"Recording2::(CVTTypesData::)?", "", line).strip() for line in lines]


def size(layout):
    return int(re.search(r"0 \| class Recording2::CVTTypesData.*?\[sizeof=(\d+)", layout, re.DOTALL).group(1))


def main():
    clang, library = sys.argv[1], pathlib.Path(sys.argv[2])
    for target in TARGETS:
        layout = printed_layout(clang, library, target)
        if slots(layout, target) != EXPECTED:
            sys.exit(f"{target}: the slots are {slots(layout, target)}, not {EXPECTED}")
        if size(layout) != EXPECTED_SIZE:
            sys.exit(f"{target}: the object has {size(layout)} bytes, not {EXPECTED_SIZE}")
        print(f"{target}: {', '.join(EXPECTED)}")


if __name__ == "__main__":
    main()
