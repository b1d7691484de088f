"""The compiled module of the Python package, built by the project's CMake build.

pip (through pyproject.toml) runs build_ext, which configures this project for
the building interpreter with the tests, tools and benchmarks off, builds the
target vekta_python (python/CMakeLists.txt: the library's code from the same
definition as the shared library, both copies of the planning core and the same
dispatch) and copies the module into the package. CMAKE_BUILD_PARALLEL_LEVEL
sets the build's jobs (the processor count by default).
"""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent


def project_version():
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"project\(vekta\s+VERSION\s+([0-9.]+)", text).group(1)


class CMakeExtension(Extension):
    def __init__(self, name, target):
        super().__init__(name, sources=[])
        self.target = target


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = Path(self.build_temp).resolve() / "cmake"
        configure = [
            "cmake", "-S", str(ROOT), "-B", str(build), "--log-level=WARNING",
            "-DCMAKE_BUILD_TYPE=Release",
            "-DVEKTA_BUILD_TESTS=OFF", "-DVEKTA_BUILD_TOOLS=OFF", "-DVEKTA_BUILD_BENCHMARKS=OFF",
            "-DVEKTA_BUILD_PYTHON=ON", f"-DPython3_EXECUTABLE={sys.executable}",
        ]
        try:
            import pybind11

            configure.append(f"-Dpybind11_DIR={pybind11.get_cmake_dir()}")
        except ImportError:
            pass  # CMake looks for pybind11-dev's package itself
        subprocess.run(configure, check=True)
        if not (build / "python" / "cmake_install.cmake").exists():
            sys.exit(f"vekta: CMake found no pybind11 for {sys.executable} "
                     "(Debian: apt install pybind11-dev python3-dev)")
        command = ["cmake", "--build", str(build), "--target", ext.target]
        if self.parallel or "CMAKE_BUILD_PARALLEL_LEVEL" not in os.environ:
            command += ["-j", str(self.parallel or os.cpu_count() or 1)]
        subprocess.run(command, check=True)
        out = Path(self.get_ext_fullpath(ext.name))
        out.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(build / "python" / "vekta" / out.name, out)


setup(
    version=project_version(),
    package_dir={"": "python"},
    packages=["vekta"],
    package_data={"vekta": ["py.typed", "*.pyi"]},
    zip_safe=False,
    ext_modules=[CMakeExtension("vekta._vekta", target="vekta_python")],
    cmdclass={"build_ext": CMakeBuild},
)
