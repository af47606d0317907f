# Makes a page for browsers, OUTPUT, of the manual page PAGE, by mandoc (MANDOC) and the frame TEMPLATE.
execute_process(COMMAND ${MANDOC} -T html -O fragment ${PAGE} OUTPUT_VARIABLE manual COMMAND_ERROR_IS_FATAL ANY)
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
