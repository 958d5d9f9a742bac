#!/usr/bin/env bash
# Builds (installing what is missing) and runs the whole test suite twice:
# in the ordinary build and under AddressSanitizer + UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")"
./setup.sh --no-example
ctest --test-dir build --output-on-failure -j2

cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUINTOR_SANITIZE=ON >/dev/null
cmake --build build-asan
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build-asan --output-on-failure -j2
