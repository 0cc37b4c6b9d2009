#!/usr/bin/env python3
"""Marks a rosette and shows the progress of the run: mark_rosette.py [HOST [PORT]]."""
from __future__ import annotations

import math
import sys
from array import array

import kelvo

PETALS, POINTS, RADIUS = 7, 2000, 20.0


def rosette() -> memoryview:
    """The points of the curve as rows of x and y. NumPy arrays go into a list in the same way, without copying."""
    points = array("d")
    for step in range(POINTS + 1):
        angle = 2 * math.pi * step / POINTS
        radius = RADIUS * math.cos(PETALS * angle)
        points.extend((radius * math.cos(angle), radius * math.sin(angle)))
    return memoryview(points).cast("B").cast("d", (POINTS + 1, 2))


def main() -> int:
    host = sys.argv[1] if len(sys.argv) > 1 else "127.0.0.1"
    port = int(sys.argv[2]) if len(sys.argv) > 2 else 49374
    points = rosette()
    try:
        with kelvo.connect(host, port) as card:
            print("card", card.system.get_card_serial_number())
            commands = card.new_list()
            commands.jump_speed(0.05)
            commands.mark_speed(0.01)
            commands.jump_abs(RADIUS, 0)
            for quarter in range(4):
                commands.mark_abs(points[quarter * POINTS // 4:(quarter + 1) * POINTS // 4 + 1])
                commands.progress(25 * (quarter + 1))
            for percent in card.run(commands):
                print(percent, "%")
            print("marked in", card.lists.get_last_execution_stats().execution_time / 1e6, "s")
    except kelvo.Error as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
