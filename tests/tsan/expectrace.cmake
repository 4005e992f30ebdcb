# Runs one mode of the canary and passes only when ThreadSanitizer reported
# its race in the canary's own function (as a data race, or as a use after
# free when the other side has already freed the memory: a write after a
# hand-over can meet either), and the report filter of the suite
# (tsanreports.sh) keeps it. Any other outcome (no report, a crash before the
# report, a report elsewhere, a report the filter would drop) fails: it would
# mean that the suppressions, the filter or the build no longer let real
# races through.
# -D CANARY=<program> -D MODE=<mode> -D FUNCTION=<racing function>
# -D FILTER=<tsanreports.sh> -D BUILD_DIR=<build tree> -D LOG=<report file>
execute_process(COMMAND "${CANARY}" "${MODE}"
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
string(REGEX MATCH "WARNING: ThreadSanitizer: (data race|heap-use-after-free)" report "${errors}")
string(FIND "${errors}" "${FUNCTION}" where)
if(NOT report OR where EQUAL -1)
  message(FATAL_ERROR "ThreadSanitizer did not report the deliberate race in ${FUNCTION} "
                      "(mode ${MODE}, exit ${status}); TSAN_OPTIONS=$ENV{TSAN_OPTIONS}\n${errors}")
endif()
file(WRITE "${LOG}" "${errors}")
execute_process(COMMAND sh "${FILTER}" "${BUILD_DIR}" "${LOG}"
                RESULT_VARIABLE kept OUTPUT_QUIET ERROR_VARIABLE filtered)
if(kept EQUAL 0)
  message(FATAL_ERROR "the report filter drops the deliberate race in ${FUNCTION}:\n${filtered}")
endif()
message(STATUS "the deliberate race in ${FUNCTION} was reported and kept")
