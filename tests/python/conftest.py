"""A virtual card of the tests' own. The environment says where the programs are (CMakeLists.txt)."""
import os
import subprocess
import sys
import textwrap

import pytest

import kelvo


class VirtualCard:
    def __init__(self, *options):
        self.program = subprocess.Popen([os.environ["VIRTUAL_CARD"], "--port", "0", *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.port = int(self.program.stdout.readline().rsplit(":", 1)[1])

    def tell(self, line):
        self.program.stdin.write(line + "\n")
        self.program.stdin.flush()

    def end(self):
        self.program.kill()
        self.program.communicate()


@pytest.fixture(scope="session")
def virtual_card():
    virtual = VirtualCard("--speed", "max")
    yield virtual
    virtual.end()


@pytest.fixture
def card(virtual_card):
    with kelvo.connect("127.0.0.1", virtual_card.port) as connected:
        yield connected


@pytest.fixture
def commands(card):
    return card.new_list()


@pytest.fixture
def start_program(virtual_card):
    """Starts a program in Python that has connected as `card`, on an interpreter of its own."""
    def start(text, *options):
        head = f"import kelvo, os, signal, sys, threading, time\ncard = kelvo.connect('127.0.0.1', {virtual_card.port})\n"
        head += "card.lists.abort_execution()\n"  # what the program before it has left running
        return subprocess.Popen([sys.executable, "-X", "dev", *options, "-c", head + textwrap.dedent(text)],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    return start


@pytest.fixture
def run_program(start_program):
    """The same to its end: exit code, what it wrote, its errors."""
    def run(text, *options):
        program = start_program(text, *options)
        output, errors = program.communicate(timeout=180)
        return program.returncode, output, errors
    return run
