#!/bin/bash
# MOPAC 22's UHF heats and <S**2> of the open-shell molecules of
# uhf_molecules.txt ("<METHOD> 1SCF UHF DOUBLET|TRIPLET"), for test_engine_elements,
# and their PM3 UHF optima ("PM3 UHF DOUBLET|TRIPLET PRECISE GNORM=0.01" from
# the same start) in mopac_uhf_opt.txt, for test_engine.
# Needs /usr/bin/mopac. Run from this directory.
set -e
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "# name multiplicity method heat_kcal_per_mol S**2   (mopac <METHOD> 1SCF UHF)" > mopac_uhf.txt
grep -v '^#' uhf_molecules.txt | while read -r name mult rest; do
  kw=$([ "$mult" = 2 ] && echo DOUBLET || echo TRIPLET)
  for m in PM3 AM1 MNDO; do
    { echo "$m 1SCF UHF $kw"; echo "$name"; echo
      echo "$rest" | awk '{for (i = 1; i <= NF; i += 4) print $i, $(i+1), $(i+2), $(i+3)}'; } > "$work/j.mop"
    (cd "$work" && mopac j.mop > /dev/null 2>&1)
    h=$(grep "FINAL HEAT" "$work/j.out" | awk '{print $6}')
    s2=$(grep "(S\*\*2)" "$work/j.out" | head -1 | awk '{print $NF}')
    echo "$name $mult $m $h $s2" >> mopac_uhf.txt
  done
done
echo "# name multiplicity method heat_kcal_per_mol   (mopac <METHOD> UHF PRECISE GNORM=0.01, from the same start)" \
  > mopac_uhf_opt.txt
grep -v '^#' uhf_molecules.txt | while read -r name mult rest; do
  kw=$([ "$mult" = 2 ] && echo DOUBLET || echo TRIPLET)
  { echo "PM3 UHF $kw PRECISE GNORM=0.01"; echo "$name"; echo
    echo "$rest" | awk '{for (i = 1; i <= NF; i += 4) print $i, $(i+1), $(i+2), $(i+3)}'; } > "$work/j.mop"
  (cd "$work" && mopac j.mop > /dev/null 2>&1)
  echo "$name $mult PM3 $(grep "FINAL HEAT" "$work/j.out" | awk '{print $6}')" >> mopac_uhf_opt.txt
done
