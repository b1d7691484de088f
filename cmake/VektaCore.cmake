# The library's code as object libraries, defined once for every build that
# plans: the shared library, the Python module and the libFuzzer target (a
# project of its own, built with clang) all call vekta_add_core, so that all
# three compile the same sources the same way and dispatch alike.
#
#   vekta_add_core(<prefix> [OPTIONS <compile options>...] [LINK_OPTIONS <link options>...])
#
# defines <prefix>_base, every source compiled for any processor of the
# family, and, on x86-64 with GCC or Clang, <prefix>_fma: the planning core
# compiled once more with -mfma into the namespace vekta::fma (VEKTA_COPY_FMA).
# Only the exact cube's two error terms use the instruction; -ffp-contract=off
# holds, so both copies give the same bits. The FMA copy is always optimised
# (-O2 where the build type asks for no optimisation) so that no inline function of the standard
# library is left behind as a weak symbol that the linker could pick for the
# baseline code: a processor without AVX would crash on it. The test
# fma_copy_symbols checks that the copy defines nothing outside vekta::fma.
#
# Sets in the caller's scope: <prefix>_TARGETS (the object libraries, to link)
# and <prefix>_OBJECTS (their objects, to put into a library or module).
set(VEKTA_CORE_DIR ${CMAKE_CURRENT_LIST_DIR}/..)

# The planning core: compiled twice where the FMA copy is built.
set(VEKTA_PLANNING_CORE_SOURCES
    src/engine/decision_tree.cpp
    src/engine/prologue_nodes.cpp
    src/numeric/abk.cpp
    src/numeric/axis_curve.cpp
    src/numeric/vel_shapes.cpp
    src/output/output_sink.cpp
    src/output/text_output.cpp
    src/planner/planning_pass.cpp
    src/step1/step1_closed_form.cpp
    src/step1/step1_dispatch.cpp
    src/step1/step1_root_solvers.cpp
    src/step1/step1_tree.cpp
    src/step2/step2_falling_nodes.cpp
    src/step2/step2_rising_nodes.cpp
    src/step2/step2_solvers.cpp
    src/step2/step2_tree.cpp)

# Compiled once: the exported layer, the updates, the sampler, the checks and
# the choice of copy.
set(VEKTA_ONCE_SOURCES
    src/api/exports.cpp
    src/api/planner_handles.cpp
    src/check/curve_check.cpp
    src/check/plan_check.cpp
    src/planner/planning_copy.cpp
    src/planner/requests.cpp
    src/planner/sampler.cpp
    src/planner/updates.cpp)

set(VEKTA_FMA_COPY OFF)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$" AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  set(VEKTA_FMA_COPY ON)
endif()

function(vekta_add_core prefix)
  cmake_parse_arguments(core "" "" "OPTIONS;LINK_OPTIONS" ${ARGN})
  list(TRANSFORM VEKTA_PLANNING_CORE_SOURCES PREPEND ${VEKTA_CORE_DIR}/ OUTPUT_VARIABLE core_sources)
  list(TRANSFORM VEKTA_ONCE_SOURCES PREPEND ${VEKTA_CORE_DIR}/ OUTPUT_VARIABLE once_sources)
  set(copies base)
  if(VEKTA_FMA_COPY)
    list(APPEND copies fma)
  endif()
  set(targets)
  set(objects)
  foreach(copy IN LISTS copies)
    set(target ${prefix}_${copy})
    if(copy STREQUAL "base")
      add_library(${target} OBJECT ${core_sources} ${once_sources})
    else()
      add_library(${target} OBJECT ${core_sources})
      target_compile_options(${target} PRIVATE -mfma $<$<NOT:$<CONFIG:Release,RelWithDebInfo,MinSizeRel>>:-O2>)
      target_compile_definitions(${target} PRIVATE VEKTA_COPY_FMA)
    endif()
    if(VEKTA_FMA_COPY AND copy STREQUAL "base")
      target_compile_definitions(${target} PRIVATE VEKTA_HAVE_FMA_COPY)
    endif()
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${VEKTA_CORE_DIR}/include>
                                                $<BUILD_INTERFACE:${VEKTA_CORE_DIR}/src>)
    # The arithmetic as written: no contraction into fused multiply-adds, no
    # fast-math reassociation, no host-specific instruction set.
    target_compile_options(${target} PUBLIC -Wall -Wextra -ffp-contract=off ${core_OPTIONS})
    target_link_options(${target} PUBLIC ${core_LINK_OPTIONS})
    target_link_libraries(${target} PUBLIC m)
    list(APPEND targets ${target})
    list(APPEND objects $<TARGET_OBJECTS:${target}>)
  endforeach()
  set(${prefix}_TARGETS ${targets} PARENT_SCOPE)
  set(${prefix}_OBJECTS ${objects} PARENT_SCOPE)
endfunction()
