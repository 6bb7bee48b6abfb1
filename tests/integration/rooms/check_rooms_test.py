"""Plants violations in temporary trees and expects scripts/check-rooms, whose path is the argument, to find them."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = sys.argv.pop()

CORE = "devicecontrol/recording2"
# What the planted includes name, so that the check can find it.
TREE = {
    f"{CORE}/fileaccess.h": "",
    f"{CORE}/recording.h": "",
    f"{CORE}/format/layout.h": "",
    f"{CORE}/index/timeindex.h": "",
    f"{CORE}/inspection/inspection.h": '#include "../format/layout.h"\n',
    "platform/vkbase/include/vkbase/trace.h": "",
    "platform/values/include/values/tree.h": "#include <vkbase/trace.h>\n",
    "platform/startup/include/startup/cfgcenter.h": "",
    "apps/rectool/geo/fix.h": "",
    "apps/rectool/map/geojson.h": "",
    "apps/rectool/export/export.h": "",
    "apps/rectool/text.h": "",
    "apps/recstation/source.h": "",
    "apps/recstation/sources/feed/feedsource.h": "",
    "system/file.h": "",
    "archive/include/zelvo/archive.h": "",
    "archive/zelvod/service.h": "",
    "archive/storage/names.h": "",
}


OPENING = "// A comment.\n"


def check(planted):
    """Exit code and messages for the tree with one more file, or one file replaced."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in {**{name: OPENING + text for name, text in TREE.items()}, **planted}.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(text.encode("latin-1"))
        result = subprocess.run([sys.executable, CHECK, "--root", folder], capture_output=True, text=True, check=False)
        return result.returncode, result.stdout


class CheckRooms(unittest.TestCase):
    def assert_clean(self, planted):
        for name, text in planted.items():
            with self.subTest(file=name, text=text):
                opening = OPENING if name.endswith((".h", ".cpp")) else ""
                self.assertEqual(check({name: opening + text}), (0, ""))

    def assert_refused(self, name, include):
        with self.subTest(file=name, include=include):
            code, output = check({name: f"{OPENING}#include {include}\n"})
            self.assertEqual(code, 1)
            self.assertTrue(output.startswith(f"{name}:2: {include[1:-1]}: "), output)
            self.assertEqual(output.count("\n"), 1)

    def test_a_tree_that_keeps_the_rules_passes(self):
        self.assertEqual(check({}), (0, ""))

    def test_format_and_index_take_the_standard_library_and_themselves(self):
        self.assert_clean({f"{CORE}/format/layout.cpp": '#include "layout.h"\n#include <cstdint>\n',
                           f"{CORE}/index/timeindex.cpp": "#include <vector>\n#include <recording2/index/timeindex.h>\n"})
        for include in ("<QString>", "<unistd.h>", "<vkbase/trace.h>", "<CLI/App.hpp>", '"../fileaccess.h"',
                        "<recording2/fileaccess.h>", '"../index/timeindex.h"'):
            self.assert_refused(f"{CORE}/format/layout.cpp", include)
        self.assert_refused(f"{CORE}/index/timeindex.cpp", '"../format/layout.h"')

    def test_the_systems_room_takes_the_system_and_nothing_of_the_project(self):
        self.assert_clean({"system/file_posix.cpp": '#include "file.h"\n#include <sys/file.h>\n#include <string>\n',
                           f"{CORE}/recording.cpp": "#include <system/file.h>\n"})
        for include in ("<QString>", "<vkbase/trace.h>", f'"../{CORE}/recording.h"'):
            self.assert_refused("system/file_posix.cpp", include)

    def test_public_headers_take_no_internal_ones(self):
        self.assert_clean({f"{CORE}/loadinterface.h": "#include <QString>\n#include <recording2/fileaccess.h>\n"
                                                      "#include <values/tree.h>\n"})
        for include in ('"format/layout.h"', "<recording2/format/layout.h>", '"index/timeindex.h"', '"recording.h"',
                        "<recording2/recording.h>"):
            self.assert_refused(f"{CORE}/loadinterface.h", include)

    def test_the_insides_of_the_library_take_what_they_need(self):
        self.assert_clean({f"{CORE}/fileaccess.cpp": '#include "recording.h"\n#include "format/layout.h"\n'})

    def test_platform_libraries_take_only_those_they_declare(self):
        self.assert_clean({"platform/startup/src/cfgcenter.cpp": "#include <startup/cfgcenter.h>\n#include <QFile>\n"
                                                                 "#include <vkbase/trace.h>\n"})
        for include in ("<recording2/fileaccess.h>", "<values/tree.h>", '"../../values/include/values/tree.h"'):
            self.assert_refused("platform/startup/src/cfgcenter.cpp", include)
        self.assert_refused("platform/vkbase/src/trace.cpp", "<startup/cfgcenter.h>")

    def test_programs_take_public_headers_inspection_and_their_own(self):
        self.assert_clean({"apps/recstation/main.cpp": "#include <recording2/fileaccess.h>\n#include <CLI/App.hpp>\n"
                                                       "#include <recording2/inspection/inspection.h>\n"
                                                       '#include "source.h"\n#include <values/tree.h>\n'
                                                       "#include <fcntl.h>\n",
                           "apps/recstation/sources/sim/sim.cpp": '#include "../../source.h"\n#include "source.h"\n'})
        for include in ("<recording2/recording.h>", "<recording2/format/layout.h>", "<recording2/missing.h>",
                        '"../rectool/text.h"', '"../../devicecontrol/recording2/recording.h"',
                        '"devicecontrol/recording2/recording.h"', '"missing.h"'):
            self.assert_refused("apps/recstation/main.cpp", include)

    def test_a_source_knows_no_other(self):
        self.assert_refused("apps/recstation/sources/sim/sim.cpp", '"../feed/feedsource.h"')

    def test_rooms_side_by_side_include_each_other_one_way(self):
        table = "doc/architecture.md"
        rows = "\n## Rooms\n| `a` | | `b`, `a/in` | any |\n| `a/in` | | `a` | any |\n| `b` | | %s | any |\n\n## End\n"
        code, output = check({table: rows % "`a/in`"})
        self.assertNotIn("each other", output)
        code, output = check({table: rows % "`a`"})
        self.assertEqual(code, 1)
        self.assertTrue(output.startswith(f"{table}: a and b include each other\n"), output)

    def test_a_folder_that_no_room_holds_takes_nothing_of_the_project(self):
        self.assert_refused("plugins/new.cpp", "<recording2/fileaccess.h>")

    def test_the_archive_takes_itself_and_what_reads_its_configuration(self):
        self.assert_clean({"archive/client/client.cpp": '#include <zelvo/archive.h>\n#include "storage/names.h"\n'})
        for include in ("<recording2/fileaccess.h>", "<vkbase/trace.h>", '"../../apps/recstation/source.h"'):
            self.assert_refused("archive/client/client.cpp", include)

    def test_the_rooms_of_rectool_take_what_stands_below_them(self):
        self.assert_clean({"apps/rectool/map/linesofbearing.cpp": '#include "geo/fix.h"\n#include "geojson.h"\n'})
        self.assert_refused("apps/rectool/geo/geodesic.cpp", '"map/geojson.h"')
        self.assert_refused("apps/rectool/plot/level.cpp", '"export/export.h"')

    def test_the_archives_service_knows_nothing_of_recordings(self):
        self.assert_clean({"archive/zelvod/main.cpp": '#include "service.h"\n#include <zelvo/archive.h>\n'})
        for include in ("<recording2/fileaccess.h>", "<recording2/inspection/inspection.h>",
                        '"../storage/names.h"', '"../../apps/recstation/source.h"'):
            self.assert_refused("archive/zelvod/main.cpp", include)

    def test_forbidden_words_are_found_in_every_text_file(self):
        # In pieces, as this file is checked too.
        words = ("see the spe" + "c for it", "the Spe" + "cification says", "spe" + "c.md", "Par" + "t 2.1 tells",
                 "Part" + "s 1.1 and", "/wor" + "k/main/x", "/far" + "m/x", "../.libr" + "ary", "issu" + "e #7",
                 "/hom" + "e/someone/x")
        for text in words:
            for name in ("doc/a.md", "scripts/tool", f"{CORE}/recording.cpp"):
                with self.subTest(text=text, file=name):
                    code, output = check({name: f"{OPENING}\n{text}\n"})
                    self.assertEqual(code, 1)
                    self.assertTrue(output.startswith(f"{name}:3: "), output)

    def test_forbidden_words_are_found_in_file_names(self):
        code, output = check({"doc/spe" + "c.md": ""})
        self.assertEqual(code, 1)
        self.assertIn("the file's name", output)

    def test_a_source_opens_with_a_line_that_says_what_it_is(self):
        for text in ("", "#include <vector>\n", "\n// Too late.\n"):
            with self.subTest(text=text):
                code, output = check({f"{CORE}/recording.cpp": text})
                self.assertEqual(code, 1)
                self.assertTrue(output.startswith(f"{CORE}/recording.cpp:1: "), output)

    def test_ordinary_words_binary_files_and_build_folders_pass(self):
        self.assert_clean({"doc/a.md": "a special part of the network/library, part 21, ../shared/data, an issue\n",
                           "tests/golden/a.rec": "\0the spe" + "c\n",
                           "build/generated.h": "the spe" + "c\n",
                           "build-mine/generated.h": "the spe" + "c\n"})


if __name__ == "__main__":
    unittest.main()
