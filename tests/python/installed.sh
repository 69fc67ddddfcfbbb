#!/bin/sh
# SPDX-License-Identifier: MIT

# installed.sh PYTHON PACKAGE FOLDER: installs a copy of the package's tree by pip, without asking any
# server, and runs its tests with what was installed.
set -eu
python=
for candidate in "$1" /usr/bin/python3; do
  if "$candidate" -c 'import setuptools, pip, wheel' 2>/dev/null; then
    python=$candidate
    break
  fi
done
if [ -z "$python" ]; then
  echo "SKIPPED: no Python has pip, setuptools and wheel"
  exit 0
fi
rm -rf "$3/site" "$3/tests"
trap 'rm -rf "$2/build" "$2/vekch.egg-info"' EXIT
export CMAKE_BUILD_TYPE=Debug  # takes less long to compile
"$python" -m pip install --no-build-isolation --no-deps --no-index --disable-pip-version-check -q \
  --root-user-action=ignore --no-cache-dir --target "$3/site" "$2"
cp -r "$2/tests" "$3/tests"
cd "$3"
PYTHONPATH=$3/site "$python" -B tests/test_vekch.py
