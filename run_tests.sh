#!/usr/bin/env bash
# Builds (installing what is missing) and runs the whole test suite twice:
# with GCC, warnings as errors, in build/; and with Clang, warnings as errors,
# under AddressSanitizer + UndefinedBehaviorSanitizer, in build-asan/.
set -euo pipefail
cd "$(dirname "$0")"
jobs=$(nproc 2>/dev/null || echo 2)
QUINTOR_CMAKE_OPTIONS="-DQUINTOR_WERROR=ON" ./setup.sh --no-example
ctest --test-dir build --output-on-failure -j"$jobs" --timeout 300

# The batch program alone, without Qt, as a cluster builds it (the objects
# come from ccache when it is installed).
launcher=""
command -v ccache >/dev/null && launcher="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"
cmake -S . -B build-batch -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUINTOR_GUI=OFF -DQUINTOR_TESTS=OFF \
  -DQUINTOR_WERROR=ON $launcher >/dev/null
cmake --build build-batch --target quintor

asan=build-asan
if [ -f "$asan/CMakeCache.txt" ] && ! grep -q '^CMAKE_CXX_COMPILER:.*clang++' "$asan/CMakeCache.txt"; then rm -rf "$asan"; fi
if [ -f "$asan/CMakeCache.txt" ] && ! grep -q '^CMAKE_GENERATOR:INTERNAL=Ninja$' "$asan/CMakeCache.txt"; then rm -rf "$asan"; fi
CC=clang CXX=clang++ cmake -S . -B "$asan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQUINTOR_SANITIZE=ON -DQUINTOR_WERROR=ON >/dev/null
cmake --build "$asan"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  LSAN_OPTIONS=suppressions="$(pwd)/tools/lsan.supp" \
  ctest --test-dir "$asan" --output-on-failure -j"$jobs" --timeout 600
