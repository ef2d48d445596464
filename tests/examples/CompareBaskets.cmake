# Runs GENERATOR into the file WRITTEN and fails unless it equals the file COMMITTED.
execute_process(COMMAND ${GENERATOR} ${WRITTEN} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WRITTEN} ${COMMITTED} COMMAND_ERROR_IS_FATAL ANY)
