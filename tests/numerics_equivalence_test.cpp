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
#include <cstring>
#include <string>

#include "state/numerics.h"
#include "state/text_output.h"

namespace {

// Values per family: millions in an optimised build, fewer under the sanitizers.
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
constexpr long kPerFamily = 200000;
#else
constexpr long kPerFamily = 2000000;
#endif

struct Rng {
    std::uint64_t s;
    std::uint64_t next() {  // splitmix64
        std::uint64_t z = (s += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
    double sign() { return next() & 1 ? -1.0 : 1.0; }
    double unit() { return 1.0 + static_cast<double>(next() >> 12) * 0x1p-52; }  // [1, 2)
};

double fromBits(std::uint64_t b) { double x; std::memcpy(&x, &b, sizeof x); return x; }
std::uint64_t bitsOf(double x) { std::uint64_t b; std::memcpy(&b, &x, sizeof b); return b; }
double nudge(Rng& g, double x) { return fromBits(bitsOf(x) + static_cast<std::uint64_t>(g.below(5)) - 2); }

struct Family {
    const char* name;
    double (*draw)(Rng&);
};

const Family kCubeFamilies[] = {
    {"any bit pattern", [](Rng& g) { return fromBits(g.next()); }},
    {"[1,2) times 2^-345..2^345", [](Rng& g) { return g.sign() * std::ldexp(g.unit(), g.below(691) - 345); }},
    {"integers and neighbours", [](Rng& g) { return nudge(g, static_cast<double>(g.below(1 << 22))); }},
    {"powers of two and neighbours", [](Rng& g) { return nudge(g, g.sign() * std::ldexp(1.0, g.below(2200) - 1100)); }},
    // 17 to 19 significant bits: the cube needs 51 to 57, so it lies on a
    // rounding midpoint or a few units of 2^-57 from one; nudged, just off it.
    {"cubes on and near midpoints", [](Rng& g) {
         const double k = static_cast<double>((1 << 16) + g.below(3 << 17)) * 2.0 + 1.0;
         return g.below(2) ? std::ldexp(k, g.below(200) - 110) : nudge(g, std::ldexp(k, g.below(200) - 110));
     }},
    {"cube roots of midpoints", [](Rng& g) {
         const long double midpoint = static_cast<long double>(g.unit()) + 0x1p-53L;
         return nudge(g, static_cast<double>(std::cbrt(std::ldexp(midpoint, 3 * g.below(200) - 300))));
     }},
};

const Family kTextFamilies[] = {
    {"any bit pattern", [](Rng& g) { return fromBits(g.next()); }},
    {"1e-9..1e12", [](Rng& g) { return g.sign() * g.unit() * std::pow(10.0, g.below(22) - 9); }},
    {"near the fast path's limit 2^52/1e6", [](Rng& g) { return g.sign() * nudge(g, 0x1p52 / 1e6 * (0.5 + g.below(3) * 0.5)); }},
    // An odd multiple of 2^-7 lies exactly halfway between two printed values.
    {"ties: odd multiples of 2^-7", [](Rng& g) { return g.sign() * static_cast<double>(g.next() >> 25 | 1) / 128.0; }},
    {"dyadic k/2^n", [](Rng& g) { return g.sign() * std::ldexp(static_cast<double>(g.next() >> 24), -g.below(40)); }},
    {"near decimal ties (k + 1/2) 1e-6", [](Rng& g) { return nudge(g, g.sign() * (g.below(1 << 30) + 0.5) * 1e-6); }},
};

const double kSpecials[] = {NAN, -NAN, INFINITY, -INFINITY, 0.0, -0.0, DBL_MAX, -DBL_MAX, DBL_MIN, -DBL_MIN,
                            DBL_TRUE_MIN, -DBL_TRUE_MIN, 0.0000005, -0.0000005, 2.5e-7, 5e-7, 1.5e-6, 0.0078125,
                            -0.0234375, 0.5, 1e-6, 999999.9999995, 4503599627.370496, 1e300, -1e-300};

std::string printed(const char* fmt, double x) {
    char s[400];
    std::snprintf(s, sizeof s, fmt, x);
    return s;
}

std::string ours(int (*format)(char*, double), double x) {
    char s[vekta::kMaxNumberText];
    return std::string(s, static_cast<std::size_t>(format(s, x)));
}

TEST(NumericsEquivalence, CubeIsPowToTheBit) {
    for (const Family& f : kCubeFamilies) {
        Rng g{0xc0be};
        long differ = 0;
        double first = 0.0;
        for (long i = 0; i < 5 * kPerFamily; ++i) {
            const double x = f.draw(g);
            if (bitsOf(vekta::cube(x)) != bitsOf(std::pow(x, 3.0)) && differ++ == 0) first = x;
        }
        EXPECT_EQ(differ, 0) << f.name << ", first at x = " << printed("%a", first);
    }
    for (double x : kSpecials) EXPECT_EQ(bitsOf(vekta::cube(x)), bitsOf(std::pow(x, 3.0))) << printed("%a", x);
}

TEST(NumericsEquivalence, ConversionsPrintWhatPrintfPrints) {
    const auto check = [](double x) {
        return ours(vekta::formatFixed, x) == printed("%f", x) && ours(vekta::formatExp, x) == printed("%e", x);
    };
    for (double x : kSpecials) EXPECT_TRUE(check(x)) << printed("%a", x) << " " << printed("%f", x);
    for (const Family& f : kTextFamilies) {
        Rng g{0x7e47};
        long differ = 0;
        double first = 0.0;
        for (long i = 0; i < kPerFamily / 4; ++i) {
            const double x = f.draw(g);
            if (!check(x) && differ++ == 0) first = x;
        }
        EXPECT_EQ(differ, 0) << f.name << ", first at x = " << printed("%a", first);
    }
    const int edges[] = {0, -1, 1, INT_MIN, INT_MAX};
    Rng g{0x1d};
    for (long i = 0; i < kPerFamily; ++i) {
        const int n = i < 5 ? edges[i] : static_cast<int>(static_cast<std::uint32_t>(g.next()) >> g.below(32));
        char s[vekta::kMaxNumberText], p[16];
        std::snprintf(p, sizeof p, "%d", n);
        ASSERT_EQ(std::string(s, static_cast<std::size_t>(vekta::formatInt(s, n))), p);
    }
}

}  // namespace
