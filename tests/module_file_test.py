#!/usr/bin/env python3
"""Reads a built module: its exports, the host functions it uses, and the manifest in its us_resources section; of a
Mach-O file (with LIEF) also its header, what it depends on and where each undefined name is looked up.

usage: module_file_test.py MODULE [EXTRA_EXPORT ...]
"""
import io
import json
import re
import struct
import subprocess
import sys
import tempfile
import uuid
import zipfile

HOST_FUNCTIONS = set(
    "mexErrMsgTxt mexWarnMsgTxt mexPrintf mxGetNumberOfDimensions mxGetDimensions mxGetComplexDoubles mxGetPr mxGetM"
    " mxGetN mxCreateNumericArray mxIsStruct mxIsNumeric mxGetScalar mxGetFieldNumber mxGetField mxMalloc mxCalloc"
    " mxRealloc mxFree".split())
SYSTEM_FUNCTIONS = set(  # of macOS; no C++ run-time library among them
    "__bzero bzero memcpy memmove memset snprintf vsnprintf getenv strcmp __stack_chk_fail __stack_chk_guard".split())


def read_elf(module):
    def symbols(kind):
        nm = subprocess.run(["nm", "-D", kind, module], check=True, capture_output=True, text=True).stdout
        return {line.split()[-1].split("@")[0] for line in nm.splitlines()}

    with tempfile.NamedTemporaryFile() as section:
        subprocess.run(["objcopy", f"--dump-section=us_resources={section.name}", module, "/dev/null"], check=True)
        return symbols("--defined-only"), symbols("--undefined-only"), section.read()


def read_mach_o(module):
    import lief

    universal = lief.MachO.parse(module)
    assert universal.size == 1, universal.size
    binary = universal.at(0)
    H = lief.MachO.Header
    cpu = {".mexmaci64": H.CPU_TYPE.X86_64, ".mexmaca64": H.CPU_TYPE.ARM64}[re.search(r"\.\w+$", module)[0]]
    assert (binary.header.file_type, binary.header.cpu_type) == (H.FILE_TYPE.BUNDLE, cpu), binary.header
    platform = binary.build_version
    assert platform.platform == lief.MachO.BuildVersion.PLATFORMS.MACOS and platform.minos == [11, 0, 0], platform
    assert [library.name for library in binary.libraries] == ["/usr/lib/libSystem.B.dylib"], list(binary.libraries)
    # A host's error passes through: functions have compact descriptions, which refer to no table that is not there.
    unwind = bytes(binary.get_section("__TEXT", "__unwind_info").content)
    offset, count = struct.unpack_from("<II", unwind, 4)
    modes = {encoding >> 24 & 15 for encoding in struct.unpack_from(f"<{count}I", unwind, offset)}
    without, elsewhere = 0, 4 if cpu == H.CPU_TYPE.X86_64 else 3
    assert modes and not modes & {without, elsewhere}, modes
    assert binary.has_code_signature or cpu == H.CPU_TYPE.X86_64, "Apple silicon loads no unsigned code"

    exports = {symbol.name[1:] for symbol in binary.symbols if symbol.has_export_info}
    undefined = {symbol.name[1:]: symbol.library_ordinal for symbol in binary.imported_symbols}
    bound = {info.symbol.name[1:]: info.library_ordinal for info in binary.bindings if info.has_symbol}
    undefined.pop("yld_stub_binder", None)  # dyld's own, the one name without an underscore in front
    bound.pop("yld_stub_binder", None)
    assert set(bound) == set(undefined), set(bound) ^ set(undefined)
    looked_up_everywhere, first_library = -2, 1
    for name, ordinal in bound.items():
        from_host = name.endswith("_800")
        assert from_host or name in SYSTEM_FUNCTIONS, name
        assert ordinal == (looked_up_everywhere if from_host else first_library), (name, ordinal)
    return exports, set(undefined), bytes(binary.get_section("__TEXT", "us_resources").content)


module, extra_exports = sys.argv[1], sys.argv[2:]
is_mach_o = ".mexmac" in module
exports, undefined, section = (read_mach_o if is_mach_o else read_elf)(module)
assert exports == {"mexFunction", "mexfilerequiredapiversion", *extra_exports}, exports

# The link names of the interface with interleaved complex numbers: Octave marks the functions that differ.
link_name = "(.*?)(_interleaved)?" if module.endswith(".mex") else "(.*)_800"
names = {name: re.fullmatch(link_name, name) for name in undefined if re.match("mex|mx[A-Z]", name)}
assert all(names.values()), names
used = {match[1] for match in names.values()}
assert used and used <= HOST_FUNCTIONS, used - HOST_FUNCTIONS

with zipfile.ZipFile(io.BytesIO(section)) as archive:
    assert archive.namelist() == ["mexVersioning/", "mexVersioning/manifest.json"], archive.namelist()
    manifest = json.loads(archive.read("mexVersioning/manifest.json"))
uuid.UUID(manifest.pop("bundle.symbolic_name"))
assert manifest == {"mw": {"mex": {"apiVersion": 800, "release": "R2023b", "threadpoolSafe": 0}}}, manifest
print(f"{module}: {len(exports)} exports, {len(used)} host functions of {len(undefined)} undefined names, manifest read")
