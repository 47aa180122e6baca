#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: unit, simulation and end-to-end
# (the end-to-end tests bring up their own virtual X display).
#
#   scripts/test.sh             the build tree's tests
#   scripts/test.sh --package   then also builds the Debian package (the release build, with
#                               link-time optimisation) and checks it: lintian, Depends, and the
#                               program unpacked with dpkg -x run from there
#                               (tests/package/installed_package_test.sh). CI runs this.
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

status=0
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300 || status=$?
echo "test.sh: built and tested in $SECONDS s"

# The package builds in its own copy of the sources with its own flags, so nothing of the tree
# above is reused. It builds after the tests, not beside them: the end-to-end tests leave the
# processors half idle, but with a build beside them a timing-sensitive one failed once (the
# gtk password field that must be left alone was retyped).
if ((package)); then
  started=$SECONDS
  if scripts/package.sh; then
    echo "test.sh: the package was built in $((SECONDS - started)) s"
    tests/package/installed_package_test.sh build/package/orvantis_*.deb || status=1
  else
    echo "test.sh: scripts/package.sh failed" >&2
    status=1
  fi
  echo "test.sh: the package step took $((SECONDS - started)) s"
fi
exit "$status"
