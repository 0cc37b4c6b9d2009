"""Nothing of the library is missing in Python, and everything has help."""
import os
import pathlib
import re
import subprocess
import sys

import kelvo
from kelvo import _core

sys.path.insert(0, os.environ["BINDINGS"])
from faces import WITHOUT  # noqa: E402


def helps():
    for owner in [kelvo, _core, *(thing for thing in {**vars(_core), **vars(kelvo)}.values() if isinstance(thing, type))]:
        yield owner.__doc__ or ""
        for name, thing in vars(owner).items():
            if not name.startswith("__") or name == "__init__":
                yield (getattr(thing, "__func__", None) or thing).__doc__ or ""


def test_every_function_is_reached():
    lines = subprocess.run(["nm", "-D", "--defined-only", os.environ["LIBRARY"]], check=True, capture_output=True, text=True)
    exported = {line.split()[-1].split("@")[0] for line in lines.stdout.splitlines()}
    exported = {name for name in exported if name.startswith("vl")}
    named = {name for text in helps() for part in re.findall(r"\bC(?:, for its defaults)?: (.*)|close\(\): (.*)", text, re.S)
             for name in re.findall(r"\bvl\w+", " ".join(part))}
    assert len(exported) > 400
    assert exported - named == set(WITHOUT)
    assert named - exported == set()


def test_every_method_has_help():
    bare = [f"{kind.__name__}.{name}" for kind in vars(kelvo).values() if isinstance(kind, type)
            and kind.__module__.startswith("kelvo") for name, thing in vars(kind).items()
            if not name.startswith("_") and callable(thing) and not (getattr(thing, "__doc__", "") or "").strip()]
    assert bare == []


def test_help_speaks_python():
    wrong = [line for text in helps() for line in text.splitlines()
             if not line.startswith("C: ") and re.search(r"\bor -1\b|Returns 0|`\*|Remote\.|`buffer`", line)]
    assert wrong == []
    text = kelvo.List.arc_abs.__doc__
    assert "field units" in text and "Raises Error" in text and "arc_abs(cx: float, cy: float, sweep: float)" in text


def test_the_package_is_complete():
    folder = pathlib.Path(kelvo.__file__).parent
    assert (folder / "py.typed").exists() and (folder / "_core.pyi").exists()
