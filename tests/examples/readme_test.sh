#!/bin/bash
# The program that the README shows is the one that is compiled and run. Arguments: the README, the program's source.
set -euo pipefail
readme=$1 source=$2
shown=$(awk '/^```cpp$/ { inside = 1; next } /^```$/ { if (inside) { exit } } inside' "$readme")
[[ -n $shown ]] || {
  echo 'FAILED: the README shows no program'
  exit 1
}
diff <(printf '%s\n' "$shown") "$source"
