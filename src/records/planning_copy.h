// The planning core is compiled twice where the processor family allows it:
// once for every processor of the family and once for processors with the
// fused multiply-add instruction (see numeric/numerics.h for the one place it
// is used and why the bits are the same). The records (this folder) are
// defined once, in namespace vekta, and both compilations take them; all code
// lives in vekta::VEKTA_COPY, an inline namespace named `base` or `fma`, so
// that no function of one compilation can stand in for the other's.
#ifndef VEKTA_RECORDS_PLANNING_COPY_H
#define VEKTA_RECORDS_PLANNING_COPY_H

#ifndef VEKTA_COPY
#define VEKTA_COPY base
#endif

namespace vekta {
inline namespace VEKTA_COPY {}
}  // namespace vekta

#endif
