#!/usr/bin/env bash
# Installs what building and testing need on Debian 12, and nothing when it is all there.
#   scripts/deps.sh fuzz    also clang with libFuzzer, for scripts/fuzz.sh
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-serialport-dev qt6-charts-dev qt6-datavisualization-dev
    qt6-declarative-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools libgl-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    clang-format
    pcscd libpcsclite-dev vsmartcard-vpcd python3-virtualsmartcard
    unrtf
    fonts-dejavu-core
    xvfb xauth libgl1-mesa-dri
    librsvg2-bin dpkg-dev file lintian appstream
)
if [ "${1:-}" = fuzz ]; then
    packages+=(clang libclang-rt-14-dev)
fi
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=()
    [ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
    export DEBIAN_FRONTEND=noninteractive
    "${sudo_cmd[@]}" apt-get update -q
    "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
