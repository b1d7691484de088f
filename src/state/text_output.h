// The library's diagnostic output: printf's %f, %e, %d and %s, byte for byte,
// without printf's cost.
//
// A message is built in a buffer on the caller's stack and handed to stdout
// with one fwrite, through the same FILE as printf, so that it interleaves
// with the caller's own prints exactly as before. Only a conversion that could
// overrun the buffer (a %f of a huge value runs to 317 characters) hands the
// part built so far over first.
#ifndef VEKTA_STATE_TEXT_OUTPUT_H
#define VEKTA_STATE_TEXT_OUTPUT_H

namespace vekta {

// Longest text of one conversion: %f of -DBL_MAX, "-" 309 digits "." 6 digits.
constexpr int kMaxNumberText = 320;
constexpr int kTextCapacity = 1024;

struct TextOutput {
    char text[kTextCapacity];
    int length;
    bool plainPoint;  // the locale's decimal point is "."; otherwise printf does it all
};

// printf("%f", x), printf("%e", x) and printf("%d", x) in the "C" locale, written
// to out (room for kMaxNumberText characters, no terminator); they return the
// length written.
int formatFixed(char* out, double x);
int formatExp(char* out, double x);
int formatInt(char* out, int x);

// Start a message.
void beginText(TextOutput& out);

// Append printf(fmt, ...) to the message. %f, %e, %d, %s and %% are expanded
// here; from any other conversion on, and for the whole of fmt under a locale
// whose decimal point is not ".", vprintf prints the rest after the text built
// so far.
void appendText(TextOutput& out, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

// Hand the message to stdout.
void writeText(TextOutput& out);

// A whole message at once: printf(fmt, ...).
void printText(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

}  // namespace vekta

#endif
