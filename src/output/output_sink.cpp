#include "output/output_sink.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Longer than anything the formatter leaves to the C library: at most the
// rest of one message, whose longest has six %f of at most 317 characters.
constexpr int kMessageCapacity = 4096;

}  // namespace

void vprintTo(const OutputSink* sink, const char* fmt, std::va_list ap) {
    if (!outputOn(sink)) return;
    if (sink == nullptr || sink->kind == kOutputStdout) {
        std::vprintf(fmt, ap);
    } else if (sink->kind == kOutputFile) {
        std::vfprintf(sink->file, fmt, ap);
    } else {
        char text[kMessageCapacity];
        const int n = std::vsnprintf(text, sizeof text, fmt, ap);
        if (n > 0) writeTo(sink, text, n < kMessageCapacity ? static_cast<std::size_t>(n) : sizeof text - 1);
    }
}

void writeTo(const OutputSink* sink, const char* text, std::size_t length) {
    // No caller hands over an empty message; the guard keeps the callback's
    // promise should one ever do.
    if (!outputOn(sink) || length == 0) return;
    if (sink == nullptr || sink->kind == kOutputStdout) {
        std::fwrite(text, 1, length, stdout);
    } else if (sink->kind == kOutputFile) {
        std::fwrite(text, 1, length, sink->file);
    } else {
        sink->fn(text, length, sink->user);
    }
}

}  // namespace VEKTA_COPY
}  // namespace vekta
