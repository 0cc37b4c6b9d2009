#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets into fuzz/corpus/<Target>/.

The seeds are committed; run this again after adding some here. It needs nothing but Python.
"""

import pathlib
import struct

NIL = b"\xc0"


# --- MessagePack, as far as the seeds need it

def pack(value):
    if value is None:
        return NIL
    if value is True or value is False:
        return b"\xc3" if value else b"\xc2"
    if isinstance(value, int):
        return pack_int(value)
    if isinstance(value, float):
        return b"\xcb" + struct.pack(">d", value)
    if isinstance(value, str):
        return head(len(value.encode()), 0xA0, 31, (0xD9, 0xDA, 0xDB)) + value.encode()
    if isinstance(value, bytes):
        return head(len(value), None, 0, (0xC4, 0xC5, 0xC6)) + value
    if isinstance(value, dict):
        items = b"".join(pack(k) + pack(v) for k, v in value.items())
        return head(len(value), 0x80, 15, (None, 0xDE, 0xDF)) + items
    return head(len(value), 0x90, 15, (None, 0xDC, 0xDD)) + b"".join(map(pack, value))


def pack_int(value):
    if -0x20 <= value < 0x80:
        return struct.pack("b", value)
    unsigned = ((0xCC, "B"), (0xCD, ">H"), (0xCE, ">I"), (0xCF, ">Q"))
    signed = ((0xD0, "b"), (0xD1, ">h"), (0xD2, ">i"), (0xD3, ">q"))
    for code, form in unsigned if value >= 0 else signed:
        try:
            return bytes([code]) + struct.pack(form, value)
        except struct.error:
            continue
    raise ValueError(value)


def head(size, small, most, codes):
    if small is not None and size <= most:
        return bytes([small | size])
    for code, form, limit in zip(codes, (">B", ">H", ">I"), (0xFF, 0xFFFF, 0xFFFFFFFF)):
        if code is not None and size <= limit:
            return bytes([code]) + struct.pack(form, size)
    raise ValueError(size)


# --- Frames

REQUEST, RESPONSE, ERROR_RESPONSE, NOTIFICATION, ERROR_NOTIFICATION = 0x00, 0x01, 0x81, 0x02, 0x82
LIST_IDLE, LIST_DONE, PROGRESS = 0x01, 0x02, 0x11


def frame(kind, body, claimed=None):
    return struct.pack("<BBI", 0x94, kind, len(body) if claimed is None else claimed) + body


def response(request_id, *values):
    return frame(RESPONSE, pack_int(request_id) + b"".join(map(pack, values)))


def notification(*values):
    return frame(NOTIFICATION, pack(list(values)))


def error(*texts):
    """A chain of errors, the outermost first; a text may be a pair of text and stack trace."""
    body = b""
    for text in texts:
        first, second = text if isinstance(text, tuple) else (text, None)
        body += b"\x93" + pack(first) + pack(second)
    return body + NIL


def error_response(request_id, body):
    return frame(ERROR_RESPONSE, pack_int(request_id) + body)


STATS = [3, 5000, 0.25, 1.5, 5e-5]


# --- Commands

def scalar(code, form, *values):
    return bytes([code]) + struct.pack("<" + form, *values)


def array(code, form, elements):
    count = struct.pack(">I", len(elements))[1:]
    return bytes([code]) + count + b"".join(struct.pack("<" + form, *e) for e in elements)


def payload(*values, version=1, claimed=None):
    body = b"".join(values)
    return bytes([version]) + struct.pack(">I", len(body) if claimed is None else claimed)[1:] + body


SCALARS = [
    scalar(0x01, "B", 1), scalar(0x24, "B", 200), scalar(0x21, "h", -2), scalar(0x25, "H", 65535),
    scalar(0x22, "i", -3), scalar(0x26, "I", 7), scalar(0x23, "q", -1 << 40), scalar(0x27, "Q", 1 << 60),
    scalar(0x2B, "d", 1.5), scalar(0x6B, "dd", 1, 2), scalar(0xAB, "ddd", 1, 2, 3),
    scalar(0xEB, "dddd", 1, 2, 3, 4), scalar(0x62, "ii", 1, 2), scalar(0xA2, "iii", 1, 2, 3),
    scalar(0xE2, "iiii", 1, 2, 3, 4),
]
ARRAYS = [
    array(0x34, "B", [(1,), (2,)]), array(0x35, "H", [(1,), (65535,)]), array(0x3B, "d", [(0.5,)]),
    array(0x7B, "dd", [(1, 2), (3, 4)]), array(0xBB, "ddd", [(1, 2, 3)]), array(0xFB, "dddd", [(1, 2, 3, 4)]),
    array(0x72, "ii", [(1, 2)]), array(0xB2, "iii", [(1, 2, 3)]), array(0xF2, "iiii", [(1, 2, 3, 4)]),
]
JUMP_ABS, MARK_ABS, PROGRESS_ID, LASER_ON = 0x110, 0x210, 0x1, 0x11
POINT = scalar(0x6B, "dd", 10, -20)
COMMANDS = [[JUMP_ABS, payload(POINT)], [LASER_ON, b""], [MARK_ABS, payload(POINT)],
            [PROGRESS_ID, payload(scalar(0x22, "i", 50))]]


def frames():
    deep = error(*["deep"] * 400)
    yield "request", frame(REQUEST, pack_int(0) + pack("SetList") + pack([1, [-1] + COMMANDS, False]))
    yield "response_nil", response(0, None)
    yield "response_int", response(1, 42)
    yield "response_text", response(2, "3.10.3")
    yield "response_large_id", response(0xFFFFFFFF, True)
    yield "response_signed_id", frame(RESPONSE, b"\xd3" + struct.pack(">q", 5) + NIL)
    yield "response_negative_id", frame(RESPONSE, b"\xff" + NIL)
    yield "response_wide_id", frame(RESPONSE, b"\xcf" + struct.pack(">Q", 1 << 32) + NIL)
    yield "response_no_id", frame(RESPONSE, b"")
    yield "response_only_id", frame(RESPONSE, b"\x00")
    yield "response_many", response(3, 1, "two", [3.0], {"four": 4}, b"five", None, False)
    yield "response_list", response(0, [-1] + COMMANDS)
    yield "response_stats", response(0, STATS)
    yield "response_ints", response(0, [1, 200, -200, 70000, -70000, 1 << 40, -1 << 40])
    yield "response_empty", frame(RESPONSE, b"\x00\xa0\xd9\x00\xda\x00\x00\xc4\x00\xc5\x00\x00\xc7\x00\x05\x90\x80")
    yield "error_empty", error_response(0, b"\x93\xd9\x00\xc4\x00" + NIL)
    yield "response_ext", frame(RESPONSE, b"\x00" + b"\xd4\x01A" + b"\xd8\x02" + b"B" * 16 + b"\xc7\x03\x04ext")
    yield "response_float", frame(RESPONSE, b"\x00\xca\x3f\x80\x00\x00\xcb\x7f\xf8\x00\x00\x00\x00\x00\x01")
    yield "response_long", response(0, "x" * 300, b"y" * 300, list(range(20)), {i: i for i in range(20)})
    yield "response_wide_heads", frame(RESPONSE, b"\x00\xdb\0\0\0\x01a\xc6\0\0\0\x01b\xdd\0\0\0\x01\xc0\xdf\0\0\0\x01\xc0\xc0\xc9\0\0\0\x01\x05c")
    yield "notification_idle", notification(LIST_IDLE, 1)
    yield "notification_done", notification(LIST_DONE, 1)
    yield "notification_progress", notification(PROGRESS, 50, "more")
    yield "notification_nil", frame(NOTIFICATION, NIL)
    yield "error_response", error_response(0, error("Laser not armed"))
    yield "error_nested", error_response(1, error(("outer", "at A"), "middle", ("inner", "at C\n")))
    yield "error_bytes", error_response(1, b"\x93" + pack(b"text") + pack(b"trace") + NIL)
    yield "error_wide", error_response(1, b"\x95" + pack("a") + pack("b") + pack("c") + pack("d") + error("e"))
    yield "error_nil", error_response(1, NIL)
    yield "error_short", error_response(1, pack(["text", None]))
    yield "error_deep", error_response(1, deep)
    yield "error_notification", frame(ERROR_NOTIFICATION, error(("Interlock open", "trace"), "inner"))
    yield "hostile_array", frame(RESPONSE, b"\x00\xdd\xff\xff\xff\xff")
    yield "hostile_map", frame(RESPONSE, b"\x00\xdf\xff\xff\xff\xff\xc0")
    yield "hostile_nested_claims", frame(RESPONSE, b"\x00" + b"\xdd\x00\x00\x00\x20" * 30)
    yield "hostile_text", frame(RESPONSE, b"\x00\xdb\xff\xff\xff\xffabc")
    yield "hostile_bytes", frame(RESPONSE, b"\x00\xc6\x7f\xff\xff\xffabc")
    yield "hostile_ext", frame(RESPONSE, b"\x00\xc9\xff\xff\xff\xff\x01")
    yield "hostile_depth", frame(RESPONSE, b"\x00" + b"\x91" * 300 + NIL)
    yield "hostile_usual_depth", frame(RESPONSE, b"\x00" + b"\x91" * 256 + NIL)
    yield "hostile_never_used", frame(RESPONSE, b"\x00\xc1")
    yield "hostile_start", b"\x95" + response(0, None)[1:]
    yield "hostile_short", b"\x94\x01\x02"


def streams():
    close, reset, open_ = 0, 4, 7
    whole, bytewise, six = 0, 1 << 3, 4 << 3
    logging, handshake = 0x40, 0x80
    nothing, call_card, throw_error, throw_anything, register = range(5)
    execute, is_bool, is_int, is_text, ints, command_list, stats, anything, number, set_list, texts, set_nothing = range(12)

    def plan(how, action, *calls):
        return bytes([how, action]) + bytes((list(calls) + [execute] * 4)[:4])

    events = notification(PROGRESS, 1) + notification(LIST_IDLE, 2) + notification(LIST_DONE, 3)
    bad = frame(ERROR_NOTIFICATION, error(("Interlock open", "trace"), "inner"))
    yield "calls", plan(close | whole, nothing, execute, is_bool, is_int, is_text) + response(0, None) + response(
        1, True) + response(2, 1) + response(3, "SN-1")
    yield "calls_bytewise", plan(close | bytewise | logging, nothing, ints, command_list, stats, anything) + response(
        0, [1, 2, 3]) + response(1, [-1] + COMMANDS) + response(2, STATS) + response(3, {"a": [1, 2.5, None]})
    yield "calls_more", plan(close | six, nothing, number, set_list, texts, anything) + response(0, 2.5) + response(
        1, None) + response(2, ["a", "b"]) + response(3, b"\0\1")
    yield "uploads", plan(close, nothing, set_nothing, set_list, set_nothing) + response(0, None) + response(1, None)
    yield "handshake", plan(close | handshake | logging, nothing, is_int, texts) + response(0, None) + response(
        1, "1.2.3") + response(2, "SN-1") + response(3, 4) + response(4, ["x"])
    yield "handshake_error", plan(close | handshake, nothing) + response(0, None) + error_response(1, error("no"))
    yield "events", plan(close, nothing, is_int) + events + response(0, 1) + events
    yield "events_call", plan(close, call_card, is_int, is_int) + events + bad + response(0, 1) + response(
        1, 2) + response(5, 3)
    yield "events_throw", plan(close, throw_error, is_int) + events + response(0, 1)
    yield "events_throw_anything", plan(close, throw_anything, is_int) + events
    yield "events_register", plan(close | logging, register, is_int) + events * 8 + bad + response(0, 1)
    yield "event_unknown", plan(close, nothing) + notification(0x33, 1)
    yield "event_none", plan(close, nothing) + notification(0, 1)
    yield "event_empty", plan(close, nothing) + frame(NOTIFICATION, b"\x90")
    yield "event_no_value", plan(close, nothing) + notification(PROGRESS)
    yield "event_wrong_value", plan(close, nothing) + notification(PROGRESS, "text")
    yield "event_no_array", plan(close, nothing) + frame(NOTIFICATION, b"\x01") + events
    yield "event_error", plan(close | logging, nothing, is_int) + bad + response(0, 1)
    yield "event_error_nil", plan(close, nothing) + frame(ERROR_NOTIFICATION, NIL)
    yield "errors", plan(close | logging, nothing) + error_response(0, error(("outer", "trace"), "inner")) + (
        error_response(1, NIL) + error_response(2, pack([1, 2, 3])) + error_response(3, error(*["deep"] * 300)))
    yield "wrong_kinds", plan(close, nothing, is_bool, ints, command_list, stats) + response(0, "x") + response(
        1, 1) + response(2, [1, 2]) + response(3, [1])
    yield "lists_bad", plan(close, nothing, command_list, command_list, command_list, command_list) + response(
        0, []) + response(1, [-1, [1]]) + response(2, [-1, [1, "x"]]) + response(3, [-1, [JUMP_ABS, b"\1\0"]])
    yield "out_of_order", plan(close, nothing, is_int, is_int) + response(1, 1) + response(0, 0) + response(
        1, 2) + response(9, 9)
    yield "mixed_up", plan(close, nothing, anything, anything, anything) + response(2, "late") + response(
        0, "first") + response(2, "early") + response(1, "second") + response(0, "again") + response(2, [3])
    yield "twice", plan(close, nothing, is_int, is_int) + response(0, 0) * 3 + response(1, 1) * 3
    yield "unclaimed", plan(close, nothing, is_int) + b"".join(response(i, i) for i in range(1000, 1300)) + response(0, 1)
    yield "request_as_answer", plan(close, nothing, is_int) + frame(REQUEST, b"\x00\x05")
    yield "body_empty", plan(close, nothing, is_int) + frame(RESPONSE, b"\x00") + response(1, 1)
    yield "silent", plan(open_, nothing)
    yield "silent_after_events", plan(open_, nothing, is_int) + events + response(0, 1)
    yield "half_a_frame", plan(open_, nothing, is_int) + response(0, 1)[:-1]
    yield "cut_short", plan(close, nothing, is_int) + response(0, [1, 2, 3])[:-2]
    yield "reset", plan(reset, nothing, is_int) + response(0, 1)
    yield "reset_at_once", plan(reset, nothing)
    yield "reset_handshake", plan(reset | handshake, nothing) + response(0, None) + response(1, "1")
    yield "closed_at_once", plan(close, nothing)
    yield "garbage", plan(close, nothing) + b"GET / HTTP/1.0\r\n\r\n"
    yield "garbage_behind", plan(close, nothing, is_int) + response(0, 1) + b"\x00\x94\x01"
    yield "claims_2_gib", plan(close, nothing) + frame(RESPONSE, b"\x00\x01", 0x7FFFFFF0)
    yield "claims_too_much", plan(close, nothing) + frame(RESPONSE, b"\x00\x01", 0xFFFFFFFF)
    yield "claims_nothing", plan(close, nothing) + frame(RESPONSE, b"", 0) + response(0, None)
    yield "hostile_array", plan(close, nothing, anything, ints) + frame(
        RESPONSE, b"\x00\xdd\xff\xff\xff\xff") + frame(RESPONSE, b"\x01" + b"\xdd\x00\x00\x00\x20" * 30)
    yield "hostile_notification", plan(close, nothing) + frame(NOTIFICATION, b"\xdd\xff\xff\xff\xff")
    yield "hostile_depth", plan(close | logging, nothing, anything) + frame(RESPONSE, b"\x00" + b"\x91" * 250 + NIL)
    yield "large_answer", plan(close, nothing, is_text) + response(0, "x" * 6000)


def commands():
    def as_payload(body, code=JUMP_ABS):
        return b"\x00" + struct.pack("<i", code) + body

    def as_list(body, first=0, last=255):
        return bytes([1, first, last]) + body

    def built(body, field=-1, first=0, last=0xFFFF):
        return b"\x02" + struct.pack("<iHH", field, first, last) + body

    yield "payload_none", as_payload(b"")
    yield "payload_empty", as_payload(payload())
    for i, value in enumerate(SCALARS):
        yield f"payload_scalar_{i:02}", as_payload(payload(value))
    for i, value in enumerate(ARRAYS):
        yield f"payload_array_{i}", as_payload(payload(value))
    yield "payload_all", as_payload(payload(*SCALARS, *ARRAYS, version=9), 0x7FFFFFFF)
    yield "payload_numbers", as_payload(payload(SCALARS[4], SCALARS[8], SCALARS[4]))
    yield "payload_odd_truth", as_payload(payload(scalar(0x01, "B", 7)))
    yield "payload_short_head", as_payload(b"\x01")
    yield "payload_miscounted", as_payload(payload(SCALARS[4], claimed=3))
    yield "payload_unknown_type", as_payload(payload(SCALARS[4], b"\x11\x00\x00\x01\x01"))
    yield "payload_invalid_type", as_payload(payload(b"\x00"))
    yield "payload_cut_scalar", as_payload(payload(b"\x2b\x00\x00"))
    yield "payload_cut_count", as_payload(payload(b"\x34\x00"))
    yield "payload_huge_count", as_payload(payload(b"\xfb\xff\xff\xff\x00"))
    yield "list_empty", as_list(pack([-1]))
    yield "list", as_list(pack([-1] + COMMANDS), 1, 3)
    yield "list_codes", as_list(pack([70000] + [[c, payload(POINT)] for c in (
        0, 127, 128, 255, 256, 65535, 65536, 0x7FFFFFFF, -1, -32, -33, -128, -129, -32768, -32769, -(1 << 31))]))
    yield "list_sizes", as_list(pack([0] + [[1, b"x" * n] for n in (0, 1, 255, 256, 300)]))
    yield "list_long", as_list(pack([0] + [[i, payload(scalar(0x22, "i", i))] for i in range(200)]), 60, 130)
    yield "list_wide_heads", as_list(b"\xdd\0\0\0\x02\xd3" + b"\xff" * 8 + b"\xdc\0\x02\xcf" + b"\0" * 7 + b"\x05\xc6\0\0\0\x01A")
    yield "list_no_field", as_list(pack([]))
    yield "list_text_payload", as_list(pack([-1, [1, "x"]]))
    yield "list_code_too_large", as_list(pack([-1, [1 << 31, b""]]))
    yield "list_triple", as_list(pack([-1, [1, b"", 2]]))
    yield "list_hostile", as_list(b"\xdd\xff\xff\xff\xff\xff")
    one, two, many = 1, 2, 3
    code = struct.pack("<H", JUMP_ABS)
    yield "built_empty", built(b"")
    yield "built_plain", built((b"\x00" + code) * 3)
    yield "built_one_each", built(b"".join(
        bytes([one]) + code + bytes([kind]) + (b"\x02" if kind > 13 else b"") + b"\x01" * 64 for kind in range(23)))
    yield "built_two", built(bytes([two]) + code + b"\x07" + b"\x40" * 8 + b"\x03" + b"\x50" * 24)
    yield "built_many", built(bytes([many]) + code + b"\x10\x00\x04" + b"\x00\x01" + b"\x03\1\0\0\0" + b"\x0e\x03abc")
    yield "built_long_array", built(bytes([one]) + code + b"\x10\xff\x00\x80", first=0, last=1)
    yield "built_too_long", built(bytes([one]) + code + b"\x13\xff\xff\xff" + b"\x00" + code)
    yield "built_pieces", built((bytes([one]) + code + b"\x10\xff\x00\xc0") * 4)
    yield "built_loops", built(b"\x0b\x00\x05\x00\x00\x00" + b"\x00" + code + b"\x0b\x02" + b"\x0b\x01" + b"\x0b\x02")
    yield "built_exact_chunk", built((bytes([one]) + code + b"\x0e\xff\xff\xff") * 14 + bytes(
        [one]) + code + b"\x0e\xff" + struct.pack("<H", 3930))
    yield "built_over_chunk", built((bytes([one]) + code + b"\x0e\xff\xff\xff") * 14 + bytes(
        [one]) + code + b"\x0e\xff" + struct.pack("<H", 3931))
    yield "built_shared", built((b"\x00" + code) * 2 + b"\x0d\x00" + b"\x00" + code + b"\x0d\x02" + b"\x00\x22\x02" * 3
                                + b"\x0d\x02" + b"\x00" + code + b"\x0d\x01\x0d\x00\x0d\x02")
    yield "built_itself", built((b"\x00" + code) * 3 + b"\x0e" * 7 + b"\x0c\x05\x00" + b"\x0f\x01")
    yield "built_own_command", built((bytes([one]) + code + b"\x0e\x40" + b"z" * 64) * 3 + b"\x0c\x00\x00" * 6)
    yield "built_cleared", built((b"\x00" + code) * 3 + b"\x0d\x00" + b"\x0f\x00" + b"\x00" + code)


def buffers():
    drop, drop_all, receive, receive_claimed, full = 0, 1, 2, 3, 128

    def steps(*pairs):
        return b"".join(struct.pack("<BH", kind, count) for kind, count in pairs)

    yield "small", steps((receive, 6), (receive, 100), (drop, 106), (receive, 50), (drop, 25), (receive, 7))
    yield "moved", steps((receive, 4000), (drop, 3990), (receive, 2000), (drop, 100), (receive_claimed, 3000))
    yield "grown", steps(*[(receive_claimed | full, 0)] * 5, (drop, 10), (receive, 9), (drop_all, 0), (receive, 5))
    yield "full_and_moved", steps(*[(receive | full, 4096), (drop, 1)] * 8, (drop_all, 0), (receive | full, 1))
    yield "nothing", steps((receive, 0), (drop, 0), (drop_all, 0))


def texts():
    """A text, or "P", the number of a code and a payload."""
    shapes = {
        "list": "[ { JA, P2D[ X=1.5 Y=-2 ] }, { LON }, { MA, P2D[ X=0.1 Y=1e-07 ] } ]", "list_empty": "[  ]",
        "list_bare": "{LON}{LOF},,{NO}\n", "list_open": "[ {LON}", "list_twice": "[[{LON}]]", "blank": " ",
        "command": "{\v[\fLON\r]\t}", "version": "{NO,V255,I32[+7]}", "version_alone": "{ NO, V2 }",
        "version_as_value": "{ NO, V1 [ 5 ] }", "version_large": "{NO,V256}", "version_long": "{NO,V00000000000000000001}",
        "odd_value": "{NO,F64[ [{(, ]}", "unknown": "{XY, Foo[1]}", "unsupported": "{ NO, Unsupported value }",
        "scalars": "{NO,Bool[True],Byte[255],I16[-5],U16[5],I32[6],U32[7],I64[-8],U64[9],F64[.5]}",
        "points": "{NO,P2D[X=1Y=2],P3D[1 2 3],P4D[X=1 Y=2 Z=3 M=4],P2I[1,2],P3I[1-2-3],P4I[X = 1 2 3 M=4]}",
        "arrays": "{NO,ByteArr[1 2 ],U16Arr[],F64Arr[1, 2],P2DArr[( X=1 Y=2 ) (3 4),5 6],P3DArr[(1 2 3)]}",
        "arrays_whole": "{NO,P2IArr[( X=1 Y=2 ) ],P3IArr[(1,2,3)]}", "arrays_none": "{NO,P4DArr[(1 2 3 4)],P4IArr[]}",
        "numbers": "{NO,F64[5e3],F64[-.5E+10],F64[+5.25e-300],F64[1e-400],F64[5e-324],F64[-0]}",
        "point": "{NO,F64[5.]}", "point_twice": "{NO,P2D[1.2.3]}", "point_more": "{NO,P2D[5.e3 1]}", "signs": "{NO,F64[+-5]}",
        "large": "{NO,F64[1e309]}", "not_finite": "{NO,F64[nan],F64[-inf]}", "exponent": "{NO,P2D[1e 2]}",
        "too_few": "{MA,P2D[X=1 Y=]}", "too_many": "{MA,P2D[1 2 3]}", "swapped": "{MA,P2D[Y=1 X=2]}",
        "does_not_fit": "{NO,U16[65536]}", "fraction": "{NO,I32[1.5]}", "not_closed": "{NO,P2DArr[(1 2]}",
        "semicolon": "{JA,P2D[1;2]}", "parentheses": "{JA,P2D[(1,2)]}", "colons": "{JA,P2D[X:1 Y:2]}",
        "lower_case": "{JA,P2D[x=1 y=2]}", "bytes": "{NO,ByteArr[1; 2; 3;]}", "two_brackets": "{JA,P2D[[1,2]]}",
        "names_with_digits": "{JA,P2D[X1=5 X2=6]}", "names_with_e": "{NO,F64Arr[1e mm;2 e3 4e+ -.e5]}",
        "hidden_nan": "{NO,F64Arr[1 nan 2],P2D[X=1 Y=2 inf]}", "infinity": "{NO,F64[1],F64Arr[INFINITY,1]}",
        "nothing_but_names": "{NO,U16Arr[a;b]}", "remainder": "{NO,P2DArr[1 2 3]}", "bools": "{NO,Bool[True;]}",
    }
    for name, text in shapes.items():
        yield name, b" " + text.encode()
    yield "payload_all", b"P\x00" + payload(*SCALARS, *ARRAYS, version=9)
    yield "payload_not_finite", b"P\x01" + payload(scalar(0x2B, "d", float("nan")), scalar(0x2B, "d", float("inf")))
    yield "payload_broken", b"P\x02" + payload(SCALARS[0], b"\x2b\x00")


def discovery():
    """An answer to a search, a serial number or an address, each behind its letter."""
    seeds = {}
    reply = ("HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age=1800\r\nLOCATION: http://{}/\r\n"
             "USN: uuid:kelvo-{}::urn:schemas-upnp-veltro:device:kelvocarddevice:1\r\n\r\n")
    for name, host in (("ipv4", "192.168.1.7:49374"), ("ipv6", "[fe80::7]:49374"), ("zone", "[fe80::7%12]:49374"),
                       ("global", "[2001:db8::7]:1"), ("mapped", "[::ffff:1.2.3.4]:1"), ("no_port", "192.168.1.7"),
                       ("host_name", "card.local:49374"), ("bare_name", "card:1"), ("no_host", ":1"),
                       ("no_bracket", "[fe80::7:1"), ("no_zone", "[fe80::7%]:1"), ("odd_zone", "[fe80::7%eth0]:1"),
                       ("large_zone", "[fe80::7%4294967296]:1"), ("odd_bracket", "fe80::7]:1"), ("dots", "[1.2.3.4]:1")):
        seeds["reply_" + name] = "r" + reply.format(host, "12345")
    seeds["reply_no_dash"] = "rLOCATION:http://1.2.3.4:1\nUSN: 12345"
    seeds["reply_line_end"] = "rLOCATION:http://1.2.3.4:1\nUSN:\ta-12345\r"
    seeds["reply_twice"] = "rUSN:1\nLOCATION:http://1.2.3.4:1\nUSN:2::\nLOCATION:http://1.2.3.5:1\nLOCATION:x"
    for name, text in (("plain", "12345"), ("prefix", "KV712345"), ("prefixes", "kv7KK7V123"), ("inside", "1K7V72"),
                       ("long", "123456"), ("empty", ""), ("negative", "-1"), ("no_seven", "KV1")):
        seeds["serial_" + name] = "s" + text
    for name, text in (("ipv4", "192.168.1.7"), ("ipv6", "2001:db8::7"), ("scope", "fe80::7%4294967295"),
                       ("odd_scope", "fe80::7%+1"), ("scoped_ipv4", "1.2.3.4%1"), ("none", "card")):
        seeds["address_" + name] = "a" + text
    yield from ((name, text.encode()) for name, text in seeds.items())


def pages():
    """Requests to the virtual card's page, a part of the head a line, then the body."""
    here, token = "host 127.0.0.1:80\n", "token 0123456789abcdef\n"
    do = "method POST\npath /do\ntype application/json\n" + here + token
    seeds = {
        "do_charset": do.replace("json\n", "json; charset=UTF-8\n") + '{"do":"start"}',
        "do_type": do.replace("json\n", "json; charset=utf-16\n") + '{"do":"start"}',
        "do_token": do.replace("abcdef", "abcdee") + '{"do":"start"}',
        "do_origin": do + 'origin HTTP://127.0.0.1:80\n{"do":"resume"}',
        "do_foreign": do + 'origin http://evil.example\n{"do":"resume"}',
        "do_site": do + 'site same-site\n{"do":"resume"}',
        "host_twice": "method GET\npath /\n" + here + here,
        "host_other": "method GET\npath /\nhost evil.example\n",
        "method": "method DELETE\npath /\n" + here,
    }
    for name, path in (("state", "/state"), ("index", "/"), ("file", "/page.js"), ("none", "/none"),
                       ("drawing", "/drawing\nfrom 0"), ("drawing_far", "/drawing\nfrom 4294967295"),
                       ("drawing_odd", "/drawing\nfrom -1"), ("list", "/list\nid 7\nfrom 1"),
                       ("list_odd", "/list\nid 99999999999\nfrom 0")):
        seeds["get_" + name] = f"method GET\npath {path}\nhost CARD.example\nsite cross-site\n".replace(
            "site cross-site\n", "site cross-site\n" if name == "index" else "")
    for name, body in (("pin", '{"do":"pin","port":2,"pin":31,"high":true}'),
                       ("pin_output", '{"do":"pin","port":1,"pin":0,"high":true}'),
                       ("pin_large", '{"do":"pin","port":18446744073709551615,"pin":-1,"high":true}'),
                       ("pin_kind", '{"do":"pin","port":2.0,"pin":"0","high":1}'),
                       ("signal", '{"do":"signal","name":"go","set":true}'),
                       ("signal_id", '{"do":"signal","id":7,"set":false}'),
                       ("variable", '{"do":"variable","kind":"Boolean","id":7,"value":-2147483648}'),
                       ("fault", '{"do":"fault","text":"SetList:count=2:chance=5%:error=Out: of memory"}'),
                       ("fault_off", '{"do":"fault","text":"SetList:off"}'),
                       ("fault_odd", '{"do":"fault","text":"*:delay=1e999s:drop"}'),
                       ("deep", "[" * 2000), ("odd", '{"do":"\xff","do":1e999}'), ("none", "")):
        seeds["act_" + name] = do + body
    yield from ((name, text.encode("latin-1")) for name, text in seeds.items())


def sessions():
    """Lines, frames, recordings to be replayed and packets, each behind its letter."""
    lines = {
        "request": '"way":"to card","kind":"request","id":5,"method":"Set","arguments":[1,{"a":[2.5,"x"]}]',
        "response": '"way":"from card","kind":"response","id":5,"method":"Set","result":{"base64":"AQI="}',
        "error": '"way":"from card","kind":"error","id":5,"error":["no","",null]',
        "notification": '"way":"from card","kind":"notification","values":[1,7]',
        "raw": '"way":"from card","kind":"raw","raw":{"base64":"AQI="}', "ended": '"way":"from card","kind":"ended"',
        "packed": '"way":"to card","kind":"request","id":6,"method":"M","packed":{"base64":"kQE="}',
        "left_out": '"way":"from card","kind":"response","id":6,"method":"FileRead","leftOut":6,"result":null',
        "opened": '"kind":"opened"', "missing": '"kind":"missing","frames":3',
        "missing_bytes": '"kind":"missing","way":"to card","bytes":3',
    }
    whole = {name: '{"time":0.5,"connection":1,' + rest + "}" for name, rest in lines.items()}
    for name, line in whole.items():
        yield "line_" + name, b"L" + line.encode()
    start = '{"kelvoSession":1,"started":"2026","by":"me","firmware":"1","serialNumber":"2"}\n'
    yield "replay", b"R[1,{\"a\":[2.5]}]\n" + (start + "\n".join(whole.values()) + "\n").encode()
    yield "replay_cut", b"R[]\n" + (start + whole["request"][:40]).encode()
    yield "replay_version", b"R[]\n" + start.replace(":1,", ":2,").encode()
    yield "frame_request", b"F" + frame(REQUEST, pack_int(5) + pack("Set") + pack([1, 2.5, "x", b"y", None]))
    yield "frame_none", b"F"
    yield "frame_response", b"F" + response(5, {"a": [1, float("nan")]})
    yield "frame_error", b"F" + error_response(5, error("no"))
    yield "frame_notification", b"F" + notification(1, 7)

    def packet(to_card, sequence, acknowledged, flags, content=b""):
        ports = (5000, 49374) if to_card else (49374, 5000)
        tcp = struct.pack(">HHIIBBHI", *ports, sequence, acknowledged, 0x50, flags, 0, 0) + content
        ip = struct.pack(">BBHIBBHII", 0x45, 0, 20 + len(tcp), 0, 64, 6, 0, *((1, 2) if to_card else (2, 1)))
        return bytes([len(ip + tcp), 0]) + ip + tcp
    ask = frame(REQUEST, pack_int(5) + pack("Set") + pack([]))
    begin = packet(True, 9, 0, 2) + packet(False, 99, 10, 18)
    yield "packets", b"P\x02" + begin + packet(True, 10, 100, 16, ask) + packet(False, 100, 10 + len(ask), 17)
    yield "packets_late", (b"P\x02" + begin + packet(True, 14, 100, 16, ask[4:]) + packet(True, 10, 100, 16, ask[:4]) +
                           packet(True, 10, 100, 16, ask))
    yield "packets_lost", b"P\x02" + begin + packet(True, 14, 100, 16, ask[4:]) + packet(False, 100, 40, 16, response(5, 1))
    yield "packets_reset", b"P\x02" + begin + packet(True, 10, 100, 16, ask[:5]) + packet(False, 100, 10, 4)


def main():
    corpus = pathlib.Path(__file__).resolve().parent / "corpus"
    for target, seeds in (("BufferFuzzer", buffers()), ("CommandFuzzer", commands()),
                          ("DiscoveryFuzzer", discovery()), ("FrameFuzzer", frames()), ("PageFuzzer", pages()),
                          ("SessionFuzzer", sessions()), ("StreamFuzzer", streams()), ("TextFuzzer", texts())):
        place = corpus / target
        place.mkdir(parents=True, exist_ok=True)
        for name, content in seeds:
            (place / name).write_bytes(content)


if __name__ == "__main__":
    main()
