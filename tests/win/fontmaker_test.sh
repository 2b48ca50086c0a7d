#!/bin/bash
# The Windows font maker of the release ZIP against the Linux one: from the same font, by file or
# by installed face, the same bytes (font and preview); bad input fails with a message and writes
# nothing. Paths are given as Windows writes them (Z:\...\a b).
#   fontmaker_test.sh WINE UNPACKED-ZIPS LINUX-vell-fontmaker WORKDIR
# Exit 77 (skipped) without the Linux program or the DejaVu fonts.
wine=$1 windows=$(echo "$2"/VellBase-*/bin/vell-fontmaker.exe) linux=$3 work=$4/"with space"
dejavu=/usr/share/fonts/truetype/dejavu
[ -x "$linux" ] && [ -f "$dejavu/DejaVuSans-Bold.ttf" ] || {
    echo "skipped: no $linux (the host build) or no DejaVu fonts"
    exit 77
}
[ -f "$windows" ] || { echo "FAILED: no $2/VellBase-*/bin/vell-fontmaker.exe"; exit 1; }
rm -rf "$work" && mkdir -p "$work" || exit 1
win() { printf 'Z:%s' "$1" | tr / '\\'; }
failures=0
fail() { echo "FAILED: $*"; failures=$((failures + 1)); }

# Windows source | Linux font file | options ("-" none); --preview P becomes a file of each side.
while IFS='|' read -r source file options; do
    [ "$options" = - ] && options=
    set -- $options
    [ "$1" = --preview ] && shift 2 && preview=yes || preview=
    case $source in
    face:*) given=(--face "${source#face:}") ;;
    *) given=("$(win "$dejavu/$source")") ;;
    esac
    mine=() # the Linux program has no --bold: it is given the bold face's file
    for o; do [ "$o" = --bold ] || mine+=("$o"); done
    "$linux" "${mine[@]}" ${preview:+--preview "$work/l.png"} "$dejavu/$file" "$work/l.bmp" >/dev/null ||
        fail "Linux program: $*"
    "$wine" "$windows" "$@" ${preview:+--preview "$(win "$work/w.png")"} "${given[@]}" \
        "$(win "$work/w.bmp")" >/dev/null || fail "Windows program: ${given[*]} $*"
    cmp -s "$work/l.bmp" "$work/w.bmp" || fail "fonts differ: ${given[*]} $*"
    [ -z "$preview" ] || cmp -s "$work/l.png" "$work/w.png" || fail "previews differ: ${given[*]} $*"
done <<'EOF'
DejaVuSans.ttf|DejaVuSans.ttf|-
DejaVuSansMono.ttf|DejaVuSansMono.ttf|--size 11 --mono --top-down --codepage 1250
DejaVuSerif.ttf|DejaVuSerif.ttf|--preview P --size 24 --codepage 437 --spacing 0 --first 48
face:DejaVu Sans|DejaVuSans.ttf|--size 16
face:dejavu sans|DejaVuSans-Bold.ttf|--bold --size 20 --codepage 1251
EOF

# Arguments | the message's beginning. Each exits 1 and leaves no file in the folder.
while IFS='|' read -r args message; do
    rm -f "$work"/*.bmp
    eval "set -- $args"
    status=0
    "$wine" "$windows" "$@" >/dev/null 2>"$work/err" || status=$?
    [ "$status" = 1 ] && grep -q "^vell-fontmaker: $message" "$work/err" ||
        fail "$args: status $status, said $(cat "$work/err")"
    [ -z "$(ls "$work" | grep -v '^err$\|png$')" ] || fail "$args left $(ls "$work")"
done <<EOF
'$(win "$work/no such.ttf")' '$(win "$work/out.bmp")'|cannot read
'$(win "$work/l.png")' '$(win "$work/out.bmp")'|.* is not a font file
--face 'No Such Face' '$(win "$work/out.bmp")'|no font named "No Such Face" is installed
'$(win "$dejavu/DejaVuSans.ttf")' '$(win "$work/no dir/out.bmp")'|cannot write
EOF
exit $((failures > 0))
