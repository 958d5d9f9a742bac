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

# The batch jobs on the bundled examples, in a scratch copy so that the
# repository stays clean. The home directory holds the sample configuration
# and fragment database.
out=build/example
mkdir -p "$out"
home="$(pwd)/data"
run() {  # run INPUT: quintor INPUT /0 in $out; prints the exit status
  local status=0
  (cd "$out" && QUINTOR="$home" ../bin/quintor "$1" /0 </dev/null >"console_${1%.*}.txt" 2>&1) || status=$?
  echo "$status"
}

# 1. Thermochemistry of ethanol (GFN2-xTB frequencies, rigid rotor and
#    harmonic oscillator, 298.15 K, 1 atm).
cp examples/ethanol_xtb.out "$out/"
status=$(run ethanol_xtb.out)
echo
echo "Batch run of examples/ethanol_xtb.out finished with exit status $status."
echo "  executable : $(pwd)/build/bin/quintor"
echo "  MainLog    : $(pwd)/$out/ethanol_xtb.mou (report, thermochemistry and temperature tables)"
echo "  Totals at 298.15 K and 1 atm (electronic + translational + rotational + vibrational):"
grep -E '^ (ZPEtot|Htot =|Stot =|CPtot=|Gtot =)' "$out/ethanol_xtb.mou" | sed 's/^/   /' || true

# 2. The .tdo report of reduced masses recalculated from force constants:
#    water with the formatted checkpoint file of its Hessian beside the log.
cp tests/inputs/water_xtb.out tests/inputs/water_xtb.fch examples/water_xtb.tdi "$out/"
status=$(run water_xtb.out)
echo
echo "Batch run of tests/inputs/water_xtb.out (with water_xtb.fch and water_xtb.tdi) finished with exit status $status."
echo "  .tdo report: $(pwd)/$out/water_xtb.tdo; the three modes from the force constants:"
echo "    mode  frequency (cm-1)  reduced mass (amu)"
grep -E '^ +[789] ' "$out/water_xtb.tdo" | awk '{printf "    %4d  %16.2f  %18.2f\n", $1, $4, $6}' || true
echo "  consoles   : $(pwd)/$out/console_ethanol_xtb.txt, console_water_xtb.txt"
