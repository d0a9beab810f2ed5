#!/bin/sh
# Builds and runs every test under the address and undefined-behaviour sanitizers, builds and runs
# the hosts of tests/package against what that build installs, runs the cases about threads once
# more under the thread sanitizer, then each program of fuzz/ for a while.
set -eu
cd "$(dirname "$0")"
scripts/install_packages develop
jobs=$(nproc)

scripts/check_layering
if [ "${CI:-}" = true ]; then scripts/check_format; fi

cmake --preset dev
cmake --build --preset dev -j "$jobs"
scripts/check_headers build/dev
ctest --preset dev -j "$jobs"
tests/package/run build/dev

# The thread sanitizer wants memory where it expects it; not every kernel leaves that free.
fixed=
if setarch -R true 2>/dev/null; then fixed="setarch -R"; fi
cmake --preset tsan
$fixed cmake --build --preset tsan --target thread_tests -j "$jobs"
$fixed ctest --preset tsan -j "$jobs" -R Threads

if [ "${CI:-}" = true ]; then scripts/fuzz 60; else scripts/fuzz 10; fi
