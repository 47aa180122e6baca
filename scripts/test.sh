#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: unit, simulation and end-to-end
# (the end-to-end tests bring up their own virtual X display).
#
#   scripts/test.sh             the build tree's tests
#   scripts/test.sh --package   also builds the Debian package (the release build, with
#                               link-time optimisation) while the tests run, then checks it:
#                               lintian, Depends, and the program unpacked with dpkg -x run from
#                               there (tests/package/installed_package_test.sh). CI runs this.
set -euo pipefail
cd "$(dirname "$0")/.."

package=0
if [[ ${1:-} == --package ]]; then
  package=1
  scripts/install-deps.sh --package
else
  scripts/install-deps.sh
fi
scripts/build.sh --all

# The package builds in its own copy of the sources with its own flags, so nothing of the tree
# above is reused; it runs beside the tests, whose end-to-end part leaves the processors half
# idle, at a lower priority so the tests' timing stays as it is alone.
if ((package)); then
  mkdir -p build/package
  package_log=build/package/package.log
  started=$SECONDS
  nice -n 10 scripts/package.sh >"$package_log" 2>&1 &
  package_pid=$!
  trap 'kill "$package_pid" 2>/dev/null || true' EXIT
fi

status=0
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300 || status=$?

if ((package)); then
  if wait "$package_pid"; then
    echo "test.sh: the package was built in $((SECONDS - started)) s"
    tests/package/installed_package_test.sh build/package/orvantis_*.deb || status=1
  else
    cat "$package_log" >&2
    echo "test.sh: scripts/package.sh failed" >&2
    status=1
  fi
  trap - EXIT
fi
exit "$status"
