"""Commands, arrays and what is refused."""
import array

import pytest

import kelvo

numpy = pytest.importorskip("numpy")


def rows(values, columns):
    """A plain array as rows, without NumPy."""
    return memoryview(array.array("d", values)).cast("B").cast("d", (len(values) // columns, columns))


COMMANDS = [  # what is called, and the text of what is appended
    (lambda c: c.mark_abs(1, 2), "{ MA, P2D[ X=1 Y=2 ] }"),
    (lambda c: c.mark_abs(1, 2.5, z=3), "{ M3A, P3D[ X=1 Y=2.5 Z=3 ] }"),
    (lambda c: c.jump_rel(dy=2, dx=1), "{ JR, P2D[ X=1 Y=2 ] }"),
    (lambda c: c.mark_abs(rows([1, 2, 3, 4], 2)), "{ MA, P2D[ X=1 Y=2 ] }, { MA, P2D[ X=3 Y=4 ] }"),
    (lambda c: c.mark_abs(rows=rows([1, 2, 3], 3)), "{ M3A, P3D[ X=1 Y=2 Z=3 ] }"),
    (lambda c: c.mark_abs(numpy.arange(8.0).reshape(2, 4)[::-1, ::3]),
     "{ MA, P2D[ X=4 Y=7 ] }, { MA, P2D[ X=0 Y=3 ] }"),
    (lambda c: c.jump_abs(numpy.asfortranarray([[1.0, 2, 3], [4, 5, 6]])),
     "{ J3A, P3D[ X=1 Y=2 Z=3 ] }, { J3A, P3D[ X=4 Y=5 Z=6 ] }"),
    (lambda c: c.mark_abs(numpy.frombuffer(b"\0" + numpy.array([1.0, 2]).tobytes(), "f8", offset=1).reshape(1, 2)),
     "{ MA, P2D[ X=1 Y=2 ] }"),
    (lambda c: c.mark_abs(numpy.zeros((0, 2))), ""),
    (lambda c: c.arc_abs(numpy.array([[1.0, 2, 0.5]])), "{ ARCA, P2D[ X=1 Y=2 ], F64[ 0.5 ] }"),
    (lambda c: c.power(7), "{ PWR, U16[ 7 ], I32[ 0 ] }"),
    (lambda c: c.power(power=7, channel=1), "{ PWR, U16[ 7 ], I32[ 1 ] }"),
    (lambda c: c.sky_writing_mode(kelvo.SkyWritingMode.MINIMUM_COH), "{ SKWM, I32[ 2 ] }"),
    (lambda c: c.serial_port_transmit_string("h\u00e9"), None),
    (lambda c: c.mark_char("A"), None),
    (lambda c: c.mark_char(255), None),
]


@pytest.mark.parametrize("call, text", COMMANDS)
def test_command(commands, call, text):
    call(commands)
    if text is None:
        assert len(commands) == 1
    else:
        assert commands.to_string() == f"[ {text} ]"


def test_arrays_of_each_kind_travel_whole(card, commands):
    commands.bitmap_line_abs(0, 0, 1, 0, numpy.array([1, 0, 2, 0, 65535, 0], "u2")[::2], channel=1)
    commands.point_and_shoot_line_abs(0, 0, 1, 0, array.array("d", [0.5]), array.array("H", [3, 4]))
    commands.jump_and_shoot(rows([1, 2, 3, 4, 5, 6], 3), 9)
    commands.micro_vectors(numpy.array([[1, -2], [3, -4]], "i4"))
    commands.serial_port_transmit_bytes(b"\0\xff")
    commands.dashed_line_pattern(numpy.array([0.25, 0.75]))
    text = commands.to_string()
    for part in ("1 2 65535", "1 2 3 4 5 6", "X=3 Y=-4", "0.25 0.75"):
        assert part in text.replace(",", ""), text
    assert card.new_list(text).to_string() == text


REFUSED = [  # what is called, the exception, and what it says
    (lambda c: c.mark_abs(numpy.zeros((2, 2), "f4")), TypeError, "float64, (n, 2) or (n, 3), not of float32"),
    (lambda c: c.mark_abs(numpy.zeros((2, 2), ">f8")), TypeError, "not of format '>d'"),
    (lambda c: c.mark_abs(numpy.zeros((2, 4))), ValueError, "(n, 2) or (n, 3), not of shape (2, 4)"),
    (lambda c: c.mark_abs(numpy.zeros(2)), ValueError, "not of shape (2,)"),
    (lambda c: c.mark_abs([[1, 2]]), TypeError, "not list"),
    (lambda c: c.mark_abs("1", 2), TypeError, "mark_abs(): x must be a float, not str"),
    (lambda c: c.mark_abs(1, 2, 3, 4), TypeError, "mark_abs(x: float, y: float, z: float)"),
    (lambda c: c.mark_abs(1, 2, x=3), TypeError, "mark_abs(x: float, y: float)"),
    (lambda c: c.mark_abs(1, w=3), TypeError, "mark_abs(x: float, y: float)"),
    (lambda c: c.jump_and_shoot(numpy.zeros((2, 4)), 1), ValueError, "not of shape (2, 4)"),
    (lambda c: c.micro_vectors(numpy.zeros((2, 2), "i8")), TypeError, "vectors must be an array of int32, not of int64"),
    (lambda c: c.bitmap_line_abs(0, 0, 1, 1, numpy.zeros(2, "i2")), TypeError, "powers must be an array of uint16, not of int16"),
    (lambda c: c.bitmap_line_abs(0, 0, 1, 1, numpy.zeros((2, 1), "u2")), ValueError, "not of shape (2, 1)"),
    (lambda c: c.power(65536), OverflowError, "power(): power must be 0 to 65535"),
    (lambda c: c.progress(2**31), OverflowError, "-2147483648 to 2147483647"),
    (lambda c: c.progress(1.0), TypeError, "value must be an int, not float"),
    (lambda c: c.enable_wobble(1), TypeError, "on must be a bool, not int"),
    (lambda c: c.mark_char("AB"), ValueError, "a single character"),
    (lambda c: c.label("a\0b"), ValueError, "label must not hold a zero"),
    (lambda c: c.append_list("x"), TypeError, "other must be a List, not str"),
    (lambda c: c.transformation(kelvo.Point2D()), TypeError, "transform must be a Transform3D"),
    (lambda c: c.loop_break(), kelvo.Error, "No loop opened!"),
    (lambda c: c.sky_writing_mode(9), kelvo.Error, "SkyWritingMode::_from_integral: invalid argument"),
]


@pytest.mark.parametrize("call, kind, text", REFUSED)
def test_refused_and_nothing_appended(commands, call, kind, text):
    with pytest.raises(kind) as raised:
        call(commands)
    assert text in str(raised.value)
    assert len(commands) == 0


def test_a_released_list_is_none(card, commands):
    commands.close()
    commands.close()
    with pytest.raises(kelvo.Error):
        commands.mark_abs(numpy.zeros((2, 2)))
    with pytest.raises(kelvo.Error, match="Illegal list content!"):
        card.new_list("no list")


def test_lists_on_the_card(card, commands):
    commands.mark_abs(1, 2)
    card.lists.set(5, commands)
    card.lists.set(5, commands, append=True)
    assert card.fetch_list(5).to_string() == "[ { MA, P2D[ X=1 Y=2 ] }, { MA, P2D[ X=1 Y=2 ] } ]"
    assert 5 in card.lists.get_stored_list_ids()
    assert card.lists.get_list_status(5) is kelvo.ListStatus.READY


def test_fonts(card, commands):
    commands.mark_rel(1, 2)
    font = card.new_font(3)
    font.add_char("\u00e9", commands)
    font.add_char(65, commands)
    card.fonts.set(font)
    fetched = card.fonts.get(3)
    assert fetched.chars() == [65, 0xE9] and fetched.chars_len() == 2
    assert fetched.get_char("A").to_string() == commands.to_string()
