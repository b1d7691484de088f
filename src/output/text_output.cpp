#include "output/text_output.h"

#include <langinfo.h>

#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// %f prints the exact value of x rounded to six decimals, ties to even. Below
// this magnitude x 10^6 stays under 2^52, where the fast path below rounds it
// exactly; above it (and for inf and NaN) the standard library's shortest
// exact conversion does it.
constexpr double kFastFixedLimit = 0x1p52 / 1e6;
constexpr double kMicro = 1e6;
constexpr std::int64_t kMicroInt = 1000000;
// Adding and subtracting 2^52 rounds a double in [0, 2^52) to an integer,
// ties to even.
constexpr double kIntegerShift = 0x1p52;

// x 10^6 - p exactly, p = x * 10^6 rounded (Dekker's product; 10^6 needs only
// 20 bits, so it is its own upper half and x's halves times it are exact).
double scaleRemainder(double x, double p) {
    const double c = 134217729.0 * x;  // 2^27 + 1: Veltkamp's split
    const double hi = c - (c - x);
    const double lo = x - hi;
    return (hi * kMicro - p) + lo * kMicro;
}

// x 10^6 (x >= 0, below kFastFixedLimit) rounded to the nearest integer, ties
// to even. The exact product lies within half a unit of p, and no half-integer
// can lie strictly between them (it would be a closer double), so the product
// rounds like p unless p is itself a half-integer: then the remainder decides,
// and only a remainder of zero is a tie.
std::int64_t roundedMicros(double x) {
    const double p = x * kMicro;
    double n = (p + kIntegerShift) - kIntegerShift;
    if (std::fabs(n - p) == 0.5) {
        const double e = scaleRemainder(x, p);
        if (e > 0.0) n = p + 0.5;
        if (e < 0.0) n = p - 0.5;
    }
    return static_cast<std::int64_t>(n);
}

// "00" to "99", for two digits at a time.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

char* twoDigits(char* out, unsigned n) {
    std::memcpy(out, kDigitPairs + 2 * n, 2);
    return out + 2;
}

// "000" to "999", four bytes apart, for the six decimals of %f in two steps.
struct DigitTriples {
    char text[1000][4];
    constexpr DigitTriples() : text{} {
        for (int n = 0; n < 1000; ++n) {
            text[n][0] = static_cast<char>('0' + n / 100);
            text[n][1] = static_cast<char>('0' + n / 10 % 10);
            text[n][2] = static_cast<char>('0' + n % 10);
        }
    }
};
constexpr DigitTriples kDigitTriples;

char* threeDigits(char* out, unsigned n) {
    std::memcpy(out, kDigitTriples.text[n], 4);  // the fourth byte is overwritten or unused
    return out + 3;
}

// n in decimal, as many digits as it takes.
[[gnu::noinline]] char* decimal(char* out, std::uint64_t n) {
    char digits[20];
    int k = sizeof digits;
    do {
        digits[--k] = static_cast<char>('0' + n % 10);
        n /= 10;
    } while (n != 0);
    std::memcpy(out, digits + k, sizeof digits - k);
    return out + (sizeof digits - k);
}

[[gnu::noinline]] int standardConversion(char* out, double x, std::chars_format how) {
    return static_cast<int>(std::to_chars(out, out + kMaxNumberText, x, how, 6).ptr - out);
}

bool decimalPointIsPlain() {
    const char* point = nl_langinfo(RADIXCHAR);
    return point[0] == '.' && point[1] == '\0';
}

void handOver(TextOutput& out) {
    if (out.length > 0) writeTo(out.sink, out.text, static_cast<std::size_t>(out.length));
    out.length = 0;
}

char* reserve(TextOutput& out, int size) {
    if (out.length + size > kTextCapacity) handOver(out);
    return out.text + out.length;
}

[[gnu::always_inline]] inline int fixedText(char* out, double x) {
    if (x == 0.0) {  // the commonest value of a curve: accelerations and start times
        const bool negative = std::signbit(x);
        std::memcpy(out, negative ? "-0.000000" : "0.000000", 9);  // a terminator past the text is scratch
        return negative ? 9 : 8;
    }
    const double ax = std::fabs(x);
    if (!(ax < kFastFixedLimit)) return standardConversion(out, x, std::chars_format::fixed);
    char* p = out;
    if (std::signbit(x)) *p++ = '-';
    const std::int64_t n = roundedMicros(ax);
    const std::int64_t whole = n / kMicroInt;
    const auto micros = static_cast<unsigned>(n - whole * kMicroInt);
    if (whole < 10) {
        *p++ = static_cast<char>('0' + whole);
    } else if (whole < 100) {
        p = twoDigits(p, static_cast<unsigned>(whole));
    } else {
        p = decimal(p, static_cast<std::uint64_t>(whole));
    }
    *p++ = '.';
    p = threeDigits(p, micros / 1000);
    p = threeDigits(p, micros % 1000);
    return static_cast<int>(p - out);
}

void appendChar(TextOutput& out, char c) {
    if (out.length == kTextCapacity) handOver(out);
    out.text[out.length++] = c;
}

// One pass over fmt. A conversion other than %f %e %d %s %% (a flag, a width,
// a precision, another type) hands the text so far over and leaves the rest of
// fmt, with the arguments not yet taken, to vprintf.
void appendFormat(TextOutput& out, const char* fmt, va_list ap) {
    if (!out.plainPoint) {
        handOver(out);
        vprintTo(out.sink, fmt, ap);
        return;
    }
    const char* c = fmt;
    while (*c != '\0') {
        if (*c != '%') {
            // The literal text up to the next conversion.
            char* to = out.text + out.length;
            for (; *c != '%' && *c != '\0'; ++c) {
                if (to == out.text + kTextCapacity) {
                    out.length = kTextCapacity;
                    handOver(out);
                    to = out.text;
                }
                *to++ = *c;
            }
            out.length = static_cast<int>(to - out.text);
            continue;
        }
        switch (c[1]) {
            case 'f':
                out.length += fixedText(reserve(out, kMaxNumberText), va_arg(ap, double));
                break;
            case 'e':
                out.length += formatExp(reserve(out, kMaxNumberText), va_arg(ap, double));
                break;
            case 'd':
                out.length += formatInt(reserve(out, kMaxNumberText), va_arg(ap, int));
                break;
            case 's':
                for (const char* s = va_arg(ap, const char*); *s != '\0'; ++s) appendChar(out, *s);
                break;
            case '%':
                appendChar(out, '%');
                break;
            default:
                handOver(out);
                vprintTo(out.sink, c, ap);
                return;
        }
        c += 2;
    }
}

}  // namespace

int formatFixed(char* out, double x) { return fixedText(out, x); }

int formatExp(char* out, double x) { return standardConversion(out, x, std::chars_format::scientific); }

int formatInt(char* out, int x) {
    char* p = out;
    if (x < 0) *p++ = '-';
    const std::int64_t wide = x;  // INT_MIN has a magnitude here
    return static_cast<int>(decimal(p, static_cast<std::uint64_t>(wide < 0 ? -wide : wide)) - out);
}

void beginText(TextOutput& out, const OutputSink* sink) {
    out.sink = sink;
    out.length = 0;
    out.plainPoint = decimalPointIsPlain();
}

void appendText(TextOutput& out, const char* fmt, ...) {
    if (!outputOn(out.sink)) return;
    va_list ap;
    va_start(ap, fmt);
    appendFormat(out, fmt, ap);
    va_end(ap);
}

void appendFixed(TextOutput& out, double x) {
    if (!outputOn(out.sink)) return;
    if (!out.plainPoint) return appendText(out, "%f", x);
    out.length += fixedText(reserve(out, kMaxNumberText), x);
}

void appendInt(TextOutput& out, int n) {
    if (!outputOn(out.sink)) return;
    if (!out.plainPoint) return appendText(out, "%d", n);
    out.length += formatInt(reserve(out, kMaxNumberText), n);
}

void appendLiteral(TextOutput& out, const char* text, int length) {
    if (!outputOn(out.sink)) return;
    while (length > 0) {
        const int room = kTextCapacity - out.length;
        const int n = length < room ? length : room;
        std::memcpy(out.text + out.length, text, static_cast<std::size_t>(n));
        out.length += n;
        text += n;
        length -= n;
        if (length > 0) handOver(out);
    }
}

void writeText(TextOutput& out) { handOver(out); }

void printTo(const OutputSink* sink, const char* fmt, ...) {
    if (!outputOn(sink)) return;
    TextOutput out;
    beginText(out, sink);
    va_list ap;
    va_start(ap, fmt);
    appendFormat(out, fmt, ap);
    va_end(ap);
    handOver(out);
}

}  // namespace VEKTA_COPY
}  // namespace vekta
