#!/usr/bin/env python3
"""What every exported function refuses: handles that name nothing, and null pointers, by the names in the prototype.

Arguments: the shared library, the virtual card, the folder of the public headers.
"""
import ctypes
import os
import subprocess
import sys
import tempfile

from prototypes import CALLBACK, headers, prototypes

TYPES = {"int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32, "int64_t": ctypes.c_int64,
         "uint64_t": ctypes.c_uint64, "uint16_t": ctypes.c_uint16, "bool": ctypes.c_bool, "double": ctypes.c_double,
         "char": ctypes.c_char}
# Where null is a value, or what is refused has another text.
TRANSFERS = ("vlFilePut", "vlFileGet", "vlHeadCorrectionSetWithProgress", "vlHeadCorrectionGetWithProgress",
             "vlPowerCorrectionSetWithProgress", "vlPowerCorrectionGetWithProgress")
ALLOWED = {("vlGetLastError", "buffer")} | {(function, name) for function in TRANSFERS for name in ("progress", "user")}
OUT = ("vlScannerHeadFormat", "vlScannerReadPositions", "vlScannerReadLastPositions")
# What is released may be gone; what no card has is not connected.
FORGIVING = {("vlListReleaseHandle", "List does not exist."),
             ("vlIsConnected", "Illegal handle."), ("vlIsConnected", "There is no connection corresponding to this handle.")}


def null_text(function, name):
    if function.startswith(OUT):
        return "Out parameter must not be null"
    return f"A null pointer was passed for '{name}'."


def last_error(library):
    text = ctypes.create_string_buffer(library.vlGetLastErrorLen())
    library.vlGetLastError(text, len(text))
    return text.value.decode()


def refusals(parameters, pointers, handles):
    """What may be given for one of the parameters, and the text with which it is refused: (place, value, text)."""
    first = parameters[0][1] if parameters else ""
    if first in handles:
        shift = 0 if first == "handle" else 32
        yield 0, -1, "Illegal handle."
        yield 0, 99999 << shift, "There is no connection corresponding to this handle."
    for kind, other in (("list", "font"), ("font", "list")):
        if first == kind:
            for none in (handles[kind] + 1000, handles[other]):
                yield 0, none, f"{kind.capitalize()} does not exist."
    for place, (_, name) in enumerate(parameters):
        if pointers[place]:
            yield place, None, name


def check(library, callbacks, texts, handles):
    checked, faults = 0, []
    for function, parameters, result in [prototype[1:] for text in texts for prototype in prototypes(text)]:
        pointers = [kind.endswith("*") or kind in callbacks for kind, _ in parameters]
        call = getattr(library, function)
        call.restype = TYPES.get(result)
        for place, value, text in refusals(parameters, pointers, handles):
            if (function, text) in ALLOWED | FORGIVING:
                continue
            arguments = [ctypes.create_string_buffer(b"1" if kind == "const char*" else b"", 1 << 16) if pointers[i]
                         else TYPES[kind](handles.get(name, 1)) for i, (kind, name) in enumerate(parameters)]
            arguments[place] = value if value is None else TYPES[parameters[place][0]](value)
            expected = null_text(function, text) if value is None else text
            returned, told = call(*arguments), last_error(library)
            checked += 1
            if returned != TYPES[result](-1).value or told != expected:
                faults.append(f"{function}, {value} for '{parameters[place][1]}': {returned}, {told or 'no error'}")
    return checked, faults


def main():
    library, card = ctypes.CDLL(sys.argv[1]), os.path.abspath(sys.argv[2])
    texts = headers(sys.argv[3])
    library.vlListAllocate.restype = library.vlFontAllocate.restype = ctypes.c_int64
    with tempfile.TemporaryDirectory() as folder, subprocess.Popen(
            [card, "--port", "0"], stdout=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True, cwd=folder) as process:
        os.chdir(folder)
        try:
            port = int(process.stdout.readline().rpartition(":")[2])
            handle = library.vlConnect(b"127.0.0.1", port)
            handles = {"handle": handle, "list": library.vlListAllocate(handle), "font": library.vlFontAllocate(handle, 1)}
            checked, faults = check(library, {name for text in texts for name in CALLBACK.findall(text)}, texts, handles)
        finally:
            process.terminate()
    for fault in faults:
        print(fault)
    print(f"{checked} refusals, {len(faults)} faults")
    sys.exit(1 if faults or checked == 0 else 0)


main()
