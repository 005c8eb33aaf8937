#!/usr/bin/env bash
# Builds and runs the whole test suite and the golden hashes with clang 14 on x86-64, for
# 64-bit ARM under qemu-user and for Windows (a DLL) under wine, installing the cross tool
# chains first when they are missing (Debian packages; needs root or sudo).
# Usage: tools/check-platforms.sh [preset...]   (default: clang aarch64 windows)
set -euo pipefail
cd "$(dirname "$0")/.."
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
scripts/install-cross-toolchains.sh
presets=("$@")
((${#presets[@]} > 0)) || presets=(clang aarch64 windows)
for preset in "${presets[@]}"; do
  echo "=== ${preset}"
  start=${SECONDS}
  cmake --workflow --preset "${preset}"
  echo "=== ${preset} passed in $((SECONDS - start)) s"
done
