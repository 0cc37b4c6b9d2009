"""Drives laser-scanner controller cards of the KELVO family.

    import kelvo

    with kelvo.connect("127.0.0.1") as card:
        list = card.new_list()
        list.mark_speed(0.001)
        list.jump_abs(-10, -10)
        list.mark_abs(10, -10)
        for value in card.run(list):
            print("progress", value)

Names follow from the library's functions of C: vlLaserArmLaser is card.laser.arm_laser, vlListAppendMarkAbs2D and
vlListAppendMarkAbs3D are list.mark_abs, whose arguments tell which. What fails raises kelvo.Error. Coordinates are in
field units, speeds in field units per microsecond, delays in microseconds; timeouts of waits are in seconds.
"""
from kelvo import _types
from kelvo._card import Card as Card
from kelvo._card import connect as connect
from kelvo._core import *
from kelvo._core import Area as Area
from kelvo._core import Error as Error
from kelvo._record import Record as Record
from kelvo._types import *

for _name in ("Error", "Registration", "List", "Font", "Area", *(area.__name__ for area in Area.__subclasses__())):
    globals()[_name].__module__ = __name__
del _name
