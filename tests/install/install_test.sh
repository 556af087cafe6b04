#!/bin/bash
# Installs the project into a fresh folder, which is then moved; builds and runs against it the first program, one with
# types of its own, and one that asks for the transport between processes, with and without it.
# Arguments: CMake, the build folder, the compiler, the first program.
set -euo pipefail
cmake=$1 build=$2 compiler=$3 first_program=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

"$cmake" --install "$build" --prefix "$folder/installed"
mv "$folder/installed" "$folder/moved"
"$cmake" -S "$(dirname "$0")/consumer" -B "$folder/consumer" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$folder/moved" -DFIRST_PROGRAM="$first_program"
"$cmake" --build "$folder/consumer"
prints() {
  local output
  output=$("$folder/consumer/$1")
  [[ $output == "$2" ]] || {
    printf 'FAILED: %s printed "%s"\n' "$1" "$output"
    exit 1
  }
}
prints first_program $'Hello, world\nHello, world'
prints types 'consumer::Greeting consumer::Answer'

# The transport between processes is found beside the library, and nobody else needs it.
prints between_processes 'there it is'
find "$folder/moved" -name 'libzemtra_dds_rtps.so' -delete
prints between_processes 'none' 2>"$folder/log"
grep -q 'libddsc0debian' "$folder/log" || {
  printf 'FAILED: nothing says what to install\n'
  exit 1
}
prints first_program $'Hello, world\nHello, world'
