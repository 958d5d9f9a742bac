#!/usr/bin/env bash
# Runs quintor /0 on every log in a test-data folder and keeps each MainLog
# (and the console text) under OUT, named after the log's folder and file, so
# that two builds can be compared byte for byte:
#   tools/mainlogs.sh build/bin/quintor ../shared/testdata /tmp/before
#   ... change ...
#   tools/mainlogs.sh build/bin/quintor ../shared/testdata /tmp/after
#   diff -r /tmp/before /tmp/after
# Extra arguments after OUT are passed to every run.
set -euo pipefail
exe=$(realpath "$1"); data=$(realpath "$2"); out=$3; shift 3
mkdir -p "$out"; out=$(realpath "$out")
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
find "$data" -type f \( -name '*.log' -o -name '*.out' \) | sort | while read -r log; do
  rel=${log#"$data"/}; key=${rel//\//_}; key=${key%.*}
  rm -rf "$work"/*; cp "$log" "$work/"
  # a companion .pun/.fch beside the log takes part in the run
  for c in "${log%.*}".pun "${log%.*}".fch; do [ -f "$c" ] && cp "$c" "$work/"; done
  name=$(basename "$log")
  status=0
  (cd "$work" && QUINTOR="$work" "$exe" "$name" /0 "$@" </dev/null >console.txt 2>&1) || status=$?
  # the scratch directory's name changes from run to run: keep it out of the comparison
  { cat "$work/console.txt"; echo "exit status $status"; } | sed "s|$work/|WORK/|g" > "$out/$key.console"
  if [ -f "$work/${name%.*}.mou" ]; then sed "s|$work/|WORK/|g" "$work/${name%.*}.mou" > "$out/$key.mou"; fi
done
echo "MainLogs of $(ls "$out"/*.console | wc -l) runs in $out"
