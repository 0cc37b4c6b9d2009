"""Runs, waits and callbacks, also of asyncio."""
import asyncio
import contextlib
import sys
import threading
import time

import pytest

import kelvo
from conftest import VirtualCard


@pytest.fixture
def steps(commands):
    for value in (7, 8, 9):
        commands.progress(value)
    return commands


@pytest.fixture
def endless(commands):
    """Tells a progress value, and goes on until somebody ends it."""
    commands.progress(1)
    commands.wait_for_signal("never", -1)
    return commands


def test_a_run_yields_its_progress_and_leaves_nothing(card, steps):
    assert list(card.run(steps)) == [7, 8, 9]
    assert list(card.run(steps, list_id=4)) == [7, 8, 9]
    assert card.lists.wait_for_progress(0) is None
    assert card.lists.wait_for_list_done(0) is None
    assert card.lists.wait_for_list_idle(0) is None


def test_a_run_that_fails_or_is_left_or_aborted(card, endless, virtual_card):
    for value in card.run(endless):
        break
    assert not card.lists.is_execution_in_progress()
    with kelvo.connect("127.0.0.1", virtual_card.port) as other, pytest.raises(kelvo.Error, match="aborted"):
        for value in card.run(endless):
            other.lists.abort_execution()
    bad = card.new_list()
    bad.branch_list(77)
    with pytest.raises(kelvo.Error, match="77"):
        list(card.run(bad))


def test_waits(card, steps):
    card.lists.set(1, steps)
    card.lists.execute(1)
    assert [card.lists.wait_for_progress(30) for _ in range(3)] == [7, 8, 9]
    assert card.lists.wait_for_list_done() == 1
    usual = card.get_timeout()
    begin = time.monotonic()
    assert card.lists.wait_for_progress(0.2) is None
    assert 0.2 <= time.monotonic() - begin < usual / 1000
    card.set_timeout(100)
    assert card.lists.wait_for_progress() is None
    card.set_timeout(usual)  # calls are to be answered in time, whatever else the machine does
    assert card.serial_port.read(0, 0) == b""
    card.serial_port.write(0, b"hello")
    assert card.serial_port.read(0, 5) == b"hello"
    assert card.gpio.wait_for_change(kelvo.IOPort.PORT_A, 1, 0, 0.1) is None


def test_an_interrupted_wait_ends(card):
    ended = threading.Event()

    def interrupt():
        while not ended.wait(0.1):  # one that comes before the wait is not for it
            card.lists.interrupt_wait_for_progress()
    interrupting = threading.Thread(target=interrupt)
    interrupting.start()
    begin = time.monotonic()
    assert card.lists.wait_for_progress(60) is None
    assert time.monotonic() - begin < 20
    ended.set()
    interrupting.join()


def test_others_run_while_a_call_waits(card):
    waiting = threading.Thread(target=card.lists.wait_for_progress, args=(60,))
    waiting.start()
    begin, count = time.monotonic(), 0
    while time.monotonic() - begin < 0.2 or count < 1000:
        count += 1
    assert waiting.is_alive()
    while waiting.is_alive():
        card.lists.interrupt_wait_for_progress()
        waiting.join(0.1)


def test_callbacks_and_their_registrations(card, steps):
    seen = []
    me = threading.get_ident()
    with card.on_progress(lambda value: seen.append((value, threading.get_ident() == me))) as first:
        idle = threading.Event()
        with card.on_list_idle(lambda list_id: idle.set()):
            list(card.run(steps))
            assert idle.wait(30)
        assert seen == [(7, False), (8, False), (9, False)]
        first.close()
        list(card.run(steps))
        assert len(seen) == 3
    kept = [card.on_progress(print) for _ in range(5)]
    with pytest.raises(kelvo.Error, match="Unable to register callback!"):
        card.on_progress(print)
    for registration in kept:
        registration.close()
    with pytest.raises(TypeError):
        card.on_progress(1)


def test_an_exception_in_a_callback_is_reported_and_ends_nothing(card, steps, monkeypatch):
    reports = []
    monkeypatch.setattr(sys, "unraisablehook", lambda report: reports.append(type(report.exc_value)))
    with card.on_progress(lambda value: 1 / 0):
        assert list(card.run(steps)) == [7, 8, 9]
    assert reports == [ZeroDivisionError] * 3 and card.is_connected()


def test_an_error_event_tells_its_kind_and_text(card):
    bad = card.new_list()
    bad.branch_list(77)
    seen = []
    with card.on_error_event(lambda kind, text: seen.append((kind, text))), contextlib.suppress(kelvo.Error):
        list(card.run(bad))
    assert [kind for kind, _ in seen] == [kelvo.RpcEventType.UNKNOWN] and "77" in seen[0][1]


def test_what_a_callback_may_not_do(card, steps):
    seen = []

    def call(value):
        for act in (card.close, lambda: card.lists.execute(1)):
            with pytest.raises(kelvo.Error) as raised:
                act()
            seen.append(str(raised.value))
    with card.on_progress(call):
        list(card.run(steps))
    assert seen == ["A callback must not disconnect.", "A callback must not wait for its own connection."] * 3


def test_closing_waits_for_a_callback_that_runs(card, steps):
    began, ended = threading.Event(), []

    def slow(value):
        began.set()
        time.sleep(0.3)
        ended.append(value)
    registration = card.on_progress(slow)
    card.lists.set(1, steps)
    card.lists.execute(1)
    assert began.wait(30)
    registration.close()
    count = len(ended)
    assert count >= 1
    assert card.lists.wait_for_list_idle(30) == 1
    assert len(ended) == count


def test_asyncio(card, steps):
    async def main():
        assert [value async for value in card.run_async(steps)] == [7, 8, 9]
        card.lists.set(1, steps)
        late = asyncio.create_task(card.wait_for_list_done_async(30))
        await asyncio.sleep(0.05)
        card.lists.execute(1)
        assert await late == 1
        assert [await card.wait_for_progress_async(30) for _ in range(3)] == [7, 8, 9]
        assert await card.wait_for_progress_async(0.05) is None
        cancelled = asyncio.create_task(card.wait_for_progress_async(30))
        await asyncio.sleep(0.05)
        cancelled.cancel()
        with pytest.raises(asyncio.CancelledError):
            await cancelled
        assert await card.wait_for_list_idle_async(30) == 1

    asyncio.run(main())


@pytest.mark.parametrize("way", ["wait", "wait_async", "run"])
def test_a_lost_connection_ends_waits(way):
    virtual = VirtualCard()
    with contextlib.closing(kelvo.connect("127.0.0.1", virtual.port)) as card:
        commands = card.new_list()
        commands.wait_for_signal("never", -1)
        timer = threading.Timer(0.3, virtual.end)
        timer.start()
        begin = time.monotonic()
        with pytest.raises(kelvo.Error):
            if way == "wait":
                card.lists.wait_for_progress(60)
            elif way == "wait_async":
                asyncio.run(card.wait_for_progress_async(60))
            else:
                list(card.run(commands))
        assert time.monotonic() - begin < 20
        timer.join()
