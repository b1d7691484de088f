#!/usr/bin/env bash
# Installs the Debian packages a make target needs, when they are missing.
#
#   install-deps.sh demo   the library, the vekta tool and its plots (make demo)
#   install-deps.sh test   all of that and what the tests, the fuzz target and
#                          the benchmarks need (make test, make bench; the default)
set -euo pipefail

# The library, the vekta tool (CLI11, nlohmann-json) and its plots (gnuplot).
packages=(cmake make g++ libcli11-dev nlohmann-json3-dev gnuplot-nox)
case "${1:-test}" in
  demo) ;;
  # GoogleTest, the export check (binutils), the benchmarks, the install test
  # (pkg-config), the libFuzzer target: clang with its sanitizer and fuzzer
  # runtimes, and the Python package with its tests, its examples and its
  # install with pip into a venv.
  test) packages+=(libgtest-dev binutils libbenchmark-dev pkg-config clang-14 libclang-rt-14-dev
                   python3-dev pybind11-dev python3-numpy python3-pytest python3-matplotlib
                   python3-venv python3-pip python3-setuptools python3-wheel python3-pybind11) ;;
  *) echo "usage: $0 [demo|test]" >&2; exit 2 ;;
esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# apt's progress goes to a log, shown only when something fails.
if ! { $sudo apt-get update -qq && $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"; } > "$log" 2>&1; then
  cat "$log"
  echo "install-deps.sh: could not install ${missing[*]}" >&2
  exit 1
fi
