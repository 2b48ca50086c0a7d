# Set-up shared by tools/demo.sh and tools/test.sh. Source it, then call what you need:
#
#   vell_install_packages    Debian packages the project needs, installed when missing
#   vell_wine_prefix         the Wine prefix inside the build tree (build/wine), made once
#   vell_plain_prefix        a second one without Wine's virtual desktop (build/wine-plain)
#   vell_start_xvfb VAR DEPTH  an Xvfb screen of 1024x768 at DEPTH bits; exports VAR=":N"
#   vell_start_pulse         a private PulseAudio daemon with a null sink "vell_sink"
#
# Everything started here is stopped on exit (the trap below); nothing that was already running is
# touched. Wine runs with WINEPREFIX set to the project's prefix, never the user's own.

VELL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
VELL_BUILD=${VELL_BUILD:-$VELL_ROOT/build}
VELL_WINE=/usr/lib/wine/wine64
VELL_PACKAGES=(
    cmake ninja-build g++ clang libclang-rt-14-dev googletest libbenchmark-dev
    g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools
    wine64 wine xvfb xauth x11-utils pulseaudio pulseaudio-utils sox imagemagick
)
VELL_CLEANUP=()

vell_log() { printf '[vell] %s\n' "$*" >&2; }

vell_cleanup() {
    local i
    for ((i = ${#VELL_CLEANUP[@]} - 1; i >= 0; i--)); do
        eval "${VELL_CLEANUP[i]}" >/dev/null 2>&1 || true
    done
    VELL_CLEANUP=()
}
# Runs and forgets the most recent clean-up step (to stop something before the end).
vell_cleanup_last() {
    local n=${#VELL_CLEANUP[@]}
    [ "$n" -gt 0 ] || return 0
    eval "${VELL_CLEANUP[n - 1]}" >/dev/null 2>&1 || true
    unset "VELL_CLEANUP[n - 1]"
}
trap vell_cleanup EXIT
trap 'exit 130' INT TERM

vell_install_packages() {
    local missing=() pkg
    for pkg in "${VELL_PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' ||
            missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    vell_log "installing: ${missing[*]}"
    $sudo apt-get update -qq >/dev/null &&
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null ||
        { vell_log "apt-get install failed"; return 1; }
}

# Makes (once) and settles a Wine prefix: vell_make_prefix DIR DESKTOP, DESKTOP "yes" or "no".
vell_make_prefix() {
    local prefix=$1 desktop=$2
    if [ ! -f "$prefix/system.reg" ]; then
        vell_log "making a Wine prefix in $prefix"
        mkdir -p "$prefix"
        WINEPREFIX=$prefix "$VELL_WINE" wineboot -u >/dev/null 2>&1
    fi
    local stamp=$prefix/.vell-settings-2
    if [ ! -f "$stamp" ]; then
        # A crashing program prints its backtrace and ends instead of waiting on a dialog. Windows
        # are unmanaged: with no window manager on the Xvfb screen, Wine would otherwise wait two
        # seconds for one whenever a window (a message box, say) closes.
        local -a settings=(
            'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0
            'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N
        )
        # Wine's own display modes are those the X server offers (an Xvfb has one), so the
        # 640x480 full-screen mode needs Wine's virtual desktop, which emulates mode changes.
        [ "$desktop" = yes ] && settings+=(
            'HKCU\Software\Wine\Explorer' /v Desktop /t REG_SZ /d Default
            'HKCU\Software\Wine\Explorer\Desktops' /v Default /t REG_SZ /d 1024x768
        )
        local i ok=1
        for ((i = 0; i < ${#settings[@]}; i += 7)); do
            WINEPREFIX=$prefix "$VELL_WINE" reg add "${settings[@]:i:7}" /f >/dev/null 2>&1 || ok=0
        done
        [ $ok -eq 1 ] && touch "$stamp"
        WINEPREFIX=$prefix wineserver -w
    fi
    VELL_CLEANUP+=("WINEPREFIX='$prefix' wineserver -k")
}

# The project's prefix (build/wine, never the user's ~/.wine), with the virtual desktop: programs
# run in it by default.
vell_wine_prefix() {
    export WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="mscoree,mshtml="
    vell_make_prefix "$VELL_BUILD/wine" yes
    export WINEPREFIX=$VELL_BUILD/wine
}

# A second prefix without the virtual desktop, where Wine uses the X screen's own modes; its
# path goes to VELL_WINEPREFIX_PLAIN for the tests that need it.
vell_plain_prefix() {
    vell_make_prefix "$VELL_BUILD/wine-plain" no
    export VELL_WINEPREFIX_PLAIN=$VELL_BUILD/wine-plain
}

# vell_start_xvfb VAR DEPTH: starts Xvfb on a free display number and exports VAR=":N". Runs in
# the calling shell (not in $(...)), so that its clean-up step is remembered.
vell_start_xvfb() {
    local var=$1 depth=${2:-16} fifo pid display=
    fifo=$(mktemp -u) && mkfifo "$fifo"
    Xvfb -displayfd 3 -screen 0 "1024x768x$depth" -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
    pid=$!
    read -r -t 20 display <"$fifo"
    rm -f "$fifo"
    if [ -z "$display" ]; then
        kill "$pid" 2>/dev/null
        vell_log "Xvfb did not start"
        return 1
    fi
    VELL_CLEANUP+=("kill $pid")
    export "$var=:$display"
}

# A private PulseAudio daemon (own XDG_RUNTIME_DIR in the build tree) with a null sink whose
# monitor the sound tests record from. Reused when one is already running there.
vell_start_pulse() {
    export XDG_RUNTIME_DIR=$VELL_BUILD/run
    mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
    export PULSE_SINK=vell_sink
    if pactl info >/dev/null 2>&1; then
        pactl set-default-source vell_sink.monitor >/dev/null 2>&1
        return 0
    fi
    pulseaudio -D --exit-idle-time=-1 -n \
        --load="module-null-sink sink_name=vell_sink" \
        --load=module-native-protocol-unix >/dev/null 2>&1
    local i
    for i in $(seq 50); do
        pactl info >/dev/null 2>&1 && break
        sleep 0.1
    done
    if ! pactl info >/dev/null 2>&1; then
        vell_log "PulseAudio did not start: sound will be unavailable"
        return 1
    fi
    VELL_CLEANUP+=("XDG_RUNTIME_DIR='$XDG_RUNTIME_DIR' pulseaudio -k")
    # What plays on the sink is what programs record: the sound tests listen to themselves.
    pactl set-default-sink vell_sink >/dev/null 2>&1
    pactl set-default-source vell_sink.monitor >/dev/null 2>&1
}
