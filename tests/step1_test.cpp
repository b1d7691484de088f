// Step 1, the minimum-time motion of one axis: the tree's classification and
// the solver's curve, proved on the curve written.
//
// Every row is a motion chosen for the shape it calls for (a long rest-to-rest
// move, a short one, a braking start, an over-speed start ...). It is planned
// by the planning pass as a single axis with the trace on; the trace gives the
// nodes the walk visited and the id it chose. The curve must then be physical
// (every section, integrated with its implied jerk, meets the next point; the
// limits hold, widened only to what a start beyond them forces), end on the
// target at rest, and for a rest-to-rest move last exactly the double-S
// optimum. The mirror image of a moving row must give the mirror image of its
// curve.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "numeric/axis_curve.h"
#include "planner/planning_pass.h"
#include "step1/step1_solvers.h"
#include "step1/step1_tree.h"
#include "engine/prologue_nodes.h"
#include "support/test_support.h"

namespace vekta::test {
namespace {

struct Row {
    const char* what;
    double V, A, J, p, v, a, pt;
    int id;            // the walk's leaf, in its working frame
    const char* path;  // the nodes it visited
};

constexpr double kFastV = 2.0;  // with A = J = 1: A^2/J < V, trapezoids and cruise
constexpr double kSlowV = 0.8;  // A^2/J > V: a rest start reaches V with a triangle

const Row kRows[] = {
    {"long rest to rest: trapezoids, cruise", kFastV, 1, 1, 0, 0, 0, 10, 6, "1 2 3 4 9 10 29 30 21 12 14 15"},
    {"long rest-to-rest move backwards", kFastV, 1, 1, 0, 0, 0, -10, 7, "1 2 3 4 9 10 29 33 24 25 19 20"},
    {"A but not V", kFastV, 1, 1, 0, 0, 0, 2, 12, "1 2 3 4 9 10 29 30 21 12 14 15"},
    {"A but not V, backwards", kFastV, 1, 1, 0, 0, 0, -2, 13, "1 2 3 4 9 10 29 33 24 25 19 20"},
    {"short, peaks below A", kFastV, 1, 1, 0, 0, 0, 0.1, 16, "1 2 3 4 9 10 29 30 21"},
    {"short, backwards", kFastV, 1, 1, 0, 0, 0, -0.1, 17, "1 2 3 4 9 10 29 33 24 25"},
    {"low V: triangles and a cruise", kSlowV, 1, 1, 0, 0, 0, 2, 4, "1 2 3 4 9 10 29 30 32"},
    {"V exactly a full pulse's gain A^2/J", 1, 1, 1, 0, 0, 0, 3, 2, "1 2 3 4 9 10 29 30 21 12 13"},
    {"low V, backwards", kSlowV, 1, 1, 0, 0, 0, -2, 5, "1 2 3 4 9 10 29 33 24 26 27"},
    {"low V, short", kSlowV, 1, 1, 0, 0, 0, 0.1, 16, "1 2 3 4 9 10 29 30 32"},
    {"braking backwards, target far", kSlowV, 1, 1, 0, -0.5, 1, 2, 2, "1 2 3 4 9 10 11 12 13"},
    {"braking backwards, target near", kSlowV, 1, 1, 0, -0.5, 1, 0.1, 10, "1 2 3 4 9 10 11 12 13"},
    {"braking backwards, high V, near", kFastV, 1, 1, 0, -0.5, 1, 0.1, 10, "1 2 3 4 9 10 11 12 14"},
    {"accelerating, target far behind", kSlowV, 1, 1, 0, 0, 1, -2, 3, "1 2 3 4 9 34 35 43 44 45 46"},
    {"moving, target just behind", kFastV, 1, 1, 0, 1, 0.5, 0.1, 11, "1 2 3 4 9 34 48 45 47"},
    {"below V, target far ahead", kFastV, 1, 1, 0, 1.5, 0, 10, 8, "1 2 3 4 9 34 48 49 42"},
    {"below V, target nearer", kFastV, 1, 1, 0, 1.5, 0, 2, 14, "1 2 3 4 9 34 48 49 42"},
    {"accelerating, target ahead", kFastV, 1, 1, 0, 1, 0.5, 2, 14, "1 2 3 4 9 34 48 49 39"},
    {"backwards fast, target far behind", kFastV, 1, 1, 0, -1.5, 0, -10, 9, "1 2 3 4 9 10 11 16 17 18 31"},
    {"backwards, target behind", kFastV, 1, 1, 0, -1, 0, -2, 15, "1 2 3 4 9 10 11 16 17 18 19"},
    {"braking past the release-then-brake stop", kFastV, 1, 1, 0, -0.5, 0.5, -0.3, 18, "1 2 3 4 9 10 29 33"},
    {"braking hard, short of that stop", kFastV, 1, 1, 0, -1.5, 0.5, -2, 20, "1 2 3 4 9 10 11 16 17"},
    {"a < 0: mirrored first", kFastV, 1, 1, 0, 0, -0.5, -10, 6, "1 2 3 4 9 34 35 36 30 21 12 14 15"},
    {"a > A: clipped first", kFastV, 1, 1, 0, 0, 1.5, 10, 6, "1 2 3 4 9 34 48 49 39 15"},
    {"over-speed once released", 1, 1, 1, 0, 1, 0.5, 5, 9, "1 2 3 5 9 10 11 16 17 18 31"},
    {"faster than V backwards: pulse", 1, 1, 1, 0, -1.5, 0, 0.1, 2, "1 2 3 4 5 9 10 11 12 13"},
    {"far beyond -V: trapezoid pulse", 2, 1, 1, 0, -4, 0, 1, 6, "1 2 3 4 5 9 10 11 12 14 15"},
    {"an arm's limits, long move", 1.2, 6, 60, 0.3, 0, 0, -2.7, 7, "1 2 3 4 9 10 29 33 24 25 19 20"},
};

// Plans rec alone with the trace on; returns the trace.
std::string planTraced(AxisPlan& rec, bool* ok) {
    auto st = freshState();
    st->axisCount = 1;
    st->traceOn = true;
    st->records[0] = rec;
    StdoutCapture out;
    *ok = planAxes(*st, true);
    rec = st->records[0];
    return out.text();
}

// "step1 start: idx(pt inv) 1(10.000000 1) \t2(...) \t... tp 5": the nodes and the id.
std::string visited(const std::string& trace, int* id) {
    std::istringstream in(trace.substr(trace.find("inv) ") + 5));
    std::string path, tok;
    while (in >> tok && tok != "tp") {
        if (tok.find('(') != std::string::npos) path += (path.empty() ? "" : " ") + tok.substr(0, tok.find('('));
    }
    in >> *id;
    *id += 1;
    return path;
}

TEST(Step1, EveryLeafPlansAPhysicalMinimumTimeCurve) {
    bool produced[22] = {};
    for (const Row& c : kRows) {
        SCOPED_TRACE(c.what);
        AxisPlan rec = makeAxis(c.p, c.v, c.a, c.pt, c.V, c.A, c.J);
        int id = 0;
        bool ok = false;
        EXPECT_EQ(visited(planTraced(rec, &ok), &id), c.path);
        EXPECT_EQ(id, c.id);
        produced[id] = true;
        // From node 33 the id-18 solver searches its peak in a bracket that
        // misses it: the motion is refused.
        EXPECT_EQ(ok, id != 18);
        if (!ok) continue;

        // A start beyond a limit may pass it until it is brought back; shapes
        // found by the root finder meet their points to its tolerance.
        const CurveReport r = expectPhysicalCurve(widened(rec, c.v, c.a), true, {id >= 10 ? 1e-6 : 1e-9, 1e-9});
        EXPECT_LE(r.maxAccJump, 1e-12);
        expectEndsAt(rec, r.endTime, c.pt, 0.0);
        if (c.v == 0.0 && c.a == 0.0) {
            EXPECT_NEAR(r.endTime, doubleSDuration(std::fabs(c.pt - c.p), c.V, c.A, c.J), 1e-9);
        }

        // The mirror image plans the mirror image (with a = 0 neither state is mirrored first).
        if (c.a == 0.0) continue;
        AxisPlan mir = makeAxis(-c.p, -c.v, -c.a, -c.pt, c.V, c.A, c.J);
        planTraced(mir, &ok);
        ASSERT_EQ(mir.pointCount, rec.pointCount);
        for (int k = 0; k < rec.pointCount; ++k) {
            EXPECT_TRUE(mir.secTime[k] == rec.secTime[k] && mir.secAcc[k] == -rec.secAcc[k] &&
                        std::fabs(mir.secPos[k] + rec.secPos[k]) <= 1e-12 &&
                        std::fabs(mir.secVel[k] + rec.secVel[k]) <= 1e-12)
                << k;
        }
    }
    // The leaves assign 2..18 and 20; 19 and 21 arise only from a mirrored frame.
    for (int id = 2; id <= 20; ++id) EXPECT_EQ(produced[id], id != 19) << "id " << id;
}

// The solvers on their own, from states that lie inside each shape's region
// and towards moving targets (the targets and durations are those of the
// intended shapes, built independently), also after earlier points and
// mirrored.
struct SolverRow {
    int id;
    double p, v, a, V, A, J, vt, target, duration;
    const char* what;
};

const SolverRow kSolverRows[] = {
    {2, 1, 0.5, 2.5, 2, 4, 40, 1.7, 4, 1.659595809116662, "PTZNt accelerating to a moving target"},
    {2, 0, -0.5, 0.5, 1, 1.5, 3, 0.5, 6, 7.1271565526393381, "PTZNt slow limits"},
    {4, 0, 1.8, -1, 2, 4, 40, 1.9, 2.5, 1.2628483996520081, "PtZNt decelerating"},
    {4, 0, 0.6, 0.8, 1, 1.5, 3, 0.4, 4, 4.3509187339928523, "PtZNt slow limits"},
    {6, -1, 0.5, 3, 2, 4, 40, -1, 6, 4.2812597656250002, "PTZNT accelerating to reverse"},
    {6, 0, 0.1, 1.2, 1, 1.5, 3, -0.5, 8, 9.4192, "PTZNT slow limits"},
    {8, 0, 1.8, 2, 2, 4, 40, -0.5, 4, 2.4571737843546928, "PtZNT accelerating to reverse"},
    {8, 3, 1.8, -1, 2, 4, 40, 1, 6, 1.5978483996520083, "PtZNT decelerating"},
    {10, 0.2, -0.5, 1, 3, 2, 10, 0, 0.20286180408543805, 0.816227766016838, "PTNt backing up"},
    {10, -3, 0, 1.5, 3, 2, 10, 0, -2.8720600582314559, 0.65541573867739411, "PTNt accelerating"},
    {10, 0, -0.2, 1, 0.3, 2, 10, 0, 0.077161294819241596, 0.69966401061363026, "PTNt near V"},
    {10, 0, 0.2, 0.4, 3, 2, 10, 0.5, 0.45899039011233833, 0.8017601498127013, "PTNt to a moving target"},
    {12, 5, 0.3, 1, 2, 2, 10, 0, 5.9427083333333339, 1.3749999999999998, "PTNT moving"},
    {12, 0, 0.2, 0.4, 2, 2, 10, 0.3, 0.83469733333333351, 1.214, "PTNT to a moving target"},
    {14, 2, 1, 0.5, 1.2, 2, 10, 0, 2.6791597291666664, 0.98825000000000007, "PtNT under V"},
    {14, -7, 1, 0, 3, 2, 10, 0, -6.4124697500000005, 0.92049999999999987, "PtNT at zero acc"},
    {16, 0, -0.3, 0.8, 3, 2, 10, 0, -0.030301635539264335, 0.40770329614269013, "PtNt a > 0 slower than vt"},
    {16, 1, 0.3, -0.5, 3, 2, 10, 0, 1.1094283854300704, 0.52972211497209898, "PtNt a < 0 fast"},
    {16, 1, -0.2, -0.3, 3, 2, 10, 0, 0.98127756799133414, 0.55384776310850226, "PtNt a < 0 backing up"},
    {18, 0, 0.4125, -1.5, 3, 2, 10, 0, 0.0821583887174345, 0.42552777669262359, "PLNt"},
    {18, 3, 0.4125, -1.5, 3, 2, 10, 0, 3.0621441472997026, 0.35509492530276821, "PLNt near its lower end"},
    {18, -1, 0.4, -1, 3, 2, 10, 0, -0.91658254312916121, 0.41894590642992829, "PLNt mild deceleration"},
    {20, 0, 1, -1, 3, 2, 10, 0, 0.33557291666666655, 0.6875, "PLNT"},
    {20, -2, 1.5, -1.8, 3, 2, 10, 0, -1.423951, 0.85699999999999998, "PLNT deep"},
};

TEST(Step1, SolversReachTheirTargetFromAnyStartAndMirrored) {
    for (const SolverRow& c : kSolverRows) {
        for (const double sign : {1.0, -1.0}) {
            for (const bool prefix : {false, true}) {
                SCOPED_TRACE(std::string(c.what) + (sign < 0 ? " mirrored" : "") + (prefix ? " after a point" : ""));
                AxisPlan rec = makeAxis(sign * c.p, sign * c.v, sign * c.a, sign * c.target, c.V, c.A, c.J);
                rec.tgtVel = sign * c.vt;
                rec.step1Profile = c.id + (sign < 0 ? 1 : 0);
                double t0 = 0.0;
                if (prefix) {  // a hold of 0.05 s at the start acceleration leads to the state
                    t0 = 0.05;
                    storePoint(rec, 1, t0, rec.curAcc, rec.curVel, rec.curPos, 1.0);
                    rec.secVel[0] = rec.curVel - rec.curAcc * t0;
                    rec.secPos[0] = rec.curPos - rec.secVel[0] * t0 - rec.curAcc * t0 * t0 / 2.0;
                    rec.pointCount = 2;
                }
                ASSERT_TRUE(runStep1Solver(rec));
                rec.pointCount += 1;  // the planner counts the last point
                // The plain end-position residual of PLNT holds the end to the root finder's 1e-5.
                const double tol = c.id == 20 ? 1e-5 : 1e-9;
                expectPhysicalCurve(rec, true, CurveTolerance{tol, 1e-9});
                expectEndsAt(rec, t0 + c.duration, sign * c.target, sign * c.vt, 10 * tol);
            }
        }
    }
    // Ids without a shape have no solver.
    for (const int id : {-1, 0, 1, 22, 1000}) EXPECT_EQ(step1DispatchFor(id), nullptr) << id;
}

// The preparing nodes on their own: what each returns and appends. Every
// appended section is physical and leaves the working state on the last point.
struct PrologueRow {
    const char* what;
    double V, A, J, v, a;
    std::vector<std::pair<NodeFn, bool>> calls;  // node and its result
    int appended;
    double endVel, endAcc;  // working frame
    int endInv;
};

const std::vector<PrologueRow> kPrologueRows = {
    {"clip an acceleration above A", 2, 1, 1, 0.3, 1.5, {{prologueNode2, false}}, 1, 0.3 + 1.5 * 0.5 - 0.125, 1, 1},
    {"mirror, then clip (points stored in the caller's frame)", 2, 1, 1, -0.3, -1.5,
     {{prologueNode1, false}, {prologueNode2, false}}, 1, 0.3 + 1.5 * 0.5 - 0.125, 1, -1},
    {"acceleration within limits is left alone", 2, 1, 1, 0.3, 0.5,
     {{prologueNode1, true}, {prologueNode2, true}, {prologueNode3, true}, {prologueNode4, true}},
     0, 0.3, 0.5, 1},
    {"release an over-speed and mirror it", 2, 1, 1, 1.8, 1, {{prologueNode3, false}}, 1, -2.3, 0, -1},
    {"release, mirror, triangle pulse back to -V", 2, 1, 1, 1.8, 1,
     {{prologueNode3, false}, {overspeedPulse, true}}, 3, -2, 0, -1},
    {"far beyond -V: trapezoid pulse", 2, 1, 1, -4, 0, {{prologueNode4, false}, {overspeedPulse, true}}, 3, -2, 0, 1},
    {"beyond -V with an acceleration: triangle pulse", 2, 1, 1, -2.5, 0.5,
     {{prologueNode4, false}, {overspeedPulse, true}}, 2, -2, 0, 1},
    // Node 6 takes one ramp while 2J(3V + v0) >= a0^2: on that boundary, and just past it.
    {"node 6: one ramp up to -V", 1.5, 4, 2, -3.5, 2, {{prologueNode6, true}}, 1, -1.5, std::sqrt(12.0), 1},
    {"node 6: the two-ramp recovery", 2, 3, 0.5, -5, 1.25, {{prologueNode6, false}}, 2, -2, 2, 1},
    {"node 7: A^2 > 4VJ appends nothing", 1, 3, 1, -3, 0, {{prologueNode7, true}}, 0, -3, 0, 1},
    {"node 7: ramp to A and hold it to -V", 1, 1, 1, -3, 0, {{prologueNode7, false}}, 2, -1, 1, 1},
    {"node 8: a full pulse overshoots V, recovery", 1, 3, 1, -4, 0, {{prologueNode8, true}}, 2, -1, 2, 1},
    {"node 8: ramp from a0 to A, hold, ramp to w (= A here)", 0.5, 2, 2, -5, 0.5, {{prologueNode8, false}}, 3,
     -0.5, 2, 1},
    {"node 8: the same ramping down to w = 2 root(V J) < A", 0.25, 2, 2, -5, 0.5, {{prologueNode8, false}}, 3, -0.25,
     std::sqrt(2.0), 1},
};

TEST(Step1, PreparingNodesAppendPhysicalSections) {
    for (const PrologueRow& c : kPrologueRows) {
        SCOPED_TRACE(c.what);
        auto st = freshState();
        AxisPlan rec = makeAxis(0, c.v, c.a, 5, c.V, c.A, c.J);
        for (const auto& [node, result] : c.calls) EXPECT_EQ(node(*st, rec), result);
        EXPECT_EQ(rec.pointCount, 1 + c.appended);
        EXPECT_NEAR(rec.curVel, c.endVel, 1e-12);
        EXPECT_NEAR(rec.curAcc, c.endAcc, 1e-12);
        EXPECT_EQ(rec.inv, c.endInv);
        const int k = rec.pointCount - 1;
        EXPECT_EQ(rec.secVel[k], rec.curVel * rec.inv);
        EXPECT_EQ(rec.secAcc[k], rec.curAcc * rec.inv);
        expectPhysicalCurve(widened(rec, c.v, c.a));  // a start beyond a limit passes it on the way back
    }
}

}  // namespace
}  // namespace vekta::test
