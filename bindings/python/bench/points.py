#!/usr/bin/env python3
"""What a point costs that goes into a list, from Python and in a loop of C: time of this thread, whatever else runs.

Arguments: the library with the loop (bench/loop.c), the virtual card. Fails when an array costs twice the loop or more.
"""
import array
import ctypes
import statistics
import subprocess
import sys
import time

import kelvo

COUNT, ROUNDS = 200_000, 15


def main():
    loop = ctypes.CDLL(sys.argv[1]).MarkAll
    loop.argtypes = (ctypes.c_int64, ctypes.c_void_p, ctypes.c_uint32)
    points = array.array("d", (i * 0.25 % 100 for i in range(2 * COUNT)))
    wide = array.array("d", (i * 0.25 % 100 for i in range(4 * COUNT)))
    rows = memoryview(points).cast("B").cast("d", (COUNT, 2))
    pairs = list(zip(points[::2], points[1::2]))
    program = subprocess.Popen([sys.argv[2], "--port", "0"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    with program, kelvo.connect("127.0.0.1", int(program.stdout.readline().rsplit(":", 1)[1])) as card:
        ways = {"loop in C": lambda commands: loop(commands.handle, points.buffer_info()[0], COUNT),
                "array": lambda commands: commands.mark_abs(rows),
                "call a point": lambda commands: [commands.mark_abs(x, y) for x, y in pairs[:COUNT // 20]]}
        try:
            import numpy
            strided = numpy.frombuffer(wide).reshape(COUNT, 4)[:, ::2]
            ways["strided array"] = lambda commands: commands.mark_abs(strided)
        except ImportError:
            pass
        times = {name: [] for name in ways}
        for _ in range(ROUNDS):
            for name, way in ways.items():
                with card.new_list() as commands:
                    begin = time.thread_time()
                    way(commands)
                    times[name].append((time.thread_time() - begin) / len(commands) * 1e9)
        program.terminate()
    limit = statistics.median(times["loop in C"])
    for name, figures in times.items():
        print(f"{name:14} {statistics.median(figures):7.1f} ns a point, {statistics.median(figures) / limit:5.2f} loops")
    sys.exit(any(statistics.median(times[name]) >= 2 * limit for name in times if "array" in name))


main()
