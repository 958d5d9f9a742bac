#!/usr/bin/env bash
# Rebuilds the xtb frequency outputs of the internal-rotation tests (their
# MP2 rotation potentials are make_potentials.py's):
# a 3D geometry from SMILES by Open Babel, GFN2-xTB optimisation and
# Hessian by Debian's xtb 6.5.1, its Gaussian-98-style g98.out kept.
# A structure that ends on a saddle point (propylene's and isobutene's
# eclipsed methyls) is optimised again from xtb's displaced xtbhess.xyz, so
# that every log is a minimum. Acetic acid starts from its syn form (O=C-O-H
# 0 degrees), 25 kJ/mol below the anti form Open Babel builds.
set -euo pipefail
cd "$(dirname "$0")"
ohess() {  # ohess <dir> <xyz>: --ohess until no imaginary frequency is left
  (cd "$1" && OMP_NUM_THREADS=1 xtb "$2" --ohess >xtb.log 2>&1)
  if ! grep -q "# imaginary freq. *0 " "$1/xtb.log"; then
    mkdir -p "$1/again" && cp "$1/xtbhess.xyz" "$1/again/"
    (cd "$1/again" && OMP_NUM_THREADS=1 xtb xtbhess.xyz --ohess >xtb.log 2>&1)
    cp "$1/again/g98.out" "$1/g98.out"
  fi
}
for mol in ethane:CC propane:CCC toluene:Cc1ccccc1 cyclohexane:C1CCCCC1 water:O methylamine:CN propylene:CC=C \
           'isobutane:CC(C)C' 'neopentane:CC(C)(C)C' 'isobutene:CC(=C)C' ethylbenzene:CCc1ccccc1; do
  name=${mol%%:*}; smiles=${mol#*:}
  work=$(mktemp -d)
  obabel -:"$smiles" --gen3d -oxyz -O "$work/$name.xyz" 2>/dev/null
  ohess "$work" "$name.xyz"
  cp "$work/g98.out" "${name}_xtb.out"
  rm -rf "$work"
done
work=$(mktemp -d)
cat >"$work/aceticacid.xyz" <<'XYZ'
8
acetic acid, syn
C   1.076696  -0.068720  -0.050683
C   2.576350  -0.122902  -0.000284
O   3.233581  -0.858531   0.683019
O   3.129912   0.771801  -0.831572
H   0.656554  -0.801632   0.630161
H   0.745452  -0.267598  -1.067046
H   0.745425   0.930254   0.222393
H   4.097573   0.723028  -0.786370
XYZ
ohess "$work" aceticacid.xyz
cp "$work/g98.out" aceticacid_xtb.out
rm -rf "$work"
