// The node tests of the step-2 tree, shared between the files that define
// them and the one that lists them in the tree's table (step2_tree.cpp).
// Node n's test is nodeN; a node that repeats another one has no function of
// its own, the table gives it the other's.
#ifndef VEKTA_STEP2_STEP2_NODES_H
#define VEKTA_STEP2_STEP2_NODES_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {
namespace step2 {

// The target velocity at or above the one left once a0 is ramped to zero
// (node 9 true): step2_rising_nodes.cpp.
bool node10(PlannerState& st, AxisPlan& rec);
bool node11(PlannerState& st, AxisPlan& rec);
bool node12(PlannerState& st, AxisPlan& rec);
bool node13(PlannerState& st, AxisPlan& rec);
bool node14(PlannerState& st, AxisPlan& rec);
bool node15(PlannerState& st, AxisPlan& rec);
bool node16(PlannerState& st, AxisPlan& rec);
bool node17(PlannerState& st, AxisPlan& rec);
bool node18(PlannerState& st, AxisPlan& rec);
bool node19(PlannerState& st, AxisPlan& rec);
bool node20(PlannerState& st, AxisPlan& rec);
bool node21(PlannerState& st, AxisPlan& rec);
bool node24(PlannerState& st, AxisPlan& rec);
bool node26(PlannerState& st, AxisPlan& rec);
bool node27(PlannerState& st, AxisPlan& rec);
bool node28(PlannerState& st, AxisPlan& rec);
bool node29(PlannerState& st, AxisPlan& rec);
bool node30(PlannerState& st, AxisPlan& rec);
bool node31(PlannerState& st, AxisPlan& rec);
bool node32(PlannerState& st, AxisPlan& rec);
bool node33(PlannerState& st, AxisPlan& rec);
bool node34(PlannerState& st, AxisPlan& rec);
bool node36(PlannerState& st, AxisPlan& rec);
bool node37(PlannerState& st, AxisPlan& rec);
bool node38(PlannerState& st, AxisPlan& rec);
bool node41(PlannerState& st, AxisPlan& rec);
bool node42(PlannerState& st, AxisPlan& rec);
bool node43(PlannerState& st, AxisPlan& rec);
bool node44(PlannerState& st, AxisPlan& rec);
bool node46(PlannerState& st, AxisPlan& rec);
bool node47(PlannerState& st, AxisPlan& rec);
bool node48(PlannerState& st, AxisPlan& rec);
bool node49(PlannerState& st, AxisPlan& rec);
bool node50(PlannerState& st, AxisPlan& rec);
bool node84(PlannerState& st, AxisPlan& rec);
bool node85(PlannerState& st, AxisPlan& rec);
bool node86(PlannerState& st, AxisPlan& rec);
bool node87(PlannerState& st, AxisPlan& rec);
bool node88(PlannerState& st, AxisPlan& rec);
bool node89(PlannerState& st, AxisPlan& rec);
bool node90(PlannerState& st, AxisPlan& rec);
bool node91(PlannerState& st, AxisPlan& rec);
bool node95(PlannerState& st, AxisPlan& rec);
bool node97(PlannerState& st, AxisPlan& rec);

// The velocity has to come down (node 9 false): step2_falling_nodes.cpp.
bool node51(PlannerState& st, AxisPlan& rec);
bool node52(PlannerState& st, AxisPlan& rec);
bool node53(PlannerState& st, AxisPlan& rec);
bool node54(PlannerState& st, AxisPlan& rec);
bool node55(PlannerState& st, AxisPlan& rec);
bool node56(PlannerState& st, AxisPlan& rec);
bool node57(PlannerState& st, AxisPlan& rec);
bool node58(PlannerState& st, AxisPlan& rec);
bool node59(PlannerState& st, AxisPlan& rec);
bool node60(PlannerState& st, AxisPlan& rec);
bool node61(PlannerState& st, AxisPlan& rec);
bool node62(PlannerState& st, AxisPlan& rec);
bool node63(PlannerState& st, AxisPlan& rec);
bool node64(PlannerState& st, AxisPlan& rec);
bool node66(PlannerState& st, AxisPlan& rec);
bool node67(PlannerState& st, AxisPlan& rec);
bool node68(PlannerState& st, AxisPlan& rec);
bool node69(PlannerState& st, AxisPlan& rec);
bool node73(PlannerState& st, AxisPlan& rec);
bool node74(PlannerState& st, AxisPlan& rec);
bool node75(PlannerState& st, AxisPlan& rec);
bool node76(PlannerState& st, AxisPlan& rec);
bool node77(PlannerState& st, AxisPlan& rec);
bool node78(PlannerState& st, AxisPlan& rec);
bool node79(PlannerState& st, AxisPlan& rec);
bool node80(PlannerState& st, AxisPlan& rec);
bool node81(PlannerState& st, AxisPlan& rec);
bool node82(PlannerState& st, AxisPlan& rec);
bool node83(PlannerState& st, AxisPlan& rec);

}  // namespace step2
}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
