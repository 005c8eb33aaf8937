#!/usr/bin/env bash
# Builds and runs every test: the static Release build, the sanitizer build, the race of the
# Golay kernel's first build under ThreadSanitizer, and the shared build (which also checks
# the installed package and the exported symbols). The benchmarks are built too, so that
# they keep compiling, but not run.
set -euo pipefail
cd "$(dirname "$0")/.."
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
for workflow in test asan tsan shared bench; do
  echo "=== ${workflow}"
  cmake --workflow --preset "${workflow}"
done
tools/check-platforms.sh  # clang 14, 64-bit ARM under qemu, Windows under wine
echo "=== all builds passed"
