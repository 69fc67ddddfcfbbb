# SPDX-License-Identifier: MIT

# The target "docs": the reference of the public headers as web pages, where doxygen is present.
find_program(VEKCH_DOXYGEN doxygen)
mark_as_advanced(VEKCH_DOXYGEN)
if(VEKCH_DOXYGEN AND PROJECT_IS_TOP_LEVEL)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  add_custom_target(docs COMMAND ${VEKCH_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
                    WORKING_DIRECTORY ${PROJECT_BINARY_DIR} VERBATIM)
endif()
