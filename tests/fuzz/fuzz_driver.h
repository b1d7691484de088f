// The fuzz driver: decodes arbitrary bytes into a sequence of calls of the
// exported functions (the three updates, both sampling functions, the plan
// check and the small getters) and checks what a controller relies on after
// every call. Shared by the libFuzzer target and by the regression test that
// replays the committed inputs.
#ifndef VEKTA_TESTS_FUZZ_DRIVER_H
#define VEKTA_TESTS_FUZZ_DRIVER_H

#include <cstddef>
#include <cstdint>

namespace vekta::fuzz {

// Runs the calls encoded in data[0 .. size - 1] on the process-wide planner
// state. Returns nullptr when every property held, otherwise a static text
// naming the first property that failed.
const char* runInput(const std::uint8_t* data, std::size_t size);

// When set, runInput prints the opcode of every operation it runs on
// standard error (to find the call of a fuzzer finding).
extern bool traceCalls;

}  // namespace vekta::fuzz

#endif
