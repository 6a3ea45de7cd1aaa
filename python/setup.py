"""A wheel that carries the library: for one platform, and for every Python 3 on it.

ZEBCORE_LIBRARY in the environment names the file of the library. Without it the wheel has none, goes
everywhere, and looks for the library where the system keeps it.
"""
import os
import re
import shutil
import sys
from pathlib import Path

from setuptools import setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

here = Path(__file__).resolve().parent
library = os.environ.get("ZEBCORE_LIBRARY")
project = (here.parent / "CMakeLists.txt").read_text()
version = re.search(r"project\(zebcore VERSION ([\d.]+)", project).group(1)


class WithLibrary(build_py):
    def run(self):
        super().run()
        if library:
            name = "zebcore.dll" if sys.platform == "win32" else "libzebcore.so"
            shutil.copyfile(library, Path(self.build_lib) / "zebcore" / name)


class ForOnePlatform(bdist_wheel):
    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = not library

    def get_tag(self):
        tag = super().get_tag()
        return ("py3", "none", tag[2]) if library else tag


setup(version=version, cmdclass={"build_py": WithLibrary, "bdist_wheel": ForOnePlatform})
