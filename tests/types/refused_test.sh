#!/bin/bash
# Compiles refused.cpp with members that cannot be carried. The first error has to name them.
# Arguments: the source file, the compiler and its arguments.
set -euo pipefail
source=$1
shift
compile=("$@")

# Compiles with a macro's definition, first in the arguments; the first error must contain the others, but for spaces.
check() {
  local definition=$1 output first
  shift
  if output=$("${compile[@]}" "-D$definition" "$source" 2>&1); then
    printf 'FAILED: %s was accepted\n' "$definition"
    exit 1
  fi
  # g++ says before an error what it was instantiating, clang after it.
  first=$(sed '/error:/{n;:rest;/error:/Q;n;b rest}' <<<"$output" | tr -d ' ')
  for expected; do
    [[ $first == *"${expected// /}"* ]] || {
      printf 'FAILED: %s: "%s" is not in\n%s\n' "$definition" "$expected" "$output"
      exit 1
    }
  done
}

named='member_cannot_be_carried<calculator::Request, 2,'
check 'MEMBER=std::map<int, int> second' "$named std::map<int, int>"
check 'MEMBER=char second[300]' "$named char[300]"
check 'MEMBER=std::vector<std::function<void()>> second' "$named std::vector<std::function<void()>"
check 'MEMBER=Open second' "$named calculator::Open" 'fixed underlying type'
check 'MEMBER=std::vector<Empty> second' "$named std::vector<calculator::Empty>" 'no octets'
check 'MEMBER=std::vector<Request> second' "$named std::vector<calculator::Request>" 'contains itself'
check 'MEMBER=std::vector<Inner> second' 'member_cannot_be_carried<calculator::Inner, 2, char[20]'
check 'MEMBER=std::vector<std::optional<std::array<double, 100>>> second' "$named std::vector<std::optional<" 'more than 64 times'
check 'REQUEST=Closed' 'type_cannot_be_carried<calculator::Closed>'
