#!/usr/bin/env bash
# Installs what is missing (Debian 12), builds Quintor into build/, and runs
# the batch job on a bundled example.  Usage: ./setup.sh [--no-example]
set -euo pipefail
cd "$(dirname "$0")"

# What the build uses, and nothing more. clang builds the sanitizer run of
# the test suite.
packages=(cmake ninja-build g++ clang libgtest-dev libfmt-dev liblapack-dev libopenblas-dev nlohmann-json3-dev qt6-base-dev libgsl-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi

# A build/ made with another generator (or another compiler) is started anew.
configure() {  # configure DIR [cmake options...]
  local dir=$1; shift
  if [ -f "$dir/CMakeCache.txt" ] && ! grep -q '^CMAKE_GENERATOR:INTERNAL=Ninja$' "$dir/CMakeCache.txt"; then
    echo "Removing $dir (made with another generator)"
    rm -rf "$dir"
  fi
  cmake -S . -B "$dir" -G Ninja "$@" >/dev/null || { rm -rf "$dir"; cmake -S . -B "$dir" -G Ninja "$@" >/dev/null; }
}
configure build -DCMAKE_BUILD_TYPE=Release ${QUINTOR_CMAKE_OPTIONS:-}
cmake --build build

# The shipped fragment database goes to the home directory ($QUINTOR) when
# that has none; a database there is never written over.
home="${QUINTOR:-${Quintor:-}}"
if [ -n "$home" ] && [ ! -e "$home/Quintor.fdb" ]; then
  mkdir -p "$home" && cp data/Quintor.fdb "$home/Quintor.fdb" && echo "Installed the fragment database in $home"
fi

[ "${1:-}" = "--no-example" ] && exit 0

# The batch job on the bundled example, in a scratch copy so that the
# repository stays clean.
out=build/example
mkdir -p "$out"
cp examples/ethanol_xtb.out examples/ethanol_xtb.tdi "$out/"
status=0
# The home directory holds the sample configuration and fragment database.
(cd "$out" && QUINTOR="$(pwd)/../../data" ../bin/quintor ethanol_xtb.out /0 </dev/null >console.txt 2>&1) || status=$?
echo
echo "Batch run of examples/ethanol_xtb.out finished with exit status $status."
echo "  executable : $(pwd)/build/bin/quintor"
echo "  MainLog    : $(pwd)/$out/ethanol_xtb.mou (report, thermochemistry and temperature tables)"
[ -f "$out/ethanol_xtb.tdo" ] && echo "  .tdo report : $(pwd)/$out/ethanol_xtb.tdo (reduced masses)"
echo "  console    : $(pwd)/$out/console.txt"
