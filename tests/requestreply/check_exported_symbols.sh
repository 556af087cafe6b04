#!/bin/sh
# Compares what a shared library exports with a list; prints what is missing (-) and what is too much (+).
#   check_exported_symbols.sh NM LIBRARY LIST
set -eu
exported=$(mktemp)
trap 'rm -f "$exported"' EXIT
"$1" -DC --defined-only "$2" | sed 's/^[0-9a-f]* [A-Za-z] //' | LC_ALL=C sort -u >"$exported"
test -s "$exported"
diff -u --label "$3" --label "$2" "$3" "$exported"
