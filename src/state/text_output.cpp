#include "state/text_output.h"

#include <langinfo.h>

#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vekta {

namespace {

// %f prints the exact value of x rounded to six decimals, ties to even. Below
// this magnitude x 10^6 stays under 2^52, where the fast path below rounds it
// exactly; above it (and for inf and NaN) the standard library's shortest
// exact conversion does it.
constexpr double kFastFixedLimit = 0x1p52 / 1e6;
// Below this magnitude x rounds to zero (a sign and six zeros).
constexpr double kFixedZero = 0x1p-60;
constexpr double kMicro = 1e6;
constexpr std::uint64_t kMicroInt = 1000000;

// x 10^6 = p + e exactly (Dekker's product; 10^6 needs only 20 bits, so it is
// its own upper half and x's halves times it are exact).
void scaleExactly(double x, double& p, double& e) {
    const double c = 134217729.0 * x;  // 2^27 + 1: Veltkamp's split
    const double hi = c - (c - x);
    const double lo = x - hi;
    p = x * kMicro;
    e = (hi * kMicro - p) + lo * kMicro;
}

// x 10^6 (x >= 0, below kFastFixedLimit) rounded to the nearest integer, ties
// to even, from its exact value p + e. The fraction f of p is exact, and
// f - 1/2 is a multiple of p's last unit, at least twice |e| unless zero:
// e only decides a fraction of exactly one half.
std::uint64_t roundedMicros(double x) {
    if (x < kFixedZero) return 0;
    double p, e;
    scaleExactly(x, p, e);
    std::uint64_t n = static_cast<std::uint64_t>(p);
    const double f = p - static_cast<double>(n);
    if (f > 0.5 || (f == 0.5 && (e > 0.0 || (e == 0.0 && (n & 1) != 0)))) n += 1;
    return n;
}

char* digits(char* out, std::uint64_t n, int minDigits) {
    char tmp[24];
    int k = 0;
    do {
        tmp[k++] = static_cast<char>('0' + n % 10);
        n /= 10;
    } while (n != 0);
    while (k < minDigits) tmp[k++] = '0';
    while (k > 0) *out++ = tmp[--k];
    return out;
}

int standardConversion(char* out, double x, std::chars_format how) {
    return static_cast<int>(std::to_chars(out, out + kMaxNumberText, x, how, 6).ptr - out);
}

bool decimalPointIsPlain() {
    const char* point = nl_langinfo(RADIXCHAR);
    return point[0] == '.' && point[1] == '\0';
}

void handOver(TextOutput& out) {
    if (out.length > 0) std::fwrite(out.text, 1, static_cast<std::size_t>(out.length), stdout);
    out.length = 0;
}

char* reserve(TextOutput& out, int size) {
    if (out.length + size > kTextCapacity) handOver(out);
    return out.text + out.length;
}

// True when every conversion of fmt is one of %f %e %d %s %%, plain.
bool onlyPlainConversions(const char* fmt) {
    for (const char* c = std::strchr(fmt, '%'); c != nullptr; c = std::strchr(c + 2, '%')) {
        if (std::strchr("feds%", c[1]) == nullptr || c[1] == '\0') return false;
    }
    return true;
}

void appendChar(TextOutput& out, char c) {
    *reserve(out, 1) = c;
    out.length += 1;
}

void expand(TextOutput& out, const char* fmt, va_list ap) {
    for (const char* c = fmt; *c != '\0'; ++c) {
        if (*c != '%') {
            appendChar(out, *c);
            continue;
        }
        switch (*++c) {
            case 'f':
                out.length += formatFixed(reserve(out, kMaxNumberText), va_arg(ap, double));
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
            default:  // "%%"
                appendChar(out, '%');
                break;
        }
    }
}

void appendFormat(TextOutput& out, const char* fmt, va_list ap) {
    if (out.plainPoint && onlyPlainConversions(fmt)) {
        expand(out, fmt, ap);
    } else {
        handOver(out);
        std::vprintf(fmt, ap);
    }
}

}  // namespace

int formatFixed(char* out, double x) {
    const double ax = std::fabs(x);
    if (!(ax < kFastFixedLimit)) return standardConversion(out, x, std::chars_format::fixed);
    char* p = out;
    if (std::signbit(x)) *p++ = '-';
    const std::uint64_t n = roundedMicros(ax);
    p = digits(p, n / kMicroInt, 1);
    *p++ = '.';
    p = digits(p, n % kMicroInt, 6);
    return static_cast<int>(p - out);
}

int formatExp(char* out, double x) { return standardConversion(out, x, std::chars_format::scientific); }

int formatInt(char* out, int x) { return static_cast<int>(std::to_chars(out, out + kMaxNumberText, x).ptr - out); }

void beginText(TextOutput& out) {
    out.length = 0;
    out.plainPoint = decimalPointIsPlain();
}

void appendText(TextOutput& out, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    appendFormat(out, fmt, ap);
    va_end(ap);
}

void writeText(TextOutput& out) { handOver(out); }

void printText(const char* fmt, ...) {
    TextOutput out;
    beginText(out);
    va_list ap;
    va_start(ap, fmt);
    appendFormat(out, fmt, ap);
    va_end(ap);
    handOver(out);
}

}  // namespace vekta
