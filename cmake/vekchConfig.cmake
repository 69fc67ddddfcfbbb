# SPDX-License-Identifier: MIT
include(${CMAKE_CURRENT_LIST_DIR}/vekchTargets.cmake)
# An installation of the archive alone has it under both names.
if(NOT TARGET vekch::vekch)
  add_library(vekch::vekch ALIAS vekch::vekch_static)
endif()
