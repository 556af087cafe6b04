#!/bin/bash
# Installs the project into a fresh folder, which is then moved, and builds and runs the first program against it.
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
output=$("$folder/consumer/first_program")
[[ $output == $'Hello, world\nHello, world' ]] || {
  printf 'FAILED: the program printed "%s"\n' "$output"
  exit 1
}
