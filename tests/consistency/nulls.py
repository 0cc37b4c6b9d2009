#!/usr/bin/env python3
"""A null pointer is refused, by the name that the prototype gives to the parameter.

Arguments: the shared library, the virtual card, the folder of the public headers.
Calls every exported function once for each of its pointers, with null there and something to point to elsewhere.
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


def expected(function, name):
    if function.startswith(OUT):
        return "Out parameter must not be null"
    return f"A null pointer was passed for '{name}'."


def last_error(library):
    text = ctypes.create_string_buffer(library.vlGetLastErrorLen())
    library.vlGetLastError(text, len(text))
    return text.value.decode()


def check(library, callbacks, texts, handles):
    checked, faults = 0, []
    for function, parameters in [prototype[1:] for text in texts for prototype in prototypes(text)]:
        is_pointer = [kind.endswith("*") or kind in callbacks for kind, _ in parameters]
        for place, (_, missing) in enumerate(parameters):
            if not is_pointer[place] or (function, missing) in ALLOWED:
                continue
            arguments = []
            for i, (kind, name) in enumerate(parameters):
                if is_pointer[i]:
                    content = b"1" if kind == "const char*" else b""
                    arguments.append(None if i == place else ctypes.create_string_buffer(content, 1 << 16))
                else:
                    arguments.append(TYPES[kind](handles.get(name, 1)))
            getattr(library, function)(*arguments)
            told = last_error(library)
            checked += 1
            if told != expected(function, missing):
                faults.append(f"{function}, null for '{missing}': {told or 'no error'}")
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
    print(f"{checked} pointers, {len(faults)} faults")
    sys.exit(1 if faults or checked == 0 else 0)


main()
