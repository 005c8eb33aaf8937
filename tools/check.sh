#!/usr/bin/env bash
# Builds and runs every test: the static Release build, the sanitizer build, the race of the
# Golay kernel's first build under ThreadSanitizer, and the shared build (which also checks
# the installed package and the exported symbols). The benchmarks are built too, so that
# they keep compiling, but not run. Then the Python package is installed into a venv under
# build/ as a user installs it, and its tests run against that install (they compare it
# with the C++ library through build/default/tests/qal_oracle).
# First installs the Debian packages all this needs, when any is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
for workflow in test asan tsan shared bench; do
  echo "=== ${workflow}"
  cmake --workflow --preset "${workflow}"
done

echo "=== python"
venv=build/python-venv
if [[ ! -x "${venv}/bin/python" ]]; then
  /usr/bin/python3 -m venv --system-site-packages "${venv}"
fi
QALLIB_BUILD_JOBS="${CMAKE_BUILD_PARALLEL_LEVEL}" \
  "${venv}/bin/pip" install --no-build-isolation --no-index --quiet ./python
QAL_REQUIRE_ORACLE=1 QAL_ORACLE=build/default/tests/qal_oracle "${venv}/bin/python" -m pytest python/tests
echo "=== all builds passed"
