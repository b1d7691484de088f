#!/usr/bin/env bash
# Installs the build to a temporary prefix and builds the example controller
# loop against the installed package twice, as a user would: with CMake's
# find_package(vekta) and with pkg-config and a plain compiler call. Both are
# run and must finish their motion.
#
#   install_and_consume.sh BUILD_DIR EXAMPLE_DIR CXX "EXTRA_FLAGS"
# EXTRA_FLAGS are added to both builds (the sanitizers, for a sanitized library).
set -euo pipefail
build=$1
example=$2
cxx=$3
extra=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

fail() { echo "FAIL: $*"; exit 1; }

cmake --install "$build" --prefix "$prefix" > "$work/install.log" || { cat "$work/install.log"; fail "install"; }

# What a package must hold: the versioned library with its SONAME and links,
# the header, the CMake package and the pkg-config file.
libdir=$(dirname "$(find "$prefix" -name 'libvekta.so.0.1.0' | head -1)")
[ -f "$libdir/libvekta.so.0.1.0" ] || fail "no libvekta.so.0.1.0 under $prefix"
[ "$(readlink "$libdir/libvekta.so.0")" = "libvekta.so.0.1.0" ] || fail "libvekta.so.0 link"
[ "$(readlink "$libdir/libvekta.so")" = "libvekta.so.0" ] || fail "libvekta.so link"
readelf -d "$libdir/libvekta.so.0.1.0" | grep -q 'SONAME.*\[libvekta.so.0\]' || fail "SONAME"
[ -f "$prefix/include/vekta/vekta.h" ] || fail "header"
for f in vektaConfig.cmake vektaConfigVersion.cmake vektaTargets.cmake; do
  [ -f "$libdir/cmake/vekta/$f" ] || fail "$f"
done
[ -f "$libdir/pkgconfig/vekta.pc" ] || fail "vekta.pc"
# Only the library itself is exported: no internal target leaks into the package.
if grep -E 'vekta_(objects|flags)' "$libdir"/cmake/vekta/*.cmake; then fail "internal targets exported"; fi

check_run() {
  local exe=$1 what=$2
  "$exe" > "$work/$what.out" || { tail -20 "$work/$what.out"; fail "$what: exited with $?"; }
  grep -q '^controller: all 6 axes finished' "$work/$what.out" || { tail -20 "$work/$what.out"; fail "$what: no finish line"; }
}

# 1. CMake package.
cmake -S "$example" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
      -DCMAKE_CXX_FLAGS="$extra" -DCMAKE_EXE_LINKER_FLAGS="$extra" > "$work/cmake.log" 2>&1 ||
  { cat "$work/cmake.log"; fail "configure the example with find_package(vekta)"; }
cmake --build "$work/cmake-build" > "$work/build.log" 2>&1 || { cat "$work/build.log"; fail "build the example"; }
check_run "$work/cmake-build/controller_loop" cmake-package

# A version the package does not offer is refused.
mkdir -p "$work/too-new"
cat > "$work/too-new/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.21)
project(too_new CXX)
find_package(vekta 1.0 REQUIRED)
CMAKE
if cmake -S "$work/too-new" -B "$work/too-new/build" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null 2>&1; then
  fail "find_package(vekta 1.0) accepted version 0.1.0"
fi

# 2. pkg-config and a plain compiler call; the .pc file finds its prefix itself.
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --modversion vekta)" = "0.1.0" ] || fail "pkg-config --modversion"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++17 $extra "$example/controller_loop.cpp" -o "$work/pc-loop" $(pkg-config --cflags --libs vekta) ||
  fail "build the example with pkg-config"
export LD_LIBRARY_PATH=$libdir
check_run "$work/pc-loop" pkg-config

echo "install and consume passed: $prefix (CMake package and pkg-config)"
