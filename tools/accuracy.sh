#!/bin/sh
# tools/accuracy.sh [FOLDER]: builds the accuracy report and runs it. FOLDER holds recordings with known notes (NAME.wav
# with NAME.notes.csv beside it); without one, the folder that SONORELLE_RECORDINGS names.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
for tool in cmake ninja c++; do
    command -v "$tool" >/dev/null 2>&1 || {
        echo "accuracy.sh: $tool is missing (Debian: apt install cmake ninja-build g++ libsndfile1-dev)" >&2
        exit 1
    }
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! (cd "$top" && cmake --preset bench && cmake --build --preset bench --target sonorelle_accuracy) >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
"$top/build/bench/tools/sonorelle_accuracy" ${1+"$1"}
