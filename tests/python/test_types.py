"""What a checker of types makes of the stubs and the examples, and of programs with mistakes."""
import os
import pathlib
import subprocess
import sys

import pytest

import kelvo
from conftest import VirtualCard

PACKAGE = pathlib.Path(kelvo.__file__).parent
EXAMPLES = sorted((pathlib.Path(os.environ["KELVO_SOURCE"]) / "examples" / "python").glob("*.py"))


@pytest.fixture(scope="session")
def check(tmp_path_factory):
    """Runs a module in a folder of all such runs, so that what mypy has found out is kept."""
    folder = tmp_path_factory.mktemp("types")

    def run(*arguments):
        return subprocess.run([sys.executable, "-m", *arguments], capture_output=True, text=True, cwd=folder,
                              env={**os.environ, "MYPYPATH": str(PACKAGE.parent)})
    return run


def test_stubs_and_module_agree(check):
    done = check("mypy.stubtest", "kelvo")
    assert done.returncode == 0, done.stdout


def test_package_and_examples_are_clean(check):
    assert EXAMPLES
    done = check("mypy", "--strict", "-p", "kelvo")
    assert done.returncode == 0, done.stdout
    done = check("mypy", "--strict", *map(str, EXAMPLES))
    assert done.returncode == 0, done.stdout


def test_mistakes_are_found(check, tmp_path):
    (tmp_path / "wrong.py").write_text("""import kelvo
with kelvo.connect("127.0.0.1") as card:
    card.laser.arm_laser("yes")
    card.laser.get_config().power_scale = "2"
    card.new_list().mark_abs(1, 2, 3, 4)
    card.new_list().mark_abs([[1, 2]])
    for value in card.run(card.new_list()):
        value.upper()
    kelvo.LaserConfig(nothing=1)
    x: str = card.scanner.get_nominal_position()
    y: int = card.lists.wait_for_progress()
""")
    done = check("mypy", "--strict", str(tmp_path / "wrong.py"))
    lines = {int(line.split(":")[1]) for line in done.stdout.splitlines() if ": error:" in line}
    assert lines == {3, 4, 5, 6, 8, 9, 10, 11}, done.stdout


@pytest.mark.parametrize("example", EXAMPLES, ids=lambda path: path.stem)
def test_example_marks(example, tmp_path):
    picture = tmp_path / "picture.svg"
    virtual = VirtualCard("--speed", "max", "--svg", str(picture))
    done = subprocess.run([sys.executable, "-X", "dev", example, "127.0.0.1", str(virtual.port)], capture_output=True,
                          text=True, timeout=180)
    virtual.program.terminate()
    virtual.program.communicate()
    assert (done.returncode, done.stderr) == (0, "")
    assert "100 %" in done.stdout and picture.stat().st_size > 2000
