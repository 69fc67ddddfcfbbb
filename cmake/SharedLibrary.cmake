# SPDX-License-Identifier: MIT

# How the shared library is linked: which names it exports, and that it needs nothing else.
set(symbolMap ${PROJECT_BINARY_DIR}/vekchm7.map)
set(moduleDefinition ${PROJECT_BINARY_DIR}/vekchm7.def)
vekch_write_export_files(${PROJECT_SOURCE_DIR}/frame/exports.list ${symbolMap} ${moduleDefinition})

# The instrumented builds need the instrumentation's run-time library; every other build is linked
# without start files and without any library, and brings the block functions compilers call.
if(NOT VEKCH_INSTRUMENT)
  add_library(vekch_freestanding OBJECT frame/freestanding.cpp)
  vekch_compile_for_the_library(vekch_freestanding)
  target_compile_options(vekch_freestanding PRIVATE -fno-builtin)
  target_sources(vekch PRIVATE $<TARGET_OBJECTS:vekch_freestanding>)
  target_link_options(vekch PRIVATE -nostdlib -nostartfiles)
endif()

if(WIN32)
  enable_language(RC)
  configure_file(frame/vekchm7.rc.in vekchm7.rc @ONLY)
  target_sources(vekch PRIVATE ${moduleDefinition} ${PROJECT_BINARY_DIR}/vekchm7.rc)
  # The same sources give the same bytes: the linker writes no time of day.
  target_link_options(vekch PRIVATE -Wl,--entry,DllMainCRTStartup -Wl,--no-insert-timestamp)
  set_target_properties(vekch PROPERTIES PREFIX "" IMPORT_PREFIX "lib" IMPORT_SUFFIX ".dll.a")
else()
  set_target_properties(vekch PROPERTIES SOVERSION 1 LINK_DEPENDS ${symbolMap})
  target_link_options(vekch PRIVATE -Wl,--version-script=${symbolMap} -Wl,-z,relro,-z,now
                      -Wl,-z,noexecstack -Wl,-Bsymbolic)
  if(NOT VEKCH_INSTRUMENT)
    target_link_options(vekch PRIVATE -Wl,-z,defs)
  endif()
endif()
