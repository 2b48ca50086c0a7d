#!/bin/sh
# Runs a Windows test program on the 24-bit X screen in the Wine prefix without the virtual
# desktop, as tools/test.sh sets them up (VELL_DISPLAY24, VELL_WINEPREFIX_PLAIN). Exit 77 (skipped)
# when they are not there.
[ -n "$VELL_DISPLAY24" ] && [ -n "$VELL_WINEPREFIX_PLAIN" ] || exit 77
DISPLAY=$VELL_DISPLAY24 WINEPREFIX=$VELL_WINEPREFIX_PLAIN exec "$@"
