#include "state/output_sink.h"

#include <cstdarg>

namespace vekta {

namespace {

// Longer than any message the library prints: the longest has six %f of at
// most 317 characters each.
constexpr int kMessageCapacity = 4096;

}  // namespace

void printTo(const OutputSink* sink, const char* fmt, ...) {
    if (!outputOn(sink)) return;
    std::va_list ap;
    va_start(ap, fmt);
    if (sink == nullptr || sink->kind == kOutputStdout) {
        std::vprintf(fmt, ap);
    } else if (sink->kind == kOutputFile) {
        std::vfprintf(sink->file, fmt, ap);
    } else {
        char text[kMessageCapacity];
        const int n = std::vsnprintf(text, sizeof text, fmt, ap);
        if (n > 0) writeTo(sink, text, n < kMessageCapacity ? static_cast<std::size_t>(n) : sizeof text - 1);
    }
    va_end(ap);
}

void writeTo(const OutputSink* sink, const char* text, std::size_t length) {
    if (!outputOn(sink) || length == 0) return;
    if (sink == nullptr || sink->kind == kOutputStdout) {
        std::fwrite(text, 1, length, stdout);
    } else if (sink->kind == kOutputFile) {
        std::fwrite(text, 1, length, sink->file);
    } else {
        sink->fn(text, length, sink->user);
    }
}

}  // namespace vekta
