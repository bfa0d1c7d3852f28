#!/bin/bash
# Configures, builds and runs a host project that adds libNote as a subdirectory, with none
# of the packages of libNote's tools, tests and bindings in its view: the host must read the
# sample's page count, and installing the host must install nothing of libNote's.
#
# Usage: embed-test.sh <libNote-source-dir> <sample.note> <work-dir> <cmake-generator> <c++-compiler>
set -euo pipefail

source=$1 sample=$2 work=$3 generator=$4 compiler=$5

rm -rf "$work"
unseen=()
for package in GTest benchmark PkgConfig Threads CLI11 nlohmann_json Python pybind11; do
    unseen+=("-DCMAKE_DISABLE_FIND_PACKAGE_$package=ON")
done
# Most of these packages are not looked for at all, which CMake would warn of.
cmake -S "$source/tests/embed/host" -B "$work/build" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
    -DLIBNOTE_SOURCE_DIR="$source" "${unseen[@]}" --no-warn-unused-cli
cmake --build "$work/build"

output=$("$work/build/host" "$sample")
if ! grep -qx 'host: pages 4' <<<"$output"; then
    echo "the host did not report 4 pages; it printed:" >&2
    echo "$output" >&2
    exit 1
fi

cmake --install "$work/build" --prefix "$work/prefix"
if [[ -d $work/prefix ]] && [[ -n $(find "$work/prefix" -type f) ]]; then
    echo "installing the host installed libNote's files:" >&2
    find "$work/prefix" -type f >&2
    exit 1
fi
echo "libNote builds inside a host without its tools' packages, and installs nothing there"
