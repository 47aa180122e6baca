#!/usr/bin/env bash
# Builds the Debian package of Orvantis (release build with link-time optimisation) from the
# files of this checkout, committed or not, and puts it in build/package/.
#
#   scripts/package.sh        then: sudo apt install ./build/package/orvantis_*.deb
#
# It builds in a copy under a temporary folder, so the checkout's own build tree stays as it is.
# Needs debhelper and the build dependencies of debian/control (scripts/install-deps.sh --package).
set -euo pipefail
cd "$(dirname "$0")/.."
repo=$PWD
out=${ORVANTIS_PACKAGE_DIR:-$repo/build/package}
version=$(dpkg-parsechangelog -S Version)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
src=$work/orvantis-$version
mkdir -p "$src"
git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' f; do
  [[ -e $f ]] && printf '%s\0' "$f"
done | tar --null -T - -cf - | tar -xf - -C "$src"

ORVANTIS_BUILD=$(git rev-list --count HEAD 2>/dev/null || echo 0)
export ORVANTIS_BUILD
(cd "$src" && dpkg-buildpackage -b -us -uc -j"$(nproc)" >"$work/build.log" 2>&1) || {
  tail -40 "$work/build.log" >&2
  echo "package.sh: dpkg-buildpackage failed (the whole log was $work/build.log)" >&2
  exit 1
}
mkdir -p "$out"
rm -f "$out"/orvantis_*.deb "$out"/orvantis-dbgsym_*.deb
cp "$work"/orvantis_*.deb "$work"/orvantis-dbgsym_*.deb "$out"/ 2>/dev/null || cp "$work"/orvantis_*.deb "$out"/
cp "$work/build.log" "$out/build.log"
ls "$out"/orvantis_*.deb
