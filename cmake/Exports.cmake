# SPDX-License-Identifier: MIT

# Makes the linker's two views of frame/exports.list: a versioned symbol map for ELF and a module
# definition file for PE.
function(vekch_write_export_files list symbolMap moduleDefinition)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} lines REGEX "^[0-9]")
  set(globals "")
  set(definitions "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([0-9]+) ([A-Za-z0-9_]+)$" matched "${line}")
    if(NOT matched)
      message(FATAL_ERROR "${list}: a line must read SLOT NAME, not '${line}'")
    endif()
    string(APPEND globals "    ${CMAKE_MATCH_2};\n")
    string(APPEND definitions "  ${CMAKE_MATCH_2} @${CMAKE_MATCH_1}\n")
  endforeach()
  file(CONFIGURE OUTPUT ${symbolMap} CONTENT
       "VEKCH_1 {\n  global:\n${globals}  local:\n    *;\n};\n" @ONLY)
  file(CONFIGURE OUTPUT ${moduleDefinition} CONTENT
       "LIBRARY vekchm7.dll\nEXPORTS\n${definitions}" @ONLY)
endfunction()
