"""Builds the compiled half of libnote with the project's CMake, for the interpreter that
runs the build, and ships libNote.so beside it so that the installed package needs nothing
else of the project. The version is the CMake project's."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent.parent


def project_version() -> str:
    return re.search(r"project\(libNote VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)


class CMakeBuild(build_ext):
    def build_extension(self, ext: Extension) -> None:
        build = Path(self.build_temp).resolve() / "cmake"
        subprocess.run(["cmake", "-S", str(ROOT), "-B", str(build), "-DCMAKE_BUILD_TYPE=Release",
                        f"-DPython_EXECUTABLE={sys.executable}", "-DLIBNOTE_BUILD_PYTHON=ON",
                        "-DLIBNOTE_BUILD_TESTS=OFF", "-DLIBNOTE_BUILD_EXAMPLES=OFF", "-DLIBNOTE_BUILD_BENCH=OFF",
                        "-DLIBNOTE_BUILD_TOOLS=OFF",
                        # The module is copied out of the build tree: it must look for
                        # libNote.so beside itself, as installed.
                        "-DCMAKE_BUILD_WITH_INSTALL_RPATH=ON"], check=True)
        subprocess.run(["cmake", "--build", str(build), "--target", "_libnote", "-j", str(os.cpu_count() or 1)],
                       check=True)
        target = Path(self.get_ext_fullpath(ext.name)).resolve()
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(build / "python" / "libnote" / target.name, target)
        # Under the name the module asks for (its soname), as a file rather than a link.
        soname = next(p for p in (build / "src").glob("libNote.so.*") if p.suffix[1:].isdigit() and p.name.count(".") == 2)
        shutil.copyfile(soname.resolve(), target.parent / soname.name)


setup(version=project_version(), ext_modules=[Extension("libnote._libnote", sources=[])],
      cmdclass={"build_ext": CMakeBuild})
