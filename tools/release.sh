#!/usr/bin/env bash
# Makes the release from this checkout, installing what it needs first: one ZIP per Windows build in
# build/release, VellBase-<version>-win32.zip (the i686 DLL) and VellBase-<version>-win64.zip.
# Each holds bin/VellBase.dll, lib/ (the import libraries and the CMake package), include/,
# demo/ (ready to run), README.md and LICENSE. The binaries are those the tests run, stripped.
#   tools/release.sh
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"
vell_install_packages
out=$VELL_BUILD/release
mkdir -p "$out"
for build in win32 win64; do
    vell_log "building and packing $build"
    cmake --preset "$build" >/dev/null
    cmake --build --preset "$build"
    cpack --config "$VELL_BUILD/$build/CPackConfig.cmake" -B "$out" >/dev/null
done
rm -rf "$out/_CPack_Packages"
for zip in "$out"/VellBase-*.zip; do
    echo "$zip: $(unzip -Z1 "$zip" | grep -vc '/$') files"
done
