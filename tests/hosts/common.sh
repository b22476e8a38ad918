# shellcheck shell=bash
# What the tests with real hosts share. A script sources this file, and then:
#
#   prepare_host ardour             packages, plug-in and program built, an empty work folder, a home of its own
#   start_display 1280x900          a virtual display with a window manager
#   make_recording                  the bundled recording in the work folder ($recording), arranged: $mix, $state
#   launch host.log qtractor FILE   starts it in the background; its process is $launched
#   wait_for 20 "the host's window" find_window Qtractor
#   screenshot editor $window       shots/editor.png
#   pass "it plays"                 one line a finding; what fails ends the script with status 1
#   fact "first open" 92 ms         one line a measured number
#   all_well                        the last line
#
# Everything is left in build/hosts/NAME: home/, shots/, the logs. What was launched is ended with the script, however that ends.

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
started=()

pass() { echo "PASS  $*"; }
fact() { printf 'FACT  %-44s %s\n' "$1:" "${*:2}"; }
all_well() { echo "$host: all is well; pictures and logs are in $work"; }
fail() {
    [ ! -e "${work:-}/failed" ] || exit 1 # it has been told
    [ ! -d "${work:-}" ] || : >"$work/failed"
    if [ -n "${display_is_ours:-}" ]; then # what the user would see
        import -silent -window root "$work/shots/failure.png" || true
        xwininfo -root -tree >"$work/windows.log" 2>&1 || true
    fi
    echo "FAIL  $host: $* (logs in ${work:-build/hosts})" >&2
    exit 1
}

# prepare_host NAME: the packages are those of the groups `hosts` and NAME of scripts/install-packages.
prepare_host() {
    host=$1
    work=$here/build/hosts/$host
    bash "$here/scripts/install-packages" build hosts "$host" || fail "its packages cannot be installed"
    bash "$here/scripts/build" release sonorelle sonorelle_vst || fail "the plug-in cannot be built"
    program=$here/build/release/bin/sonorelle
    plugin=$here/build/release/lib/vst/sonorelle.so

    rm -rf "$work"
    mkdir -p "$work"/{home/{.vst,.local/share},shots,runtime}
    chmod 700 "$work/runtime"
    cp "$plugin" "$work/home/.vst/" || fail "there is no plug-in at $plugin"
    export HOME=$work/home XDG_RUNTIME_DIR=$work/runtime VST_PATH=$work/home/.vst LC_ALL=C.UTF-8
    unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
    export NO_AT_BRIDGE=1 # no desktop bus is missed then
    set -E
    # Nothing ends without a word. What a part of a command does is told by the command.
    trap '[ "$BASH_SUBSHELL" -gt 0 ] || fail "line $LINENO of ${BASH_SOURCE[0]##*/} did not succeed"' ERR
    trap end_all EXIT
    trap 'exit 1' INT TERM
}

now() { date +%s%N; }
since() { echo "$((($(now) - $1) / 1000000))"; } # milliseconds

# Each of them leads a process group, so that its children end with it.
launch() {
    local log=$work/$1
    shift
    setsid "$@" >"$log" 2>&1 </dev/null &
    launched=$!
    started+=("$launched")
}

end_all() {
    local i process
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        process=${started[i]}
        kill -0 -- "-$process" 2>/dev/null || continue
        kill -- "-$process" 2>/dev/null || true
        for _ in {1..20}; do
            kill -0 -- "-$process" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL -- "-$process" 2>/dev/null || true
    done
}

# wait_for SECONDS WHAT COMMAND...: until the command succeeds.
wait_for() {
    local end=$((SECONDS + $1)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$end" ] || fail "waited in vain for $what"
        sleep 0.1
    done
}

is_running() { kill -0 "$1" 2>/dev/null; }

# wait_for_end PROCESS SECONDS WHAT: a launched process ends by itself, and well.
wait_for_end() {
    local end=$((SECONDS + $2)) status=0
    while is_running "$1"; do
        [ "$SECONDS" -lt "$end" ] || fail "$3 does not end"
        sleep 0.1
    done
    wait "$1" || status=$?
    [ "$status" -eq 0 ] || fail "$3 ended with status $status"
}

# start_display WIDTHxHEIGHT: the server chooses a free number by itself.
start_display() {
    local number=$work/display
    # shellcheck disable=SC2016 # the inner shell's own
    launch display.log bash -c 'exec Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp 3>"$2"' _ "$1" "$number"
    wait_for 10 "the virtual display" grep -q '[0-9]' "$number"
    DISPLAY=:$(cat "$number")
    export DISPLAY
    display_is_ours=yes
    launch window-manager.log openbox
    wait_for 10 "the window manager" xdotool get_num_desktops
}

# The bundled recording as $recording; what it should sound like as $mix, the session of it as $state. More arguments are
# options of `sonorelle arrange`.
make_recording() {
    # shellcheck disable=SC2034 # for the script
    recording=$work/deck-the-hall.wav
    # shellcheck disable=SC2034
    mix=$work/mix/Out_deck-the-hall.wav
    state=$work/deck-the-hall.state
    cp "$here/assets/demo/deck-the-hall.wav" "$recording"
    "$program" arrange "$recording" -o "$work/mix" --save-state "$state" --quiet "$@" >"$work/arrange.log" 2>&1 ||
        fail "the recording cannot be arranged"
}

# find_window NAME: the number of the visible window whose title holds the name (a regular expression); the last one shown.
find_window() { xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1 | grep .; }

# await_window SECONDS WHAT NAME: waits for it; it is $window then. (A search fails now and then, when another window goes.)
await_window() { wait_for "$1" "$2" note_window "$3"; }
# shellcheck disable=SC2034 # for the script
note_window() { window=$(find_window "$1"); }

# find_editor [WINDOW]: our window, wherever it lies inside of WINDOW (or anywhere): it alone is about of this size, and takes
# drops. (Ardour sometimes makes it as high as what is around it, which is some pixels more.)
find_editor() {
    local id in=(-root)
    [ $# -eq 0 ] || in=(-id "$1")
    for id in $(xwininfo -tree "${in[@]}" 2>/dev/null | awk '/ 959x(599|60[0-9]|61[0-9])\+0\+0 / { print $1 }'); do
        if xprop -id "$id" XdndAware 2>/dev/null | grep -q = &&
            xwininfo -id "$id" 2>/dev/null | grep -q 'Map State: IsViewable'; then
            echo "$((id))"
            return
        fi
    done
    return 1
}

# screenshot NAME [WINDOW]: shots/NAME.png of the window as it is seen, or of the whole display.
screenshot() {
    local file=$work/shots/$1.png
    import -silent -window root "$work/shots/root.png" || fail "no picture of the display"
    if [ -n "${2:-}" ]; then
        local X Y WIDTH HEIGHT WINDOW SCREEN
        eval "$(xdotool getwindowgeometry --shell "$2")"
        convert "$work/shots/root.png" -crop "${WIDTH}x$HEIGHT+$X+$Y" +repage -strip +dither -colors 128 "PNG8:$file"
        : "$WINDOW" "$SCREEN"
    else
        convert "$work/shots/root.png" -strip +dither -colors 128 "PNG8:$file"
    fi || fail "no picture $file"
    rm -f "$work/shots/root.png"
}

# colours_of NAME: how many colours a screenshot has; an empty window has a few.
colours_of() { identify -format '%k' "$work/shots/$1.png"; }

# no_trouble_in LOG...: neither a crash nor an X error was written there.
no_trouble_in() {
    local log
    for log in "$@"; do
        if grep -E -m 1 'Segmentation|SIGSEGV|SIGABRT|[Aa]borted|terminate called|X Error|BadWindow|BadDrawable|BadMatch|X connection|assertion .* failed: .*sonorelle' \
            "$work/$log" >&2; then
            fail "trouble in $log"
        fi
    done
}

# sounds_like FILE.wav REFERENCE.wav [LEAST]: the same music at the same place: the correlation is printed, and is LEAST (0.98)
# or more. Both are 16-bit; the file may be longer.
sounds_like() { python3 "$here/tests/hosts/compare_sound.py" "$@"; }
