// The step-2 decision tree: classifies an axis that must arrive exactly at the
// common end time into one of the 28 synchronised profiles, and leaves the
// bracket bounds and seeds its solver starts from.
#ifndef VEKTA_STEP2_STEP2_TREE_H
#define VEKTA_STEP2_STEP2_TREE_H

#include "records/decision_tree.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

constexpr int kStep2NodeCount = 98;

// Rows 0..97, one per node; walked from node 9 by walkStep2.
// Sets step2Profile (0..27, or 28 for no fitting profile), the step-2 hints of
// the planner state, and on some branches appends a ramp of the acceleration
// to zero before the walk goes on.
extern const DecisionTree Step2Tree;

// Printable names of the step-2 profiles; the Pos-first form at an even index,
// its Neg-first mirror image right after it.
extern const char* const step2ProfileNames[kStep2ProfileCount];

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
