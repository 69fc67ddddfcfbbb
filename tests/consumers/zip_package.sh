#!/bin/sh
# SPDX-License-Identifier: MIT

# Usage: zip_package.sh BUILD_FOLDER WORK_FOLDER [EMULATOR]
# Makes the archive for Windows, looks for what belongs to it, and runs a program that was linked by
# its import library, beside its DLL.
set -eu
rm -rf "$2"
"$CPACK" -B "$2" -G ZIP --config "$1/CPackConfig.cmake"
cd "$2"
"$CMAKE" -E tar xf vekch-*.zip
project=$(dirname "$0")/project
cd vekch-*/
files='bin/vekchm7.dll bin/vekgrep.exe bin/vektext.exe include/vekch/vekch.h include/vekch/vekch.hpp
  lib/libvekchm7.a lib/libvekchm7.dll.a lib/vekchm7.def lib/cmake/vekch/vekchConfig.cmake
  share/doc/vekch/LICENSE share/doc/vekch/NOTICE'
# Made only where LLVM's tool for it is present.
test ! -e "$1/vekchm7.lib" || files="$files lib/vekchm7.lib"
for file in $files; do
  test -s "$file" || { echo "the archive has no $file" && exit 1; }
done
"$CC" -Iinclude "$project/consumer.c" lib/libvekchm7.dll.a -o bin/consumer.exe
${3:+"$3"} bin/consumer.exe
