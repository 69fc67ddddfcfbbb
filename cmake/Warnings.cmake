# SPDX-License-Identifier: MIT

# The one list of warnings, for the library, the examples, the tests and the benchmarks.
add_library(vekch_warnings INTERFACE)
target_compile_options(vekch_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(VEKCH_WARNINGS_AS_ERRORS)
  target_compile_options(vekch_warnings INTERFACE -Werror)
endif()
