#!/bin/bash
# Installs the built library into a scratch prefix and builds a host against it twice, once
# through the CMake package and once through pkg-config, as a packager's user would; both
# hosts must then read the sample's page count. The host is C++20 and includes the library's
# headers both as <libNote/config.h> and by their plain names.
#
# Usage: install-test.sh <build-dir> <host-source-dir> <sample.note> <work-dir> <libdir> <cmake-generator>
set -euo pipefail

build=$1 host=$2 sample=$3 work=$4 libdir=$5 generator=$6
prefix=$work/prefix

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$prefix"

# CMake gives the host an rpath to the installed library; the pkg-config host relies on
# LD_LIBRARY_PATH below.
cmake -S "$host" -B "$work/cmake-host" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$work/cmake-host"

# shellcheck disable=SC2046 # the flags are meant to split into words
c++ -std=c++20 -o "$work/pkg-config-host" "$host/host.cpp" \
    $(PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" pkg-config --cflags --libs libNote)

expect_pages() {
    local output
    output=$(LD_LIBRARY_PATH="$prefix/$libdir" "$@" "$sample")
    if ! grep -qx 'host: pages 4' <<<"$output"; then
        echo "$1 did not report 4 pages; it printed:" >&2
        echo "$output" >&2
        return 1
    fi
}
expect_pages "$work/cmake-host/host"
expect_pages "$work/pkg-config-host"
echo "installed package works through CMake and pkg-config"
