#!/bin/bash
# That the benchmarks run, and that what they count (rather than time) holds: a steady-state round trip allocates nothing,
# and an idle participant is small; and that those between processes leave none behind. Arguments: the programs round_trip,
# scaling and start_up.
set -euo pipefail
round_trip=$1
scaling=$2
start_up=$3
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# Checks that a benchmark prints as many lines as it has cases and that none allocates more often than `most` a round trip.
expect_allocations() {
  local most=$1 cases=$2 output
  shift 2
  output=$("$@") || fail "exit code $?: $*"
  printf '%s\n' "$output"
  sed -n 's/.*"allocs_per_round_trip":\([0-9.]*\).*/\1/p' <<<"$output" |
    awk -v most="$most" -v cases="$cases" '$1 <= most {++good} END {exit good != cases}' ||
    fail "not $cases cases with at most $most allocations a round trip: $*"
}

# In one thread there is none at all. With two threads, how many buffers are in use at once depends on how they take turns,
# and a peak that is reached only now allocates a few: some dozens in a thousand round trips, and never one in each.
small=(--pin free --rounds 2 --count 500)
expect_allocations 0 2 "$round_trip" "${small[@]}" --mode listener --payload 64,65536
expect_allocations 0.1 2 "$round_trip" "${small[@]}" --mode blocking --payload 64,65536
expect_allocations 0 1 "$round_trip" "${small[@]}" --mode typed_listener
expect_allocations 0.1 1 "$round_trip" "${small[@]}" --mode typed
expect_allocations 0.1 4 "$scaling" "${small[@]}" --load idle,unread --idle 20 --unread 300
"$round_trip" "${small[@]}" --mode pipelined --payload 64 || fail 'pipelined'

heap=$("$scaling" --load memory | sed -n 's/.*"idle_heap_bytes":\([0-9]*\).*/\1/p')
[[ -n $heap && $heap -gt 0 && $heap -lt 1048576 ]] || fail "an idle participant takes ${heap:-unknown} bytes of heap"

# Between processes. Each of the four cases is compared with two others.
small=(--transport rtps "${small[@]}" --count 50)
lines=$("$round_trip" "${small[@]}" --mode blocking,pipelined --payload 64,65536 | tee /dev/stderr | grep -c '"ratio":[0-9]') ||
  fail 'between processes'
[[ $lines -eq 8 ]] || fail "between processes: $lines results in place of 8"
"$scaling" "${small[@]}" --load idle --idle 20 || fail 'idle requesters between processes'
octets=$("$scaling" --transport rtps --load wire --processes 2 --replies 50 | sed -n 's/.*"octets_per_reply":\([0-9]*\).*/\1/p')
[[ -n $octets && $octets -gt 128 ]] || fail "${octets:-no} octets on the wire for 64 there and back"
threads=$("$start_up" --transport rtps --processes 2 | sed -n 's/.*"threads":\([0-9]*\).*/\1/p')
[[ -n $threads && $threads -gt 0 ]] || fail 'start-up'

# A benchmark that is killed takes its other processes along.
"$round_trip" "${small[@]}" --count 100000000 --pin free --mode blocking --payload 64 &
children=
until [[ $(wc -w <<<"$children") -eq 3 ]]; do children=$(cat "/proc/$!/task/$!/children"); done
kill -KILL $!
for child in $children; do
  while grep -qs '^State:.[^Z]' "/proc/$child/status"; do sleep 0.1; done
done

for wrong in '--mode unknown' '--payload x' '--payload 7' '--transport x' '--rounds' '--nothing 1'; do
  code=0
  # shellcheck disable=SC2086
  "$round_trip" $wrong 2>/dev/null || code=$?
  [[ $code -eq 1 ]] || fail "exit code $code: $wrong"
done

exit $((failures > 0))
