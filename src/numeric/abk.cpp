#include "numeric/abk.h"

namespace vekta {

bool abkSolve(AxisPlan& rec, Step2Residual residual, double* out, double lo, double hi) {
    return abkSolveWith(rec, [&rec, residual](double x) { return residual(rec, &x); }, out, lo, hi);
}

}  // namespace vekta
