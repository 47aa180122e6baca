#!/usr/bin/env bash
# Checks a built package: lintian finds no error, Depends came from the shared libraries, and
# the program unpacked into a clean root (dpkg -x) runs from there: --version, settings list,
# and the tray icon on a virtual desktop (the tray test of tests/e2e with that program).
#   tests/package/installed_package_test.sh build/package/orvantis_VERSION_ARCH.deb
set -uo pipefail

deb=$(realpath "$1")
repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

# lintian: errors fail the test; warnings are shown.
lintian --tag-display-limit 0 "$deb" >"$work/lintian.txt" 2>&1
cat "$work/lintian.txt"
grep -q '^E: ' "$work/lintian.txt" && fail "lintian reports errors"

# Depends: the shared libraries' packages (dpkg-shlibdeps), plus those loaded with dlopen.
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
# Loaded with dlopen, so named by hand in debian/control: libcurl4 libssl3 libcld2-0 libaspell15
# libgumbo1, and Qt's X11 platform plugin.
for package in libc6 libqt6widgets6 libicu72 libplist3 libx11-6 libxkbcommon0 libsystemd0 \
  libcurl4 libssl3 libcld2-0 libaspell15 libgumbo1 qt6-qpa-plugins; do
  [[ $depends =~ (^|, )$package( |,|$) ]] || fail "Depends does not name $package"
done

root=$work/root
dpkg -x "$deb" "$root"
for file in usr/bin/orvantis usr/share/applications/org.orvantis.Orvantis.desktop \
  usr/share/metainfo/org.orvantis.Orvantis.metainfo.xml usr/share/man/man1/orvantis.1.gz \
  usr/share/icons/hicolor/scalable/apps/org.orvantis.Orvantis.svg \
  usr/share/icons/hicolor/48x48/apps/org.orvantis.Orvantis.png \
  usr/share/bash-completion/completions/orvantis usr/share/zsh/vendor-completions/_orvantis \
  usr/share/doc/orvantis/copyright; do
  [[ -s $root/$file ]] || fail "the package has no $file"
done
program=$root/usr/bin/orvantis

export XDG_CONFIG_HOME=$work/config XDG_STATE_HOME=$work/state XDG_DATA_HOME=$work/data
unset LD_LIBRARY_PATH
"$program" --version | tee "$work/version" | grep -q '^Orvantis ' || fail "installed orvantis --version"
cat "$work/version"
count=$("$program" settings list | wc -l)
((count > 10)) || fail "installed orvantis settings list printed $count lines"
echo "settings list: $count settings"

ORVANTIS_BIN=$program ORVANTIS_E2E_ARTIFACTS=${ORVANTIS_E2E_ARTIFACTS:-$repo/build/e2e-screenshots/package} \
  bash "$repo/tests/e2e/tray_menu_quit_test.sh" || fail "the tray test with the installed program"

((failures == 0)) || exit 1
echo "installed package: all checks passed"
