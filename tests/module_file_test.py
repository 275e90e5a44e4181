#!/usr/bin/env python3
"""Reads a built module: its exports, the host functions it uses, and the manifest in its us_resources section.

usage: module_file_test.py MODULE [EXTRA_EXPORT ...]
"""
import json
import re
import subprocess
import sys
import tempfile
import uuid
import zipfile

HOST_FUNCTIONS = set(
    "mexErrMsgTxt mexWarnMsgTxt mexPrintf mxGetNumberOfDimensions mxGetDimensions mxGetComplexDoubles mxGetPr mxGetM"
    " mxGetN mxCreateNumericArray mxIsStruct mxIsNumeric mxGetScalar mxGetFieldNumber mxGetField mxMalloc mxCalloc"
    " mxRealloc mxFree".split())

module, extra_exports = sys.argv[1], sys.argv[2:]


def symbols(kind):
    lines = subprocess.run(["nm", "-D", kind, module], check=True, capture_output=True, text=True).stdout.splitlines()
    return {line.split()[-1].split("@")[0] for line in lines}


exports = symbols("--defined-only")
assert exports == {"mexFunction", "mexfilerequiredapiversion", *extra_exports}, exports

# Hosts add a suffix to the link names for the interface with interleaved complex numbers.
used = {re.sub("_(800|interleaved)$", "", name) for name in symbols("--undefined-only") if re.match("mex|mx[A-Z]", name)}
assert used and used <= HOST_FUNCTIONS, used - HOST_FUNCTIONS

with tempfile.NamedTemporaryFile(suffix=".zip") as section:
    subprocess.run(["objcopy", f"--dump-section=us_resources={section.name}", module, "/dev/null"], check=True)
    with zipfile.ZipFile(section.name) as archive:
        assert archive.namelist() == ["mexVersioning/", "mexVersioning/manifest.json"], archive.namelist()
        manifest = json.loads(archive.read("mexVersioning/manifest.json"))
uuid.UUID(manifest.pop("bundle.symbolic_name"))
assert manifest == {"mw": {"mex": {"apiVersion": 800, "release": "R2023b", "threadpoolSafe": 0}}}, manifest
print(f"{module}: {len(exports)} exports, {len(used)} host functions, manifest read back")
