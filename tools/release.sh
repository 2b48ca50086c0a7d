#!/usr/bin/env bash
# Makes the release from this checkout, installing what it needs first: one ZIP per Windows build in
# build/release, VellBase-<version>-win32.zip (the i686 DLL) and VellBase-<version>-win64.zip.
# Each holds bin/VellBase.dll, lib/ (the import libraries and the CMake package), include/,
# demo/ (ready to run), README.md and LICENSE. The binaries are those the tests run, stripped.
# Each ZIP is a workflow preset (configure, build, package), one per build since a workflow keeps
# to one configure preset: cmake --workflow --preset release-win64 makes one alone.
#   tools/release.sh
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"
vell_install_packages
for build in win32 win64; do cmake --workflow --preset "release-$build"; done
rm -rf build/release/_CPack_Packages
for zip in build/release/VellBase-*.zip; do
    echo "$zip: $(unzip -Z1 "$zip" | grep -vc '/$') files"
done
