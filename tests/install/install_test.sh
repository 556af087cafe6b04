#!/bin/bash
# Installs the project into a fresh folder, which is then moved; builds and runs against it the first program, and one with
# types of its own.
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
