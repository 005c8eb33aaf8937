#!/usr/bin/env bash
# Runs every test program of the normal build once under valgrind's memcheck: any memory
# error or leak fails. Builds the default preset first. One process per program, not per
# test, which keeps the run to a couple of minutes.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset default >/dev/null
cmake --build --preset default -j "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" >/dev/null
failed=0
for program in build/default/tests/*_tests; do
  echo "--- valgrind ${program}"
  if ! valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite,indirect,possible \
      --errors-for-leak-kinds=definite,indirect,possible --track-origins=yes \
      "${program}" --gtest_brief=1 >"${program}.valgrind.log" 2>&1; then
    cat "${program}.valgrind.log"
    failed=1
  fi
done
exit "${failed}"
