# Debian packages of the build and of the checks; sourced by the scripts.

FOLIDOC_BUILD_PACKAGES=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-svg-dev qt6-tools-dev qt6-l10n-tools qt6-translations-l10n
    libmupdf-dev libharfbuzz-dev libfreetype-dev libjbig2dec0-dev libopenjp2-7-dev
    libjpeg-dev zlib1g-dev libgumbo-dev libmujs-dev libfontconfig-dev
)
FOLIDOC_RUN_PACKAGES=(xvfb xauth cups-client)
# Only the fuzz targets (scripts/fuzz) are built with clang and its libFuzzer runtime.
FOLIDOC_FUZZ_PACKAGES=(clang libclang-rt-14-dev)
FOLIDOC_CHECK_PACKAGES=(qpdf poppler-utils mupdf-tools python3-pikepdf xvfb xauth xdotool imagemagick dbus-daemon
    fonts-dejavu-core fonts-wqy-microhei
    desktop-file-utils appstream python3-gi python3-pyatspi at-spi2-core)

# Installs the named packages that dpkg does not report as installed; a second call installs nothing.
folidoc_install_missing()
{
    local missing=() pkg
    for pkg in "$@"; do
        dpkg -s "$pkg" >/dev/null 2>&1 || missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
