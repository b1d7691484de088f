// The planning core is compiled twice where the processor family allows it:
// once for every processor of the family and once for processors with the
// fused multiply-add instruction (see numeric/numerics.h for the one place it
// is used and why the bits are the same). The records (this folder) are
// defined once, in namespace vekta, and both compilations take them; all code
// lives in vekta::VEKTA_COPY, an inline namespace named `base`, or `fma` where
// VEKTA_COPY_FMA is defined, so that no function of one compilation can stand
// in for the other's.
#ifndef VEKTA_RECORDS_PLANNING_COPY_H
#define VEKTA_RECORDS_PLANNING_COPY_H

#if defined(VEKTA_COPY_FMA)
#define VEKTA_COPY fma
#else
#define VEKTA_COPY base
#endif

namespace vekta {
inline namespace VEKTA_COPY {}
}  // namespace vekta

#endif
