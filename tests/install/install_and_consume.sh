#!/usr/bin/env bash
# Installs the build to a temporary prefix and uses it as a user would: every
# example (C++ and C) built with find_package(vekta), warnings as errors, and run; one built
# by a plain compiler call with pkg-config, finding the library through an rpath.
#
#   install_and_consume.sh BUILD_DIR EXAMPLE_DIR CXX "EXTRA_FLAGS"
# EXTRA_FLAGS are added to both builds (the sanitizers, for a sanitized library).
set -euo pipefail
build=$1
examples=$2
cxx=$3
extra=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

fail() { echo "FAIL: $*"; exit 1; }
quietly() { "$@" > "$work/log" 2>&1 || { tail -40 "$work/log"; fail "$*"; }; }

quietly cmake --install "$build" --prefix "$prefix"

# The package: the versioned library with its SONAME and links, the header, the
# CMake package (the library target only), the pkg-config file, the licence.
libdir=$(dirname "$(find "$prefix" -name 'libvekta.so.0.1.0' | head -1)")
[ "$(readlink "$libdir/libvekta.so.0")" = "libvekta.so.0.1.0" ] || fail "libvekta.so.0 link"
[ "$(readlink "$libdir/libvekta.so")" = "libvekta.so.0" ] || fail "libvekta.so link"
readelf -d "$libdir/libvekta.so.0.1.0" | grep -q 'SONAME.*\[libvekta.so.0\]' || fail "SONAME"
for f in include/vekta/vekta.h include/vekta/vekta_c.h share/doc/vekta/LICENSE "${libdir#"$prefix"/}"/pkgconfig/vekta.pc; do
  [ -f "$prefix/$f" ] || fail "$f not installed"
done
grep -q 'vekta_LICENSE "MIT"' "$libdir/cmake/vekta/vektaConfig.cmake" || fail "licence in the CMake package"
if grep -E 'vekta_(objects|flags)' "$libdir"/cmake/vekta/*.cmake; then fail "internal targets exported"; fi

# 1. The CMake package: every example builds without a warning and runs.
quietly cmake -S "$examples" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="$extra -Werror" -DCMAKE_C_FLAGS="$extra -Werror" -DCMAKE_EXE_LINKER_FLAGS="$extra"
quietly cmake --build "$work/cmake"
for example in point_to_point replan_mid_motion velocity_stop conveyor_catch_up check_plan c_planner; do
  quietly "$work/cmake/$example"
done

# A version the package does not offer is refused.
mkdir "$work/too-new"
printf 'cmake_minimum_required(VERSION 3.21)\nproject(too_new CXX)\nfind_package(vekta 1.0 REQUIRED)\n' \
  > "$work/too-new/CMakeLists.txt"
if cmake -S "$work/too-new" -B "$work/too-new/build" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null 2>&1; then
  fail "find_package(vekta 1.0) accepted version 0.1.0"
fi

# 2. pkg-config and a plain compiler call; the .pc file finds its prefix itself.
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --modversion vekta)" = "0.1.0" ] || fail "pkg-config --modversion"
# shellcheck disable=SC2046,SC2086
quietly "$cxx" -std=c++17 -Wall -Wextra -Werror $extra "$examples/point_to_point.cpp" -o "$work/pc" \
  $(pkg-config --cflags --libs vekta) -Wl,-rpath,"$libdir"
quietly "$work/pc"

# 3. The Python module, when it was built: importable from the installed package directory.
module=$(find "$prefix" -name 'vekta.cpython-*.so' | head -1)
if [ -n "$module" ]; then
  PYTHONPATH=$(dirname "$module") quietly /usr/bin/python3 -c "import vekta; vekta.Planner()"
fi

echo "install and consume passed: 6 examples (5 C++, 1 C) with find_package(vekta), one with pkg-config"
