# Fails unless the README shows, word for word, the text of the file SHOWN, or what the command RUN writes to its
# standard output.
file(READ README.md readme)
if(DEFINED RUN)
  execute_process(COMMAND ${RUN} OUTPUT_VARIABLE text ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
else()
  file(READ ${SHOWN} text)
endif()
string(LENGTH "${text}" length)
string(FIND "${readme}" "${text}" position)
if(length EQUAL 0 OR position EQUAL -1)
  message(FATAL_ERROR "README.md does not show this:\n${text}")
endif()
