# Runs one libFuzzer target for a bounded time on a working corpus in the build
# tree, seeded from the committed seeds except the slow bulk-* ones (the corpus
# test replays those).
#   cmake -DFUZZER=... -DWORK=... -DSEEDS=... -DSECONDS=...
#         [-DDICT=...] [-DMAX_LEN=...] -P run_fuzzer.cmake
# The environment variable ZD_FUZZ_SECONDS overrides SECONDS.
if(DEFINED ENV{ZD_FUZZ_SECONDS})
  set(SECONDS $ENV{ZD_FUZZ_SECONDS})
endif()
file(MAKE_DIRECTORY ${WORK}/corpus ${WORK}/artifacts)
# Slow inputs (large lists) get less of the schedule.
set(options -max_total_time=${SECONDS} -rss_limit_mb=2048 -timeout=60 -print_final_stats=1
            -entropic_scale_per_exec_time=1
            -artifact_prefix=${WORK}/artifacts/)
if(DICT)
  list(APPEND options -dict=${DICT})
endif()
if(MAX_LEN)
  list(APPEND options -max_len=${MAX_LEN})
endif()
file(GLOB seeds LIST_DIRECTORIES false ${SEEDS}/*)
foreach(seed ${seeds})
  get_filename_component(name ${seed} NAME)
  if(NOT name MATCHES "^bulk-")
    file(COPY ${seed} DESTINATION ${WORK}/corpus)
  endif()
endforeach()
execute_process(COMMAND ${FUZZER} ${options} ${WORK}/corpus RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${FUZZER} ended with ${status}; the input is in ${WORK}/artifacts")
endif()
