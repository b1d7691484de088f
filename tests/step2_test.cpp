// Step 2, synchronisation: the tree's classification and the solvers' curves,
// proved on the curves written.
//
// Every scenario is built the other way round: a shape is chosen as a list of
// sections (full-jerk ramps to a level, holds of a given length) and walked
// from a start acceleration with an independent integrator; the start velocity
// is then chosen so that the shape ends at rest, and the walk's end gives the
// target position and the remaining time. The step-2 tree, walked on that
// state, must pick the shape's profile; its solver, with the hints the tree
// left, must write a curve that is continuous, lasts exactly the remaining
// time, ends at rest on the target, keeps |a| <= A and is the shape chosen.
// The mirrored axis must store the mirror image of the curve.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "engine/decision_tree.h"
#include "numeric/axis_curve.h"
#include "step2/step2_solvers.h"
#include "step2/step2_tree.h"
#include "support/test_support.h"
#include "support/transcript.h"

namespace vekta::test {
namespace {

constexpr double kA = 2.0, kJ = 10.0, kV = 1.0, kStartPos = 0.3;

struct Step {
    bool ramp;     // a full-jerk ramp to `value`, or a hold of `value` seconds
    double value;
};
// to(level): a ramp to the level; hold(d): d seconds at the present acceleration.
Step to(double level) { return {true, level}; }
Step hold(double d) { return {false, d}; }

struct Point {
    double t, a, v, p;
};

std::vector<Point> walk(Point m, double J, const std::vector<Step>& steps) {
    std::vector<Point> out;
    for (const Step& s : steps) {
        const double j = s.ramp ? (s.value >= m.a ? J : -J) : 0.0;
        const double d = s.ramp ? (s.value - m.a) / j : s.value;
        m.p += m.v * d + m.a * d * d / 2.0 + j * d * d * d / 6.0;
        m.v += m.a * d + j * d * d / 2.0;
        m.a = s.ramp ? s.value : m.a;
        m.t += d;
        out.push_back(m);
    }
    return out;
}

struct Scenario {
    const char* name;
    int profile;  // the step-2 profile the tree must pick (solver = profile / 2)
    double a0;
    std::vector<Step> steps;
    double J = kJ;
};

// One scenario per solver, and more where the tree's hints pick a branch or
// a short cruise or hold puts the root close to an end of its bracket (a
// bound a little off then misses it).
// Every one cruises or holds below the limits for a while, which a
// minimum-time motion never does: the remaining time is longer than needed.
const Scenario kScenarios[] = {
    {"PosTrapZeroNegTri", 0, 0.2, {to(kA), hold(0.1), to(0), hold(0.5), to(-1.5), to(0)}},
    {"PosTriZeroNegTri", 2, 0.5, {to(1.5), to(0), hold(0.8), to(-1.0), to(0)}},
    {"PosTriZeroNegTri", 2, 0.5, {to(1.5), to(0), hold(0.1), to(-1.0), to(0)}},
    {"PosTriZeroNegTri", 2, 0.5, {to(1.5), to(0), hold(0.1), to(-1.9), to(0)}},
    {"PosTrapZeroNegTrap", 4, 0.0, {to(kA), hold(0.2), to(0), hold(0.5), to(-kA), hold(0.2), to(0)}},
    {"PosTriZeroNegTrap", 6, 0.3, {to(1.6), to(0), hold(0.6), to(-kA), hold(0.1), to(0)}},
    {"PosTrapZeroPosTri", 8, 0.1, {to(kA), hold(0.15), to(0), hold(0.4), to(1.4), to(0)}},
    {"PosTrapZeroPosTri", 8, 0.1, {to(kA), hold(0.15), to(0), hold(0.005), to(1.4), to(0)}},
    {"PosTriZeroPosTri", 10, 0.4, {to(1.5), to(0), hold(0.5), to(1.7), to(0)}},
    {"PosTriZeroPosTri", 10, 0.4, {to(1.9), to(0), hold(0.01), to(1.2), to(0)}},
    {"PosTriZeroPosTri", 10, 0.4, {to(1.2), to(0), hold(0.01), to(1.9), to(0)}},
    {"PosTriZeroPosTrap", 12, 0.2, {to(1.0), to(0), hold(0.3), to(kA), hold(0.2), to(0)}},
    {"PosTriZeroPosTrap", 12, 0.2, {to(1.0), to(0), hold(0.02), to(kA), hold(0.2), to(0)}},
    {"PosTrapZeroPosTrap", 14, 0.1, {to(kA), hold(0.175), to(0), hold(0.3), to(kA), hold(0.2), to(0)}, 40.0},
    {"PosTrapHldNegLin", 16, 0.5, {to(kA), hold(0.05), to(1.0), hold(0.2), to(0)}},
    {"PosTriHldNegLin", 18, 0.45, {to(1.95), to(0.7), hold(0.15), to(0)}},
    {"NegLinHldPosTrap", 20, 0.9, {to(0.35), hold(0.1), to(kA), hold(0.1), to(0)}},
    {"NegLinHldPosTri", 22, 1.05, {to(0.85), hold(0.1), to(1.05), to(0)}},
    {"NegLinHldPosTri", 22, 1.05, {to(0.85), hold(0.05), to(1.05), to(0)}},
    {"PosLinHldPosTri", 24, 0.8, {to(0.85), hold(0.2), to(1.25), to(0)}},
    // A hold level above the next scenario's, left in the hints.
    {"PosLinHldPosTri", 24, 1.2, {to(1.5), hold(0.1), to(1.8), to(0)}},
    {"PosLinHldPosTrap", 26, 1.05, {to(1.15), hold(0.15), to(kA), hold(0.15), to(0)}},
};

// The scenario's start state (mirrored when sign < 0), ready for the walk.
AxisPlan build(const Scenario& sc, double sign, std::vector<Point>* pts) {
    const double v0 = -walk({0.0, sc.a0, 0.0, 0.0}, sc.J, sc.steps).back().v;
    *pts = walk({0.0, sc.a0, v0, kStartPos}, sc.J, sc.steps);
    AxisPlan rec = makeAxis(sign * kStartPos, sign * v0, sign * sc.a0, sign * pts->back().p, kV, kA, sc.J);
    rec.remTime = pts->back().t;
    return rec;
}

// Walk the tree and solve, as the planning pass does: an odd profile is the
// even shape solved on the mirrored state.
bool solveClassified(PlannerState& st, AxisPlan& rec) {
    const int id = rec.step2Profile;
    if (id >= kStep2ProfileCount) return false;
    if (id % 2 != 0) mirrorAxis(rec);
    const bool ok = step2Solvers[id / 2](st, rec);
    if (rec.inv == -1) mirrorAxis(rec);
    return ok;
}

bool classifyAndSolve(PlannerState& st, AxisPlan& rec, std::string* printed) {
    StdoutCapture out;
    walkStep2(st, Step2Tree, rec);
    const bool ok = solveClassified(st, rec);
    *printed = out.text();
    return ok;
}

TEST(Step2, TheTreePicksEveryScenariosShapeAndItsSolverSynchronisesIt) {
    // One planner state for all, as the axes of a plan share one: the hints a
    // walk leaves must not steer the next axis's solve.
    auto st = freshState();
    for (const Scenario& sc : kScenarios) {
        SCOPED_TRACE(sc.name);
        std::vector<Point> pts;
        AxisPlan rec = build(sc, 1.0, &pts);
        std::string printed;
        const bool ok = classifyAndSolve(*st, rec, &printed);
        EXPECT_EQ(rec.step2Profile, sc.profile);
        ASSERT_TRUE(ok) << printed;
        EXPECT_EQ(printed, "");
        ASSERT_EQ(rec.pointCount, 1 + static_cast<int>(sc.steps.size()));
        expectPhysicalCurve(rec);
        const int last = rec.pointCount - 1;
        EXPECT_EQ(rec.secTime[last], rec.remTime);
        EXPECT_EQ(rec.secAcc[last], 0.0);
        EXPECT_EQ(rec.secVel[last], 0.0);
        EXPECT_NEAR(rec.secPos[last], rec.tgtPos, 1e-4);
        for (std::size_t i = 0; i < pts.size(); ++i) {  // the shape chosen, to the root finder's tolerance
            const double miss[] = {rec.secTime[1 + i] - pts[i].t, rec.secAcc[1 + i] - pts[i].a,
                                   rec.secVel[1 + i] - pts[i].v, rec.secPos[1 + i] - pts[i].p};
            for (double m : miss) EXPECT_LE(std::fabs(m), 2e-3) << i;
        }
        // The one-shot seeds serve one solve only.
        EXPECT_EQ(st->hints.trapTriSeedSet + st->hints.triTrapSeedSet + st->hints.triTriSeedMode, 0);

        // The mirror image, as the planning pass hands it over: mirrored into
        // the working frame (inv = -1), solved there, stored negated.
        AxisPlan mir = build(sc, -1.0, &pts);
        mirrorAxis(mir);
        auto stm = freshState();
        ASSERT_TRUE(classifyAndSolve(*stm, mir, &printed));
        EXPECT_EQ(mir.step2Profile, sc.profile);
        ASSERT_EQ(mir.pointCount, rec.pointCount);
        for (int i = 1; i < rec.pointCount; ++i) {
            EXPECT_TRUE(mir.secTime[i] == rec.secTime[i] && mir.secAcc[i] == -rec.secAcc[i] &&
                        mir.secVel[i] == -rec.secVel[i] && mir.secPos[i] == -rec.secPos[i])
                << i;
        }

        // An exact curve (recovery mode, the library's own calls): the root
        // refined until every section, the last one too, meets its point.
        AxisPlan exact = build(sc, 1.0, &pts);
        exact.exact = true;
        auto ste = freshState();
        ASSERT_TRUE(classifyAndSolve(*ste, exact, &printed));
        EXPECT_EQ(exact.step2Profile, sc.profile);
        const CurveReport rep = expectPhysicalCurve(exact, true, CurveTolerance{1e-12, 1e-9});
        EXPECT_NEAR(rep.endPos, exact.tgtPos, 1e-12);
    }
}

TEST(Step2, GuardsPrintTheirLineInsteadOfSolving) {
    struct Case {
        int solver;
        double a0, v0, T, J;
        const char* text;
    } cases[] = {
        // Two full pulses from a0 = 0.1, v0 = -0.95 need 0.5725 s.
        {7, 0.1, -0.95, 0.5, 40.0, "step2_PTZPT t45 < 0"},
        // D = 0.5 - 2 - 10 (0 + 1 - 0.6) = -5.5: the hold before the full pulse is always negative.
        {10, 1.0, -1.0, 0.3, kJ, "NLHPT t23=-5.500000 < 0 always\n"},
        // u = 0.05 * 10 - 1 < 0: not even the ramp down from a0 fits.
        {11, 1.0, -1.0, 0.05, kJ, "NLHPt t23 error"},
    };
    for (const Case& c : cases) {
        AxisPlan rec = makeAxis(0.0, c.v0, c.a0, 1.0, kV, kA, c.J);
        rec.remTime = c.T;
        auto st = freshState();
        st->hints.negLinAcc = c.a0;
        StdoutCapture out;
        EXPECT_FALSE(step2Solvers[c.solver](*st, rec));
        EXPECT_EQ(out.text(), c.text);
        EXPECT_EQ(rec.pointCount, 1);
    }
}

// ---- The tree's leaves: one or more states for every id the tree can leave
// (21 and 23 are never set; 28 is always overwritten by the node that follows
// it), together taking every branch the tree can take. A = 1, J = 2, V = 4,
// the axis at position 0. A path lists nodes with their results and, in
// brackets, a line the walk prints.

struct LeafCase {
    double a0, v0, vT, pT, T;
    int id;
    const char* path;
};

const LeafCase kLeaves[] = {
    // Speeding up towards a target ahead.
    {0, -0.25, 0, 1.75, 6.25, 0, "9+10-12+16-17+13-15-"},
    {0, 0, 0, 8.25, 0.75, 2, "9+10-12+16+"},
    {0, -2.5, 0, -2.75, 5.25, 4, "9+10+11+13-15+"},
    {0, -2.75, 0.25, -4.5, 4.25, 8, "9+10+11-14+18-20+27+28-32+33+"},
    {0, -2.25, 0, -9.5, 5.75, 12, "9+10+11-14+18-20+27+28-32-"},
    {0, -0.5, 2.75, 7.25, 5.75, 14, "9+10+11-14+18-20+27+28-32+33-"},
    // Negative pulses first, the target lying behind.
    {0, 1.5, 0, 1.25, 7.5, 1, "9-51-52+80-81-"},
    {0, 0.25, 0, -6.5, 0.25, 3, "9-51+57+76+"},
    {0, 0.5, 0, -8.5, 5.75, 5, "9-51+57+76-77+80-81+"},
    {0, 0.5, 0, 5.25, 7.25, 6, "9-51+57-58-75-78-79+82-83-"},
    {0, -0.25, 0, -3.5, 7, 7, "9+10-12-88-90-84-85+86-87-"},
    {0, 2, -1.75, -2.25, 6, 9, "9-51-52-53+54+55-60+61+"},
    {0, 0.5, 0, 3.25, 7, 11, "9-51+57-58+62-"},
    {0, 1, 0, 2.75, 5, 13, "9-51-52-53+54+55-60-"},
    {1, 1.5, -1.25, 3, 8, 15, "9-51-52-53+54+55-60+61-"},
    // Two pulses the same way.
    {0, -0.75, -0.5, -5, 7.25, 10, "9+10-12-88-90+91-92-"},
    {0.5, -0.5, 0, -1.75, 6.5, 10, "9+10+11-14-19-21+23-24+"},
    {0, -2.25, -1.75, -2.5, 1.25, 10, "9+10+11-14+18-20+27-29-34-36+37+38-"},
    {0, 0, 0.25, 0.09, 0.875, 10, "9+10-12-88-90+91-92+93-"},
    {0, 0, 0.25, 0.125, 0.875, 10, "9+10-12-88-90+91-92+93-"},
    {0, 0, 0.25, 0.13, 0.875, 10, "9+10-12-88-90+91-92+93-"},
    {0.5, 0, 0.5, 0.4, 1.15, 8, "9+10+11-14-19+25-26+"},
    {0.5, 0, 0.5, 0.375, 1.15, 10, "9+10+11-14-19+25-{D26-89}26+"},
    // Hold and Lin shapes.
    {0, -0.75, 0, -0.5, 1.5, 16, "9+10+11-14+18-20+27-29+40-41-43+44+"},
    {0, 0.75, 0, 0.5, 1.5, 17, "9-51-52-53+54-65+67+68-72+73+"},
    {0, -0.75, 0, -0.5, 1, 18, "9+10+11-14+18+40-41-43+44-"},
    {0.5, 0.5, 0, 0.5, 1.75, 19, "9-51-52-53+54-65-66-67-69+70+[D71 branched]71+72+73-"},
    {1, -0.5, 0, -1.5, 0.75, 20, "9+10+11-14-19+25+40-41+42-46-"},
    {0, -0.5, 0, -4.5, 0.75, 20, "9+10+11-14+18+40-41-43-47+48-46-"},
    {0.5, -0.25, 0, -4, 0.75, 22, "9+10-12-88+89+94+96-"},
    {0, -0.25, 0, -1.25, 0.25, 22, "9+10-12-88+89+94-95-97-"},
    {0.5, 0, 0.4375, 0, 1, 22, "9+10+11-14-19+25-26-41+42-[D46-complex -0.750000]46+"},
    {0, -1.25, 0.25, -1.25, 2.5, 24, "9+10+11-14+18-20+27+28+30-31+41-43-47-49+50+"},
    {0.5, 0.25, 0, 0.25, 1.25, 25, "9-51+57-58+62+63+64-"},
    {0, -1, -0.25, -1, 1.5, 26, "9+10+11-14+18-20+27-29+40-41-43-47-49+50-"},
    {0, 3, -0.25, 5.75, 4, 27, "9-51-52-53+54+55+56-59+72-74-"},
    // Further states, so that every branch the tree can take is taken.
    {0.25, -0.375, 0, -0.125, 0.75, 18, "9+10-12-88+89+94-95+"},
    {0.125, -0.125, 0.125, 0, 0.75, 24, "9+10-12-88+89+94-95-97+"},
    {0.75, -0.5, 0.875, 0.5, 2, 24, "9+10+11-14+18+40-41-43-47+48+"},
    {0.25, -1.125, -0.75, -0.5, 0.5, 10, "9+10-12-88+89-"},
    {1, 0, 0, 7, 1.75, 0, "9-51+57-58-75+16-17+13+"},
    {0, 0.75, 0, 5.5, 4.75, 4, "9-51-52-53-82-83+"},
    {0, -3, -1.5, -9, 3.5, 7, "9+10+11-14+18-20-86+"},
    {1, 0, 0.5, -0.25, 1.25, 3, "9+10+11-14-19-21-84+"},
    {0, 0.25, 0, 0, 2.75, 3, "9-51+57+76-77-"},
    {0, -0.25, 0, 0, 6, 2, "9+10-12+16-17-"},
    {0, 0, 0.25, 0, 3.5, 3, "9+10-12-88-90-84-85-"},
    {0, -0.75, 0, -1, 4, 8, "9+10+11-14+18-20+27-29-34+"},
    {0, 0.25, -0.25, 0, 1.25, 19, "9-51+57-58+62+63+64+"},
    {0, 3, 0, 6.75, 4, 13, "9-51-52-53+54+55+56-59-"},
    {0, 0.75, 0, 1.75, 7.5, 9, "9-51-52-53+54-65-66+"},
    {0, -0.75, 0, -4.25, 7.75, 12, "9+10+11-14+18-20+27-29-34-36-"},
    {0, 0.5, 0, -2.25, 2, 1, "9-51+57+76-77+80+"},
    {0, 0.5, 0, 1.25, 1, 2, "9-51+57-58-75-78+"},
    {0, 0, -0.25, 1.25, 6.75, 2, "9-51+57-58-75-78-79-"},
    {0, 0.75, 0, 4, 6.75, 13, "9-51-52-53+54-65-66-67-69-"},
    {0, -0.5, 0, -0.75, 3.5, 10, "9+10+11-14+18-20+27-29-34-36+37-"},
    {0, 1, 0, 1, 2, 9, "9-51-52-53+54+55+56+"},
    {0, -1.25, 0, -1.5, 2.25, 12, "9+10+11-14+18-20+27+28+30-31-"},
    {1, -0.75, 0, -0.5, 1.5, 8, "9+10+11-14+18+40+"},
    {0.75, -1.5, 0, -1.25, 2.25, 8, "9+10+11-14+18-20+27+28+30+"},
    {0.75, -0.75, 0, -0.5, 1.5, 18, "9+10+11-14+18-20+27-29+40-41+42+44-"},
    {0, 2.25, 2.75, 5.75, 2.75, 5, "9+10+11-14+18-20-86-87+"},
    {1, -0.5, 0, -7.25, 0.5, 20, "9+10+11-14-19+25+40-41-43-47-49-"},
    {0.5, -0.5, 0, -0.25, 1.25, 10, "9+10+11-14-19-21+23-24-38-"},
    {0.75, -0.25, 0, -0.5, 5.75, 10, "9+10-12-88-90+91+"},
    {0, 1, 0.5, 1, 1.25, 11, "9-51+57-58+62+63-"},
    {0, 1.25, 1, 8, 1.75, 6, "9-51+57-58-75-78-79+82+"},
    {0.25, 0.5, 0, 0.5, 1.5, 11, "9-51-52-53+54-65-66-67-69+70+[D71 branched]71-"},
    {0.5, 0.75, 0, 3.5, 7.75, 11, "9-51-52-53+54-65-66-67-69+70-"},
    {1, 2, 0, 4.75, 3.75, 25, "9-51-52-53+54+55+56-59+72-74+"},
    {1, -0.5, 0, -1, 7.75, 8, "9+10+11-14-19-21+23+"},
    {0.5, 2.5, 2.75, 2, 0.75, 18, "9+10-12-88+89+94+96+"},
    {0.75, -1, -1.75, -3, 2.25, 9, "9-51-52-53+54-65+67+68+"},
};

// The walk's trace for a path: "9+" is printed "9-1 \t", "[line]" as "line\n",
// "{text}" as text without a line feed.
std::string traceText(const std::string& path) {
    std::string out, node;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '[' || path[i] == '{') {
            const std::size_t end = path.find(path[i] == '[' ? ']' : '}', i);
            out += path.substr(i + 1, end - i - 1) + (path[i] == '[' ? "\n" : "");
            i = end;
        } else if (path[i] == '+' || path[i] == '-') {
            out += node + (path[i] == '+' ? "-1 \t" : "-0 \t");
            node.clear();
        } else {
            node += path[i];
        }
    }
    return out + "\n";
}

// The path as step2_leaves.digest names it: a space after each result and each bracket.
std::string spaced(const std::string& path) {
    std::string out;
    int depth = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        depth += std::strchr("[{", path[i]) ? 1 : std::strchr("]}", path[i]) ? -1 : 0;
        out += path[i];
        if (depth == 0 && std::strchr("+-]}", path[i]) && i + 1 < path.size()) out += ' ';
    }
    return out;
}

// Walks the tree from the case's state (A = 1, J = 2, V = 4, at position 0)
// with the trace on: the path and the leaf must be the case's.
AxisPlan walkCase(PlannerState& st, const LeafCase& c) {
    st.traceOn = true;
    AxisPlan rec = makeAxis(0.0, c.v0, c.a0, c.pT, 4.0, 1.0, 2.0);
    rec.tgtVel = c.vT;
    rec.remTime = c.T;
    StdoutCapture out;
    walkStep2(st, Step2Tree, rec);
    EXPECT_EQ(out.text(), traceText(c.path));
    EXPECT_EQ(rec.step2Profile, c.id) << c.path;
    return rec;
}

TEST(Step2, EveryLeafFromARepresentativeState) {
    // The hints the walk left, and what the solver then makes of them, are
    // pinned by step2_leaves.digest.
    std::vector<std::vector<std::string>> transcripts;
    bool idSeen[kStep2ProfileCount] = {};
    for (const LeafCase& c : kLeaves) {
        SCOPED_TRACE(c.path);
        auto st = freshState();
        AxisPlan rec = walkCase(*st, c);
        // A ramp committed on the way is a real section.
        if (rec.pointCount > 1) expectPhysicalCurve(rec);
        idSeen[c.id] = true;
        std::string unit = "hints";
        const Step2Hints& hn = st->hints;
        for (const double h : {hn.triPeakAcc, hn.hldLinLo, hn.hldLinHi, hn.linHldLo, hn.linHldHi, hn.negLinAcc,
                               hn.negLinAccSpare, hn.trapTriSeed, hn.triTrapSeed, hn.triTriSeed}) {
            unit += " " + bits(h);
        }
        StdoutCapture solverOut;
        unit += "\nsolved " + std::to_string(solveClassified(*st, rec)) + "\n" + solverOut.text();
        for (int i = 0; i < rec.pointCount && i < kMaxPoints; ++i) {
            unit += bits(rec.secTime[i]) + " " + bits(rec.secAcc[i]) + " " + bits(rec.secVel[i]) + " " +
                    bits(rec.secPos[i]) + "\n";
        }
        transcripts.push_back({spaced(c.path), unit});
    }
    for (int id = 0; id < kStep2ProfileCount; ++id) EXPECT_EQ(idSeen[id], id != 21 && id != 23) << "id " << id;
    expectMatchesDigest(transcripts, VEKTA_STEP2_LEAVES_DIGEST);
}

// States on a node's boundary, or where one term of its test decides the
// branch: the path and the leaf.
const LeafCase kBoundaries[] = {
    // Node 37 with a0 != 0: two equal Tri pulses need (4 sqrt(((vT - v0) J + a0^2/2)/2) - a0)/J,
    // here 2.0527756377319948 s: exactly that, and a little more.
    {-0.5, -2.75, -2, -5, 2.0527756377319948, 10, "9+10+11-14+18-20+27-29-34-36+37+38-"},
    {-0.5, -2.75, -2, -5.25, 2.15, 10, "9+10+11-14+18-20+27-29-34-36+37-"},
    // Node 16 towards a moving target: the two pulses need exactly T, and less.
    {0, 0, 0.25, 8.25, 1.7071067811865475, 2, "9+10-12+16+"},
    {0, 0, 0.25, 8.25, 2, 0, "9+10-12+16-17+13+"},
    // Node 83 towards a moving target: the target exactly at the end of pulse, cruise and Trap.
    {0, 0.5, 0.25, 2.03125, 2.75, 4, "9-51+57-58-75-78-79+82-83+"},
    {0, 0.5, 0.25, 2.0312499999999996, 2.75, 6, "9-51+57-58-75-78-79+82-83-"},
    // Node 49 starting at a0 = A, where the hold before the Trap pulse is empty.
    {1, -3, -2, -8, 0.25, 20, "9+10+11-14+18+40-41-43-47-49-"},
    {1, -3, -1.75, -3, 1.25, 26, "9+10+11-14+18+40-41-43-47-49+50-"},
    // Node 42: the target exactly where holding down to the level that reaches vT ends.
    {0.75, -0.75, 0, -0.50634765625, 1.5, 18, "9+10+11-14+18-20+27-29+40-41+42+44-"},
    // Node 73: the target exactly where the Trap pulse, Lin ramp and hold end, and a little beyond.
    {0, 0.75, 0, 0.53125, 1.5, 17, "9-51-52-53+54-65+67+68-72+73+"},
    {0, 0.75, 0, 0.5313, 1.5, 19, "9-51-52-53+54-65+67+68-72+73-"},
    // Node 36: the target exactly at the end of the Tri pulse, cruise and full Tri pulse.
    {-0.40651751798638203, -0.46223024911291688, 0.43354068860753525, -0.56487535072384087, 7.89208122725646, 10, "9+10+11-14+18-20+27-29-34-36+37-"},
    {-0.40651751798638203, -0.46223024911291688, 0.43354068860753525, -0.56487535072384099, 7.89208122725646, 12, "9+10+11-14+18-20+27-29-34-36-"},
};

TEST(Step2, BoundaryStatesTakeTheirBranch) {
    for (const LeafCase& c : kBoundaries) walkCase(*freshState(), c);
}

}  // namespace
}  // namespace vekta::test
