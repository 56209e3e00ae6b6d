"""Seeds each kind of violation into a small tree and sees it found; the same tree without it is clean."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = sys.argv.pop(1)


class CheckIncludes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.modules = [
            self.module("ground", "Kit/ground", ["Ground.h"], ["Ground.cpp", "Private.h"], []),
            self.module("model", "Kit/model", ["Model.h"], ["Model.cpp"], ["ground"]),
            self.module("window", "Window", ["Window.h"], [], ["model"]),
        ]
        self.write("Kit/ground/Ground.h", "#include <vector>")
        self.write("Kit/ground/Ground.cpp", '#include <Kit/ground/Ground.h>\n#include "Private.h"')
        self.write("Kit/ground/Private.h", "")
        self.write("Kit/model/Model.h", "#include <Kit/ground/Ground.h>")
        self.write("Kit/model/Model.cpp", "#include <Kit/model/Model.h>")
        self.write("Window/Window.h", "#include <Kit/model/Model.h>")

    @staticmethod
    def module(target, folder, headers, sources, modules):
        return {"target": target, "folder": folder, "headers": headers, "sources": sources, "modules": modules}

    def write(self, path, text):
        path = self.root / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text + "\n", encoding="utf-8")

    def run_check(self):
        table = self.root / "modules.json"
        table.write_text(json.dumps(self.modules), encoding="utf-8")
        return subprocess.run([CHECK, table, self.root], capture_output=True, text=True, check=False)

    def assert_refused(self, line):
        result = self.run_check()
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertIn(line, result.stdout.splitlines())

    def test_a_clean_tree_passes(self):
        result = self.run_check()
        self.assertEqual((result.returncode, result.stdout), (0, "3 modules keep the rule of the house.\n"))

    def test_an_include_of_an_upper_floor(self):
        self.write("Kit/ground/Ground.h", "#include <Kit/model/Model.h>")
        self.assert_refused("Kit/ground/Ground.h: Kit/model/Model.h: ground does not stand on model")

    def test_an_include_through_a_neighbour_that_is_not_named(self):
        self.write("Window/Window.h", "#include <Kit/model/Model.h>\n#  include <Kit/ground/Ground.h>")
        self.assert_refused("Window/Window.h: Kit/ground/Ground.h: window does not stand on ground")

    def test_a_private_header_of_another_module(self):
        self.write("Kit/model/Model.cpp", "#include <Kit/ground/Private.h>\n#include <Kit/ground/Ground.h>")
        self.assert_refused("Kit/model/Model.cpp: Kit/ground/Private.h: no module offers this header")

    def test_a_climbing_include(self):
        self.write("Kit/model/Model.cpp", '#include "../ground/Private.h"')
        self.assert_refused("Kit/model/Model.cpp: ../ground/Private.h: climbs out of its folder")

    def test_a_foreign_quoted_include(self):
        self.write("Kit/model/Model.cpp", '#include "Ground.h"')
        self.assert_refused("Kit/model/Model.cpp: Ground.h: quotes are for a neighbour in the same folder and module")

    def test_a_quoted_include_of_another_module_in_the_same_folder(self):
        self.modules.append(self.module("program", "Window", [], ["main.cpp", "Local.h"], ["window"]))
        self.write("Window/Local.h", "")
        self.write("Window/main.cpp", '#include <Window/Window.h>\n#include "Local.h"')
        self.assertEqual(self.run_check().returncode, 0)
        self.write("Window/main.cpp", '#include <Window/Window.h>\n#include "Window.h"')
        self.assert_refused("Window/main.cpp: Window.h: quotes are for a neighbour in the same folder and module")

    def test_a_circle(self):
        self.modules[0]["modules"] = ["window"]
        self.write("Kit/ground/Ground.cpp", "#include <Window/Window.h>")
        self.assert_refused("a circle: ground -> window -> model -> ground")

    def test_a_module_named_for_nothing(self):
        self.modules[2]["modules"].append("ground")
        self.assert_refused("window: names ground and includes nothing of it")

    def test_a_file_that_no_module_lists(self):
        self.write("Kit/model/Forgotten.cpp", "")
        self.assert_refused("Kit/model/Forgotten.cpp: no module lists this file")


if __name__ == "__main__":
    unittest.main()
