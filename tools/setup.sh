# Set-up shared by tools/demo.sh and tools/test.sh. Source it, then call what you need:
#
#   vell_install_packages    Debian packages the project needs, installed when missing, and the
#                            Debian sources the Windows font maker is built from (build/sources)
#   vell_wine_prefix BUILD   the Wine prefix of a Windows build (build/wine/BUILD), made once
#   vell_plain_prefix BUILD  a second one without Wine's virtual desktop (build/wine-plain/BUILD)
#   vell_start_xvfb VAR DEPTH  an Xvfb screen of 1024x768 at DEPTH bits; exports VAR=":N"
#   vell_start_pulse         a private PulseAudio daemon with a null sink "vell_sink"
#
# Everything started here is stopped on exit (the trap below); nothing that was already running is
# touched. Wine runs with WINEPREFIX set to the project's prefix, never the user's own.

VELL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
VELL_BUILD=${VELL_BUILD:-$VELL_ROOT/build}
VELL_PACKAGES=(
    cmake ninja-build git unzip g++ clang clang-format libclang-rt-14-dev googletest libbenchmark-dev
    cloc lld llvm libwine-dev
    g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools python3 python3-pil
    libfreetype-dev zlib1g-dev dpkg-dev fonts-dejavu-core
    wine64 wine xvfb xauth x11-utils pulseaudio pulseaudio-utils sox imagemagick
)
# The Wine loader of each Windows build: the i686 build (VellBase.dll as it ships) runs under
# 32-bit Wine, the x86_64 build under wine64.
declare -A VELL_WINE_OF=([win32]=/usr/lib/wine/wine [win64]=/usr/lib/wine/wine64)
VELL_CLEANUP=()
VELL_PREFIXES=()

vell_log() { printf '[vell] %s\n' "$*" >&2; }

# Wine goes first: its programs would complain on the terminal when their X screen went away.
vell_cleanup() {
    local i
    for i in "${VELL_PREFIXES[@]}"; do WINEPREFIX=$i wineserver -k >/dev/null 2>&1 || true; done
    VELL_PREFIXES=()
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

# Can this machine execute 32-bit x86 programs? Answered by running a 93-byte 32-bit ELF program
# that only calls exit(0), so that nothing needs installing to find out.
vell_can_run_32bit() {
    local probe
    probe=$(mktemp) || return 1
    printf '%b' \
        '\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00\x01\x00\x00\x00' \
        '\x54\x80\x04\x08\x34\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x34\x00\x20\x00' \
        '\x01\x00\x00\x00\x00\x00\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00\x80\x04\x08' \
        '\x00\x80\x04\x08\x5d\x00\x00\x00\x5d\x00\x00\x00\x05\x00\x00\x00\x00\x10\x00\x00' \
        '\xb8\x01\x00\x00\x00\x31\xdb\xcd\x80' >"$probe"
    chmod +x "$probe"
    local ok=1
    "$probe" 2>/dev/null && ok=0
    rm -f "$probe"
    return $ok
}

# 1: the i686 build is run too (32-bit Wine is installed where missing). Off where this machine
# cannot execute 32-bit programs; VELL_WIN32=0 turns it off by hand.
if [ -z "${VELL_WIN32:-}" ]; then
    if vell_can_run_32bit 2>/dev/null; then VELL_WIN32=1; else VELL_WIN32=0; fi
fi
if [ "$VELL_WIN32" = 0 ]; then
    vell_log "this machine cannot run 32-bit programs: the i686 build is compiled but not run"
fi

vell_installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

# Installs the missing packages. With VELL_WIN32=1 (the default where this machine runs 32-bit
# programs) that includes 32-bit Wine, wine32:i386, which needs the i386 architecture. Where the
# i386 index of the security archive is out of step with the main archive, apt cannot make the
# amd64 and i386 halves of a library agree; a pin that ranks the security archive below the main
# one then resolves it. The pin is only written when the install fails without it, and no install
# that would remove a package is ever made.
vell_install_packages() {
    vell_install_missing && vell_fetch_sources
}
vell_install_missing() {
    local missing=() pkg sudo=
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    for pkg in "${VELL_PACKAGES[@]}"; do
        vell_installed "$pkg" || missing+=("$pkg")
    done
    if [ "$VELL_WIN32" = 1 ] && ! vell_installed wine32:i386; then
        missing+=(wine32:i386)
        if ! dpkg --print-foreign-architectures | grep -qx i386; then
            vell_log "adding the i386 architecture (for 32-bit Wine)"
            $sudo dpkg --add-architecture i386
        fi
    fi
    [ ${#missing[@]} -eq 0 ] && return 0
    vell_log "installing: ${missing[*]}"
    # An index that fails to download (exit 100) leaves the others usable: go on with them.
    $sudo apt-get update -qq >/dev/null 2>&1 || vell_log "apt-get update reported errors; going on"
    local -a install=(env DEBIAN_FRONTEND=noninteractive apt-get install -y -q
                      --no-install-recommends)
    local plan pin=/etc/apt/preferences.d/vell-security-below-main
    vell_plan() { plan=$($sudo "${install[@]}" -s "${missing[@]}" 2>&1) && ! grep -q '^Remv ' <<<"$plan"; }
    if ! vell_plan && [[ " ${missing[*]} " == *" wine32:i386 "* ]] && [ ! -f "$pin" ]; then
        vell_log "apt cannot match the i386 and amd64 libraries: ranking the security archive below the main one ($pin)"
        printf 'Package: *\nPin: release l=Debian-Security\nPin-Priority: 50\n' | $sudo tee "$pin" >/dev/null
        vell_plan || true
    fi
    if ! vell_plan && [[ " ${missing[*]} " == *" wine32:i386 "* ]]; then
        grep '^Remv ' <<<"$plan" | sed 's/^/[vell]   would remove: /' >&2 || true
        vell_log "32-bit Wine cannot be installed without removing packages: the win32 tests will not run"
        local -a rest=()
        for pkg in "${missing[@]}"; do [ "$pkg" = wine32:i386 ] || rest+=("$pkg"); done
        missing=("${rest[@]}")
        VELL_WIN32=0
        vell_plan || { vell_log "apt-get cannot install: ${missing[*]}"; return 1; }
    fi
    $sudo "${install[@]}" "${missing[@]}" >/dev/null || { vell_log "apt-get install failed"; return 1; }
}

# The font maker's libraries for MinGW, which Debian packages for the native compiler only: their
# Debian source packages, of exactly the version the native build links (so that both programs
# render alike), unpacked with Debian's patches into build/sources/NAME; NAME/.vell-version holds
# the version. CMake builds them with the Windows builds. apt learns where the sources are from a
# deb-src entry for the archives of /etc/apt/sources.list.d/debian.sources (or of the deb lines
# of /etc/apt/sources.list), written once to /etc/apt/sources.list.d/vell-deb-src.*.
VELL_SOURCES=(freetype:libfreetype6 zlib:zlib1g)
vell_fetch_sources() {
    local dir=$VELL_BUILD/sources entry name version sudo= wanted=()
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    for entry in "${VELL_SOURCES[@]}"; do
        name=${entry%%:*}
        version=$(dpkg-query -W -f='${source:Version}' "${entry#*:}:$(dpkg --print-architecture)") ||
            return 1
        [ "$(cat "$dir/$name/.vell-version" 2>/dev/null)" = "$version" ] || wanted+=("$name=$version")
    done
    [ ${#wanted[@]} -eq 0 ] && return 0
    if ! apt-cache showsrc "${wanted[0]%%=*}" 2>/dev/null | grep -qx "Version: ${wanted[0]#*=}"; then
        local list=/etc/apt/sources.list.d/debian.sources
        if [ -f "$list" ] && [ ! -f /etc/apt/sources.list.d/vell-deb-src.sources ]; then
            vell_log "adding a deb-src entry for the archives of $list"
            sed -E 's/^Types:.*/Types: deb-src/' "$list" |
                $sudo tee /etc/apt/sources.list.d/vell-deb-src.sources >/dev/null
        elif [ ! -f "$list" ] && [ ! -f /etc/apt/sources.list.d/vell-deb-src.list ]; then
            vell_log "adding deb-src lines for the archives of /etc/apt/sources.list"
            sed -nE 's/^deb[[:space:]]/deb-src /p' /etc/apt/sources.list |
                $sudo tee /etc/apt/sources.list.d/vell-deb-src.list >/dev/null
        fi
        $sudo apt-get update -qq >/dev/null 2>&1 || vell_log "apt-get update reported errors; going on"
    fi
    mkdir -p "$dir/download"
    for entry in "${wanted[@]}"; do
        name=${entry%%=*}
        vell_log "fetching the Debian sources of $entry"
        rm -rf "$dir/download"/* "$dir/$name"
        if ! (cd "$dir/download" && apt-get source -q "$entry" >source.log 2>&1); then
            vell_log "apt-get source $entry failed; its last words:"
            tail -n 5 "$dir/download/source.log" | sed 's/^/[vell]   /' >&2
            return 1
        fi
        # The one folder dpkg-source unpacked, whatever its name.
        mv "$(find "$dir/download" -mindepth 1 -maxdepth 1 -type d)" "$dir/$name" &&
            printf '%s\n' "${entry#*=}" >"$dir/$name/.vell-version" || return 1
    done
    rm -rf "$dir/download"
}

# vell_thrice COMMAND...: runs COMMAND until it succeeds, three times at most.
vell_thrice() { "$@" || "$@" || "$@"; }

# Makes (once) and settles a Wine prefix: vell_make_prefix DIR LOADER DESKTOP, DESKTOP "yes" or
# "no". The prefix of the 32-bit loader is a 32-bit one. What Wine prints goes to DIR.log, whose
# end is shown when a step fails; the function then returns 1.
vell_make_prefix() {
    local prefix=$1 loader=$2 desktop=$3 arch=win64
    [ "$loader" = "${VELL_WINE_OF[win32]}" ] && arch=win32
    local log=$prefix.log
    mkdir -p "$prefix" || { vell_log "cannot make the Wine prefix's folder $prefix"; return 1; }
    # Now and then Wine cannot start a process at all ("failed to map the shared user data", seen
    # once in CI while the four prefixes were made side by side), so each step has three tries.
    local try
    if [ ! -f "$prefix/system.reg" ]; then
        vell_log "making a Wine prefix in $prefix"
        : >"$log"
        for try in 1 2 3; do
            # Its exit status says little: without an X screen (the prefixes are made before one
            # is started) it complains about windows and fails, yet makes the prefix.
            # The registry files are written when the prefix's wineserver ends: wait for it.
            WINEARCH=$arch WINEPREFIX=$prefix "$loader" wineboot -u >>"$log" 2>&1 || true
            WINEPREFIX=$prefix wineserver -w
            [ -f "$prefix/system.reg" ] && break
        done
        if [ ! -f "$prefix/system.reg" ]; then
            vell_log "wineboot could not make the Wine prefix $prefix ($loader); its last words:"
            tail -n 5 "$log" | sed 's/^/[vell]   /' >&2
            return 1
        fi
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
        local i
        for ((i = 0; i < ${#settings[@]}; i += 7)); do
            if ! WINEPREFIX=$prefix vell_thrice "$loader" reg add "${settings[@]:i:7}" /f >>"$log" 2>&1; then
                vell_log "reg add failed in the Wine prefix $prefix: ${settings[*]:i:3}; its last words:"
                tail -n 5 "$log" | sed 's/^/[vell]   /' >&2
                return 1
            fi
        done
        WINEPREFIX=$prefix wineserver -w
        touch "$stamp"
    fi
    VELL_PREFIXES+=("$prefix")
}

# The project's prefix for one Windows build (build/wine/BUILD, never the user's ~/.wine), with
# the virtual desktop: vell_wine_prefix win32|win64 exports WINEPREFIX and VELL_WINE, the loader.
vell_wine_prefix() {
    export WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="mscoree,mshtml="
    VELL_WINE=${VELL_WINE_OF[$1]}
    vell_make_prefix "$VELL_BUILD/wine/$1" "$VELL_WINE" yes || return 1
    export WINEPREFIX=$VELL_BUILD/wine/$1
}

# A second prefix for the build without the virtual desktop, where Wine uses the X screen's own
# modes; its path goes to VELL_WINEPREFIX_PLAIN for the tests that need it.
vell_plain_prefix() {
    vell_make_prefix "$VELL_BUILD/wine-plain/$1" "${VELL_WINE_OF[$1]}" no || return 1
    export VELL_WINEPREFIX_PLAIN=$VELL_BUILD/wine-plain/$1
}

# vell_start_xvfb VAR DEPTH: starts Xvfb on a free display number and exports VAR=":N". Runs in
# the calling shell (not in $(...)), so that its clean-up step is remembered.
vell_start_xvfb() {
    local var=$1 depth=${2:-16} fifo pid display= log=$VELL_BUILD/xvfb-${2:-16}.log
    mkdir -p "$VELL_BUILD"
    fifo=$(mktemp -u) && mkfifo "$fifo"
    Xvfb -displayfd 3 -screen 0 "1024x768x$depth" -nolisten tcp 3>"$fifo" >"$log" 2>&1 &
    pid=$!
    read -r -t 20 display <"$fifo"
    rm -f "$fifo"
    if [ -z "$display" ]; then
        kill "$pid" 2>/dev/null
        vell_log "Xvfb did not start at depth $depth; its last words ($log):"
        tail -n 5 "$log" | sed 's/^/[vell]   /' >&2
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
    local log=$VELL_BUILD/pulseaudio.log
    pulseaudio -D --exit-idle-time=-1 -n --log-target=stderr \
        --load="module-null-sink sink_name=vell_sink" \
        --load=module-native-protocol-unix >"$log" 2>&1
    local i
    for i in $(seq 50); do
        pactl info >/dev/null 2>&1 && break
        sleep 0.1
    done
    if ! pactl info >/dev/null 2>&1; then
        vell_log "PulseAudio did not start: sound will be unavailable; its last words ($log):"
        tail -n 5 "$log" | sed 's/^/[vell]   /' >&2
        return 1
    fi
    VELL_CLEANUP+=("XDG_RUNTIME_DIR='$XDG_RUNTIME_DIR' pulseaudio -k")
    # What plays on the sink is what programs record: the sound tests listen to themselves.
    pactl set-default-sink vell_sink >/dev/null 2>&1
    pactl set-default-source vell_sink.monitor >/dev/null 2>&1
}
