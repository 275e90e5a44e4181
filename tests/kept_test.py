"""The oddities tagged KEPT: in the code are the rows of the table in docs/traps.md, file by file."""

import collections
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
tags = collections.Counter()
for folder in ("core", "excitation", "fields", "heat", "host", "mex", "transducers"):
    for path in (root / folder).rglob("*"):
        if path.suffix in (".h", ".cpp") and (count := path.read_text().count("KEPT:")):
            tags[path.relative_to(root).as_posix()] = count
rows = collections.Counter(re.findall(r"^\| `([^`]+\.(?:h|cpp))` \|", (root / "docs/traps.md").read_text(), re.M))
for path in sorted(tags | rows):
    if tags[path] != rows[path]:
        print(f"{path}: {tags[path]} tags, {rows[path]} rows in docs/traps.md")
sys.exit(tags != rows or not rows)
