# SPDX-License-Identifier: MIT

# cmake -DPROGRAM=... -DOUTPUT=file -P run_and_compare.cmake: does it print just that?
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE result)
file(READ ${OUTPUT} wanted)
string(REPLACE "\r\n" "\n" printed "${printed}")
if(NOT result EQUAL 0 OR NOT printed STREQUAL wanted)
  message(FATAL_ERROR "ended with ${result} and printed\n${printed}instead of\n${wanted}")
endif()
