#!/bin/sh
# SPDX-License-Identifier: MIT

# Usage: repeatable.sh SOURCE_FOLDER WORK_FOLDER LIBRARY [options of cmake...]
# Builds the library once more, from a copy of its sources of another age in another folder: it must be
# the same to the bit.
set -eu
source=$1
work=$2/a-folder-of-another-name
library=$3
shift 3
rm -rf "$work"
mkdir -p "$work/copy"
cd "$source"
cp -R --parents CMakeLists.txt LICENSE NOTICE README.md SECURITY.md cmake docs frame include packaging \
  regexp strings unicode "$work/copy"
find "$work/copy" -exec touch -d '2001-02-03 04:05:06' {} +
"$CMAKE" -S "$work/copy" -B "$work/copy/build/of/it" -G Ninja -DVEKCH_BUILD_EXAMPLES=OFF \
  -DVEKCH_INSTALL=OFF "$@"
"$CMAKE" --build "$work/copy/build/of/it" --target vekch
cmp "$library" "$work/copy/build/of/it/$(basename "$library")"
rm -rf "$work"
