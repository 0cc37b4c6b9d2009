#!/usr/bin/env python3
"""The tool in a real terminal. Arguments: the tool, the virtual card; then those of unittest."""
import re
import signal
import sys
import time
import unittest

from driver import Card, Dam, Terminal, wait_until

TOOL, PROGRAM = sys.argv[1:3]
LONG = "{ SL, F64[ 40000 ] }" * 1500  # a minute
SHORT = "{ SL, F64[ 40000 ] }" * 150  # six seconds


class Bars(unittest.TestCase):
    def test_tell_the_part_and_the_time_left(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.write("short", SHORT)
            terminal.enter("kelvo list run short; echo code $?")
            terminal.wait("^List 1 done: .*\n^code 0$")
            terminal.wait(r"^Running list 1 \[#+\] 100 %$")
            # Also if nobody looked at the right moment.
            wait_until(lambda: re.search(r"Running list 1 \[#+\.+\] +[0-9]+ % [0-9] s left", terminal.written()),
                       terminal.written)
            card.write("brief", SHORT[:200])
            terminal.enter("kelvo list run brief --quiet 2>remarks; wc -c <remarks")
            terminal.wait("^0$")

    def test_are_redrawn_ten_times_a_second(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.write("job", "x" * 20000000)  # in 2441 pieces
            start = time.monotonic()
            terminal.enter("kelvo files put job JOBFILES/job; echo code $?")
            terminal.wait("^code 0$")
            seconds = time.monotonic() - start
            wait_until(lambda: "code 0" in terminal.written(), terminal.written)
            shown = len(re.findall(r"\rSending 'job' ", terminal.written()))
            self.assertGreater(shown, 1)
            self.assertLess(shown, 10 * seconds + 3)

    def test_are_two_lines_where_there_is_no_terminal(self):
        with Card(TOOL, PROGRAM, "--speed", "max") as card, Terminal(card) as terminal:
            card.write("short", SHORT)
            terminal.enter("kelvo files put short JOBFILES/short 2>remarks; cat remarks; echo code $?")
            terminal.wait("^Sending 'short'\\.\n^Sending 'short': done\\.\n^code 0$")


class Colours(unittest.TestCase):
    def test_are_for_terminals_only(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.run("config set laser.FpsStart=2")
            escape = "\x1b\\["
            terminal.enter("kelvo config diff --defaults laser")
            terminal.wait(f"laser.FpsStart  {escape}31m2.0 *{escape}", "-e")
            for line in ("NO_COLOR=1 kelvo config diff --defaults laser; echo code $?",
                         "kelvo config diff --defaults laser | cat; echo code ${PIPESTATUS[0]}"):
                terminal.enter(line)
                terminal.wait("^code 4$")
                self.assertRegex(terminal.screen("-e"), "laser.FpsStart  2.0   0.0", line)


class TheLaser(unittest.TestCase):
    def test_is_asked_for_before_it_is_switched_on(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            for line, answer, code, armed, pilot in (("laser arm", "n", 1, False, False), ("laser arm", "", 1, False, False),
                                                     ("laser pilot on", "yes", 0, False, True),
                                                     ("laser arm", "y", 0, True, True)):
                terminal.enter(f"kelvo {line}; echo code $?")
                terminal.wait(r"\? \[y/N\]$")
                status = card.run("laser status")
                terminal.enter(answer)
                terminal.wait(f"^code {code}$")
                self.assertEqual(card.run("laser status").split()[1::2][:2],
                                 ["yes" if pilot else "no", "yes" if armed else "no"], line + answer)
                self.assertNotIn("armed  yes", status, "before the answer")


class CtrlC(unittest.TestCase):
    def test_ends_a_run_and_leaves_the_card_idle(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.write("long", LONG)
            terminal.enter("kelvo list run long; echo code $?")
            terminal.wait(r"^Running list 1 \[.* [1-9][0-9]? %")
            terminal.press("C-c")
            terminal.wait("^The card is idle.\n^code 130$")
            self.assertEqual(card.run("call IsExecutionInProgress"), "false\n")

    def test_that_comes_twice_leaves_at_once(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.write("long", LONG)
            # The shell that waits for it does not mind what comes a moment too late.
            terminal.enter("bash -c 'trap \"\" INT; kelvo list run long; echo code $?'")
            terminal.wait(r"^Running list 1 \[")
            card.process.send_signal(signal.SIGSTOP)  # so that it cannot be left in order
            try:
                end = time.monotonic() + 10  # the call that waits for the card takes longer
                while "code 130" not in terminal.screen():
                    self.assertLess(time.monotonic(), end, terminal.screen())
                    terminal.press("C-c")
                    time.sleep(0.05)
                self.assertNotIn("The card is idle", terminal.screen())
            finally:
                card.process.send_signal(signal.SIGCONT)

    def test_ends_an_upload_of_which_nothing_stays(self):
        with Card(TOOL, PROGRAM) as card, Terminal(card) as terminal:
            card.write("job", "{ JA, P2D[ 1 2 ] }" * 200000)
            for verb, there in (("list put 7 job", "list status 7"), ("list run job --id 7", "list status 7"),
                                ("files put job JOBFILES/job", "files ls JOBFILES")):
                dam = Dam(card.port, 2000000)
                terminal.enter(f"kelvo --card 127.0.0.1:{dam.listener.getsockname()[1]} {verb}; echo code $?")
                wait_until(dam.full.is_set, terminal.screen)
                terminal.wait("^Sending ")
                self.assertIn(card.run(there), ("ready\n", "JOBFILES/job\n"))
                terminal.press("C-c")
                terminal.wait("^(The card has no .*|kelvo: Interrupted. .* is not on the card.)\n^code 130$")
                self.assertIn(card.run(there), ("no such list\n", ""))


unittest.main(argv=sys.argv[:1] + sys.argv[3:], warnings="ignore")
