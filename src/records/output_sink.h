// The record of where a planner's lines go: standard output (the default, and
// what a zeroed sink means), the caller's stream, the caller's function, or
// nowhere. The code that writes into it is output/output_sink.h.
#ifndef VEKTA_RECORDS_OUTPUT_SINK_H
#define VEKTA_RECORDS_OUTPUT_SINK_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "records/planning_copy.h"

namespace vekta {

enum OutputKind : std::uint8_t {
    kOutputStdout = 0,
    kOutputFile,
    kOutputCallback,
    kOutputOff,
};

using OutputFn = void (*)(const char* text, std::size_t length, void* user);

struct OutputSink {
    std::uint8_t kind;  // OutputKind
    std::FILE* file;    // kOutputFile
    OutputFn fn;        // kOutputCallback, with user
    void* user;
};

}  // namespace vekta

#endif
