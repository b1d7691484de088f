// Where a planner's lines go: standard output (the default, and what a zeroed
// sink means), the caller's stream, the caller's function, or nowhere.
//
// Every print site of the library goes through the text formatter
// (output/text_output.h) with its planner's sink, and the formatter through
// writeTo; a site that sees only an AxisPlan uses the record's `sink`, which
// the updates point at their planner's sink. A null sink is standard output.
#ifndef VEKTA_OUTPUT_OUTPUT_SINK_H
#define VEKTA_OUTPUT_OUTPUT_SINK_H

#include <cstdarg>
#include <cstddef>

#include "records/output_sink.h"

namespace vekta {
inline namespace VEKTA_COPY {

// False when the sink discards everything: callers may skip preparing a line.
inline bool outputOn(const OutputSink* sink) { return sink == nullptr || sink->kind != kOutputOff; }

// vprintf(fmt, ap) into the sink, for what the formatter leaves to the C
// library; nothing is formatted when it is off.
void vprintTo(const OutputSink* sink, const char* fmt, std::va_list ap);

// Hand length characters of text to the sink as one message.
void writeTo(const OutputSink* sink, const char* text, std::size_t length);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
