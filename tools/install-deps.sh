#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, when missing.
set -euo pipefail

packages=(cmake make g++ libgtest-dev binutils)
# The vekta tool, its plots, the benchmarks and the install test.
packages+=(libcli11-dev nlohmann-json3-dev gnuplot-nox libbenchmark-dev pkg-config)
# The libFuzzer target of the tests: clang with its sanitizer and fuzzer runtimes.
packages+=(clang-14 libclang-rt-14-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
