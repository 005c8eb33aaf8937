#!/usr/bin/env bash
# Builds and runs every test: the static Release build, the sanitizer build, the thread
# tests under ThreadSanitizer, every fuzz target briefly on its seeds, and the shared build
# (which also checks the installed package and the exported symbols); the clang, 64-bit
# ARM and Windows builds; then the normal build's tests under valgrind. The benchmarks are
# built too, so that they keep compiling, but not run. Last the Python package is installed
# into a venv under build/ as a user installs it (scripts/install-python-package.sh), and its
# tests run against that install (they compare it with the C++ library through
# build/default/tests/qal_oracle, and run the qal command-line tool on golden files); then
# the reference manual under docs/ is rebuilt to check that the committed pages are current.
# First installs the Debian packages all this needs, when any is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --test  # the packages, clang 14 with libFuzzer and valgrind among them
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
for workflow in test asan tsan fuzz shared bench; do
  echo "=== ${workflow}"
  cmake --workflow --preset "${workflow}"
done
tools/check-platforms.sh  # clang 14, 64-bit ARM under qemu, Windows under wine

echo "=== valgrind"
tools/valgrind.sh

echo "=== python"
QALLIB_BUILD_JOBS="${CMAKE_BUILD_PARALLEL_LEVEL}" scripts/install-python-package.sh
venv=build/python-venv
QAL_REQUIRE_ORACLE=1 QAL_ORACLE=build/default/tests/qal_oracle "${venv}/bin/python" -m pytest python/tests

echo "=== docs"
"${venv}/bin/python" docs/build.py --check  # the generated pages match the headers and the library
echo "=== all builds passed"
