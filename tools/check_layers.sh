#!/usr/bin/env bash
# Fails when a file of Source/ includes a folder its layer may not use.
#   L0 numeric/, io/   L1 model/   L2 the subsystems   L3 app/ and main.cpp,
#   and beside app/ the Qt windows viewer_qt/, the only folder that uses Qt
# Inside L2: readers, thermo, rotations and viewer may use analysis;
# rotations may use thermo and engine. Usage: tools/check_layers.sh [Source]
set -euo pipefail
src=${1:-"$(dirname "$0")/../Source"}
declare -A allowed=(
  [numeric]="numeric"
  [io]="io numeric"
  [model]="model io numeric"
  [analysis]="analysis model io numeric"
  [readers]="readers analysis model io numeric"
  [thermo]="thermo analysis model io numeric"
  [engine]="engine model io numeric"
  [rotations]="rotations thermo engine analysis model io numeric"
  [viewer]="viewer analysis model io numeric"
  [app]="app viewer rotations engine thermo readers analysis model io numeric"
  [viewer_qt]="viewer_qt viewer readers analysis model io numeric"
  [.]="app viewer_qt model"
)
bad=0
while IFS= read -r -d '' file; do
  rel=${file#"$src"/}
  folder=${rel%%/*}
  [ "$folder" = "$rel" ] && folder=.
  ok=${allowed[$folder]:-}
  if [ -z "$ok" ]; then
    echo "$rel: folder '$folder' has no place in the layers"; bad=1; continue
  fi
  while IFS= read -r target; do
    case " $ok " in *" $target "*) ;; *) echo "$rel includes $target/ (a $folder file may use: $ok)"; bad=1 ;; esac
  done < <(sed -n 's|^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([^"/]*\)/.*|\1|p' "$file" | sort -u)
done < <(find "$src" -type f \( -name '*.h' -o -name '*.cpp' \) -print0)
[ $bad -eq 0 ] && echo "layers: every include goes down or stays in its subsystem"
exit $bad
