#!/bin/bash
# ctest's web_package: builds the npm package (its WebAssembly module through emcmake) and runs
# its tests, against the native build's notetool that ctest names in NOTETOOL. Where
# emscripten, Node.js 20, npm or Chromium is missing it says which and exits 77: skipped.
set -euo pipefail
cd "$(dirname "$0")"

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

npm ci --no-audit --no-fund
npm run build
npm test
