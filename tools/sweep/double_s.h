// The reference for minimum-time checks: the duration of the time-optimal
// rest-to-rest move (the classic seven-section double-S), in closed form.
#ifndef VEKTA_TOOLS_DOUBLE_S_H
#define VEKTA_TOOLS_DOUBLE_S_H

#include <cmath>

namespace vekta::sweep {

// Duration over distance > 0 with limits V, A, J: cruise or not, acceleration
// limit reached or not.
inline double doubleSDuration(double distance, double V, double A, double J) {
    // Time to go from rest to velocity w and back to zero acceleration: a
    // trapezoid pulse when w >= A^2/J, a triangle otherwise.
    auto rampTime = [&](double w) { return w >= A * A / J ? w / A + A / J : 2.0 * std::sqrt(w / J); };
    const double tV = rampTime(V);
    if (distance >= V * tV) return tV + distance / V;  // reaches V and cruises
    // No cruise: the peak velocity w satisfies distance = w * rampTime(w).
    if (distance <= 2.0 * A * A * A / (J * J)) return 4.0 * std::cbrt(distance / (2.0 * J));
    const double w = (-A / J + std::sqrt(A * A / (J * J) + 4.0 * distance / A)) * A / 2.0;
    return 2.0 * (w / A + A / J);
}

}  // namespace vekta::sweep

#endif
