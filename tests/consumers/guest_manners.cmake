# SPDX-License-Identifier: MIT

# Run in the build folder of a project that has taken in the sources: each of the library's is
# compiled with -O2, and nothing of the library gets into the project's own installation.
file(READ compile_commands.json commands)
string(JSON count LENGTH "${commands}")
math(EXPR last "${count} - 1")
set(seen 0)
foreach(i RANGE ${last})
  string(JSON file GET "${commands}" ${i} file)
  string(JSON command GET "${commands}" ${i} command)
  if(file MATCHES "^${LIBRARY}/(frame|regexp|strings|unicode)/")
    math(EXPR seen "${seen} + 1")
    if(NOT command MATCHES " -O2 ")
      message(FATAL_ERROR "not optimised: ${command}")
    endif()
  endif()
endforeach()
if(seen LESS 30)
  message(FATAL_ERROR "only ${seen} sources of the library in compile_commands.json")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --install . --prefix nowhere
                OUTPUT_VARIABLE installed COMMAND_ERROR_IS_FATAL ANY)
if(installed MATCHES "Installing")
  message(FATAL_ERROR "the library installs itself unasked: ${installed}")
endif()
