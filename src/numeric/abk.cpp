#include "numeric/abk.h"

namespace vekta {
inline namespace VEKTA_COPY {

bool abkSolve(AxisPlan& rec, Step2Residual residual, double* out, double lo, double hi) {
    return abkSolveWith(rec, [&rec, residual](double x) { return residual(rec, &x); }, out, lo, hi);
}

}  // namespace VEKTA_COPY
}  // namespace vekta
