#!/bin/bash
# What the text_statistics program prints and how it ends. Argument: the program.
set -euo pipefail
program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failures=0

# Runs the program with the given arguments; its output is in $output and its exit code in $code.
run() {
  code=0
  output=$("$program" "$@" 2>&1) || code=$?
}

fail() {
  printf 'FAILED: %s\nexit code %d, output:\n%s\n' "$1" "$code" "$output"
  failures=$((failures + 1))
}

expect_code() { [[ $code -eq $2 ]] || fail "$1: the exit code is not $2"; }
expect_line() { grep -Eqx -- "$2" <<<"$output" || fail "$1: no line \"$2\""; }

# Three paragraphs, one of them over two lines; an apostrophe and a digit end a word, an umlaut does not.
printf 'One two\ttwo.\n\n  \nThree (three)\nTHREE\r\n\n\nIt'\''s 4 M\xc3\xbcller\n' >"$folder/small"
run "$folder/small"
expect_code 'a small file' 0
expect_line 'a small file' 'counting 3 paragraphs of 1 files'
expect_line 'a small file' ' *lines +4 +4'
expect_line 'a small file' ' *words +9 +9'
expect_line 'a small file' ' *letters +34 +34'
expect_line 'a small file' ' *different words +6 +6'
expect_line 'a small file' ' *5 +3 +3'
expect_line 'a small file' ' *three +3 +3'
expect_line 'a small file' ' *100 %: 3 of 3 requests answered'
expect_line 'a small file' '3 requests, 9 replies, .* requests/s'
expect_line 'a small file' 'the merged replies equal the direct count'

run "$folder/small" "$folder/small"
expect_code 'the same file twice' 0
expect_line 'the same file twice' ' *words +18 +18'

: >"$folder/empty"
run "$folder/empty"
expect_code 'an empty file' 0
expect_line 'an empty file' '0 requests, 0 replies, .*'

run "$folder/small" "$folder/missing"
expect_code 'a missing file' 2
expect_line 'a missing file' "text_statistics: cannot read $folder/missing: No such file or directory"

run "$folder"
expect_code 'a folder' 2
expect_line 'a folder' "text_statistics: cannot read $folder: .*"

printf 'a\0b\n' >"$folder/binary"
run "$folder/binary"
expect_code 'a file that is no text' 2
expect_line 'a file that is no text' "text_statistics: $folder/binary is no text: .*"

run --processes 2 "$folder/small"
expect_code 'two processes' 0
expect_line 'two processes' '  process 1 of 2: 2 requests answered'
expect_line 'two processes' '  process 2 of 2: 1 requests answered'
expect_line 'two processes' '3 requests, 9 replies, .* requests/s'
expect_line 'two processes' 'the merged replies equal the direct count'

run --processes 0 "$folder/small"
expect_code 'no processes' 2

# When a process is lost, so is the result, and no other process is left behind. The text is long enough for them to be
# there when one is killed.
for _ in {1..2000}; do cat "$folder/small"; echo; done >"$folder/large"
"$program" --processes 2 "$folder/large" >"$folder/output" 2>&1 &
parent=$!
children=
until [[ $(wc -w <<<"$children") -eq 3 ]]; do children=$(cat "/proc/$parent/task/$parent/children"); done
kill -KILL "${children%% *}"
code=0
wait "$parent" || code=$?
output=$(<"$folder/output")
expect_code 'a lost process' 2
expect_line 'a lost process' 'text_statistics: a process has failed'
for child in $children; do
  [[ ! -e /proc/$child ]] || fail "process $child is left"
done

exit $((failures > 0))
