#!/usr/bin/env bash
# Rebuilds the xtb frequency outputs of the internal-rotation tests:
# a 3D geometry from SMILES by Open Babel, GFN2-xTB optimisation and
# Hessian by Debian's xtb 6.5.1, its Gaussian-98-style g98.out kept.
set -euo pipefail
cd "$(dirname "$0")"
for mol in ethane:CC propane:CCC toluene:Cc1ccccc1 cyclohexane:C1CCCCC1 water:O; do
  name=${mol%%:*}; smiles=${mol#*:}
  work=$(mktemp -d)
  obabel -:"$smiles" --gen3d -oxyz -O "$work/$name.xyz" 2>/dev/null
  (cd "$work" && OMP_NUM_THREADS=1 xtb "$name.xyz" --ohess >xtb.log 2>&1)
  cp "$work/g98.out" "${name}_xtb.out"
  rm -rf "$work"
done
