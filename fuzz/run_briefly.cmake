# Runs one fuzz target for SECONDS on the seeds in SEEDS; what it finds new goes to the
# scratch corpus SCRATCH, a crashing input to SCRATCH/crash-*. Fails on any finding.
# The seed of the mutations is fixed, so that a run replays the same inputs as far as its
# time allows: exploring is the long run's work (fuzz/run_long.sh), the brief run guards the
# seeds and their near neighbours.
file(MAKE_DIRECTORY ${SCRATCH})
execute_process(
  COMMAND ${FUZZER} -seed=1 -max_total_time=${SECONDS} -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
          -artifact_prefix=${SCRATCH}/ ${SCRATCH} ${SEEDS}
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${FUZZER} found a failing input (exit ${result}); see ${SCRATCH}")
endif()
