"""Builds qallib: the pybind11 module over the library's own sources, compiled once into the
extension with the library's floating-point flags.

Install from a checkout (PyPI is not needed, nothing is downloaded):

    /usr/bin/python3 -m venv --system-site-packages .venv
    .venv/bin/pip install --no-build-isolation --no-index ./python
"""

import re
import sys
from pathlib import Path

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
from setuptools import setup

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent

# The version comes from the project() line of the top-level CMakeLists.txt.
_project = re.search(r"project\(QalLib\s+VERSION\s+([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
if not _project:
    sys.exit("setup.py: no project(QalLib VERSION ...) line in CMakeLists.txt")
VERSION = _project.group(1)

# qal/version.h, generated from the template the CMake build configures, into the build
# tree (rewritten only when its text changes, so that an unchanged tree is not rebuilt).
GENERATED = HERE / "build" / "generated"
_major, _minor, _patch = (VERSION.split(".") + ["0", "0"])[:3]
_version_header = (ROOT / "cmake" / "version.h.in").read_text()
for _name, _value in (("MAJOR", _major), ("MINOR", _minor), ("PATCH", _patch)):
    _version_header = _version_header.replace(f"@PROJECT_VERSION_{_name}@", _value)
if "@" in _version_header:
    sys.exit("setup.py: cmake/version.h.in holds a placeholder that setup.py does not fill")
_version_path = GENERATED / "qal" / "version.h"
if not _version_path.exists() or _version_path.read_text() != _version_header:
    _version_path.parent.mkdir(parents=True, exist_ok=True)
    _version_path.write_text(_version_header)

# Every source of the library, as the CMake build compiles it for the installed product
# (no test hooks), and the binding files.
library_sources = sorted(str(path) for path in (ROOT / "src").rglob("*.cpp"))
binding_sources = sorted(str(path) for path in (HERE / "src").glob("*.cpp"))
# Any change to a header rebuilds the module (setuptools compares times with these too).
headers = sorted(str(path) for folder in (ROOT / "include", ROOT / "src", HERE / "src", GENERATED)
                 for path in folder.rglob("*.h"))

# Bit-exact results need what the CMake build sets for every target: no contraction of
# a*b+c into one rounding, no fast-math of any kind, no -march. -O3 as CMake's Release.
exact_flags = ["-ffp-contract=off", "-fno-fast-math", "-O3", "-fno-semantic-interposition"]

extension = Pybind11Extension(
    "qallib._qal",
    sources=binding_sources + library_sources,
    depends=headers + [str(HERE / "src" / "exports.map"), str(HERE / "setup.py")],
    include_dirs=[str(ROOT / "include"), str(GENERATED), str(ROOT / "src"), str(HERE / "src")],
    define_macros=[("QAL_BUILDING_LIBRARY", None), ("NDEBUG", None)],
    extra_compile_args=exact_flags,
    # The library's QAL_API functions are visible by default; the module exports its init only.
    extra_link_args=[f"-Wl,--version-script={HERE / 'src' / 'exports.map'}"],
    cxx_std=17,
)



class BuildExt(build_ext):
    """Compiles with the flags of CMake's Release build alone.

    Python puts its own CFLAGS at the front of every compile line: with them (-fwrapv,
    which makes signed overflow defined and so restrains GCC on the library's int loops,
    the stack protector, -O2 before the -O3 above) the Savitzky-Golay filter ran about 15 %
    slower than the C++ build's. None of them touches floating-point arithmetic.
    """

    dropped = {"-fwrapv", "-fstack-protector-strong", "-O2", "-g"}

    def build_extensions(self):
        self.compiler.compiler_so = [flag for flag in self.compiler.compiler_so if flag not in self.dropped]
        super().build_extensions()


# Two compile jobs by default (QALLIB_BUILD_JOBS overrides).
ParallelCompile("QALLIB_BUILD_JOBS", default=2).install()

setup(
    name="qallib",
    version=VERSION,
    description="NumPy interface to QalLib, numerical routines for sampled curves with bit-exact results",
    packages=["qallib"],
    package_data={"qallib": ["py.typed"]},
    ext_modules=[extension],
    cmdclass={"build_ext": BuildExt},
    python_requires=">=3.9",
    install_requires=["numpy"],
    # The command-line tool; its plots need matplotlib, imported only when one is asked for.
    entry_points={"console_scripts": ["qal = qallib.cli:main"]},
    zip_safe=False,
)
