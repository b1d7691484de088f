// The library's diagnostic output: printf's %f, %e, %d and %s, byte for byte,
// without printf's cost.
//
// A message is built in a buffer on the caller's stack and handed to its
// planner's output sink with one write (for standard output one fwrite,
// through the same FILE as printf, so that it interleaves with the caller's
// own prints exactly as before). A sink that is off formats nothing. Only a conversion that could
// overrun the buffer (a %f of a huge value runs to 317 characters) hands the
// part built so far over first.
#ifndef VEKTA_OUTPUT_TEXT_OUTPUT_H
#define VEKTA_OUTPUT_TEXT_OUTPUT_H

#include <cstring>

#include "output/output_sink.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Longest text of one conversion: %f of -DBL_MAX, "-" 309 digits "." 6 digits.
constexpr int kMaxNumberText = 320;
constexpr int kTextCapacity = 1024;

struct TextOutput {
    char text[kTextCapacity];
    int length;
    bool plainPoint;  // the locale's decimal point is "."; otherwise printf does it all
    const OutputSink* sink;  // where the message goes
};

// printf("%f", x), printf("%e", x) and printf("%d", x) in the "C" locale, written
// to out (room for kMaxNumberText characters, no terminator); they return the
// length written.
int formatFixed(char* out, double x);
int formatExp(char* out, double x);
int formatInt(char* out, int x);

// Start a message for sink.
void beginText(TextOutput& out, const OutputSink* sink);

// Append printf(fmt, ...) to the message. %f, %e, %d, %s and %% are expanded
// here; from any other conversion on, and for the whole of fmt under a locale
// whose decimal point is not ".", vprintf prints the rest after the text built
// so far (into the sink). Nothing when the sink is off.
void appendText(TextOutput& out, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

// The pieces of a message whose layout is fixed, without a format to walk:
// the text appendText(out, "%f", x), appendText(out, "%d", n) and
// appendText(out, text) would add. For the lines printed on every update.
void appendFixed(TextOutput& out, double x);
void appendInt(TextOutput& out, int n);
void appendLiteral(TextOutput& out, const char* text, int length);
template <int N>
inline void appendLiteral(TextOutput& out, const char (&text)[N]) {
    if (out.length + (N - 1) > kTextCapacity) return appendLiteral(out, text, N - 1);
    std::memcpy(out.text + out.length, text, N - 1);  // a sink that is off never reads it
    out.length += N - 1;
}

// Hand the message to the sink.
void writeText(TextOutput& out);

// A whole message at once: printf(fmt, ...) into the sink; nothing is
// formatted when the sink is off.
void printTo(const OutputSink* sink, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
