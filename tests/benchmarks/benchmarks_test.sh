#!/bin/bash
# That the benchmarks run, and that what they count (rather than time) holds: a steady-state round trip allocates nothing,
# and an idle participant is small. Arguments: the programs round_trip and scaling.
set -euo pipefail
round_trip=$1
scaling=$2
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# Checks that a benchmark prints as many lines as it has cases and that none of them allocates.
expect_no_allocations() {
  local cases=$1 output
  shift
  output=$("$@") || fail "exit code $?: $*"
  printf '%s\n' "$output"
  [[ $(grep -c '"allocs_per_round_trip":' <<<"$output") -eq $cases ]] || fail "not $cases cases: $*"
  [[ $(grep -c '"allocs_per_round_trip":0.000000' <<<"$output") -eq $cases ]] || fail "allocations: $*"
}

small=(--pin free --rounds 2 --count 500)
expect_no_allocations 4 "$round_trip" "${small[@]}" --mode blocking,listener --payload 64,65536
expect_no_allocations 4 "$scaling" "${small[@]}" --load idle,unread --idle 20 --unread 300

# How many buffers the replies of many requests under way need depends on how the threads take turns.
"$round_trip" "${small[@]}" --mode pipelined --payload 64 || fail 'pipelined'

heap=$("$scaling" --load memory | sed -n 's/.*"idle_heap_bytes":\([0-9]*\).*/\1/p')
[[ -n $heap && $heap -gt 0 && $heap -lt 1048576 ]] || fail "an idle participant takes ${heap:-unknown} bytes of heap"

for wrong in '--mode unknown' '--payload x' '--payload 7' '--rounds' '--nothing 1'; do
  code=0
  # shellcheck disable=SC2086
  "$round_trip" $wrong 2>/dev/null || code=$?
  [[ $code -eq 1 ]] || fail "exit code $code: $wrong"
done

exit $((failures > 0))
