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

#include "planner/planning_pass.h"
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
    {"long rest-to-rest move: trapezoids and a cruise", kFastV, 1, 1, 0, 0, 0, 10, 6, "1 2 3 4 9 10 29 30 21 12 14 15"},
    {"the same move from another start position", kFastV, 1, 1, 1, 0, 0, 11, 6, "1 2 3 4 9 10 29 30 21 12 14 15"},
    {"long rest-to-rest move backwards", kFastV, 1, 1, 0, 0, 0, -10, 7, "1 2 3 4 9 10 29 33 24 25 19 20"},
    {"rest-to-rest reaching A but not V", kFastV, 1, 1, 0, 0, 0, 2, 12, "1 2 3 4 9 10 29 30 21 12 14 15"},
    {"rest-to-rest reaching A but not V, backwards", kFastV, 1, 1, 0, 0, 0, -2, 13, "1 2 3 4 9 10 29 33 24 25 19 20"},
    {"short rest-to-rest, peaks below A", kFastV, 1, 1, 0, 0, 0, 0.1, 16, "1 2 3 4 9 10 29 30 21"},
    {"short rest-to-rest backwards", kFastV, 1, 1, 0, 0, 0, -0.1, 17, "1 2 3 4 9 10 29 33 24 25"},
    {"low V: triangles up to V and a cruise", kSlowV, 1, 1, 0, 0, 0, 2, 4, "1 2 3 4 9 10 29 30 32"},
    {"low V, backwards", kSlowV, 1, 1, 0, 0, 0, -2, 5, "1 2 3 4 9 10 29 33 24 26 27"},
    {"low V, short", kSlowV, 1, 1, 0, 0, 0, 0.1, 16, "1 2 3 4 9 10 29 30 32"},
    {"braking a backward motion, target far ahead", kSlowV, 1, 1, 0, -0.5, 1, 2, 2, "1 2 3 4 9 10 11 12 13"},
    {"braking a backward motion, target near", kSlowV, 1, 1, 0, -0.5, 1, 0.1, 10, "1 2 3 4 9 10 11 12 13"},
    {"braking a backward motion, high V, target near", kFastV, 1, 1, 0, -0.5, 1, 0.1, 10, "1 2 3 4 9 10 11 12 14"},
    {"accelerating forward, target far behind", kSlowV, 1, 1, 0, 0, 1, -2, 3, "1 2 3 4 9 34 35 43 44 45 46"},
    {"moving forward, target just behind", kFastV, 1, 1, 0, 1, 0.5, 0.1, 11, "1 2 3 4 9 34 48 45 47"},
    {"moving forward below V, target far ahead", kFastV, 1, 1, 0, 1.5, 0, 10, 8, "1 2 3 4 9 34 48 49 42"},
    {"moving forward below V, target nearer", kFastV, 1, 1, 0, 1.5, 0, 2, 14, "1 2 3 4 9 34 48 49 42"},
    {"moving forward and accelerating, target ahead", kFastV, 1, 1, 0, 1, 0.5, 2, 14, "1 2 3 4 9 34 48 49 39"},
    {"moving backward fast, target far behind", kFastV, 1, 1, 0, -1.5, 0, -10, 9, "1 2 3 4 9 10 11 16 17 18 31"},
    {"moving backward, target behind", kFastV, 1, 1, 0, -1, 0, -2, 15, "1 2 3 4 9 10 11 16 17 18 19"},
    {"braking, target past the release-then-brake stop", kFastV, 1, 1, 0, -0.5, 0.5, -0.3, 18, "1 2 3 4 9 10 29 33"},
    {"braking hard, target short of the release-then-brake stop", kFastV, 1, 1, 0, -1.5, 0.5, -2, 20,
     "1 2 3 4 9 10 11 16 17"},
    {"negative start acceleration: mirrored first", kFastV, 1, 1, 0, 0, -0.5, -10, 6, "1 2 3 4 9 34 35 36 30 21 12 14 15"},
    {"start acceleration above A: clipped first", kFastV, 1, 1, 0, 0, 1.5, 10, 6, "1 2 3 4 9 34 48 49 39 15"},
    {"over-speed once released: release, mirror, pulse", 1, 1, 1, 0, 1, 0.5, 5, 9, "1 2 3 5 9 10 11 16 17 18 31"},
    {"moving faster than V backwards: pulse", 1, 1, 1, 0, -1.5, 0, 0.1, 2, "1 2 3 4 5 9 10 11 12 13"},
    {"far beyond -V: trapezoid pulse, then a long move", 2, 1, 1, 0, -4, 0, 1, 6, "1 2 3 4 5 9 10 11 12 14 15"},
    {"the limits of a real arm, long move", 1.2, 6, 60, 0.3, 0, 0, -2.7, 7, "1 2 3 4 9 10 29 33 24 25 19 20"},
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

        // A start beyond a limit may pass it until it is brought back.
        AxisPlan wide = rec;
        wide.maxAcc = std::max(c.A, std::fabs(c.a));
        wide.maxVel = std::max({c.V, std::fabs(c.v), std::fabs(c.v + c.a * std::fabs(c.a) / (2.0 * c.J))});
        // Shapes found by the root finder meet their points to its tolerance.
        const CurveReport r = expectPhysicalCurve(wide, true, CurveTolerance{id >= 10 ? 1e-6 : 1e-9, 1e-9});
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
            EXPECT_EQ(mir.secTime[k], rec.secTime[k]) << k;
            EXPECT_NEAR(mir.secPos[k], -rec.secPos[k], 1e-12) << k;
            EXPECT_NEAR(mir.secVel[k], -rec.secVel[k], 1e-12) << k;
            EXPECT_EQ(mir.secAcc[k], -rec.secAcc[k]) << k;
        }
    }
    // The leaves assign 2..18 and 20; 19 and 21 arise only from a mirrored frame.
    for (int id = 2; id <= 20; ++id) EXPECT_EQ(produced[id], id != 19) << "id " << id;
}

}  // namespace
}  // namespace vekta::test
