#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for SECONDS.
#   fuzz/run_fuzzers.sh SECONDS [target ...]     (targets: read_pass tdi_file config_file zmatrix command_line parameter_file orca qchem journal fragment_db)
# Corpora and crash artifacts stay in build-fuzz/ (not in the repository); an
# input that found a fault belongs, minimised, in tests/fuzz_regressions/<target>/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: fuzz/run_fuzzers.sh SECONDS [target ...]}
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(read_pass tdi_file config_file zmatrix command_line parameter_file orca qchem journal fragment_db)
shared=../shared/testdata

CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DQUINTOR_FUZZ=ON -DQUINTOR_TESTS=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz >/dev/null

work=build-fuzz/work
mkdir -p "$work"

# seed NAME PREFIXBYTE FILE: the first and the last 24 KB of FILE behind the format byte.
seed() {
  local dir=$1 byte=$2 file=$3 base
  base=$(basename "$file")
  { printf "\\x$(printf %02x "$byte")"; head -c 24000 "$file"; } >"$dir/head_${byte}_$base"
  { printf "\\x$(printf %02x "$byte")"; tail -c 24000 "$file"; } >"$dir/tail_${byte}_$base"
}

make_corpus() {
  local t=$1 dir=build-fuzz/corpus/$1
  mkdir -p "$dir"
  case $t in
    read_pass)
      for f in "$shared"/gaussian98/*.log; do seed "$dir" 4 "$f"; seed "$dir" 0 "$f"; done
      for f in "$shared"/gaussian03/*.log; do seed "$dir" 11 "$f"; done
      for f in "$shared"/gaussian09/*.log "$shared"/gaussian16/*.log; do seed "$dir" 16 "$f"; done
      for f in "$shared"/pcgamess/*v6.log; do seed "$dir" 1 "$f"; seed "$dir" 0 "$f"; done
      for f in "$shared"/pcgamess/*v7.log; do seed "$dir" 15 "$f"; done
      for f in "$shared"/gamess-us*/*.log; do seed "$dir" 19 "$f"; done
      for f in tests/inputs/*.xyz tests/inputs/*.txt; do [ -f "$f" ] && seed "$dir" 6 "$f"; done
      for f in tests/inputs/*.gzmat; do [ -f "$f" ] && seed "$dir" 14 "$f"; done
      for f in tests/inputs/priroda*; do [ -f "$f" ] && seed "$dir" 17 "$f"; done
      for f in tests/inputs/korvandel*; do [ -f "$f" ] && seed "$dir" 5 "$f"; done
      # Logs of other programs and odd Gaussian logs: detected (byte 0) or not.
      for f in "$shared"/more/* "$shared"/orca/* "$shared"/qchem/*; do [ -f "$f" ] && seed "$dir" 0 "$f"; done
      seed "$dir" 4 examples/ethanol_xtb.out ;;
    orca) for f in "$shared"/orca/*.out; do seed "$dir" 0 "$f"; seed "$dir" 1 "$f"; done ;;
    qchem) for f in "$shared"/qchem/*.out; do seed "$dir" 0 "$f"; seed "$dir" 1 "$f"; done ;;
    zmatrix) for f in tests/inputs/*.gzmat; do [ -f "$f" ] && cp "$f" "$dir/"; done ;;
    config_file) cp data/Quintor.cfg "$dir/"; for f in tests/inputs/*.cfg; do [ -f "$f" ] && cp "$f" "$dir/"; done ;;
    tdi_file)
      printf 'TT=300 PP=101325\nSCALE=0.96\nZERO=(1,2,3,4,5,6)\nVIBR=7 ROT=3 GROUP=(1,2) AXIS=(1,3) V0=2.9 KCAL\nVIBR=8 READP KJ\n0 0\n60 1\n\nEXCLUDEATOMS\n2\n\nNEWAMASS\n16\n2\n2\n' >"$dir/example.tdi"
      printf 'GENCOORD GENCOORDANGLE=30\nALLPOSITIVE RECALCFREQ ROTN=2 PATTERN=x\n' >"$dir/flags.tdi" ;;
    parameter_file)
      cp ../shared/data/nddo_parameters.dat "$dir/" 2>/dev/null || true
      # One section of each method, and the bad-line and odd-key cases.
      for m in MNDO AM1 PM3 MNDOD; do
        awk -v m="$m" '/^\/\// {on = ($0 ~ "^//" m "[ 	]*$")} on' ../shared/data/nddo_parameters.dat 2>/dev/null           | head -c 6000 >"$dir/section_$m"
      done
      printf '//PM3 
EHEAT    1          60.0
USS      6          -47.0
' >"$dir/small"
      printf '//PM3 
USS      6          -4x.0
' >"$dir/bad_value"
      printf '//COMMON
GUES1    6  1       0.011355
ADD      13 2       1.0
' >"$dir/indexed" ;;
    journal)
      # The journals of the tests, one a file, and each kind of line.
      grep -ho '"\(key\|menu\|click\|answer\|play\|film\|turn\|shift\|zoom\|set\|yes\|no\)[^"]*' tests/*.cpp |
        sed 's/^"//' | awk '{ f = sprintf("%s/line_%03d", d, NR); printf "%s", $0 > f; close(f) }' d="$dir"
      printf 'menu AddFragment\nanswer 1 1013=Me\t1000=0.5\t1006=0\t1043=0\nclick left 3\nmenu AddFragment\nanswer 1 1013=OH\t1000=0\t1006=0\t1043=0\nclick left 1\nmenu StoreFragment\nanswer 1 1013=x y\t1000=c\n' >"$dir/fragments"
      printf 'key F3\nplay 1\nfilm 2\nkey 7\nkey 0\nkey 7\nkey F4\nclick left 2\nclick left 3\nkey =\nanswer 1.2\nturn 40 -12\nshift 8 0\nzoom -2\nkey q\n' >"$dir/tour" ;;
    fragment_db)
      # The shipped stock in pieces of about 6 KB, cut at record headers.
      awk -v d="$dir" '/^#/ && size > 6000 { n++; size = 0 } { f = sprintf("%s/stock_%02d", d, n); print > f; size += length($0) + 1 }' data/Quintor.fdb
      printf '# Me methyl CH3\nC1 0 0 0 2 3 4\nH2 1.09 0 0 1\nH3 -0.36 1.03 0 1\nH4 -0.36 -0.51 0.89 1\n\n# bad\nC1 0 0\n\n# past\nO1 0 0 0 3\n' >"$dir/small" ;;
    command_line)
      printf '/TT300\n/PP2\n/THERMO100-200-10\n/V10:20:30:0:0:1\n/ORIENT1-2-3\n/PREC12.4' >"$dir/a"
      printf '/NXYZ2@GEOM\n/SCALE0.9\n/SYMEPS0.01\n/ROT2\n/C5\n/IRMC100\n/HB3' >"$dir/b" ;;
  esac
}

for t in "${targets[@]}"; do
  make_corpus "$t"
  mkdir -p "build-fuzz/artifacts/$t"
  echo "== fuzz_$t for $seconds s"
  (cd "$work" && ../fuzz/fuzz_$t -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
     -print_final_stats=1 -artifact_prefix="../artifacts/$t/" "../corpus/$t" 2>"../fuzz_$t.log") || true
  grep -E "^stat::number_of_executed_units|^stat::average_exec_per_sec|^stat::peak_rss_mb" "build-fuzz/fuzz_$t.log" || true
  ls "build-fuzz/artifacts/$t" | sed 's/^/  artifact: /' || true
done
