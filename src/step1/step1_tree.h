// The step-1 decision tree: classifies an axis state into the step-1 profile
// id of its minimum-time motion, preparing the state on the way (mirroring,
// acceleration clip and release, over-speed correction, snapshot).
#ifndef VEKTA_STEP1_STEP1_TREE_H
#define VEKTA_STEP1_STEP1_TREE_H

#include "records/decision_tree.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

constexpr int kStep1TreeNodeCount = 54;

// The 54-node tree: node 1 is the root, node 9 takes the snapshot. Leaves set
// step1Profile to 2..18 or 20; it stays 0 when node 23's trial fails.
extern const DecisionTree Step1Tree;

// Node 5: for an axis moving faster than -V in the working frame, append the
// minimum-time pulse (triangle or trapezoid) that brings its velocity to -V,
// and continue from the pulse's end at rest acceleration. Always true. It
// uses tgtVel as scratch and leaves it 0 (position mode).
bool overspeedPulse(PlannerState& st, AxisPlan& rec);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
