#!/bin/sh
# SPDX-License-Identifier: MIT

# Usage: pkg_config.sh shared|static CC INSTALLED_LIBRARY_FOLDER BUILD_FOLDER
set -eu
PKG_CONFIG_PATH=$3/pkgconfig
export PKG_CONFIG_PATH
libraries=$(pkg-config --libs vekch)
[ "$1" = shared ] || libraries=$(pkg-config --variable=libdir vekch)/libvekchm7.a
# The flags are words on purpose.
# shellcheck disable=SC2046,SC2086
"$2" -std=c99 "$(dirname "$0")/project/consumer.c" $(pkg-config --cflags vekch) $libraries \
  -o "$4/pkg-config-$1"
LD_LIBRARY_PATH=$3 "$4/pkg-config-$1"
