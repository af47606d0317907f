# Makes a page for browsers, OUTPUT, of the manual page PAGE, by mandoc (MANDOC) and the frame TEMPLATE. What the page says
# to users of Windows alone is in it, and what it says to others alone is not.
file(READ ${PAGE} page)
file(WRITE ${OUTPUT}.1 ".nr windows 1\n${page}")
execute_process(COMMAND ${MANDOC} -T html -O fragment ${OUTPUT}.1 OUTPUT_VARIABLE manual COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "<h1 [^>]*><a [^>]*>[^<]*</a>" headings "${manual}")
set(contents "")
foreach(heading IN LISTS headings)
  string(REGEX REPLACE ".*(href=[^>]*>[^<]*</a>)" "<a \\1\n" link "${heading}")
  string(APPEND contents "${link}")
endforeach()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
