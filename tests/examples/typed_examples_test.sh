#!/bin/bash
# What the short examples print and how they end. Arguments: the programs calculator, inventory and string_echo.
set -euo pipefail
calculator=$1 inventory=$2 string_echo=$3
failures=0

# Compares what a program prints, on the standard output and the standard error together, and its exit code.
expect() {
  local expected_code=$1 expected=$2 code=0 output
  shift 2
  output=$("$@" 2>&1) || code=$?
  [[ $code -eq $expected_code && $output == "$expected" ]] || {
    printf 'FAILED: %s\nexit code %d, output:\n%s\n' "$*" "$code" "$output"
    failures=$((failures + 1))
  }
}

expect 0 3.5 "$calculator" 7 / 2
expect 0 -6 "$calculator" 2 x -3
expect 1 'division by zero' "$calculator" 1 / 0
expect 2 'usage: calculator NUMBER x|/ NUMBER' "$calculator" 1 +

expect 0 $'nail: 900 on A1 A2\nneedle: 12 on C7' "$inventory" n
expect 0 $'nail: 900 on A1 A2\nneedle: 12 on C7\nscrew: 300 on B1' "$inventory"
expect 1 '' "$inventory" hammer

lines=$(printf 'line %d\n' {1..50})
expect 0 "$lines" "$string_echo" <<<"$lines"

exit $((failures > 0))
