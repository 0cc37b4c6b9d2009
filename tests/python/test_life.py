"""Ends: of connections, of processes and of what they leave open."""
import gc
import signal
import time
import warnings

import pytest

import kelvo


def test_close_is_harmless_twice(virtual_card):
    card = kelvo.connect("127.0.0.1", virtual_card.port)
    commands = card.new_list()
    registration = card.on_progress(print)
    card.close()
    card.close()
    assert card.closed
    registration.close()
    commands.close()
    with pytest.raises(kelvo.Error, match="no connection corresponding"):
        card.laser.get_config()
    with pytest.raises(kelvo.Error, match="Port must be between"):
        kelvo.connect("127.0.0.1", 70000)
    found = kelvo.CardInfo(serial_number="12345", port=virtual_card.port, ip_address="127.0.0.1")
    with kelvo.connect(found) as again:
        assert again.system.get_card_serial_number() == "12345"


def test_what_is_left_open_warns_and_is_closed(virtual_card):
    card = kelvo.connect("127.0.0.1", virtual_card.port)
    commands = card.new_list()
    with warnings.catch_warnings(record=True) as seen:
        warnings.simplefilter("always")
        del card
        gc.collect()
        assert not seen, "a list keeps its card"
        del commands
        gc.collect()
    assert [str(one.message) for one in seen] == [f"unclosed connection to 127.0.0.1:{virtual_card.port}"]


def test_a_forked_child_is_told(run_program):
    code, output, errors = run_program("""
        commands = card.new_list()
        card.on_progress(print)
        if os.fork() == 0:
            for act in (card.system.get_time, card.close, lambda: commands.mark_abs(1, 2), lambda: card.on_progress(print)):
                try:
                    act()
                except kelvo.Error as error:
                    print(error, flush=True)
            del commands, card
            sys.exit(0)
        os.wait()
        print(len(commands), card.is_connected())
        card.close()
        """)
    assert (code, errors) == (0, "")
    assert output.splitlines() == ["The connection belongs to another process."] * 4 + ["0 True"]


ENDS = {  # what a program does last, and what is among its errors
    "open": ("commands = card.new_list(); card.on_progress(print)", ["unclosed connection"]),
    "closed": ("card.close()", []),
    "in a cycle with its callback": ("card.on_progress(lambda value: card); del card", ["unclosed connection"]),
    "a daemon in a wait": ("""
        def wait():
            while True:
                card.lists.wait_for_progress(0.001)
        threads = [threading.Thread(target=wait, daemon=True) for _ in range(8)]
        for thread in threads: thread.start()
        time.sleep(0.2)""", ["unclosed connection"]),
    "while callbacks come": ("""
        commands = card.new_list()
        commands.loop_start(2000); commands.progress(1); commands.sleep(100); commands.loop_end()
        came = threading.Event()
        card.on_progress(lambda value: came.set())
        card.lists.set(9, commands); card.lists.execute(9)
        came.wait(5)""", ["unclosed connection"]),
    "in the middle of a callback": ("""
        came = threading.Event()
        def slow(value):
            came.set(); time.sleep(0.3); print("ended")
        card.on_progress(slow)
        commands = card.new_list(); commands.progress(1)
        card.lists.set(8, commands); card.lists.execute(8)
        came.wait(5)""", ["unclosed connection"]),
}


@pytest.mark.parametrize("way", ENDS)
def test_the_interpreter_ends_well(run_program, way):
    text, expected = ENDS[way]
    code, output, errors = run_program(text)
    assert code == 0, errors
    assert [part for part in expected if part not in errors] == []
    lines = [line for line in errors.splitlines() if "unclosed connection" not in line and "Object allocated at" not in line]
    assert not any(word in errors for word in ("Traceback", "Fatal", "terminate")), errors
    assert bool(errors) == bool(expected), lines
    assert ("ended" in output) == (way == "in the middle of a callback")


WAITS = ["card.lists.wait_for_progress(20)", "card.serial_port.read(0, 20)", "card.gpio.wait_for_change(0, 1, 0, 20)",
         "list(card.run(endless))"]


@pytest.mark.parametrize("wait", WAITS)
def test_ctrl_c_ends_a_wait_at_once(start_program, wait):
    for _ in range(20):  # others may use the machine, too
        program = start_program(f"""
            endless = card.new_list()
            endless.wait_for_signal("never", -1)
            with card:
                try:
                    print("ready", flush=True)
                    {wait}
                except KeyboardInterrupt:
                    print(time.clock_gettime(time.CLOCK_MONOTONIC), flush=True)
            """)
        assert program.stdout.readline() == "ready\n"
        time.sleep(0.3)
        sent = time.clock_gettime(time.CLOCK_MONOTONIC)
        program.send_signal(signal.SIGINT)
        took = float(program.stdout.readline()) - sent
        _, errors = program.communicate(timeout=180)
        assert program.returncode == 0 and errors == ""
        if took < 0.1:
            break
    assert took < 0.1
