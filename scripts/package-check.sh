#!/usr/bin/env bash
# Checks that a built package holds what an installed program needs: the three programs, the
# shipped data with base maps and manual, the launcher, the icons and the software centre's
# description; and nothing of the build (tests, benchmarks, build tools).
#   scripts/package-check.sh build/release/quorlen_<version>_<arch>.deb
set -euo pipefail
deb=${1:?the .deb to check}
contents=$(dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|')
status=0
need() {
    if ! grep -qxE "$1" <<<"$contents"; then
        echo "package-check: missing $1" >&2
        status=1
    fi
}
need /usr/bin/quorlen
need /usr/bin/quorlen-cli
need /usr/bin/boxsim
need /usr/share/quorlen/RZ400_800M3.ini
need /usr/share/quorlen/RZ400_800M3_Default_Settings.qxs
need /usr/share/quorlen/RZ400_800M3_Default_Log_Settings.qxl
need '/usr/share/quorlen/Basemaps/.+\.qxs'
need /usr/share/quorlen/Manual/RZ400_800M3_Manual.pdf
need /usr/share/applications/com.velmora.Quorlen.desktop
need /usr/share/metainfo/com.velmora.Quorlen.metainfo.xml
need /usr/share/icons/hicolor/scalable/apps/com.velmora.Quorlen.svg
for size in 16 32 48 64 128 256; do
    need "/usr/share/icons/hicolor/${size}x${size}/apps/com.velmora.Quorlen.png"
done
need /usr/share/doc/quorlen/copyright
if grep -E '_tests?$|/bench_|make_basemaps|make_manual|/lib/.*\.a$|/include/' <<<"$contents"; then
    echo "package-check: the files above belong to the build, not the package" >&2
    status=1
fi
depends=$(dpkg-deb -f "$deb" Depends)
for lib in libqt6serialport6 libqt6widgets6 libc6; do
    grep -q "$lib" <<<"$depends" || { echo "package-check: Depends lacks $lib ($depends)" >&2; status=1; }
done
[ $status -eq 0 ] && echo "package-check: $(wc -l <<<"$contents") entries, all expected ones present"
exit $status
