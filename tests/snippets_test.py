"""The programs in README.md and docs/ compile against the installed package and print what stands below them.

usage: snippets_test.py PREFIX FOLDER [options of cmake...]
"""

import pathlib
import re
import subprocess
import sys

prefix, folder, *options = sys.argv[1:]
root, folder = pathlib.Path(__file__).resolve().parent.parent, pathlib.Path(folder)
fence = re.compile(r"^```cpp\n(.*?)^```$(?:\n^```\n(.*?)^```$)?", re.M | re.S)
programs = [(path, *match) for path in sorted([root / "README.md", *root.glob("docs/*.md")])
            for match in fence.findall(path.read_text())]
folder.mkdir(parents=True, exist_ok=True)
lines = ["cmake_minimum_required(VERSION 3.21)", "project(snippets LANGUAGES CXX)", "find_package(kesto REQUIRED)"]
for n, (_, program, _) in enumerate(programs):
    stand_alone = '"kesto/' in program
    guard = '#if __has_include("mex.h")\n#error "a MEX header is within reach"\n#endif\n' if stand_alone else ""
    (folder / f"snippet{n}.cpp").write_text(guard + program)
    libraries = "kesto::kesto" if stand_alone else "kesto::field_core kesto::bioheat kesto::host"
    lines += [f"add_executable(snippet{n} snippet{n}.cpp)", f"target_link_libraries(snippet{n} PRIVATE {libraries})"]
(folder / "CMakeLists.txt").write_text("\n".join(lines) + "\n")
build = folder / "build"
subprocess.run(["cmake", "-S", folder, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}", *options], check=True)
subprocess.run(["cmake", "--build", build], check=True)
failed = len(programs) < 3
for n, (path, _, expected) in enumerate(programs):
    found = subprocess.run([build / f"snippet{n}"], capture_output=True, text=True)
    if found.stdout + found.stderr != expected:
        print(f"{path.name}, program {n}: prints\n{found.stdout}{found.stderr}instead of\n{expected}")
        failed = True
sys.exit(failed)
