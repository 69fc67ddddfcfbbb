#!/bin/sh
# SPDX-License-Identifier: MIT

# Usage: source_package.sh BUILD_FOLDER WORK_FOLDER
# Makes the source package, builds it as a stranger does, without a preset (but so that it takes
# less long), installs it into folders of unusual names, one of them with its whole path, and takes
# it in from there.
set -eu
here=$(dirname "$0")
rm -rf "$2"
"$CPACK" -B "$2" --config "$1/CPackSourceConfig.cmake"
tar -xf "$2"/vekch-*-source.tar.gz -C "$2"
"$CMAKE" -S "$2"/vekch-*-source -B "$2/build" -G 'Unix Makefiles' \
  -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DCMAKE_C_FLAGS_RELEASE=-O0 \
  -DCMAKE_INSTALL_PREFIX="$2/prefix" -DCMAKE_INSTALL_INCLUDEDIR=inc/x \
  -DCMAKE_INSTALL_LIBDIR="$2/elsewhere/lib"
"$CMAKE" --build "$2/build"
"$CMAKE" --install "$2/build"
"$CMAKE" -S "$here/project" -B "$2/consumer" -Dvekch_DIR="$2/elsewhere/lib/cmake/vekch"
"$CMAKE" --build "$2/consumer"
"$here/pkg_config.sh" shared "$CC" "$2/elsewhere/lib" "$2"
"$2/prefix/bin/vekgrep" -c find_package "$here/project/CMakeLists.txt"
