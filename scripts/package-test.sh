#!/usr/bin/env bash
# Builds the Debian package in ./build-package (prefix /usr, as a package
# installs), installs it with dpkg on this machine, checks that the files
# are in place and that zenta runs from /usr/bin, then removes it again.
# Needs root (or sudo) for dpkg -i; run on a Debian system with the build
# dependencies of scripts/install-deps.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"

cmake -S . -B build-package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DZENTA_TESTS=OFF >/dev/null
nice cmake --build build-package -j2
(cd build-package && cpack -G DEB >/dev/null)
deb=$(ls build-package/zenta_*.deb | head -n1)
echo "package: $deb"
dpkg-deb --field "$deb" Package Version Depends Recommends

fail() { echo "FAIL: $*" >&2; exit 1; }
contents=$(dpkg-deb --contents "$deb")
for path in ./usr/bin/zenta ./usr/bin/zenta-panel ./usr/share/zenta/ZENTA.TXT \
  ./usr/share/zenta/zenta.html ./usr/share/applications/zenta-panel.desktop \
  ./usr/share/mime/packages/zenta.xml \
  ./usr/share/icons/hicolor/scalable/apps/zenta-panel.svg \
  ./usr/share/man/man1/zenta.1.gz ./usr/lib/udev/rules.d/60-zenta.rules; do
  grep -q " $path\$" <<<"$contents" || fail "$path is not in the package"
done
depends=$(dpkg-deb --field "$deb" Depends)
for lib in libusb-1.0 libqt6widgets6; do
  grep -q "$lib" <<<"$depends" || fail "Depends does not name $lib: $depends"
done

# Installing refuses when a declared dependency is missing, so this also
# checks the Depends line against a system that has what the build had.
$sudo dpkg -i "$deb"
trap '$sudo dpkg -r zenta >/dev/null' EXIT
[ -x /usr/bin/zenta ] || fail "zenta is not installed"
# The installed files are the repository's own.
for pair in /usr/lib/udev/rules.d/60-zenta.rules:data/60-zenta.rules \
  /usr/share/zenta/zenta.html:data/zenta.html \
  /usr/share/mime/packages/zenta.xml:data/zenta-mime.xml \
  /usr/share/applications/zenta-panel.desktop:data/zenta-panel.desktop; do
  cmp -s "${pair%%:*}" "${pair#*:}" || fail "${pair%%:*} is not ${pair#*:}"
done
# The rule is the one zenta prints, for the unit's id.
/usr/bin/zenta udev-rule | cmp -s - /usr/lib/udev/rules.d/60-zenta.rules ||
  fail "the installed udev rule differs from zenta udev-rule"
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate /usr/share/applications/zenta-panel.desktop || fail "desktop entry"
fi
# The MIME types the desktop entry offers the panel for are known once the
# package's MIME file is installed (the shared-mime-info trigger).
if command -v update-mime-database >/dev/null; then
  mime_types=$(sed -n 's/^MimeType=//p' /usr/share/applications/zenta-panel.desktop | tr ';' ' ')
  for type in $mime_types; do
    [ -f "/usr/share/mime/$type.xml" ] || fail "MIME type $type is not registered"
  done
fi
/usr/bin/zenta --version | grep -q '^zenta [0-9]' || fail "zenta --version did not name the version"
/usr/bin/zenta --version
/usr/bin/zenta --unit sim version || fail "zenta cannot talk to the simulated unit"
if command -v man >/dev/null; then
  man -l /usr/share/man/man1/zenta.1.gz >/dev/null 2>&1 || fail "man page does not format"
fi
echo "package OK"
