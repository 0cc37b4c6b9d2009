"""Builds the package by the project's CMake: the library, which goes into the package, and the module over it."""
import os
import pathlib
import re
import subprocess
import sys

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Build(build_py):
    def run(self):
        tree = pathlib.Path(self.get_finalized_command("build").build_temp).resolve()
        options = {"CMAKE_BUILD_TYPE": "Release", "KELVO_TESTS": "OFF", "KELVO_BENCH": "OFF", "KELVO_PYTHON_BUNDLED": "ON",
                   "KELVO_PYTHON_DIR": ".", "Python_EXECUTABLE": sys.executable}
        run = [["-S", ROOT, "-B", tree, *(f"-D{name}={value}" for name, value in options.items())],
               ["--build", tree, "--target", "kelvo_python", "--parallel", str(os.cpu_count())],
               ["--install", tree, "--component", "python", "--prefix", pathlib.Path(self.build_lib).resolve()]]
        for arguments in run:
            subprocess.run(["cmake", *map(str, arguments)], check=True)


class Compiled(Distribution):
    def has_ext_modules(self):
        return True


setup(version=re.search(r"VERSION ([\d.]+) LANG", (ROOT / "CMakeLists.txt").read_text())[1], packages=["kelvo"],
      cmdclass={"build_py": Build}, distclass=Compiled)
