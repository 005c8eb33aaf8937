#!/usr/bin/env bash
# The long fuzz run: builds the fuzz preset, then runs each named target (all when none is
# named), one after the other at the lowest priority, for RUNS executions or SECONDS
# seconds, whichever comes first, on a corpus kept in build/fuzz/long/<target>. Logs go to
# LOGS/<target>.log; the last lines of each log hold libFuzzer's totals (cov:, ft:).
#
#   fuzz/run_long.sh                 # every target, 10,000,000 runs or 30 minutes each
#   RUNS=100000 fuzz/run_long.sh lu  # one target, shorter
set -uo pipefail
cd "$(dirname "$0")/.."
RUNS="${RUNS:-10000000}"
SECONDS_EACH="${SECONDS_EACH:-1800}"
LOGS="${LOGS:-build/fuzz/logs}"
cmake --preset fuzz >/dev/null && cmake --build --preset fuzz -j "${JOBS:-2}" >/dev/null || exit 1
mkdir -p "${LOGS}"
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=($(sed -n '/^set(qal_fuzz_targets/,/)/p' fuzz/CMakeLists.txt | tr -d '()' | sed 's/set qal_fuzz_targets//'))
fi
failed=0
for target in "${targets[@]}"; do
  corpus="build/fuzz/long/${target}"
  mkdir -p "${corpus}"
  echo "=== ${target}: $(date -u +%H:%M:%S)"
  ASAN_OPTIONS="detect_leaks=1:abort_on_error=1" UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1" \
    nice -n 19 "build/fuzz/fuzz/${target}_fuzz" -runs="${RUNS}" -max_total_time="${SECONDS_EACH}" -timeout=30 \
      -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="${LOGS}/${target}-" \
      "${corpus}" "fuzz/corpus/${target}" >"${LOGS}/${target}.log" 2>&1 || { failed=1; echo "    FINDING: see ${LOGS}/${target}.log"; }
  grep -E '^#[0-9]+[[:space:]]+DONE|^Done ' "${LOGS}/${target}.log" | tail -2
done
exit "${failed}"
