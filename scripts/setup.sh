#!/usr/bin/env bash
# Installs what Tonaro needs on Debian 12 and builds it.
#   scripts/setup.sh run    installs, builds and starts the program
#   scripts/setup.sh test   installs, builds and runs the whole test suite
# Works as root without sudo, and as a user with sudo.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=${1:-run}
build=${BUILD_DIR:-build}

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-svg-dev libgl-dev
    libfluidsynth-dev librtmidi-dev libpipewire-0.3-dev libpulse-dev libasound2-dev libjack-jackd2-dev
    musescore-general-soundfont-small qt6-qpa-plugins
)
test_packages=(
    pulseaudio pulseaudio-utils pipewire pipewire-pulse wireplumber pipewire-bin dbus fluidsynth
    jackd2 desktop-file-utils appstream dpkg-dev file adwaita-qt6 lintian xvfb xauth x11-utils openbox
)

if [ "$(id -u)" -eq 0 ]; then sudo=(); else sudo=(sudo); fi

wanted=("${packages[@]}")
[ "$mode" = test ] && wanted+=("${test_packages[@]}")
missing=()
for package in "${wanted[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" < /dev/null
fi

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build "$build" -j "$(nproc)"

case "$mode" in
run)
    exec "$build/src/tonaro"
    ;;
test)
    cd "$build"
    QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc)" --timeout 600
    ;;
*)
    echo "usage: $0 run|test" >&2
    exit 2
    ;;
esac
