#!/bin/bash
# ctest's web_package: builds the npm package (its WebAssembly module through emcmake) and runs
# its tests, against the native build's notetool that ctest names in NOTETOOL. It works in a
# copy of the package in the build tree (the folder given), so that nothing is written into
# the sources. Where emscripten, Node.js 20, npm or Chromium is missing it says which and
# exits 77: skipped.
#
# Usage: run-tests.sh WORK_DIR
set -euo pipefail
package=$(cd "$(dirname "$0")" && pwd)
work=$1

missing=()
for tool in emcmake node npm; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
[[ -x ${CHROMIUM:-/usr/bin/chromium} ]] || missing+=(chromium)
if command -v node >/dev/null && (($(node -p 'process.versions.node.split(".")[0]') < 20)); then
    missing+=("Node.js 20 or later")
fi
if ((${#missing[@]})); then
    echo "skipped: the web package's tests need ${missing[*]} (Debian: apt-get install emscripten chromium)"
    exit 77
fi

mkdir -p "$work"
for item in package.json package-lock.json lib scripts test viewer; do
    rm -rf "${work:?}/$item"
    cp -r "$package/$item" "$work/"
done
export LIBNOTE_SOURCE_DIR=${package%/*}
cd "$work"
npm ci --no-audit --no-fund
npm run build
npm test
