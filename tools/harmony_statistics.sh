#!/bin/sh
# tools/harmony_statistics.sh [FOLDER]: builds the statistics of the harmony and runs them. FOLDER holds recordings (.wav,
# .aiff); without one, the folder that SONORELLE_RECORDINGS names.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
for tool in cmake ninja c++; do
    command -v "$tool" >/dev/null 2>&1 || {
        echo "harmony_statistics.sh: $tool is missing (Debian: apt install cmake ninja-build g++ libsndfile1-dev)" >&2
        exit 1
    }
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! (cd "$top" && cmake --preset bench && cmake --build --preset bench --target sonorelle_harmony_statistics) >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
"$top/build/bench/tools/sonorelle_harmony_statistics" ${1+"$1"}
