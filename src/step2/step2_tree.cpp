// The step-2 decision tree.
//
// Every axis but the slowest must arrive at its target exactly at the common
// end time, i.e. in the remaining time T rather than as early as it can. The
// tree picks the shape that does so by three kinds of test:
//   - velocity tests: is the target velocity above the one a given pulse
//     reaches (which way, and how far, the velocity has to move);
//   - time tests: does a limiting shape already need T or more;
//   - end-position tests: build a candidate shape that fills T exactly,
//     integrate it section by section (constant jerk per section) and compare
//     where it ends with the target position.
// The shapes are written in step2_shapes.h; the nodes of a rising velocity
// live in step2_rising_nodes.cpp, those of a falling one in
// step2_falling_nodes.cpp. This file has node 5, the fork at node 9 and the
// table that links them all.
//
// Nodes 1..8 (the normalisation prologue, shared with the step-1 tree and
// held by the tree engine, all but node 5) are only reachable from node 1;
// the step-2 walk enters at node 9.
#include "step2/step2_tree.h"

#include "step2/step2_nodes.h"
#include "step2/step2_shapes.h"

namespace vekta {
inline namespace VEKTA_COPY {
namespace step2 {

namespace {

bool alwaysTrue(PlannerState&, AxisPlan&) { return true; }

// The velocity reached when the acceleration is raised from a0 to A stays
// above -V.
bool node5(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return (k.A * k.A - k.a0 * k.a0) / (2.0 * k.J) + k.v0 > -rec.maxVel;
}

// The target velocity is at or above the one left after ramping a0 to zero.
bool node9(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.vZ;
}

// Node n at row n: its test, then the node after a true and after a false
// result (0 stops the walk). A node that repeats another one shares its test.
const TreeRow kStep2Rows[kStep2NodeCount] = {
    {alwaysTrue, 0, 0},       // 0
    kNoRow,                   // 1 prologue, the tree engine's row
    kNoRow,                   // 2 prologue, the tree engine's row
    kNoRow,                   // 3 prologue, the tree engine's row
    kNoRow,                   // 4 prologue, the tree engine's row
    {node5, 6, 7},            // 5
    kNoRow,                   // 6 prologue, the tree engine's row
    kNoRow,                   // 7 prologue, the tree engine's row
    kNoRow,                   // 8 prologue, the tree engine's row
    {node9, 10, 51},          // 9
    {node10, 11, 12},         // 10
    {node11, 13, 14},         // 11
    {node12, 16, 88},         // 12
    {node13, 0, 15},          // 13
    {node14, 18, 19},         // 14
    {node15, 0, 0},           // 15
    {node16, 0, 17},          // 16
    {node17, 13, 0},          // 17
    {node18, 40, 20},         // 18
    {node19, 25, 21},         // 19
    {node20, 27, 86},         // 20
    {node21, 23, 84},         // 21
    {alwaysTrue, 0, 0},       // 22
    {node34, 0, 24},          // 23
    {node24, 0, 38},          // 24
    {node29, 40, 26},         // 25
    {node26, 0, 41},          // 26
    {node27, 28, 29},         // 27
    {node28, 30, 32},         // 28
    {node29, 40, 34},         // 29
    {node30, 0, 31},          // 30
    {node31, 41, 0},          // 31
    {node32, 33, 0},          // 32
    {node33, 0, 0},           // 33
    {node34, 0, 36},          // 34
    {alwaysTrue, 0, 0},       // 35
    {node36, 37, 0},          // 36
    {node37, 38, 0},          // 37
    {node38, 41, 0},          // 38
    {alwaysTrue, 0, 0},       // 39
    {node30, 0, 41},          // 40
    {node41, 42, 43},         // 41
    {node42, 44, 46},         // 42
    {node43, 44, 47},         // 43
    {node44, 0, 0},           // 44
    {alwaysTrue, 0, 0},       // 45
    {node46, 0, 0},           // 46
    {node47, 48, 49},         // 47
    {node48, 0, 46},          // 48
    {node49, 50, 0},          // 49
    {node50, 0, 0},           // 50
    {node51, 57, 52},         // 51
    {node52, 80, 53},         // 52
    {node53, 54, 82},         // 53
    {node54, 55, 65},         // 54
    {node55, 56, 60},         // 55
    {node56, 0, 59},          // 56
    {node57, 76, 58},         // 57
    {node58, 62, 75},         // 58
    {node59, 72, 0},          // 59
    {node60, 61, 0},          // 60
    {node61, 0, 0},           // 61
    {node62, 63, 0},          // 62
    {node63, 64, 0},          // 63
    {node64, 0, 0},           // 64
    {node67, 67, 66},         // 65
    {node66, 0, 67},          // 66
    {node67, 68, 69},         // 67
    {node68, 0, 72},          // 68
    {node69, 70, 0},          // 69
    {node62, 71, 0},          // 70
    {node63, 72, 0},          // 71
    {node64, 73, 74},         // 72
    {node73, 0, 0},           // 73
    {node74, 0, 0},           // 74
    {node75, 16, 78},         // 75
    {node76, 0, 77},          // 76
    {node77, 80, 0},          // 77
    {node78, 0, 79},          // 78
    {node79, 82, 0},          // 79
    {node80, 0, 81},          // 80
    {node81, 0, 0},           // 81
    {node82, 0, 83},          // 82
    {node83, 0, 0},           // 83
    {node84, 0, 85},          // 84
    {node85, 86, 0},          // 85
    {node86, 0, 87},          // 86
    {node87, 0, 0},           // 87
    {node88, 89, 90},         // 88
    {node89, 94, 0},          // 89
    {node90, 91, 84},         // 90
    {node91, 0, 92},          // 91
    {node37, 93, 0},          // 92
    {node38, 94, 0},          // 93
    {node41, 96, 95},         // 94
    {node95, 0, 97},          // 95
    {node42, 0, 0},           // 96
    {node97, 0, 0},           // 97
};

}  // namespace
}  // namespace step2

const DecisionTree Step2Tree = {step2::kStep2Rows, kStep2NodeCount};

const char* const step2ProfileNames[kStep2ProfileCount] = {
    "Step2_PosTrapZeroNegTri",  "Step2_NegTrapZeroPosTri",  "Step2_PosTriZeroNegTri",
    "Step2_NegTriZeroPosTri",   "Step2_PosTrapZeroNegTrap", "Step2_NegTrapZeroPosTrap",
    "Step2_PosTriZeroNegTrap",  "Step2_NegTriZeroPosTrap",  "Step2_PosTrapZeroPosTri",
    "Step2_NegTrapZeroNegTri",  "Step2_PosTriZeroPosTri",   "Step2_NegTriZeroNegTri",
    "Step2_PosTriZeroPosTrap",  "Step2_NegTriZeroNegTrap",  "Step2_PosTrapZeroPosTrap",
    "Step2_NegTrapZeroNegTrap", "Step2_PosTrapHldNegLin",   "Step2_NegTrapHldPosLin",
    "Step2_PosTriHldNegLin",    "Step2_NegTriHldPosLin",    "Step2_NegLinHldPosTrap",
    "Step2_PosLinHldNegTrap",   "Step2_NegLinHldPosTri",    "Step2_PosLinHldNegTri",
    "Step2_PosLinHldPosTri",    "Step2_NegLinHldNegTri",    "Step2_PosLinHldPosTrap",
    "Step2_NegLinHldNegTrap",
};

}  // namespace VEKTA_COPY
}  // namespace vekta
