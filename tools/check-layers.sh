#!/usr/bin/env bash
# Fails when a file includes a header of a higher layer.
#
# The library's folders form layers, bottom to top (one line a rank; folders on one line are
# peers and may not include each other). A file may include headers of its own folder and
# of folders on lower lines. A public header (include/qvnrt/X.h) belongs to the folder that
# holds X.cpp, or to the folder that HEADER_HOME names. Drivers, the program and hosts may
# include public headers alone.
#
# Usage: tools/check-layers.sh [source root]   (prints each upward include; exit 1 if any)
set -euo pipefail

root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root"

LAYERS=(
  "contract"  # driver.h and export.h: below everything
  "compat"
  "platform"
  "config"
  "calendar"
  "store"
  "server"
  "securities"
  "display news research"
  "panels"
)
# Public headers without a .cpp of their name.
declare -A HEADER_HOME=(
  [driver.h]=contract [export.h]=contract
  [compat.h]=compat
  [host.h]=platform
  [LibraryStartup.h]=config
  [EventMulticaster.h]=server [RTSecCache.h]=server
  [qvnrt.h]=application
)
OUTSIDE=(drivers cli hosts examples)

declare -A rank
for i in "${!LAYERS[@]}"; do
  for folder in ${LAYERS[$i]}; do rank[$folder]=$i; done
done
rank[application]=${#LAYERS[@]}

# The folder that a public header belongs to.
home_of_public() {
  local header=$1 name
  case $header in compat/*) echo compat; return ;; esac
  name=$(basename "$header")
  if [[ -n ${HEADER_HOME[$name]:-} ]]; then echo "${HEADER_HOME[$name]}"; return; fi
  for folder in "${!rank[@]}"; do
    [[ -f $folder/${name%.h}.cpp ]] && { echo "$folder"; return; }
  done
  echo unknown
}

failures=0
report() { echo "$1: $2"; failures=$((failures + 1)); }

# Every #include "..." or <qvnrt/...> line of a file, as "line<TAB>target".
includes_of() {
  sed -nE 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]([^">]+)[">].*/\1/p' "$1"
}

check_library_file() {
  local file=$1 folder=$2 target home
  while read -r target; do
    case $target in
      qvnrt/*) home=$(home_of_public "${target#qvnrt/}") ;;
      */*) home=${target%%/*}; [[ -n ${rank[$home]:-} ]] || continue ;;
      *) continue ;;  # a system header, or one beside the file
    esac
    if [[ $home == unknown ]]; then
      report "$file" "includes $target, whose layer is not known (add it to HEADER_HOME)"
    elif [[ $home != "$folder" ]] && ((rank[$home] >= rank[$folder])); then
      report "$file" "includes $target of $home, which is not below $folder"
    fi
  done < <(includes_of "$file")
}

sources() { find "$@" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.c' -o -name '*.cpp' \) 2>/dev/null | sort; }

for folder in "${!rank[@]}"; do
  [[ -d $folder ]] || continue
  for file in $(sources "$folder"); do check_library_file "$file" "$folder"; done
done
for file in $(sources include/qvnrt); do
  header=${file#include/qvnrt/}
  check_library_file "$file" "$(home_of_public "$header")"
done
for outside in "${OUTSIDE[@]}"; do
  [[ -d $outside ]] || continue
  for file in $(sources "$outside"); do
    while read -r target; do
      home=${target%%/*}
      if [[ $target == */* && $home != qvnrt && -n ${rank[$home]:-} ]]; then
        report "$file" "includes $target: only the public headers are for $outside/"
      fi
    done < <(includes_of "$file")
  done
done

if ((failures)); then
  echo "layer check: $failures upward include(s)"
  exit 1
fi
echo "layer check: every include goes down"
