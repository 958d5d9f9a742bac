#!/bin/bash
# Regenerates the MOPAC reference heats of formation used by test_engine.
#   geometries/<name>.xyz   made once by: obabel -:"<SMILES>" --gen3d -oxyz
#   mopac_1scf.txt          name method heat(kcal/mol), mopac "<METHOD> 1SCF" at that geometry
#   mopac_opt.txt           name method heat(kcal/mol), mopac "<METHOD> GNORM=0.01" optimised
#   mopac_logs.txt          log method heat(kcal/mol), mopac "<METHOD> 1SCF" at the last Standard
#                           orientation of a Gaussian log of ../shared/testdata (the /HOF batch runs)
# Needs obabel and MOPAC 22 (/usr/bin/mopac). Run from this directory.
set -e
here=$(cd "$(dirname "$0")" && pwd)
cd "$here"
mkdir -p geometries
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

methods_for() {  # methods that carry parameters for every element of the molecule
  # MNDOD: MNDO/d, with d orbitals on Al-Cl, Br and I (test_engine compares
  # those within 0.15 kcal/mol, the H-F molecules with MNDO's numbers)
  echo "MNDO AM1 PM3 MNDOD"
}

heat() {  # heat <keywords> <xyz>
  local inp="$work/job.mop"
  { echo "$1"; echo "reference"; echo ""
    tail -n +3 "$2" | awk 'NF==4 {print $1, $2, $3, $4}'; } > "$inp"
  (cd "$work" && mopac job.mop >/dev/null 2>&1)
  grep "FINAL HEAT OF FORMATION" "$work/job.out" | tail -1 | awk '{print $6}'
}

echo "# name method heat_kcal_per_mol   (mopac <METHOD> 1SCF; $(mopac --version 2>/dev/null | head -1))" > mopac_1scf.txt
echo "# name method heat_kcal_per_mol   (mopac <METHOD> GNORM=0.01, from the same start)" > mopac_opt.txt
grep -v '^#' molecules.txt | while read -r name smiles; do
  [ -z "$name" ] && continue
  xyz="geometries/$name.xyz"
  if [ ! -s "$xyz" ]; then
    obabel -:"$smiles" --gen3d -oxyz 2>/dev/null | sed "2s/.*/$name/" > "$xyz"
  fi
  for m in $(methods_for "$name"); do
    echo "$name $m $(heat "$m 1SCF" "$xyz")" >> mopac_1scf.txt
  done
done
for name in water methane ammonia formaldehyde hf hcl ethanol; do
  for m in MNDO AM1 PM3; do
    echo "$name $m $(heat "$m GNORM=0.01" "geometries/$name.xyz")" >> mopac_opt.txt
  done
done
for name in hcl h2s; do  # MNDO/d with d orbitals
  echo "$name MNDOD $(heat "MNDOD GNORM=0.01" "geometries/$name.xyz")" >> mopac_opt.txt
done

testdata="$here/../../../../shared/testdata"
echo "# log method heat_kcal_per_mol   (mopac <METHOD> 1SCF at the last Standard orientation of the log in ../shared/testdata)" > mopac_logs.txt
for log in gaussian16/water_opt_freq.log; do
  # the last Standard orientation as an xyz file: centre, Z, type, x, y, z
  awk '/Standard orientation:/ {n = 0; delete a; grab = 1; next}
       grab && /^ -+$/ {dash++; if (dash == 3) {grab = 0; dash = 0}; next}
       grab && dash == 2 {a[++n] = $2 " " $4 " " $5 " " $6}
       END {print n; print "log"; for (i = 1; i <= n; i++) print a[i]}' "$testdata/$log" |
    awk 'NR <= 2 {print; next} {split("H He Li Be B C N O F Ne Na Mg Al Si P S Cl Ar", s, " "); print s[$1], $2, $3, $4}' \
    > "$work/log.xyz"
  for m in MNDO AM1 PM3 MNDOD; do
    echo "$log $m $(heat "$m 1SCF" "$work/log.xyz")" >> mopac_logs.txt
  done
done
