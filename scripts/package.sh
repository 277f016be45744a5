#!/usr/bin/env bash
# Builds the release and makes the Debian package of it, then checks the package with lintian.
#   scripts/package.sh          -> build/release/quorlen_<version>_<arch>.deb
# Install it with: sudo apt-get install ./build/release/quorlen_*.deb
# sudo scripts/install-check.sh installs it here, starts it as a new user and removes it again.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
rm -f build/release/quorlen_*.deb
(cd build/release && cpack -G DEB)
deb=$(ls build/release/quorlen_*.deb)
echo "package: $deb"
scripts/package-check.sh "$deb"
appstreamcli validate --no-net build/release/packaging/com.velmora.Quorlen.metainfo.xml
if command -v lintian >/dev/null; then
    # Errors fail the script; warnings are shown for the reader to judge.
    lintian --fail-on error --suppress-tags no-manual-page "$deb"
fi
