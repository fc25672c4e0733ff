#!/usr/bin/env bash
# Installs the build into a scratch prefix, validates the desktop entry and
# the AppStream metadata there, builds the Debian package and checks what
# its control file promises.
#   check_package.sh <build dir>
set -euo pipefail
build=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/usr" > /dev/null

for file in bin/tonaro \
            share/applications/tonaro.desktop \
            share/icons/hicolor/scalable/apps/tonaro.svg \
            share/metainfo/org.example.tonaro.metainfo.xml; do
    [ -e "$scratch/usr/$file" ] || { echo "not installed: $file"; exit 1; }
done

# Some of its errors do not yet change its exit status: read what it says.
report=$(desktop-file-validate "$scratch/usr/share/applications/tonaro.desktop" 2>&1) || true
if grep -qE 'error|warning' <<< "$report"; then echo "$report"; exit 1; fi
appstreamcli validate --no-net --pedantic "$scratch/usr/share/metainfo/org.example.tonaro.metainfo.xml"

# The package is made in a copy of the build's CPack configuration, so that
# tests running at the same time do not share CPack's working folder.
(cd "$scratch" && cpack --config "$build/CPackConfig.cmake" -B "$scratch/package" > cpack.log) \
    || { cat "$scratch/cpack.log"; exit 1; }
deb=$(ls "$scratch"/package/tonaro_*.deb)
control=$(dpkg-deb --field "$deb")
echo "$control"

field() { dpkg-deb --field "$deb" "$1"; }
[ "$(field Package)" = tonaro ] || { echo "wrong package name"; exit 1; }
[ "$(field Architecture)" = "$(dpkg --print-architecture)" ] || { echo "wrong architecture"; exit 1; }
depends=$(field Depends)
# dpkg-shlibdeps contributes the libraries the program links; the rest is ours.
for wanted in libfluidsynth libqt6widgets6 librtmidi libpulse musescore-general-soundfont-small qt6-qpa-plugins; do
    grep -q "$wanted" <<< "$depends" || { echo "Depends lacks $wanted: $depends"; exit 1; }
done
contents=$(dpkg-deb --contents "$deb")
grep -q '\./usr/bin/tonaro$' <<< "$contents" || { echo "package lacks the program"; exit 1; }
grep -q 'share/applications/tonaro.desktop$' <<< "$contents" || { echo "package lacks the menu entry"; exit 1; }
echo "package check passed: $(basename "$deb")"
