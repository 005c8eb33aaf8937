#!/usr/bin/env bash
# Builds and runs every test: the static Release build, the sanitizer build, the thread
# tests under ThreadSanitizer, every fuzz target briefly on its seeds, and the shared build
# (which also checks the installed package and the exported symbols); then the normal
# build's tests under valgrind. The benchmarks are built too, so that they keep compiling,
# but not run.
set -euo pipefail
cd "$(dirname "$0")/.."
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
# The fuzz targets need clang 14 with its libFuzzer runtime (Debian's packages).
if ! command -v clang++-14 >/dev/null || ! ls /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1; then
  apt-get update -qq && apt-get install -y -qq clang-14 libclang-rt-14-dev >/dev/null
fi
command -v valgrind >/dev/null || { apt-get update -qq && apt-get install -y -qq valgrind >/dev/null; }
for workflow in test asan tsan fuzz shared bench; do
  echo "=== ${workflow}"
  cmake --workflow --preset "${workflow}"
done
echo "=== valgrind"
tools/valgrind.sh
echo "=== all builds passed"
