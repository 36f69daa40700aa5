#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a person installing Folidoc gets:
# the program finds its own libraries there, starts, and the desktop entry and AppStream data are
# valid and name the installed icon.
# Usage: check-install.sh BUILD_DIR CMAKE
set -euo pipefail
build=$1 cmake=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$prefix" >/dev/null
program="$prefix/bin/folidoc"
[ -x "$program" ] || fail "no program at $program"
for file in share/applications/org.folidoc.Folidoc.desktop \
    share/icons/hicolor/scalable/apps/org.folidoc.Folidoc.svg \
    share/metainfo/org.folidoc.Folidoc.metainfo.xml; do
    [ -s "$prefix/$file" ] || fail "missing $file"
done

# The icon also as PNG in the hicolor sizes, each of its size.
for size in 16 24 32 48 64 128 256 512; do
    png="$prefix/share/icons/hicolor/${size}x${size}/apps/org.folidoc.Folidoc.png"
    [ -s "$png" ] || fail "missing the ${size}x${size} icon"
    head -c 24 "$png" | od -An -tx1 | tr -d ' \n' | grep -q "^89504e47" || fail "$png is no PNG"
    width=$(( $(od -An -tu1 -j16 -N4 "$png" | awk '{print ($1*16777216)+($2*65536)+($3*256)+$4}') ))
    [ "$width" -eq "$size" ] || fail "$png is $width pixels wide"
done

# Every kit library comes from the prefix, not from the build tree.
libraries=$(ldd "$program")
if grep -q "not found" <<<"$libraries"; then fail "unresolved libraries: $libraries"; fi
for kit in kit_base kit_engine kit_pdfview kit_tabs; do
    grep -q "lib$kit.so => $prefix/" <<<"$libraries" || fail "lib$kit.so is not taken from the prefix"
done

# The installed program starts and keeps running until it is stopped.
runtime=$(mktemp -d -p "$prefix")
chmod 700 "$runtime"
status=0
env -i PATH="$PATH" HOME="$prefix" QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$runtime" \
    XDG_CONFIG_HOME="$prefix/config" XDG_DATA_HOME="$prefix/data" XDG_CACHE_HOME="$prefix/cache" \
    timeout 5 "$program" >/dev/null 2>&1 || status=$?
[ "$status" -eq 124 ] || fail "the installed program ended with status $status instead of running"

if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$prefix/share/applications/org.folidoc.Folidoc.desktop"
else
    echo "desktop-file-validate is not installed: the desktop entry is not validated"
fi
grep -qx "Icon=org.folidoc.Folidoc" "$prefix/share/applications/org.folidoc.Folidoc.desktop" \
    || fail "the desktop entry does not name the installed icon"
if command -v appstreamcli >/dev/null; then
    appstreamcli validate --no-net --pedantic "$prefix/share/metainfo/org.folidoc.Folidoc.metainfo.xml" \
        || fail "AppStream data are not valid"
else
    echo "appstreamcli is not installed: the AppStream data are not validated"
fi
echo "installed tree: ok"
