#!/usr/bin/env bash
# Installs the build to a temporary prefix and uses it as a user would: every
# example (C++ and C) built with find_package(vekta), warnings as errors, and run; one built
# by a plain compiler call with pkg-config, finding the library through an rpath; the C++
# class of planner.hpp compiled alone and used by a small program.
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
for f in include/vekta/vekta.h include/vekta/vekta_c.h include/vekta/planner.hpp share/doc/vekta/LICENSE "${libdir#"$prefix"/}"/pkgconfig/vekta.pc; do
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
# The arms arrive or stop in the cycle their plans end in, and a spoiled limit is refused in words.
quietly "$work/cmake/arm_on_track"
grep -q '^stopped 392 cycles later (0.783 s):$' "$work/log" || fail "arm_on_track stop"
grep -q '^  vel       0.0000  0.0000  0.0000  0.0000  0.0000  0.0000  0.0000$' "$work/log" || fail "arm_on_track rest"
grep -q '^a jerk limit of 0 is refused: axis 3: maxJerk is 0' "$work/log" || fail "arm_on_track refusal"
quietly "$work/cmake/follow_moving_target"
grep -q '^follow_moving_target: on the part after 909 cycles (re-plans refused: 1,' "$work/log" || fail "following"
quietly "$work/cmake/seven_axes"
grep -q '^seven_axes: every joint on target at rest after 1500 cycles$' "$work/log" || fail "seven_axes arrival"
grep -q '^seven_axes: a jerk limit of 0 gives status 1: axis 3: maxJerk is 0, it must be a positive finite number$' \
  "$work/log" || fail "seven_axes refusal"

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

# 3. The C++ class: its header compiles alone; a program checks what the example does not show.
quietly "$cxx" -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I"$prefix/include" "$prefix/include/vekta/planner.hpp"
cat > "$work/planner.cpp" <<'EOF'
#include <vekta/planner.hpp>
#include <cstdio>
#include <cstring>
#include <type_traits>
#include <vector>
static_assert(!std::is_copy_constructible_v<vekta::Planner> && std::is_nothrow_move_constructible_v<vekta::Planner>);
#define EXPECT(c) if (!(c)) { std::printf("planner.cpp:%d: %s\n", __LINE__, #c); return 1; }
int main() {
    const std::vector<double> target{1.0, -0.5, 0.25}, limit{1.0, 1.0, 1.0}, pos(3);
    std::vector<double> shortOut(2), p(3), v(3), a(3);
    vekta::Planner arm;
    EXPECT(arm.move(target, limit, limit, limit, pos) == vekta::Status::Ok && arm.axes() == 3);
    vekta::Planner moved(std::move(arm));
    EXPECT(!arm && arm.move(target, limit, limit, limit, pos) == vekta::Status::InvalidArgument);
    EXPECT(std::strcmp(arm.error(), "planner is NULL") == 0 && moved.duration() > 0.0);
    EXPECT(moved.stateAt(0.0, shortOut, v, a) == -1 && moved.stateAt(0.0, p, v, a) == 0);
    // Arrays of different lengths: refused in words, and the last plan is gone.
    EXPECT(moved.move(target, limit, limit, shortOut, pos) == vekta::Status::InvalidArgument);
    EXPECT(std::strcmp(moved.error(), "maxJerk has 2 values and target 3: every array must hold one value per axis") == 0);
    EXPECT(moved.duration() == 0.0 && moved.next(p, v, a) == -1);
    EXPECT(moved.catchUp(0.3, 0.5, target, limit, limit, limit) == vekta::Status::ConveyorOutOfReach);
}
EOF
# shellcheck disable=SC2046,SC2086
quietly "$cxx" -std=c++17 -Wall -Wextra -Werror $extra "$work/planner.cpp" -o "$work/planner" \
  $(pkg-config --cflags --libs vekta) -Wl,-rpath,"$libdir"
quietly "$work/planner"

# 4. The Python module, when it was built: importable from the installed package directory.
module=$(find "$prefix" -name '_vekta.cpython-*.so' | head -1)
if [ -n "$module" ]; then
  PYTHONPATH=$(dirname "$(dirname "$module")") quietly /usr/bin/python3 -c "import vekta; vekta.Planner()"
fi

echo "install and consume passed: 9 examples (7 C++, 2 C) with find_package(vekta), one with pkg-config, the C++ class"
