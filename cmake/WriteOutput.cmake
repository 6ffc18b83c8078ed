# Runs COMMAND, a list, and writes its standard output to FILE.
execute_process(COMMAND ${COMMAND} OUTPUT_FILE ${FILE} COMMAND_ERROR_IS_FATAL ANY)
