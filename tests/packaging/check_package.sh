#!/usr/bin/env bash
# Installs the build into a scratch prefix, validates the desktop entry and
# the AppStream metadata there, builds the Debian package, checks what its
# control file promises and runs lintian on it.
#   check_package.sh <build dir>
set -euo pipefail
build=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/usr" > /dev/null

for file in bin/tonaro \
            share/applications/tonaro.desktop \
            share/icons/hicolor/scalable/apps/tonaro.svg \
            share/icons/hicolor/16x16/apps/tonaro.png \
            share/icons/hicolor/48x48/apps/tonaro.png \
            share/icons/hicolor/256x256/apps/tonaro.png \
            share/metainfo/org.example.tonaro.metainfo.xml \
            share/doc/tonaro/manual.html \
            share/doc/tonaro/copyright \
            share/doc/tonaro/changelog.Debian.gz \
            share/man/man1/tonaro.1.gz; do
    [ -e "$scratch/usr/$file" ] || { echo "not installed: $file"; exit 1; }
done

# Some of its errors do not yet change its exit status: read what it says.
report=$(desktop-file-validate "$scratch/usr/share/applications/tonaro.desktop" 2>&1) || true
if grep -qE 'error|warning' <<< "$report"; then echo "$report"; exit 1; fi
metainfo=$scratch/usr/share/metainfo/org.example.tonaro.metainfo.xml
appstreamcli validate --no-net --pedantic "$metainfo"
# Every address the metadata gives must lead somewhere: no example domains.
if grep -nE '(https?://|@)[^"<> ]*example\.(org|com|net)' "$metainfo"; then
    echo "placeholder address in the AppStream metadata"; exit 1
fi
# Each PNG icon is as large as the folder it lies in says.
for icon in "$scratch"/usr/share/icons/hicolor/*x*/apps/tonaro.png; do
    size=$(basename "$(dirname "$(dirname "$icon")")")
    file "$icon" | grep -q "PNG image data, ${size/x/ x }," || { echo "wrong size: $icon"; exit 1; }
done

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
for wanted in libfluidsynth libqt6widgets6 librtmidi libpipewire libpulse musescore-general-soundfont-small qt6-qpa-plugins; do
    grep -q "$wanted" <<< "$depends" || { echo "Depends lacks $wanted: $depends"; exit 1; }
done
contents=$(dpkg-deb --contents "$deb")
grep -q '\./usr/bin/tonaro$' <<< "$contents" || { echo "package lacks the program"; exit 1; }
grep -q 'share/applications/tonaro.desktop$' <<< "$contents" || { echo "package lacks the menu entry"; exit 1; }
grep -q 'share/doc/tonaro/manual.html$' <<< "$contents" || { echo "package lacks the manual"; exit 1; }

# Lintian: errors and warnings alike fail the check.
lintian --fail-on error,warning "$deb" \
    || { echo "lintian found faults in $(basename "$deb")"; exit 1; }
echo "package check passed: $(basename "$deb")"
