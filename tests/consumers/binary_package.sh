#!/bin/sh
# SPDX-License-Identifier: MIT

# Usage: binary_package.sh BUILD_FOLDER WORK_FOLDER
# Makes an archive and a Debian package, and looks for the library, its headers and its terms.
set -eu
rm -rf "$2"
"$CPACK" -B "$2" -G 'TGZ;DEB' --config "$1/CPackConfig.cmake"
tar -tf "$2"/vekch-*.tar.gz | sed 's,^[^/]*,,' >"$2/tgz.list"
dpkg-deb --fsys-tarfile "$2"/vekch_*_amd64.deb | tar -tf - | sed 's,^\./usr,,' >"$2/deb.list"
for list in "$2/tgz.list" "$2/deb.list"; do
  for file in include/vekch/vekch.h lib/.*libvekchm7.so.1 lib/.*libvekchm7.a lib/.*vekch.pc \
    lib/.*vekchConfig.cmake share/doc/vekch/NOTICE share/doc/vekch/LICENSE \
    share/doc/vekch/SECURITY.md bin/vekgrep; do
    grep -qx "/$file" "$list" || { echo "$list has no $file" && exit 1; }
  done
done
