#!/usr/bin/env bash
# bench/run.sh [--long] [--repetitions=N]: builds the benchmarks, runs them and prints the ratios that docs/performance.md
# keeps. Nothing is installed; what is missing is named. The full output of each program is left in build/bench/results.
# --long analyses ten minutes of each recording instead of one.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
seconds=60
repetitions=3
for argument in "$@"; do
    case $argument in
        --long) seconds=600 ;;
        --repetitions=*) repetitions=${argument#*=} ;;
        *)
            echo "use: bench/run.sh [--long] [--repetitions=N]" >&2
            exit 2
            ;;
    esac
done

# Medians are printed of two repetitions or more.
if ! [ "$repetitions" -ge 2 ] 2>/dev/null; then
    echo "run.sh: --repetitions wants a number from 2 on" >&2
    exit 2
fi

missing=
need() { command -v "$1" >/dev/null 2>&1 || missing="$missing $2"; }
need cmake cmake
need ninja ninja-build
need c++ g++
need pkg-config pkg-config
if [ -z "$missing" ]; then
    pkg-config --exists sndfile || missing="$missing libsndfile1-dev"
    pkg-config --exists benchmark || missing="$missing libbenchmark-dev"
fi
if [ -n "$missing" ]; then
    echo "run.sh: missing, and needed (Debian: apt install$missing)" >&2
    exit 1
fi
pkg-config --exists fftw3f || echo "run.sh: no comparison with FFTW (Debian: apt install libfftw3-dev)" >&2
pkg-config --exists aubio || echo "run.sh: no comparison with aubio (Debian: apt install libaubio-dev)" >&2
pkg-config --exists rubberband || echo "run.sh: no comparison with Rubber Band (Debian: apt install librubberband-dev)" >&2
pkg-config --exists soundtouch || echo "run.sh: no comparison with SoundTouch (Debian: apt install libsoundtouch-dev)" >&2
command -v praat >/dev/null 2>&1 || echo "run.sh: no comparison with praat (Debian: apt install praat)" >&2

build=$top/build/bench
results=$build/results
mkdir -p "$results"
if ! (cd "$top" && cmake --preset bench && cmake --build --preset bench) >"$results/build.txt" 2>&1; then
    cat "$results/build.txt" >&2
    exit 1
fi

# run NAME [options]: the medians of NAME's benchmarks.
run() {
    echo "$1 ..." >&2
    "$build/bench/$1" "${@:2}" --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
        >"$results/$1.txt" 2>"$results/$1.err"
}
run analysis_bench --seconds="$seconds" --benchmark_min_time=0.3
run fft_bench --benchmark_min_time=0.05
run kkf_bench --benchmark_min_time=0.05
run audio_file_bench --benchmark_min_time=0.3
run cache_bench --benchmark_min_time=0.3
run dsp_tools_bench --benchmark_min_time=0.1
run harmony_bench --benchmark_min_time=0.1
run choir_driver_bench --benchmark_min_time=0.1
run snapshot_bench --benchmark_min_time=0.1
run state_document_bench --benchmark_min_time=0.1
run voice_bank_bench --benchmark_min_time=0.3
run plugin_core_bench --benchmark_min_time=0.2

# medians FILE: "name counter value" for each counter of each median; k, M, m and u behind a number are undone.
medians() {
    awk '/_median/ {
        name = $1; sub(/_median$/, "", name); sub(/\/manual_time$/, "", name)
        print name, "cpu_ms", $4, $5
        for (i = 6; i <= NF; ++i) {
            if (split($i, pair, "=") != 2) continue
            value = pair[2]; sub(/\/s$/, "", value)
            unit = substr(value, length(value)); number = value + 0
            if (unit == "k") number *= 1e3; else if (unit == "M") number *= 1e6
            else if (unit == "m") number *= 1e-3; else if (unit == "u") number *= 1e-6
            else if (unit == "n") number *= 1e-9
            print name, pair[1], number
        }
    }' "$1"
}

echo
date +%Y-%m-%d
awk -F': ' '/model name/ { ++cores; model = $2 } END { print cores " cores, " model }' /proc/cpuinfo
echo
echo "Analysis of $seconds s at 44.1 kHz mono, times real time"
medians "$results/analysis_bench.txt" | awk '
    $2 == "x_realtime" {
        if ($1 ~ /^Analysis\//) { kind = substr($1, 10); order[++count] = kind; ours[kind] = $3 }
        else { split($1, part, "/"); if (part[3] == "hop:256") fine[part[2]] = $3; else coarse[part[2]] = $3 }
    }
    END {
        printf "  %-12s %8s %22s %22s\n", "", "ours", "aubio yinfft hop 256", "aubio yinfft hop 512"
        for (i = 1; i <= count; ++i) {
            kind = order[i]; printf "  %-12s %8.0f", kind, ours[kind]
            if (kind in fine) printf " %12.0f (x %5.2f) %12.0f (x %5.2f)", fine[kind], ours[kind] / fine[kind],
                coarse[kind], ours[kind] / coarse[kind]
            print ""
        }
    }'

# whole COMMAND...: user and system seconds of a whole process.
whole() {
    local TIMEFORMAT='%U %S'
    { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print $1 + $2 }'
}
if command -v praat >/dev/null 2>&1; then
    recording=$results/melody.wav
    "$build/bench/sonorelle_bench_recording" melody 60 "$recording"
    ours=$(whole "$build/bin/sonorelle" analyse "$recording" --no-cache --quiet)
    theirs=$(whole praat --run "$top/bench/pitch_and_pulses.praat" "$recording")
    echo
    echo "One minute of melody as a whole process, CPU seconds"
    awk -v ours="$ours" -v theirs="$theirs" \
        'BEGIN { printf "  ours %.2f, praat pitch and pulses %.2f\n", ours, theirs }'
fi

echo
echo "Forward and inverse real FFT, microseconds"
medians "$results/fft_bench.txt" | awk '
    { split($1, part, "/"); size = part[2] + 0 }
    $1 ~ /BesideFftw/ && $2 == "ours_us" { order[++count] = size; ours[size] = $3 }
    $1 ~ /BesideFftw/ && $2 == "fftw_us" { fftw[size] = $3 }
    $1 ~ /BesideFftw/ && $2 == "ratio" { ratio[size] = $3 }
    $1 ~ /PlainForm/ && $2 == "plain_us" { plain[size] = $3 }
    $1 ~ /PlainForm/ && $2 == "ours_us" && !(size in ours) { order[++count] = size; ours[size] = $3 }
    END {
        printf "  %6s %9s %15s %7s %9s\n", "size", "ours", "FFTW ESTIMATE", "ratio", "plain"
        for (i = 1; i <= count; ++i) {
            size = order[i]
            printf "  %6d %9.3f %15s %7s %9.3f\n", size, ours[size], (size in fftw) ? sprintf("%.3f", fftw[size]) : "-",
                (size in ratio) ? sprintf("%.2f", ratio[size]) : "-", plain[size]
        }
    }'

echo
echo "Correlation with search, microseconds, by window in samples"
medians "$results/kkf_bench.txt" | awk '
    { split($1, part, "/"); size = part[2] + 0 }
    $1 ~ /ThreeTransforms/ && $2 == "ours_us" { order[++count] = size; ours[size] = $3 }
    $2 == "transforms_us" { transforms[size] = $3 }
    $2 == "plain_us" { plain[size] = $3 }
    END {
        printf "  %6s %9s %18s %11s\n", "window", "ours", "three transforms", "plain form"
        for (i = 1; i <= count; ++i)
            printf "  %6d %9.3f %18.3f %11.3f\n", order[i], ours[order[i]], transforms[order[i]], plain[order[i]]
    }'

echo
echo "A file of ten minutes, milliseconds of CPU time"
medians "$results/audio_file_bench.txt" | awk '
    $2 == "ours_us" { printf "  read whole %.1f", $3 / 1e3 }
    $2 == "sndfile_us" { printf ", libsndfile to float %.1f\n", $3 / 1e3 }
    $1 == "ReadTenMinutesFromMemory" && $2 == "cpu_ms" { printf "  read in blocks from memory %s\n", $3 }'
medians "$results/cache_bench.txt" | awk '
    $1 == "LoadFromCache" && $2 == "cpu_ms" { printf "  marks, notes and frames from the cache %s\n", $3 }
    $1 == "OpenAudioAndLoadFromCache" && $2 == "cpu_ms" { printf "  the same with the audio read whole %s\n", $3 }'

echo
echo "Small tools, times real time at 44.1 kHz"
medians "$results/dsp_tools_bench.txt" | awk '$2 == "x_realtime" { printf "  %-52s %9.0f\n", $1, $3 }'

# microseconds FILE PATTERN LIMIT: the benchmarks whose names match, and how often they fit into the limit (0: none).
microseconds() {
    medians "$1" | awk -v pattern="$2" -v limit="$3" '
        $2 == "cpu_ms" && $1 ~ pattern {
            printf "  %-52s %9.2f", $1, $3
            if (limit > 0) printf "   %.1f times within the %d wanted", limit / $3, limit
            print ""
        }'
}
echo
echo "Harmony and snapshots of 500 notes, microseconds"
microseconds "$results/harmony_bench.txt" . 0
microseconds "$results/choir_driver_bench.txt" . 25000
microseconds "$results/snapshot_bench.txt" '^RecallSnapshot/500$' 50
microseconds "$results/snapshot_bench.txt" '^(PlainCopy|PushUndo|UndoAndRedo|Register)' 0
microseconds "$results/state_document_bench.txt" '^WriteDocument/500/32$' 50000
microseconds "$results/state_document_bench.txt" '^ReadDocument/500/32$' 300000

echo
echo "Four voices in blocks of 64 at 44.1 kHz, CPU time in per cent of the music's, and single blocks in microseconds"
medians "$results/voice_bank_bench.txt" | awk '
    $2 == "percent" { if ($1 == "FourVoicesAndMix") ours = $3; printf "  %-58s %8.3f %%", $1, $3
        if ($1 ~ /^FourCopies/) printf "   (x %.0f)", $3 / ours
        print "" }
    $2 == "median_us" { median[$1] = $3 }
    $2 == "slowest_us" { slowest[$1] = $3; if (!($1 in seen)) { order[++count] = $1; seen[$1] = 1 } }
    END { for (i = 1; i <= count; ++i) printf "  %-58s median %.1f, slowest %.1f\n", order[i], median[order[i]], slowest[order[i]] }'

echo
echo "The plug-in in a host: whole blocks, CPU time in per cent of the music's, by voices and frames a block"
medians "$results/plugin_core_bench.txt" | awk '
    $2 == "percent" { split($1, part, /[:\/]/); voices = part[3]; frames = part[5]
        if (!(voices in rows)) { rows[voices] = 1; row[++rowCount] = voices }
        if (!(frames in columns)) { columns[frames] = 1; column[++columnCount] = frames }
        value[voices, frames] = $3 }
    END {
        printf "  %6s", "voices"; for (c = 1; c <= columnCount; ++c) printf " %8s", column[c]; print ""
        for (r = 1; r <= rowCount; ++r) {
            printf "  %6s", row[r]; for (c = 1; c <= columnCount; ++c) printf " %8.3f", value[row[r], column[c]]; print ""
        }
    }'
echo "A session of more than 500 notes with 32 snapshots"
medians "$results/plugin_core_bench.txt" | awk '
    $2 == "cpu_ms" && $1 ~ /^(SaveSession|RestoreSession|LoadFromCache)$/ {
        limit = $1 == "SaveSession" ? 50 : $1 == "RestoreSession" ? 300 : 0
        printf "  %-20s %8.1f ms", $1, $3
        if (limit) printf "   %.1f times within the %d wanted", limit / $3, limit
        print "" }
    $2 == "cpu_ms" && $1 == "RecallByKey" { printf "  %-20s %8.1f microseconds\n", $1, $3 }'
