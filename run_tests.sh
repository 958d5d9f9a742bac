#!/usr/bin/env bash
# Builds (installing what is missing) and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")"
./setup.sh --no-example
ctest --test-dir build --output-on-failure -j2
