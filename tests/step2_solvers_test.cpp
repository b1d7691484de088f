// The step-2 solvers, proved on the curves they write.
//
// Every scenario is built the other way round: a shape is chosen as a list of
// sections (full-jerk ramps to a level, holds of a given length) and walked
// from a start acceleration with an independent integrator; the start velocity
// is then chosen so that the shape ends at rest, and the walk's end gives the
// target position and the remaining time. A solver handed that state must
// find a curve that is continuous, lasts exactly the remaining time, ends at
// rest on the target and keeps |a| <= A; and it should find the shape chosen.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "solvers/step2_solvers.h"
#include "state/numerics.h"
#include "support/test_support.h"

namespace vekta {
namespace {

using test::expectPhysicalCurve;
using test::freshState;
using test::makeAxis;
using test::StdoutCapture;

constexpr double kA = 2.0;
constexpr double kJ = 10.0;
constexpr double kV = 1.0;
constexpr double kStartPos = 0.3;

// ---------------------------------------------------------------------------
// Building scenarios.

// One section of a chosen shape: a full-jerk ramp to an acceleration level,
// or a hold of the present acceleration for a duration.
struct Step {
    bool ramp;
    double value;
};
Step rampTo(double level) { return {true, level}; }
Step hold(double d) { return {false, d}; }

struct Point {
    double t, a, v, p;
};

// Walk the steps from `start`, exactly, and return the point after each.
std::vector<Point> walk(Point start, double J, const std::vector<Step>& steps) {
    std::vector<Point> out;
    Point m = start;
    for (const Step& s : steps) {
        double d = s.value, j = 0.0;
        if (s.ramp) {
            j = s.value >= m.a ? J : -J;
            d = (s.value - m.a) / j;
        }
        m.p += m.v * d + m.a * d * d / 2.0 + j * d * d * d / 6.0;
        m.v += m.a * d + j * d * d / 2.0;
        m.a = s.ramp ? s.value : m.a;
        m.t += d;
        out.push_back(m);
    }
    return out;
}

// What the step-2 tree would leave in the hints for the scenario's state.
using HintFn = void (*)(PlannerState& st, const AxisPlan& rec);

// Where the shape's free quantity can be read off the chosen points.
enum class Read { AccAt, VelAt };

struct Scenario {
    const char* name;
    int solver;
    int points;  // sections of the shape
    double a0;
    std::vector<Step> steps;
    Read read;
    int readIndex;
    HintFn hints;
    double J = kJ;
};

// A scenario turned into a record: the start state whose walk ends at rest,
// the target and remaining time, the chosen points and the free quantity.
struct Built {
    AxisPlan rec;
    std::vector<Point> pts;
    double x;
};

Built build(const Scenario& sc) {
    const std::vector<Point> probe = walk({0.0, sc.a0, 0.0, 0.0}, sc.J, sc.steps);
    const double v0 = -probe.back().v;
    Built b;
    b.pts = walk({0.0, sc.a0, v0, kStartPos}, sc.J, sc.steps);
    EXPECT_NEAR(b.pts.back().a, 0.0, 1e-12) << sc.name << ": the chosen shape must end at rest";
    b.rec = makeAxis(kStartPos, v0, sc.a0, b.pts.back().p, kV, kA, sc.J);
    b.rec.tgtVel = 0.0;
    b.rec.remTime = b.pts.back().t;
    const Point& r = b.pts[sc.readIndex];
    b.x = sc.read == Read::AccAt ? r.a : r.v;
    return b;
}

// The hints of the tree's nodes, from their own formulas.
double quadraticPeak(const AxisPlan& r) {  // nodes 30, 31: the Tri peak with no cruise
    const double A = r.maxAcc, J = r.maxJerk, T = r.remTime, a0 = r.curAcc;
    const double x = A * A - ((J * T + a0 - A) * A - a0 * a0 / 2.0 - (r.tgtVel - r.curVel) * J);
    return A - guardedRoot(x);
}
void twoPeaks(const AxisPlan& r, double* r1, double* r2) {  // node 38: both no-cruise first peaks
    const double J = r.maxJerk, a0 = r.curAcc;
    const double c = (J * r.remTime + a0) / 2.0;
    const double s = guardedRoot(c * c - 2.0 * (c * c - a0 * a0 / 2.0 - (r.tgtVel - r.curVel) * J));
    *r1 = (c - s) / 2.0;
    *r2 = (c + s) / 2.0;
}
double holdAfterTrap(const AxisPlan& r) {  // node 44: the level held after a full pulse
    const double A = r.maxAcc, J = r.maxJerk, a0 = r.curAcc;
    return (r.tgtVel - r.curVel - (2.0 * A * A - a0 * a0) / (2.0 * J)) / (r.remTime - (2.0 * A - a0) / J);
}
double holdAfterDrop(const AxisPlan& r) {  // node 42: the level held after a0 falls
    const double J = r.maxJerk, a0 = r.curAcc;
    return (r.tgtVel - r.curVel - a0 * a0 / (2.0 * J)) / (r.remTime - a0 / J);
}
double holdUpLevel(const AxisPlan& r) {  // node 43: the lower level of a hold after a rise
    const double J = r.maxJerk, a0 = r.curAcc;
    const double b = J * r.remTime + a0;
    return (b - guardedRoot(b * b - 4.0 * ((r.tgtVel - r.curVel) * J + a0 * a0 / 2.0))) / 2.0;
}
double holdBeforeTrap(const AxisPlan& r) {  // node 50: the level held before a full pulse
    const double A = r.maxAcc, J = r.maxJerk, a0 = r.curAcc;
    const double L = r.remTime - (2.0 * A - a0) / J;
    return (r.tgtVel - r.curVel - (A * A - a0 * a0 / 2.0) / J) / L;
}
double negLinPeak(const AxisPlan& r) {  // node 46: the level of the NegLin shape with no hold at A
    const double A = r.maxAcc, J = r.maxJerk, a0 = r.curAcc;
    const double w = J * r.remTime, d = (r.tgtVel - r.curVel) * J;
    const double b = 2.0 * A + a0 - w, c = a0 * a0 / 2.0 + A * A - d;
    return (b + std::sqrt(b * b - 4.0 * c)) / 2.0;
}

void noHints(PlannerState&, const AxisPlan&) {}
void hintsTrapTri(PlannerState& st, const AxisPlan& r) {
    st.trapTriSeedSet = 1;
    st.trapTriSeed = quadraticPeak(r);
}
void hintsTriTriLargerFirst(PlannerState& st, const AxisPlan& r) {
    double r1, r2;
    twoPeaks(r, &r1, &r2);
    st.triTriSeedMode = 1;
    st.triTriSeed = r2;
}
void hintsTriTriSmallerFirst(PlannerState& st, const AxisPlan& r) {
    double r1, r2;
    twoPeaks(r, &r1, &r2);
    st.triTriSeedMode = 2;
    st.triTriSeed = r1;
}
void hintsTriTrap(PlannerState& st, const AxisPlan& r) {
    st.triTrapSeedSet = 1;
    st.triTrapSeed = quadraticPeak(r);
}
void hintsTrapHld(PlannerState& st, const AxisPlan& r) { st.hldLinHi = holdAfterTrap(r); }
void hintsTriHld(PlannerState& st, const AxisPlan& r) {
    st.hldLinLo = r.curAcc;
    st.hldLinHi = r.maxAcc;
}
void hintsNegLinTrap(PlannerState& st, const AxisPlan& r) { st.negLinAcc = negLinPeak(r); }
void hintsNegLinTri(PlannerState& st, const AxisPlan& r) { st.negLinAcc = holdAfterDrop(r); }
void hintsPosLinTri(PlannerState& st, const AxisPlan& r) {
    st.linHldLo = holdBeforeTrap(r);
    st.linHldHi = holdUpLevel(r);
}
void hintsPosLinTrap(PlannerState& st, const AxisPlan& r) {
    st.linHldLo = r.curAcc;
    st.linHldHi = holdBeforeTrap(r);
}

// One synchronisation scenario per solver (two for the solver whose tree hint
// picks one of two branches). Every one of them cruises or holds below the
// limits for a while, which a minimum-time motion never does: the remaining
// time is longer than the axis needs.
const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = {
        {"PosTrapZeroNegTri: reverse, cruise, stop", 0, 6, 0.2,
         {rampTo(kA), hold(0.1), rampTo(0), hold(0.5), rampTo(-1.5), rampTo(0)}, Read::VelAt, 2,
         noHints},
        {"PosTriZeroNegTri: reverse gently, cruise, stop", 1, 5, 0.5,
         {rampTo(1.5), rampTo(0), hold(0.8), rampTo(-1.0), rampTo(0)}, Read::AccAt, 0, noHints},
        {"PosTrapZeroNegTrap: rest to rest below the velocity limit", 2, 7, 0.0,
         {rampTo(kA), hold(0.2), rampTo(0), hold(0.5), rampTo(-kA), hold(0.2), rampTo(0)},
         Read::VelAt, 2, noHints},
        {"PosTriZeroNegTrap: speed up a little, cruise, stop hard", 3, 6, 0.3,
         {rampTo(1.6), rampTo(0), hold(0.6), rampTo(-kA), hold(0.1), rampTo(0)}, Read::AccAt, 0,
         noHints},
        {"PosTrapZeroPosTri: brake to a crawl, crawl, stop", 4, 6, 0.1,
         {rampTo(kA), hold(0.15), rampTo(0), hold(0.4), rampTo(1.4), rampTo(0)}, Read::VelAt, 2,
         hintsTrapTri},
        {"PosTrapZeroPosTri: brake to a crawl, crawl briefly, stop", 4, 6, 0.1,
         {rampTo(kA), hold(0.15), rampTo(0), hold(0.005), rampTo(1.4), rampTo(0)}, Read::VelAt, 2,
         hintsTrapTri},
        {"PosTriZeroPosTri: brake, crawl, stop", 5, 5, 0.4,
         {rampTo(1.5), rampTo(0), hold(0.5), rampTo(1.7), rampTo(0)}, Read::AccAt, 0, noHints},
        {"PosTriZeroPosTri: the larger first peak of two", 5, 5, 0.4,
         {rampTo(1.9), rampTo(0), hold(0.01), rampTo(1.2), rampTo(0)}, Read::AccAt, 0,
         hintsTriTriLargerFirst},
        {"PosTriZeroPosTri: the smaller first peak of two", 5, 5, 0.4,
         {rampTo(1.2), rampTo(0), hold(0.01), rampTo(1.9), rampTo(0)}, Read::AccAt, 0,
         hintsTriTriSmallerFirst},
        {"PosTriZeroPosTrap: brake a little, crawl, stop hard", 6, 6, 0.2,
         {rampTo(1.0), rampTo(0), hold(0.3), rampTo(kA), hold(0.2), rampTo(0)}, Read::AccAt, 0,
         hintsTriTrap},
        {"PosTriZeroPosTrap: brake a little, crawl briefly, stop hard", 6, 6, 0.2,
         {rampTo(1.0), rampTo(0), hold(0.02), rampTo(kA), hold(0.2), rampTo(0)}, Read::AccAt, 0,
         hintsTriTrap},
        {"PosTrapZeroPosTrap: brake hard, crawl, brake hard", 7, 7, 0.1,
         {rampTo(kA), hold(0.175), rampTo(0), hold(0.3), rampTo(kA), hold(0.2), rampTo(0)},
         Read::VelAt, 2, noHints, 40.0},
        {"PosTrapHldNegLin: brake hard, then gently to rest", 8, 5, 0.5,
         {rampTo(kA), hold(0.1), rampTo(0.5), hold(0.825), rampTo(0)}, Read::AccAt, 2,
         hintsTrapHld},
        {"PosTriHldNegLin: brake, then gently to rest", 9, 4, 0.5,
         {rampTo(1.2), rampTo(0.4), hold(2.0), rampTo(0)}, Read::AccAt, 0, hintsTriHld},
        {"NegLinHldPosTrap: ease off, then brake hard", 10, 5, 1.0,
         {rampTo(0.3), hold(0.5), rampTo(kA), hold(0.2), rampTo(0)}, Read::AccAt, 0,
         hintsNegLinTrap},
        {"NegLinHldPosTri: ease off, then brake", 11, 4, 1.0,
         {rampTo(0.2), hold(1.5), rampTo(1.0), rampTo(0)}, Read::AccAt, 0, hintsNegLinTri},
        {"PosLinHldPosTri: brake gently, then firmly", 12, 4, 0.2,
         {rampTo(0.5), hold(1.5), rampTo(1.2), rampTo(0)}, Read::AccAt, 0, hintsPosLinTri},
        {"PosLinHldPosTrap: brake gently, then hard", 13, 5, 0.2,
         {rampTo(0.3), hold(1.0), rampTo(kA), hold(0.15), rampTo(0)}, Read::AccAt, 0,
         hintsPosLinTrap},
    };
    return all;
}

// Mirror a working-frame record into the form the planning pass hands an odd
// profile id to the solver: the caller's frame negated, then mirrored back
// into the working frame with inv = -1.
AxisPlan mirroredForm(const AxisPlan& rec) {
    AxisPlan m = rec;
    for (int i = 0; i < m.pointCount; ++i) {
        m.secAcc[i] = -m.secAcc[i];
        m.secVel[i] = -m.secVel[i];
        m.secPos[i] = -m.secPos[i];
    }
    negateState(m);  // the caller's frame of the mirrored axis
    mirrorAxis(m);   // back to the working frame, inv = -1
    return m;
}

void expectStateUntouched(const AxisPlan& before, const AxisPlan& after) {
    EXPECT_EQ(after.curPos, before.curPos);
    EXPECT_EQ(after.curVel, before.curVel);
    EXPECT_EQ(after.curAcc, before.curAcc);
    EXPECT_EQ(after.tgtPos, before.tgtPos);
    EXPECT_EQ(after.tgtVel, before.tgtVel);
    EXPECT_EQ(after.remTime, before.remTime);
    EXPECT_EQ(after.planTime, before.planTime);
    EXPECT_EQ(after.inv, before.inv);
}

void expectCurveUntouched(const AxisPlan& before, const AxisPlan& after) {
    EXPECT_EQ(after.pointCount, before.pointCount);
    EXPECT_EQ(std::memcmp(after.secTime, before.secTime, sizeof before.secTime), 0);
    EXPECT_EQ(std::memcmp(after.secAcc, before.secAcc, sizeof before.secAcc), 0);
    EXPECT_EQ(std::memcmp(after.secVel, before.secVel, sizeof before.secVel), 0);
    EXPECT_EQ(std::memcmp(after.secPos, before.secPos, sizeof before.secPos), 0);
}

// Run solver `id` on `rec`, returning its result and what it printed.
bool solveCaptured(int id, PlannerState& st, AxisPlan& rec, std::string* out) {
    StdoutCapture cap;
    const bool ok = step2Solvers[id](st, rec);
    *out = cap.text();
    return ok;
}

// ---------------------------------------------------------------------------

// Each residual is zero at the chosen shape's free quantity, and what it
// writes there is the chosen shape, point for point: this pins down which
// sections each profile name stands for.
TEST(Step2SolverResidual, VanishesOnTheChosenShapeAndWritesIt) {
    for (const Scenario& sc : scenarios()) {
        SCOPED_TRACE(sc.name);
        Built b = build(sc);
        AxisPlan& rec = b.rec;
        const AxisPlan before = rec;
        const Step2Residual r = step2Residuals[sc.solver];

        const double probe = r(rec, &b.x);
        EXPECT_NEAR(probe, 0.0, 1e-12);
        expectCurveUntouched(before, rec);

        rec.writeSections = 1;
        const double written = r(rec, &b.x);
        EXPECT_EQ(written, probe);
        EXPECT_EQ(rec.writeSections, 0);
        ASSERT_EQ(rec.pointCount, 1 + sc.points);
        expectStateUntouched(before, rec);
        for (int i = 0; i < sc.points; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NEAR(rec.secTime[1 + i], b.pts[i].t, 1e-12);
            EXPECT_NEAR(rec.secAcc[1 + i], b.pts[i].a, 1e-12);
            EXPECT_NEAR(rec.secVel[1 + i], b.pts[i].v, 1e-12);
            EXPECT_NEAR(rec.secPos[1 + i], b.pts[i].p, 1e-12);
        }
    }
}

// The solver, handed the state as the tree leaves it, finds a curve that
// synchronises the axis, and it is the chosen shape. For the odd profile id
// the same solve on the mirrored record writes the exact mirror image.
TEST(Step2SolverSync, EverySolverSynchronisesItsScenario) {
    for (const Scenario& sc : scenarios()) {
        SCOPED_TRACE(sc.name);
        Built b = build(sc);
        AxisPlan& rec = b.rec;
        const AxisPlan before = rec;
        auto st = freshState();
        sc.hints(*st, rec);

        std::string out;

        const bool ok = solveCaptured(sc.solver, *st, rec, &out);
        ASSERT_TRUE(ok);
        EXPECT_EQ(out, "");
        EXPECT_EQ(rec.writeSections, 0);
        ASSERT_EQ(rec.pointCount, 1 + sc.points);
        expectStateUntouched(before, rec);
        EXPECT_EQ(st->trapTriSeedSet, 0);
        EXPECT_EQ(st->triTrapSeedSet, 0);
        EXPECT_EQ(st->triTriSeedMode, 0);

        expectPhysicalCurve(rec);
        const int last = rec.pointCount - 1;
        EXPECT_EQ(rec.secTime[last], rec.remTime);
        EXPECT_EQ(rec.secAcc[last], 0.0);
        EXPECT_EQ(rec.secVel[last], 0.0);
        EXPECT_NEAR(rec.secPos[last], rec.tgtPos, 1e-4);
        for (int i = 0; i < sc.points; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NEAR(rec.secTime[1 + i], b.pts[i].t, 2e-3);
            EXPECT_NEAR(rec.secAcc[1 + i], b.pts[i].a, 2e-3);
            EXPECT_NEAR(rec.secVel[1 + i], b.pts[i].v, 2e-3);
            EXPECT_NEAR(rec.secPos[1 + i], b.pts[i].p, 2e-3);
        }

        AxisPlan mirrored = mirroredForm(before);
        auto stm = freshState();
        sc.hints(*stm, mirrored);
        ASSERT_TRUE(step2Solvers[sc.solver](*stm, mirrored));
        EXPECT_EQ(mirrored.inv, -1);
        ASSERT_EQ(mirrored.pointCount, rec.pointCount);
        for (int i = 1; i < rec.pointCount; ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(mirrored.secTime[i], rec.secTime[i]);
            EXPECT_EQ(mirrored.secAcc[i], -rec.secAcc[i]);
            EXPECT_EQ(mirrored.secVel[i], -rec.secVel[i]);
            EXPECT_EQ(mirrored.secPos[i], -rec.secPos[i]);
        }
        expectPhysicalCurve(mirrored);  // in the caller's frame, towards -tgtPos
    }
}

// The rest-to-rest scenario really is slower than the axis's own fastest move.
TEST(Step2SolverSync, RestToRestScenarioOutlastsTheMinimumTime) {
    const Scenario& sc = scenarios()[2];
    ASSERT_EQ(sc.solver, 2);
    const Built b = build(sc);
    EXPECT_NEAR(b.rec.curVel, 0.0, 1e-15);
    EXPECT_GT(b.rec.remTime, test::doubleSDuration(b.rec.tgtPos - b.rec.curPos, kV, kA, kJ) + 0.1);
}

// A root finder failure: only the solver's error line (the root finder says
// nothing when the residual has one sign), nothing written, nothing counted.
TEST(Step2SolverFailure, UnreachableTargetPrintsTheErrorLineAndWritesNothing) {
    const char* const lines[kStep2SolverCount] = {
        "step2_PTZNt error!\n", "step2_PtZNt error!\n", "step2_PTZNT error!\n",
        "step2_PtZNT error!\n", "step2_PTZPt error!\n", "step2_PtZPt error!\n",
        "step2_PtZPT error!\n", "step2_PTZPT error!\n", "step2_PTHNL error!\n",
        "step2_PtHNL error!\n", "step2_NLHPT error!\n", "step2_NLHPt error!\n",
        "step2_PLHPt error!\n", "step2_PLHPT error!\n",
    };
    bool seen[kStep2SolverCount] = {};
    for (const Scenario& sc : scenarios()) {
        if (seen[sc.solver]) continue;
        seen[sc.solver] = true;
        SCOPED_TRACE(sc.name);
        Built b = build(sc);
        b.rec.tgtPos += 100.0;  // far beyond anything the shape can reach in time
        const AxisPlan before = b.rec;
        auto st = freshState();
        sc.hints(*st, b.rec);

        std::string out;

        const bool ok = solveCaptured(sc.solver, *st, b.rec, &out);
        EXPECT_FALSE(ok);
        EXPECT_EQ(out, lines[sc.solver]);
        EXPECT_EQ(b.rec.writeSections, 0);
        expectCurveUntouched(before, b.rec);
        expectStateUntouched(before, b.rec);
        // A one-shot hint is spent even by a failed solve.
        EXPECT_EQ(st->trapTriSeedSet, 0);
        EXPECT_EQ(st->triTrapSeedSet, 0);
        EXPECT_EQ(st->triTriSeedMode, 0);
    }
    for (int i = 0; i < kStep2SolverCount; ++i) EXPECT_TRUE(seen[i]) << "solver " << i;
}

// The three guards print their own line instead of the error line and never
// reach the root finder.
TEST(Step2SolverFailure, GuardsPrintTheirLineAndWriteNothing) {
    struct Case {
        int solver;
        AxisPlan rec;
        const char* text;
    };
    // Two full pulses from a0 = 0.1, v0 = -0.95 need 0.5725 s; 0.5 s is too short.
    AxisPlan tooShortForTwoTraps = makeAxis(0.0, -0.95, 0.1, 1.0, kV, kA, 40.0);
    tooShortForTwoTraps.remTime = 0.5;
    // D = 0.5 - 2 - 10 (0 + 1 - 0.6) = -5.5: the hold before the full pulse is always negative.
    AxisPlan noHoldBeforeTrap = makeAxis(0.0, -1.0, 1.0, 1.0, kV, kA, kJ);
    noHoldBeforeTrap.remTime = 0.3;
    // u = 0.05 * 10 - 1 < 0: not even the ramp down from a0 fits.
    AxisPlan noTimeToDrop = makeAxis(0.0, -1.0, 1.0, 1.0, kV, kA, kJ);
    noTimeToDrop.remTime = 0.05;
    const Case cases[] = {
        {7, tooShortForTwoTraps, "step2_PTZPT t45 < 0"},
        {10, noHoldBeforeTrap, "NLHPT t23=-5.500000 < 0 always\n"},
        {11, noTimeToDrop, "NLHPt t23 error"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        AxisPlan rec = c.rec;
        auto st = freshState();
        st->negLinAcc = rec.curAcc;
        std::string out;
        const bool ok = solveCaptured(c.solver, *st, rec, &out);
        EXPECT_FALSE(ok);
        EXPECT_EQ(out, c.text);
        EXPECT_EQ(rec.writeSections, 0);
        expectCurveUntouched(c.rec, rec);
    }
}

// The one-shot hints bound the bracket on the side the tree means, and serve
// one solve only: a seed that shuts out the root makes the first solve fail,
// and the same planner state then solves the axis with the hint spent.
TEST(Step2SolverHints, OneShotSeedBoundsOneSolveOnly) {
    struct Case {
        const char* scenario;
        void (*set)(PlannerState& st);
        const char* errorLine;
    };
    const Case cases[] = {
        // The second peak is 1.4; a seed of 1.0 raises the cruise above the root.
        {"PosTrapZeroPosTri: brake to a crawl, crawl briefly, stop",
         [](PlannerState& st) {
             st.trapTriSeedSet = 1;
             st.trapTriSeed = 1.0;
         },
         "step2_PTZPt error!\n"},
        // Mode 1 raises the lower end above the first peak 1.9.
        {"PosTriZeroPosTri: the larger first peak of two",
         [](PlannerState& st) {
             st.triTriSeedMode = 1;
             st.triTriSeed = 1.95;
         },
         "step2_PtZPt error!\n"},
        // Any other mode caps the upper end below the first peak 1.2.
        {"PosTriZeroPosTri: the smaller first peak of two",
         [](PlannerState& st) {
             st.triTriSeedMode = 2;
             st.triTriSeed = 1.1;
         },
         "step2_PtZPt error!\n"},
        // The cap falls below the first peak 1.0.
        {"PosTriZeroPosTrap: brake a little, crawl briefly, stop hard",
         [](PlannerState& st) {
             st.triTrapSeedSet = 1;
             st.triTrapSeed = 0.9;
         },
         "step2_PtZPT error!\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.scenario);
        const Scenario* sc = nullptr;
        for (const Scenario& s : scenarios()) {
            if (std::string(s.name) == c.scenario) sc = &s;
        }
        ASSERT_NE(sc, nullptr);
        Built b = build(*sc);
        auto st = freshState();
        c.set(*st);
        std::string out;
        EXPECT_FALSE(solveCaptured(sc->solver, *st, b.rec, &out));
        EXPECT_EQ(out, c.errorLine);
        EXPECT_EQ(b.rec.pointCount, 1);
        EXPECT_EQ(st->trapTriSeedSet, 0);
        EXPECT_EQ(st->triTrapSeedSet, 0);
        EXPECT_EQ(st->triTriSeedMode, 0);

        ASSERT_TRUE(step2Solvers[sc->solver](*st, b.rec));
        EXPECT_EQ(b.rec.pointCount, 1 + sc->points);
        expectPhysicalCurve(b.rec);
        EXPECT_NEAR(b.rec.secAcc[1], b.pts[0].a, 2e-3);
        EXPECT_NEAR(b.rec.secVel[3], b.pts[2].v, 2e-3);
    }
}

// With three points already in the curve the shape is appended after them:
// five more points, times relative to the old last one.
TEST(Step2SolverAppend, PosLinHldPosTrapAppendsAfterExistingPoints) {
    const Scenario& sc = scenarios().back();
    ASSERT_EQ(sc.solver, 13);
    const Built b = build(sc);

    // Two earlier sections lead into the scenario's start state: a hold at
    // -0.8 and a full-jerk ramp up to a0.
    const double a0 = sc.a0;
    const std::vector<Point> probe = walk({0.0, -0.8, 0.0, 0.0}, kJ, {hold(0.1), rampTo(a0)});
    const double vPre = b.rec.curVel - probe.back().v;
    const std::vector<Point> lead = walk({0.0, -0.8, vPre, 0.0}, kJ, {hold(0.1), rampTo(a0)});
    AxisPlan rec = makeAxis(0.0, vPre, -0.8, 0.0, kV, kA, kJ);
    for (int i = 0; i < 2; ++i) storePoint(rec, 1 + i, lead[i].t, lead[i].a, lead[i].v, lead[i].p, 1.0);
    rec.pointCount = 3;
    rec.planTime = lead[1].t;
    rec.curPos = lead[1].p;
    rec.curVel = lead[1].v;
    rec.curAcc = lead[1].a;
    rec.tgtPos = lead[1].p + (b.rec.tgtPos - b.rec.curPos);
    rec.tgtVel = 0.0;
    rec.remTime = b.rec.remTime;
    ASSERT_NEAR(rec.curVel, b.rec.curVel, 1e-15);

    auto st = freshState();
    sc.hints(*st, rec);
    ASSERT_TRUE(step2Solvers[13](*st, rec));
    ASSERT_EQ(rec.pointCount, 8);
    const double t0 = lead[1].t;
    EXPECT_EQ(rec.secTime[2], t0);  // the old points stay
    const double x = rec.secAcc[3];
    EXPECT_EQ(rec.secTime[3], t0 + (x - a0) / kJ);
    EXPECT_EQ(rec.secTime[7], t0 + rec.remTime);
    expectPhysicalCurve(rec);
    EXPECT_NEAR(rec.secPos[7], rec.tgtPos, 1e-4);
    EXPECT_EQ(rec.secVel[7], 0.0);
}

// A root at the limit itself: an axis that arrives holding the limit (the
// prologue pulls a larger acceleration back to exactly A) has the bracket
// [A, A]; the hold at x is guarded to zero length.
TEST(Step2SolverSync, PosLinHldPosTrapRootAtTheLimitWritesAZeroLengthHold) {
    const Scenario sc{"PosLinHldPosTrap at x = A", 13, 5, kA,
                      {rampTo(kA), hold(0.0), rampTo(kA), hold(0.3), rampTo(0)}, Read::AccAt, 0,
                      noHints};
    Built b = build(sc);
    auto st = freshState();
    st->linHldLo = sc.a0;
    st->linHldHi = kA;
    std::string out;
    const bool ok = solveCaptured(13, *st, b.rec, &out);
    ASSERT_TRUE(ok);
    EXPECT_EQ(out, "");
    ASSERT_EQ(b.rec.pointCount, 6);
    EXPECT_EQ(b.rec.secAcc[1], kA);  // the root is A exactly
    EXPECT_EQ(b.rec.secAcc[2], kA);
    EXPECT_EQ(b.rec.secTime[2], b.rec.secTime[1]);
    expectPhysicalCurve(b.rec);
    EXPECT_EQ(b.rec.secTime[5], b.rec.remTime);
    EXPECT_NEAR(b.rec.secPos[5], b.rec.tgtPos, 1e-9);
}

// No validation of the written durations: a trial value whose hold comes out
// negative is written as it is, times going back.
TEST(Step2SolverResidual, WritesANegativeHoldAsItIs) {
    AxisPlan rec = makeAxis(0.0, -0.998, 0.2, 0.0, kV, kA, kJ);
    rec.remTime = 0.5;
    const double x = 1.0;
    const double probe = residualPosLinHldPosTrap(rec, &x);
    rec.writeSections = 1;
    EXPECT_EQ(residualPosLinHldPosTrap(rec, &x), probe);
    ASSERT_EQ(rec.pointCount, 6);
    EXPECT_LT(rec.secTime[2], rec.secTime[1]);
    EXPECT_EQ(rec.secTime[5], 0.5);
}

}  // namespace
}  // namespace vekta
