# shellcheck shell=bash
# Shell functions that the scripts share, for a shell that stops at errors. Source it; it sets ROOT, the project's folder.
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
JOBS=$(nproc)

BUILD_PACKAGES=(cmake ninja-build g++ libboost1.81-dev libfastcdr-dev fastddsgen cyclonedds-dev cyclonedds-tools)
LINT_PACKAGES=("${BUILD_PACKAGES[@]}" clang clang-format clang-tidy)
TEST_PACKAGES=("${LINT_PACKAGES[@]}" libgtest-dev libgmock-dev iproute2)
FUZZ_PACKAGES=("${TEST_PACKAGES[@]}" libclang-rt-14-dev)

say() { printf '\n== %s\n' "$*"; }

die() {
  printf '%s\n' "$*" >&2
  exit 1
}

# Installs the Debian packages that are missing; touches nothing, and needs no network, when none is.
install_packages() {
  local package missing=()
  for package in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  [[ $(id -u) -eq 0 ]] || die "missing packages (run as root, or install them): ${missing[*]}"
  say "installing ${missing[*]}"
  apt-get update -q
  DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# Runs a command for a preset. ThreadSanitizer does not get along with every random memory layout: its programs, which
# already run while they are built, get a fixed one where the system allows that.
run_for_preset() {
  local preset=$1
  shift
  if [[ $preset == tsan ]] && setarch "$(uname -m)" -R true 2>/dev/null; then
    setarch "$(uname -m)" -R "$@"
  else
    "$@"
  fi
}

# Configures and builds a preset; the remaining arguments go to the build.
build_preset() {
  local preset=$1
  shift
  (cd "$ROOT" && cmake --preset "$preset" && run_for_preset "$preset" cmake --build --preset "$preset" -j "$JOBS" "$@")
}

test_preset() { (cd "$ROOT" && run_for_preset "$1" ctest --preset "$1"); }

# The project's C++ files, each ended by NUL; the arguments are folders.
cpp_files() { (cd "$ROOT" && find "$@" -type f \( -name '*.cpp' -o -name '*.hpp' \) -print0 | sort -z); }

check_format() {
  (cd "$ROOT" && cpp_files dds requestreply zemtra examples benchmarks tests | xargs -0 clang-format --dry-run -Werror)
}

# Needs the clang preset to be configured. The tests are left out: what their macros expand to takes too long.
check_tidy() {
  (cd "$ROOT" && cpp_files dds requestreply zemtra examples benchmarks | grep -z '\.cpp$' |
    xargs -0 -n 1 -P "$JOBS" clang-tidy --quiet -p build/clang)
}
