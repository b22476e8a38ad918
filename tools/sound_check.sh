#!/bin/sh
# tools/sound_check.sh [FOLDER]: builds the sound check, runs it with Praat as the judge, and writes docs/sound.md. FOLDER
# holds recordings (.wav); without one, the folder that SONORELLE_RECORDINGS names. Praat is installed if it is not there.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
command -v praat >/dev/null 2>&1 || "$top/scripts/install-packages" bench
for tool in cmake ninja c++; do
    command -v "$tool" >/dev/null 2>&1 || {
        echo "sound_check.sh: $tool is missing (Debian: apt install cmake ninja-build g++ libsndfile1-dev)" >&2
        exit 1
    }
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! (cd "$top" && cmake --preset bench && cmake --build --preset bench --target sonorelle_sound_check) >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
"$top/build/bench/tools/sonorelle_sound_check" --markdown "$top/docs/sound.md" ${1+"$1"}
