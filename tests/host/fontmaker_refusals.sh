#!/bin/sh
# A refused run of the font maker exits non-zero with one line of message and leaves no file
# behind, not even a temporary one; an earlier file of the same name stays as it was.
#   sh fontmaker_refusals.sh TOOL FONT
tool=$1 font=$2
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT
printf 'not a font\n' >"$dir/text.ttf"
mkdir "$dir/folder"
failed=0

# refuse WHAT ARGUMENT...
refuse() {
    what=$1
    shift
    "$tool" "$@" >"$dir/out.txt" 2>"$dir/err.txt" && { echo "FAIL: $what: accepted"; failed=1; }
    [ "$(wc -l <"$dir/err.txt")" -eq 1 ] && [ ! -s "$dir/out.txt" ] ||
        { echo "FAIL: $what: not one line of message:"; cat "$dir/err.txt"; failed=1; }
    rm -f "$dir/out.txt" "$dir/err.txt"
    left=$(ls "$dir" | grep -v -x -e text.ttf -e folder)
    [ -z "$left" ] || { echo "FAIL: $what: left $left"; failed=1; }
}

refuse "size 0" --size 0 "$font" "$dir/font.bmp"
refuse "size 256" --size 256 "$font" "$dir/font.bmp"
refuse "not a font" "$dir/text.ttf" "$dir/font.bmp"
refuse "missing font" "$dir/missing.ttf" "$dir/font.bmp"
refuse "unknown code page" --codepage 850 "$font" "$dir/font.bmp"
refuse "no such folder" "$font" "$dir/missing/font.bmp"
refuse "output is a folder" "$font" "$dir/folder"
refuse "preview into no such folder" --preview "$dir/missing/p.png" "$font" "$dir/font.bmp"

printf 'earlier\n' >"$dir/kept.bmp"
"$tool" --size 0 "$font" "$dir/kept.bmp" 2>/dev/null
[ "$(cat "$dir/kept.bmp")" = earlier ] || { echo "FAIL: an earlier file was changed"; failed=1; }

[ $failed -eq 0 ] && echo "all refusals clean"
exit $failed
