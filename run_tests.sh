#!/usr/bin/env bash
# Builds (installing what is missing) and runs the whole test suite twice:
# with GCC, warnings as errors, in build/; and with Clang, warnings as errors,
# under AddressSanitizer + UndefinedBehaviorSanitizer, in build-asan/.
set -euo pipefail
cd "$(dirname "$0")"
jobs=$(nproc 2>/dev/null || echo 2)
QUINTOR_CMAKE_OPTIONS="-DQUINTOR_WERROR=ON" ./setup.sh --no-example
ctest --test-dir build --output-on-failure -j"$jobs" --timeout 300

asan=build-asan
if [ -f "$asan/CMakeCache.txt" ] && ! grep -q '^CMAKE_CXX_COMPILER:.*clang++' "$asan/CMakeCache.txt"; then rm -rf "$asan"; fi
if [ -f "$asan/CMakeCache.txt" ] && ! grep -q '^CMAKE_GENERATOR:INTERNAL=Ninja$' "$asan/CMakeCache.txt"; then rm -rf "$asan"; fi
CC=clang CXX=clang++ cmake -S . -B "$asan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQUINTOR_SANITIZE=ON -DQUINTOR_WERROR=ON >/dev/null
cmake --build "$asan"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  LSAN_OPTIONS=suppressions="$(pwd)/tools/lsan.supp" \
  ctest --test-dir "$asan" --output-on-failure -j"$jobs" --timeout 600
