// The fast numerics give exactly what they replace: cube() what the library's
// pow(x, 3.0) gives, bit for bit, and the text conversions what printf's %f, %e
// and %d print, over millions of values of every magnitude and the awkward
// families of each (ties, midpoints, powers of two, specials).
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "numeric/numerics.h"
#include "output/text_output.h"

namespace {

// Values per family: millions in an optimised build, fewer under the
// sanitizers, and a sample in a mutation run (VEKTA_MUTATION), where the
// specials and the families' awkward values still run.
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
const long kPerFamily = std::getenv("VEKTA_MUTATION") ? 20000 : 1000000;
#else
const long kPerFamily = std::getenv("VEKTA_MUTATION") ? 20000 : 2000000;
#endif

using Rng = std::mt19937_64;
int below(Rng& g, int n) { return static_cast<int>(g() % static_cast<std::uint64_t>(n)); }
double sign(Rng& g) { return g() & 1 ? -1.0 : 1.0; }
double unit(Rng& g) { return 1.0 + static_cast<double>(g() >> 12) * 0x1p-52; }  // [1, 2)

double fromBits(std::uint64_t b) { double x; std::memcpy(&x, &b, sizeof x); return x; }
std::uint64_t bitsOf(double x) { std::uint64_t b; std::memcpy(&b, &x, sizeof b); return b; }
double nudge(Rng& g, double x) { return fromBits(bitsOf(x) + static_cast<std::uint64_t>(below(g, 5)) - 2); }
double scaled(Rng& g, double x, int lo, int hi) { return std::ldexp(x, lo + below(g, hi - lo)); }

struct Family {
    const char* name;
    double (*draw)(Rng&);
};

const Family kCubeFamilies[] = {
    {"any bit pattern", [](Rng& g) { return fromBits(g()); }},
    {"[1,2) times 2^-345..2^345", [](Rng& g) { return sign(g) * scaled(g, unit(g), -345, 346); }},
    {"integers and neighbours", [](Rng& g) { return nudge(g, below(g, 1 << 22)); }},
    {"powers of two and neighbours", [](Rng& g) { return nudge(g, sign(g) * scaled(g, 1.0, -1100, 1100)); }},
    // 17 to 19 significant bits: the cube needs 51 to 57, so it lies on a
    // rounding midpoint or a few units of 2^-57 from one; nudged, just off it.
    {"cubes on and near midpoints", [](Rng& g) {
         const double k = scaled(g, 2.0 * ((1 << 16) + below(g, 3 << 17)) + 1.0, -110, 90);
         return below(g, 2) ? k : nudge(g, k);
     }},
    {"cube roots of midpoints and of powers of two", [](Rng& g) {
         const long double y = std::ldexp(below(g, 2) ? unit(g) + 0x1p-53L : 1.0L, below(g, 1200) - 600);
         return nudge(g, static_cast<double>(std::cbrt(y)));
     }},
};

const Family kTextFamilies[] = {
    {"any bit pattern", [](Rng& g) { return fromBits(g()); }},
    {"1e-9..1e12", [](Rng& g) { return sign(g) * unit(g) * std::pow(10.0, below(g, 22) - 9); }},
    {"around the fast path's limit 2^52/1e6", [](Rng& g) { return nudge(g, (below(g, 3) + 1) * 0x1p51 / 1e6); }},
    // An odd multiple of 2^-7 lies exactly halfway between two printed values.
    {"ties: odd multiples of 2^-7", [](Rng& g) { return sign(g) * static_cast<double>(g() >> 25 | 1) / 128; }},
    {"dyadic k/2^n", [](Rng& g) { return sign(g) * scaled(g, static_cast<double>(g() >> 24), -40, 1); }},
    {"near decimal ties (k + 1/2) 1e-6", [](Rng& g) { return nudge(g, sign(g) * (below(g, 1 << 30) + 0.5) * 1e-6); }},
};

const double kSpecials[] = {NAN, -NAN, INFINITY, -INFINITY, 0.0, -0.0, DBL_MAX, -DBL_MAX, DBL_MIN, -DBL_MIN,
                            DBL_TRUE_MIN, -DBL_TRUE_MIN, 0.0000005, -0.0000005, 2.5e-7, 5e-7, 1.5e-6, 0.0078125,
                            -0.0234375, 0.5, 1e-6, 999999.9999995, 4503599627.370496, 1e300, -1e-300,
                            2.5e-6, -3.5e-6};  // x 10^6 rounds to a tie that the exact product is above, below

std::string printed(const char* fmt, double x) {
    char s[400];
    std::snprintf(s, sizeof s, fmt, x);
    return s;
}

bool sameCube(double x) { return bitsOf(vekta::cube(x)) == bitsOf(std::pow(x, 3.0)); }

bool samePrint(double x) {
    char f[vekta::kMaxNumberText], e[vekta::kMaxNumberText];
    return std::string(f, static_cast<std::size_t>(vekta::formatFixed(f, x))) == printed("%f", x) &&
           std::string(e, static_cast<std::size_t>(vekta::formatExp(e, x))) == printed("%e", x);
}

// Every value drawn from the family, and every special, passes `same`.
void expectSame(const Family& f, long count, bool (*same)(double)) {
    Rng g(0xc0be);
    long differ = 0;
    double first = 0.0;
    for (long i = 0; i < count; ++i) {
        const double x = f.draw(g);
        if (!same(x) && differ++ == 0) first = x;
    }
    EXPECT_EQ(differ, 0) << f.name << ", first at x = " << printed("%a", first);
    for (double x : kSpecials) EXPECT_TRUE(same(x)) << printed("%a", x);
}

TEST(NumericsEquivalence, CubeIsPowToTheBit) {
    for (const Family& f : kCubeFamilies) expectSame(f, 5 * kPerFamily, sameCube);
}

TEST(NumericsEquivalence, ConversionsPrintWhatPrintfPrints) {
    for (const Family& f : kTextFamilies) expectSame(f, kPerFamily / 4, samePrint);
    Rng g(0x1d);
    for (long i = 0; i < kPerFamily; ++i) {
        const int edges[] = {0, -1, 1, INT_MIN, INT_MAX};
        const int n = i < 5 ? edges[i] : static_cast<int>(static_cast<std::uint32_t>(g()) >> below(g, 32));
        char s[vekta::kMaxNumberText], p[16];
        std::snprintf(p, sizeof p, "%d", n);
        ASSERT_EQ(std::string(s, static_cast<std::size_t>(vekta::formatInt(s, n))), p);
    }
}

}  // namespace
