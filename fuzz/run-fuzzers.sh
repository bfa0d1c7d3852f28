#!/bin/bash
# Fuzzes each target for a bounded time from a scratch copy of its saved corpus, with the
# bounds of one input that the replay tests keep to. Fails on the first finding and names
# the input that caused it. The targets are those the build lists in fuzz-targets.txt
# beside the programs (`cmake --build <dir> --target fuzzers` makes them all).
#
# Usage: fuzz/run-fuzzers.sh <folder of the fuzz programs> <seconds per target>
set -euo pipefail
bin=$1
seconds=$2
here=$(cd "$(dirname "$0")" && pwd)
if [[ ! -f "$bin/fuzz-targets.txt" ]]; then
    echo "run-fuzzers.sh: $bin/fuzz-targets.txt is missing: configure with -DLIBNOTE_BUILD_FUZZ=ON" >&2
    exit 2
fi
mapfile -t targets < "$bin/fuzz-targets.txt"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for target in "${targets[@]}"; do
    mkdir -p "$scratch/$target/corpus" "$scratch/$target/findings"
    cp "$here/corpus/$target/"* "$scratch/$target/corpus/"
    echo "fuzzing $target for ${seconds}s"
    if ! "$bin/$target" "$scratch/$target/corpus" -dict="$here/note.dict" -rss_limit_mb=256 -timeout=1 \
        -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$scratch/$target/findings/" \
        > "$scratch/$target/log" 2>&1; then
        tail -n 60 "$scratch/$target/log"
        for finding in "$scratch/$target/findings/"*; do
            echo "finding: $(basename "$finding"), base64:"
            base64 -w0 "$finding"
            echo
        done
        exit 1
    fi
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec)' "$scratch/$target/log"
done
