# SPDX-License-Identifier: MIT

# cmake -DREADME=file -DSAMPLE=file -P readme_test.cmake: does the README show the sample as it is?
file(READ ${README} readme)
file(READ ${SAMPLE} sample)
string(REGEX REPLACE "^// SPDX-[^\n]*\n" "" sample "${sample}")  # the README names the licence once
string(FIND "${readme}" "\n${sample}```\n" at)
if(sample STREQUAL "" OR at EQUAL -1)
  message(FATAL_ERROR "${README} does not show ${SAMPLE}")
endif()
