// Tests of the step-2 decision tree.
//
// The nodes are checked against shapes the tests build themselves: ramps at
// full jerk to a level, holds, and at most one hold sized by the target
// velocity and one sized by the remaining time. A shape whose sections all
// have non-negative lengths and that ends at vT with zero acceleration
// exactly at T is a physical check of how a node's profile is read; its end
// position is then the point at which the node must change its answer. The
// walks are checked leaf by leaf (id, branches taken, hints left, sections
// appended) on records prepared like the planning pass prepares them.
#include "step2/step2_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "planner/decision_tree.h"
#include "state/curve_check.h"
#include "state/numerics.h"
#include "step2/prologue_nodes.h"
#include "support/test_support.h"

namespace vekta::test {
namespace {

constexpr double kA = 1.0;  // so tA = 0.5 and A^2/J = 0.5
constexpr double kJ = 2.0;
constexpr double kV = 4.0;
constexpr int kNoId = -1;  // step2Profile before the walk

constexpr double kUntouched = -12345.0;
constexpr std::uint8_t kUntouchedFlag = 77;

// A record as the planning pass hands it to the step-2 walk: the state at the
// end of the curve so far (here the start point, at position 0), one point.
AxisPlan stateAt(double a0, double v0, double vT, double pT, double T) {
    AxisPlan rec = makeAxis(0.0, v0, a0, pT, kV, kA, kJ);
    rec.tgtVel = vT;
    rec.remTime = T;
    rec.step2Profile = kNoId;
    return rec;
}

// Fill every hint with a value no node writes, to see which ones a walk sets.
void markHints(PlannerState& st) {
    st.triPeakAcc = st.hldLinLo = st.hldLinHi = st.linHldLo = st.linHldHi = kUntouched;
    st.negLinAcc = st.negLinAccSpare = st.trapTriSeed = st.triTrapSeed = st.triTriSeed = kUntouched;
    st.trapTriSeedSet = st.triTrapSeedSet = st.triTriSeedMode = kUntouchedFlag;
}

std::unique_ptr<PlannerState> markedState() {
    auto st = freshState();
    markHints(*st);
    return st;
}

// The hints a walk left, by name; a seed is listed with its flag, the
// PosTriZeroPosTri seed with its mode ("triTriSeed1", "triTriSeed2").
std::string writtenHints(const PlannerState& st) {
    std::string out;
    auto add = [&out](bool written, const std::string& name) {
        if (!written) return;
        if (!out.empty()) out += " ";
        out += name;
    };
    add(st.triPeakAcc != kUntouched, "triPeakAcc");
    add(st.hldLinLo != kUntouched, "hldLinLo");
    add(st.hldLinHi != kUntouched, "hldLinHi");
    add(st.linHldLo != kUntouched, "linHldLo");
    add(st.linHldHi != kUntouched, "linHldHi");
    add(st.negLinAcc != kUntouched, "negLinAcc");
    add(st.negLinAccSpare != kUntouched, "negLinAccSpare");
    add(st.trapTriSeedSet != kUntouchedFlag || st.trapTriSeed != kUntouched,
        st.trapTriSeedSet == 1 && st.trapTriSeed != kUntouched ? "trapTriSeed" : "trapTriSeed?");
    add(st.triTrapSeedSet != kUntouchedFlag || st.triTrapSeed != kUntouched,
        st.triTrapSeedSet == 1 && st.triTrapSeed != kUntouched ? "triTrapSeed" : "triTrapSeed?");
    add(st.triTriSeedMode != kUntouchedFlag || st.triTriSeed != kUntouched,
        "triTriSeed" + std::to_string(st.triTriSeed != kUntouched ? st.triTriSeedMode : 0));
    return out;
}

// A path as "9+ 10- [D26-89] 26+": node and result, and in brackets a line
// the walk prints. Turned into the walk's output with tracing on.
std::string traceText(const std::string& path) {
    std::string out;
    for (std::size_t i = 0; i < path.size();) {
        if (path[i] == ' ') {
            ++i;
        } else if (path[i] == '[') {
            const std::size_t end = path.find(']', i);
            out += path.substr(i + 1, end - i - 1) + "\n";
            i = end + 1;
        } else {
            std::size_t end = path.find(' ', i);
            if (end == std::string::npos) end = path.size();
            const std::string tok = path.substr(i, end - i);
            out += tok.substr(0, tok.size() - 1) + (tok.back() == '+' ? "-1 \t" : "-0 \t");
            i = end;
        }
    }
    return out + "\n";
}

// The nodes of a path (brackets skipped) with their results.
std::vector<std::pair<int, bool>> pathNodes(const std::string& path) {
    std::vector<std::pair<int, bool>> nodes;
    for (std::size_t i = 0; i < path.size();) {
        if (path[i] == ' ') {
            ++i;
        } else if (path[i] == '[') {
            i = path.find(']', i) + 1;
        } else {
            std::size_t end = path.find(' ', i);
            if (end == std::string::npos) end = path.size();
            nodes.emplace_back(std::stoi(path.substr(i, end - i - 1)), path[end - 1] == '+');
            i = end;
        }
    }
    return nodes;
}

// Branches that commit a ramp of the acceleration to zero.
bool appendsOnTheWay(int node, bool result) {
    switch (node) {
        case 52: case 53: case 57: case 58: return result;
        case 20: case 21: case 90: return !result;
        default: return false;
    }
}

// The working state is the last stored point (in the caller's frame), and the
// remaining time went down by what the curve gained.
void expectStateIsLastPoint(const AxisPlan& rec, double planTime0, double remTime0) {
    const int k = rec.pointCount - 1;
    const double s = rec.inv;
    EXPECT_EQ(rec.secTime[k], rec.planTime);
    EXPECT_EQ(rec.secPos[k], rec.curPos * s);
    EXPECT_EQ(rec.secVel[k], rec.curVel * s);
    EXPECT_EQ(rec.secAcc[k], rec.curAcc * s);
    EXPECT_EQ(rec.curAcc, 0.0);
    EXPECT_NEAR(rec.remTime, remTime0 - (rec.planTime - planTime0), 1e-15);
}

std::string walkTraced(PlannerState& st, AxisPlan& rec) {
    st.traceOn = true;
    StdoutCapture cap;
    walkStep2(st, Step2Tree, rec);
    return cap.text();
}

// ---------------------------------------------------------------- shapes

// A shape as the tests write it. Ramps go at full jerk to a level; a plain
// hold keeps the acceleration for a given time; at most one hold lasts as
// long as the end velocity needs (forVel) and at most one fills what is left
// of the remaining time (forTime).
struct Step {
    enum Kind { Ramp, Hold, ForVel, ForTime } kind;
    double value;
};
Step ramp(double level) { return Step{Step::Ramp, level}; }
Step hold(double d) { return Step{Step::Hold, d}; }
Step holdForVel() { return Step{Step::ForVel, 0.0}; }
Step holdForTime() { return Step{Step::ForTime, 0.0}; }
using Shape = std::vector<Step>;

struct ShapeEnd {
    double t, p, v, a;
    double shortest;  // the shortest section: negative means the shape is not real
};

ShapeEnd runShape(const AxisPlan& rec, const Shape& shape) {
    const double J = rec.maxJerk, T = rec.remTime;
    // Fixed parts first: their time, their velocity gain, the two free levels.
    double a = rec.curAcc, tFixed = 0.0, vGain = 0.0;
    double aVel = std::numeric_limits<double>::quiet_NaN(), aTime = aVel;
    bool hasVel = false, hasTime = false;
    for (const Step& s : shape) {
        double d = 0.0;
        if (s.kind == Step::Ramp) {
            d = std::fabs(s.value - a) / J;
            vGain += (a + s.value) / 2.0 * d;
            a = s.value;
        } else if (s.kind == Step::Hold) {
            d = s.value;
            vGain += a * d;
        } else if (s.kind == Step::ForVel) {
            hasVel = true;
            aVel = a;
        } else {
            hasTime = true;
            aTime = a;
        }
        tFixed += d;
    }
    // The free lengths x (forVel) and y (forTime): x + y fills the time left
    // and aVel x + aTime y closes the velocity gap.
    const double tLeft = T - tFixed, vLeft = rec.tgtVel - rec.curVel - vGain;
    double x = 0.0, y = 0.0;
    if (hasVel && hasTime) {
        x = (vLeft - aTime * tLeft) / (aVel - aTime);
        y = tLeft - x;
    } else if (hasVel) {
        x = vLeft / aVel;
    } else if (hasTime) {
        y = tLeft;
    }
    ShapeEnd e{0.0, rec.curPos, rec.curVel, rec.curAcc, std::numeric_limits<double>::infinity()};
    for (const Step& s : shape) {
        double d = 0.0, j = 0.0;
        if (s.kind == Step::Ramp) {
            d = std::fabs(s.value - e.a) / J;
            j = s.value > e.a ? J : (s.value < e.a ? -J : 0.0);
        } else {
            d = s.kind == Step::Hold ? s.value : (s.kind == Step::ForVel ? x : y);
        }
        e.p += e.v * d + e.a * d * d / 2.0 + j * d * d * d / 6.0;
        e.v += e.a * d + j * d * d / 2.0;
        e.a = s.kind == Step::Ramp ? s.value : e.a;
        e.t += d;
        e.shortest = std::min(e.shortest, d);
    }
    return e;
}

// The level u in [lo, hi] at which f changes sign (bisection).
double solveFor(const std::function<double(double)>& f, double lo, double hi) {
    double flo = f(lo);
    EXPECT_LE(flo * f(hi), 0.0) << "no sign change in [" << lo << ", " << hi << "]";
    for (int i = 0; i < 200; ++i) {
        const double mid = (lo + hi) / 2.0;
        const double fm = f(mid);
        if ((fm < 0.0) == (flo < 0.0)) {
            lo = mid;
            flo = fm;
        } else {
            hi = mid;
        }
    }
    return (lo + hi) / 2.0;
}

// The peak or level u in [lo, hi] with which shapeOf(u) ends at vT.
double levelReachingVel(const AxisPlan& rec, const std::function<Shape(double)>& shapeOf,
                        double lo, double hi) {
    return solveFor([&](double u) { return runShape(rec, shapeOf(u)).v - rec.tgtVel; }, lo, hi);
}

void expectRealShapeEndingAtTarget(const AxisPlan& rec, const ShapeEnd& e) {
    EXPECT_GE(e.shortest, -1e-12) << "a section of negative length";
    EXPECT_NEAR(e.t, rec.remTime, 1e-12);
    EXPECT_NEAR(e.v, rec.tgtVel, 1e-9);
    EXPECT_NEAR(e.a, 0.0, 1e-12);
}

// ------------------------------------------------------------ the tables

TEST(Step2TreeTable, LayoutNamesAndSharedNodes) {
    ASSERT_EQ(Step2Tree.nodeCount, kStep2NodeCount);
    ASSERT_EQ(kStep2NodeCount, 98);

    // The normalisation prologue shared with the step-1 tree.
    EXPECT_EQ(Step2Tree.nodes[1], &prologueNode1);
    EXPECT_EQ(Step2Tree.nodes[2], &prologueNode2);
    EXPECT_EQ(Step2Tree.nodes[3], &prologueNode3);
    EXPECT_EQ(Step2Tree.nodes[4], &prologueNode4);
    EXPECT_EQ(Step2Tree.nodes[6], &prologueNode6);
    EXPECT_EQ(Step2Tree.nodes[7], &prologueNode7);
    EXPECT_EQ(Step2Tree.nodes[8], &prologueNode8);

    // Nodes that repeat another node use its function.
    const int same[][2] = {{23, 34}, {25, 29}, {40, 30}, {65, 67}, {70, 62}, {71, 63},
                           {72, 64}, {92, 37}, {93, 38}, {94, 41}, {96, 42}};
    for (const auto& p : same) EXPECT_EQ(Step2Tree.nodes[p[0]], Step2Tree.nodes[p[1]]) << p[0];

    // The fillers: always true, change nothing, lead nowhere.
    for (int n : {0, 22, 35, 39, 45}) {
        EXPECT_EQ(Step2Tree.nodes[n], Step2Tree.nodes[0]);
        EXPECT_EQ(Step2Tree.successors[2 * n], 0);
        EXPECT_EQ(Step2Tree.successors[2 * n + 1], 0);
        auto st = markedState();
        AxisPlan rec = stateAt(0.5, 0.25, 1.0, 2.0, 3.0);
        EXPECT_TRUE(Step2Tree.nodes[n](*st, rec));
        EXPECT_EQ(rec.curPos, 0.0);
        EXPECT_EQ(rec.curVel, 0.25);
        EXPECT_EQ(rec.curAcc, 0.5);
        EXPECT_EQ(rec.remTime, 3.0);
        EXPECT_EQ(rec.pointCount, 1);
        EXPECT_EQ(rec.step2Profile, kNoId);
        EXPECT_EQ(writtenHints(*st), "");
    }

    // From node 9 the walk can reach every node from 9 on except the fillers,
    // and no node before 9.
    bool reached[kStep2NodeCount] = {};
    std::vector<int> todo{9};
    while (!todo.empty()) {
        const int n = todo.back();
        todo.pop_back();
        if (n == 0 || reached[n]) continue;
        reached[n] = true;
        todo.push_back(Step2Tree.successors[2 * n]);
        todo.push_back(Step2Tree.successors[2 * n + 1]);
    }
    for (int n = 1; n < kStep2NodeCount; ++n) {
        const bool filler = n == 22 || n == 35 || n == 39 || n == 45;
        EXPECT_EQ(reached[n], n >= 9 && !filler) << "node " << n;
    }

    // Names: the even id is the Pos-first shape, the odd id its mirror image.
    EXPECT_STREQ(step2ProfileNames[0], "Step2_PosTrapZeroNegTri");
    EXPECT_STREQ(step2ProfileNames[1], "Step2_NegTrapZeroPosTri");
    EXPECT_STREQ(step2ProfileNames[20], "Step2_NegLinHldPosTrap");
    EXPECT_STREQ(step2ProfileNames[27], "Step2_NegLinHldNegTrap");
    const std::vector<std::string> shapes = {
        "TrapZeroNegTri", "TriZeroNegTri", "TrapZeroNegTrap", "TriZeroNegTrap",
        "TrapZeroPosTri", "TriZeroPosTri", "TriZeroPosTrap",  "TrapZeroPosTrap",
        "TrapHldNegLin",  "TriHldNegLin",  "LinHldPosTrap",   "LinHldPosTri",
        "LinHldPosTri",   "LinHldPosTrap"};
    auto swapSigns = [](std::string s) {
        for (std::size_t i = 0; i + 3 <= s.size(); ++i) {
            if (s.compare(i, 3, "Pos") == 0) s.replace(i, 3, "Neg");
            else if (s.compare(i, 3, "Neg") == 0) s.replace(i, 3, "Pos");
        }
        return s;
    };
    for (int k = 0; k < kStep2ProfileCount / 2; ++k) {
        const std::string first = (k == 10 || k == 11) ? "Step2_Neg" : "Step2_Pos";
        EXPECT_EQ(step2ProfileNames[2 * k], first + shapes[k]) << k;
        EXPECT_EQ(step2ProfileNames[2 * k + 1], swapSigns(step2ProfileNames[2 * k])) << k;
    }
}

// ---------------------------------------------------------- classification

struct LeafCase {
    double a0, v0, vT, pT, T;
    int id;
    const char* path;   // nodes with results, printed lines in brackets
    const char* hints;  // the hints left, as writtenHints lists them
};

// One or more states for every id the tree can leave (21 and 23 are never
// set; 28 is always overwritten by the node that follows it), together taking
// every branch the tree can take. A = 1, J = 2, V = 4, the axis at position 0.
const LeafCase kLeaves[] = {
    // Speeding up towards a target ahead.
    {0, -0.25, 0, 1.75, 6.25, 0, "9+ 10- 12+ 16- 17+ 13- 15-", ""},
    {0, 0, 0, 8.25, 0.75, 2, "9+ 10- 12+ 16+", ""},
    {0, -2.5, 0, -2.75, 5.25, 4, "9+ 10+ 11+ 13- 15+", ""},
    {0, -2.75, 0.25, -4.5, 4.25, 8, "9+ 10+ 11- 14+ 18- 20+ 27+ 28- 32+ 33+", ""},
    {0, -2.25, 0, -9.5, 5.75, 12, "9+ 10+ 11- 14+ 18- 20+ 27+ 28- 32-", ""},
    {0, -0.5, 2.75, 7.25, 5.75, 14, "9+ 10+ 11- 14+ 18- 20+ 27+ 28- 32+ 33-", ""},
    // Negative pulses first, the target lying behind.
    {0, 1.5, 0, 1.25, 7.5, 1, "9- 51- 52+ 80- 81-", ""},
    {0, 0.25, 0, -6.5, 0.25, 3, "9- 51+ 57+ 76+", ""},
    {0, 0.5, 0, -8.5, 5.75, 5, "9- 51+ 57+ 76- 77+ 80- 81+", ""},
    {0, 0.5, 0, 5.25, 7.25, 6, "9- 51+ 57- 58- 75- 78- 79+ 82- 83-", "hldLinHi"},
    {0, -0.25, 0, -3.5, 7, 7, "9+ 10- 12- 88- 90- 84- 85+ 86- 87-", "triPeakAcc hldLinHi"},
    {0, 2, -1.75, -2.25, 6, 9, "9- 51- 52- 53+ 54+ 55- 60+ 61+", ""},
    {0, 0.5, 0, 3.25, 7, 11, "9- 51+ 57- 58+ 62-", "hldLinHi"},
    {0, 1, 0, 2.75, 5, 13, "9- 51- 52- 53+ 54+ 55- 60-", ""},
    {1, 1.5, -1.25, 3, 8, 15, "9- 51- 52- 53+ 54+ 55- 60+ 61-", ""},
    // Two pulses the same way.
    {0, -0.75, -0.5, -5, 7.25, 10, "9+ 10- 12- 88- 90+ 91- 92-", "triPeakAcc hldLinHi"},
    {0.5, -0.5, 0, -1.75, 6.5, 10, "9+ 10+ 11- 14- 19- 21+ 23- 24+", "triPeakAcc"},
    {0, -2.25, -1.75, -2.5, 1.25, 10, "9+ 10+ 11- 14+ 18- 20+ 27- 29- 34- 36+ 37+ 38-", ""},
    {0, 0, 0.25, 0.09, 0.875, 10, "9+ 10- 12- 88- 90+ 91- 92+ 93-",
     "triPeakAcc hldLinHi triTriSeed2"},
    {0, 0, 0.25, 0.125, 0.875, 10, "9+ 10- 12- 88- 90+ 91- 92+ 93-", "triPeakAcc hldLinHi"},
    {0, 0, 0.25, 0.13, 0.875, 10, "9+ 10- 12- 88- 90+ 91- 92+ 93-",
     "triPeakAcc hldLinHi triTriSeed1"},
    {0.5, 0, 0.5, 0.4, 1.15, 8, "9+ 10+ 11- 14- 19+ 25- 26+", "triPeakAcc"},
    {0.5, 0, 0.5, 0.375, 1.15, 10, "9+ 10+ 11- 14- 19+ 25- [D26-89] 26+", "triPeakAcc triTriSeed1"},
    // Hold and Lin shapes.
    {0, -0.75, 0, -0.5, 1.5, 16, "9+ 10+ 11- 14+ 18- 20+ 27- 29+ 40- 41- 43+ 44+",
     "hldLinLo hldLinHi"},
    {0, 0.75, 0, 0.5, 1.5, 17, "9- 51- 52- 53+ 54- 65+ 67+ 68- 72+ 73+", "hldLinLo hldLinHi"},
    {0, -0.75, 0, -0.5, 1, 18, "9+ 10+ 11- 14+ 18+ 40- 41- 43+ 44-", "hldLinLo hldLinHi"},
    {0.5, 0.5, 0, 0.5, 1.75, 19,
     "9- 51- 52- 53+ 54- 65- 66- 67- 69+ 70+ [D71 branched] 71+ 72+ 73-", "hldLinLo hldLinHi"},
    {1, -0.5, 0, -1.5, 0.75, 20, "9+ 10+ 11- 14- 19+ 25+ 40- 41+ 42- 46-", "triPeakAcc negLinAcc"},
    {0, -0.5, 0, -4.5, 0.75, 20, "9+ 10+ 11- 14+ 18+ 40- 41- 43- 47+ 48- 46-",
     "linHldHi negLinAcc"},
    {0.5, -0.25, 0, -4, 0.75, 22, "9+ 10- 12- 88+ 89+ 94+ 96-", "triPeakAcc hldLinHi negLinAcc"},
    {0, -0.25, 0, -1.25, 0.25, 22, "9+ 10- 12- 88+ 89+ 94- 95- 97-",
     "triPeakAcc hldLinHi linHldHi negLinAcc"},
    {0.5, 0, 0.4375, 0, 1, 22, "9+ 10+ 11- 14- 19+ 25- 26- 41+ 42- [D46-complex -0.750000] 46+",
     "triPeakAcc negLinAcc negLinAccSpare"},
    {0, -1.25, 0.25, -1.25, 2.5, 24, "9+ 10+ 11- 14+ 18- 20+ 27+ 28+ 30- 31+ 41- 43- 47- 49+ 50+",
     "linHldLo linHldHi"},
    {0.5, 0.25, 0, 0.25, 1.25, 25, "9- 51+ 57- 58+ 62+ 63+ 64-", "hldLinHi linHldLo linHldHi"},
    {0, -1, -0.25, -1, 1.5, 26, "9+ 10+ 11- 14+ 18- 20+ 27- 29+ 40- 41- 43- 47- 49+ 50-",
     "linHldLo linHldHi"},
    {0, 3, -0.25, 5.75, 4, 27, "9- 51- 52- 53+ 54+ 55+ 56- 59+ 72- 74-", "linHldLo linHldHi"},
    // Further states, so that every branch the tree can take is taken.
    {0.25, -0.375, 0, -0.125, 0.75, 18, "9+ 10- 12- 88+ 89+ 94- 95+",
     "triPeakAcc hldLinLo hldLinHi"},
    {0.125, -0.125, 0.125, 0, 0.75, 24, "9+ 10- 12- 88+ 89+ 94- 95- 97+",
     "triPeakAcc hldLinHi linHldLo linHldHi"},
    {0.75, -0.5, 0.875, 0.5, 2, 24, "9+ 10+ 11- 14+ 18+ 40- 41- 43- 47+ 48+", "linHldLo linHldHi"},
    {0.25, -1.125, -0.75, -0.5, 0.5, 10, "9+ 10- 12- 88+ 89-", "triPeakAcc hldLinHi triTriSeed1"},
    {1, 0, 0, 7, 1.75, 0, "9- 51+ 57- 58- 75+ 16- 17+ 13+", "hldLinHi"},
    {0, 0.75, 0, 5.5, 4.75, 4, "9- 51- 52- 53- 82- 83+", ""},
    {0, -3, -1.5, -9, 3.5, 7, "9+ 10+ 11- 14+ 18- 20- 86+", ""},
    {1, 0, 0.5, -0.25, 1.25, 3, "9+ 10+ 11- 14- 19- 21- 84+", "triPeakAcc"},
    {0, 0.25, 0, 0, 2.75, 3, "9- 51+ 57+ 76- 77-", ""},
    {0, -0.25, 0, 0, 6, 2, "9+ 10- 12+ 16- 17-", ""},
    {0, 0, 0.25, 0, 3.5, 3, "9+ 10- 12- 88- 90- 84- 85-", "triPeakAcc hldLinHi"},
    {0, -0.75, 0, -1, 4, 8, "9+ 10+ 11- 14+ 18- 20+ 27- 29- 34+", ""},
    {0, 0.25, -0.25, 0, 1.25, 19, "9- 51+ 57- 58+ 62+ 63+ 64+", "hldLinLo hldLinHi"},
    {0, 3, 0, 6.75, 4, 13, "9- 51- 52- 53+ 54+ 55+ 56- 59-", "triTrapSeed"},
    {0, 0.75, 0, 1.75, 7.5, 9, "9- 51- 52- 53+ 54- 65- 66+", ""},
    {0, -0.75, 0, -4.25, 7.75, 12, "9+ 10+ 11- 14+ 18- 20+ 27- 29- 34- 36-", ""},
    {0, 0.5, 0, -2.25, 2, 1, "9- 51+ 57+ 76- 77+ 80+", ""},
    {0, 0.5, 0, 1.25, 1, 2, "9- 51+ 57- 58- 75- 78+", "hldLinHi"},
    {0, 0, -0.25, 1.25, 6.75, 2, "9- 51+ 57- 58- 75- 78- 79-", "hldLinHi"},
    {0, 0.75, 0, 4, 6.75, 13, "9- 51- 52- 53+ 54- 65- 66- 67- 69-", ""},
    {0, -0.5, 0, -0.75, 3.5, 10, "9+ 10+ 11- 14+ 18- 20+ 27- 29- 34- 36+ 37-", ""},
    {0, 1, 0, 1, 2, 9, "9- 51- 52- 53+ 54+ 55+ 56+", "trapTriSeed"},
    {0, -1.25, 0, -1.5, 2.25, 12, "9+ 10+ 11- 14+ 18- 20+ 27+ 28+ 30- 31-", "triTrapSeed"},
    {1, -0.75, 0, -0.5, 1.5, 8, "9+ 10+ 11- 14+ 18+ 40+", "trapTriSeed"},
    {0.75, -1.5, 0, -1.25, 2.25, 8, "9+ 10+ 11- 14+ 18- 20+ 27+ 28+ 30+", "trapTriSeed"},
    {0.75, -0.75, 0, -0.5, 1.5, 18, "9+ 10+ 11- 14+ 18- 20+ 27- 29+ 40- 41+ 42+ 44-",
     "hldLinLo hldLinHi"},
    {0, 2.25, 2.75, 5.75, 2.75, 5, "9+ 10+ 11- 14+ 18- 20- 86- 87+", ""},
    {1, -0.5, 0, -7.25, 0.5, 20, "9+ 10+ 11- 14- 19+ 25+ 40- 41- 43- 47- 49-",
     "triPeakAcc linHldHi negLinAcc"},
    {0.5, -0.5, 0, -0.25, 1.25, 10, "9+ 10+ 11- 14- 19- 21+ 23- 24- 38-", "triPeakAcc triTriSeed1"},
    {0.75, -0.25, 0, -0.5, 5.75, 10, "9+ 10- 12- 88- 90+ 91+", "triPeakAcc hldLinHi"},
    {0, 1, 0.5, 1, 1.25, 11, "9- 51+ 57- 58+ 62+ 63-", "hldLinHi triTriSeed2"},
    {0, 1.25, 1, 8, 1.75, 6, "9- 51+ 57- 58- 75- 78- 79+ 82+", "hldLinHi"},
    {0.25, 0.5, 0, 0.5, 1.5, 11, "9- 51- 52- 53+ 54- 65- 66- 67- 69+ 70+ [D71 branched] 71-",
     "triTriSeed2"},
    {0.5, 0.75, 0, 3.5, 7.75, 11, "9- 51- 52- 53+ 54- 65- 66- 67- 69+ 70-", ""},
    {1, 2, 0, 4.75, 3.75, 25, "9- 51- 52- 53+ 54+ 55+ 56- 59+ 72- 74+", "linHldLo linHldHi"},
    {1, -0.5, 0, -1, 7.75, 8, "9+ 10+ 11- 14- 19- 21+ 23+", "triPeakAcc"},
    {0.5, 2.5, 2.75, 2, 0.75, 18, "9+ 10- 12- 88+ 89+ 94+ 96+", "triPeakAcc hldLinLo hldLinHi"},
    {0.75, -1, -1.75, -3, 2.25, 9, "9- 51- 52- 53+ 54- 65+ 67+ 68+", ""},
};

TEST(Step2TreeClassification, EveryLeafFromARepresentativeState) {
    bool idSeen[kStep2ProfileCount + 1] = {};
    bool branchSeen[kStep2NodeCount][2] = {};
    for (const LeafCase& c : kLeaves) {
        SCOPED_TRACE(c.path);
        auto st = markedState();
        AxisPlan rec = stateAt(c.a0, c.v0, c.vT, c.pT, c.T);
        const std::string out = walkTraced(*st, rec);

        EXPECT_EQ(rec.step2Profile, c.id);
        EXPECT_EQ(out, traceText(c.path));
        EXPECT_EQ(writtenHints(*st), c.hints);

        int visits[kNodeVisitSlots] = {};
        int appended = 0;
        for (const auto& [node, result] : pathNodes(c.path)) {
            visits[node - 1] += 1;
            branchSeen[node][result ? 1 : 0] = true;
            appended += appendsOnTheWay(node, result) ? 1 : 0;
        }
        for (int k = 0; k < kNodeVisitSlots; ++k) EXPECT_EQ(st->nodeVisitCount[k], visits[k]) << k;

        // A committed ramp to zero is a real section and leaves the working
        // state on the last point.
        EXPECT_EQ(rec.pointCount, 1 + appended);
        if (appended > 0) {
            expectPhysicalCurve(rec);
            expectStateIsLastPoint(rec, 0.0, c.T);
        }
        idSeen[c.id] = true;
    }
    for (int id = 0; id < kStep2ProfileCount; ++id) {
        EXPECT_EQ(idSeen[id], id != 21 && id != 23) << "id " << id;
    }
    // Nodes 38 and 93 never answer true: when neither root matches, the
    // target lies between the two end positions, short of the second.
    for (int n = 9; n < kStep2NodeCount; ++n) {
        const bool filler = n == 22 || n == 35 || n == 39 || n == 45;
        EXPECT_EQ(branchSeen[n][0], !filler) << "node " << n << " false";
        EXPECT_EQ(branchSeen[n][1], !filler && n != 38 && n != 93) << "node " << n << " true";
    }
}

// An axis at rest with the target ahead: just above its minimum time it needs
// two Trap pulses around a cruise, with time to spare two Tri pulses; the
// target behind gives the mirror images.
TEST(Step2TreeClassification, RestToRestMotions) {
    const double D = 4.0;
    const double tMin = doubleSDuration(D, kV, kA, kJ);
    struct Case {
        double pT, T;
        int id;
    } cases[] = {
        {D, tMin * 1.001, 4},  {-D, tMin * 1.001, 5},  // PosTrapZeroNegTrap and its mirror
        {D, tMin * 3.0, 2},    {-D, tMin * 3.0, 3},    // PosTriZeroNegTri and its mirror
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.T);
        auto st = freshState();
        AxisPlan rec = stateAt(0.0, 0.0, 0.0, c.pT, c.T);
        {
            StdoutCapture quiet;
            walkStep2(*st, Step2Tree, rec);
        }
        EXPECT_EQ(rec.step2Profile, c.id);
    }
}

// A state at rest in acceleration and its mirror image get the two forms of
// the same profile, with the same hints.
TEST(Step2TreeClassification, MirroredStateGetsThePartnerProfile) {
    struct Case {
        double v0, vT, pT, T;
        int id;
    } cases[] = {
        {-0.25, 0, 0.25, 1.75, 0},   {-0.25, 0, 0, 0.25, 2},       {-0.25, 0, 0.75, 2.5, 4},
        {0.75, 0, 0.75, 1.5, 6},     {-0.75, 0, -0.5, 1.75, 8},    {-0.75, 0, -0.75, 2, 10},
        {-0.75, 0, -0.75, 1.75, 12}, {-1.25, 0, -1.5, 2.5, 14},    {-0.75, 0, -0.5, 1.5, 16},
        {-0.75, 0.75, 0, 2.25, 18},  {-1.25, 0, -1.25, 2, 24},     {-1.5, 0, -1.75, 2.25, 26},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        auto st = markedState();
        auto mst = markedState();
        AxisPlan rec = stateAt(0.0, c.v0, c.vT, c.pT, c.T);
        AxisPlan mirror = stateAt(0.0, -c.v0, -c.vT, -c.pT, c.T);
        {
            StdoutCapture quiet;
            walkStep2(*st, Step2Tree, rec);
            walkStep2(*mst, Step2Tree, mirror);
        }
        EXPECT_EQ(rec.step2Profile, c.id);
        EXPECT_EQ(mirror.step2Profile, c.id + 1);
        EXPECT_EQ(writtenHints(*st), writtenHints(*mst));
        const double a[] = {st->triPeakAcc, st->hldLinLo, st->hldLinHi, st->linHldLo,
                            st->linHldHi, st->negLinAcc, st->negLinAccSpare, st->trapTriSeed,
                            st->triTrapSeed, st->triTriSeed};
        const double b[] = {mst->triPeakAcc, mst->hldLinLo, mst->hldLinHi, mst->linHldLo,
                            mst->linHldHi, mst->negLinAcc, mst->negLinAccSpare, mst->trapTriSeed,
                            mst->triTrapSeed, mst->triTriSeed};
        for (int k = 0; k < 10; ++k) EXPECT_NEAR(a[k], b[k], 1e-12 * (1.0 + std::fabs(a[k]))) << k;
        EXPECT_EQ(st->triTriSeedMode, mst->triTriSeedMode);
    }
}

// ----------------------------------------------------------- end positions

struct EndCase {
    int node;
    double a0, v0, vT, T;
    bool trueAbove;  // true when the target lies beyond the shape's end (pT >= P)
    int idAbove, idBelow;
    const char* hintsAbove;
    const char* hintsBelow;
    // The node's shape for this state; may use the hints the node leaves on
    // either side (merged from a far-above and a far-below call).
    std::function<Shape(const AxisPlan&, const PlannerState&)> shape;
};

// Hints a node leaves for a target far beyond or far behind its shape, merged.
PlannerState hintsOf(int node, const AxisPlan& base) {
    auto merged = markedState();
    for (double pT : {1e6, -1e6}) {
        auto st = markedState();
        AxisPlan rec = base;
        rec.tgtPos = pT;
        {
            StdoutCapture quiet;
            Step2Tree.nodes[node](*st, rec);
        }
        auto take = [](double& to, double from) {
            if (from != kUntouched) to = from;
        };
        take(merged->triPeakAcc, st->triPeakAcc);
        take(merged->hldLinLo, st->hldLinLo);
        take(merged->hldLinHi, st->hldLinHi);
        take(merged->linHldLo, st->linHldLo);
        take(merged->linHldHi, st->linHldHi);
        take(merged->negLinAcc, st->negLinAcc);
        take(merged->negLinAccSpare, st->negLinAccSpare);
        take(merged->trapTriSeed, st->trapTriSeed);
        take(merged->triTrapSeed, st->triTrapSeed);
        take(merged->triTriSeed, st->triTriSeed);
    }
    return *merged;
}

// The level of the hint the node left, checked to be there.
double hint(double value) {
    EXPECT_NE(value, kUntouched) << "hint not written";
    return value;
}

const double A = kA;
const double kTriTop = 5.0;  // an upper bracket for Tri peaks

const EndCase kEnds[] = {
    // Trap pulse straight up to vT, then cruise.
    {11, 0.5, 0, 1, 2, true, kNoId, kNoId, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(A), holdForVel(), ramp(0), holdForTime()};
     }},
    // Tri pulse straight up to vT, then cruise; its peak is left on the false side.
    {12, 0.5, 0, 0.25, 1, true, kNoId, kNoId, "", "hldLinHi",
     [](const AxisPlan& r, const PlannerState& h) {
         auto of = [](double s) { return Shape{ramp(s), ramp(0), holdForTime()}; };
         const double s = levelReachingVel(r, of, r.curAcc, kTriTop);
         EXPECT_NEAR(hint(h.hldLinHi), s, 1e-9);
         return of(s);
     }},
    // Trap pulse above vT, cruise, full negative Tri pulse.
    {15, 0, 0, 0.5, 4, true, 4, 0, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(A), holdForVel(), ramp(0), holdForTime(), ramp(-A), ramp(0)};
     }},
    // Full pulse to vS, cruise, negative Tri pulse down to vT.
    {17, 0, 0, 0, 3, true, kNoId, 2, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(A), ramp(0), holdForTime(), ramp(-s), ramp(0)};
         };
         return of(solveFor([&](double s) { return r.tgtVel - runShape(r, of(s)).v; }, 0, kTriTop));
     }},
    // a0 ramped to zero, cruise at vZ, Trap pulse up to vT.
    {20, 0.5, 0, 1.0625, 3, true, kNoId, kNoId, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(0), holdForTime(), ramp(A), holdForVel(), ramp(0)};
     }},
    // a0 ramped to zero, cruise at vZ, Tri pulse up to vT.
    {21, 0.5, 0, 0.5625, 2, true, kNoId, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) { return Shape{ramp(0), holdForTime(), ramp(s), ramp(0)}; };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Full pulse, cruise at vS, Tri pulse up to vT (also nodes 23 and 26).
    {34, 0, 0, 1, 3, true, 8, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(A), ramp(0), holdForTime(), ramp(s), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Trap pulse, then a Tri pulse of the seeded peak, together filling T.
    {30, 0, 0, 1.5, 2.375, true, 8, kNoId, "trapTriSeed", "",
     [](const AxisPlan&, const PlannerState& h) {
         const double q = hint(h.trapTriSeed);
         EXPECT_NEAR(q, 0.5, 1e-12);
         return Shape{ramp(A), holdForVel(), ramp(0), ramp(q), ramp(0)};
     }},
    // Tri pulse of the seeded peak, then a Trap pulse, filling T.
    {31, 0, 0, 1.5, 2.375, true, kNoId, 12, "", "triTrapSeed",
     [](const AxisPlan&, const PlannerState& h) {
         const double q = hint(h.triTrapSeed);
         return Shape{ramp(q), ramp(0), ramp(A), holdForVel(), ramp(0)};
     }},
    // Full pulse to vS, cruise, Trap pulse up to vT.
    {32, 0, 0, 2, 4, true, kNoId, 12, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(A), ramp(0), holdForTime(), ramp(A), holdForVel(), ramp(0)};
     }},
    // Trap pulse, cruise, full positive Tri pulse.
    {33, 0, 0, 2, 4, true, 8, 14, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(A), holdForVel(), ramp(0), holdForTime(), ramp(A), ramp(0)};
     }},
    // Tri pulse, cruise, full positive Tri pulse.
    {36, 0, 0, 0.75, 2, true, kNoId, 12, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(s), ramp(0), holdForTime(), ramp(A), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // a0 lowered to a hold level that reaches vT at T (also node 96).
    {42, 1, 0, 0.5, 1, true, 18, 22, "hldLinLo", "negLinAcc",
     [](const AxisPlan& r, const PlannerState& h) {
         EXPECT_EQ(h.hldLinLo, r.curAcc);
         return Shape{ramp(hint(h.negLinAcc)), holdForTime(), ramp(0)};
     }},
    // a0 raised to the hold level that reaches vT at T; bounds only.
    {43, 0, 0, 0.5, 1.5, true, kNoId, kNoId, "hldLinLo", "linHldHi",
     [](const AxisPlan&, const PlannerState& h) {
         EXPECT_EQ(hint(h.hldLinLo), hint(h.linHldHi));
         return Shape{ramp(h.hldLinLo), holdForTime(), ramp(0)};
     }},
    {95, 0, 0, 0.5, 1.5, true, 18, kNoId, "hldLinLo", "linHldHi",
     [](const AxisPlan&, const PlannerState& h) {
         EXPECT_EQ(hint(h.hldLinLo), hint(h.linHldHi));
         return Shape{ramp(h.hldLinLo), holdForTime(), ramp(0)};
     }},
    // Up to A, down to a hold level, hold, down to zero at vT.
    {44, 0, 0, 1, 2, true, 16, 18, "hldLinHi", "hldLinHi",
     [](const AxisPlan& r, const PlannerState&) {
         // The far-above call left the level; the far-below call then wrote A.
         auto st = markedState();
         AxisPlan probe = r;
         probe.tgtPos = 1e6;
         Step2Tree.nodes[44](*st, probe);
         EXPECT_NEAR(st->hldLinHi, 0.5, 1e-12);
         return Shape{ramp(A), ramp(st->hldLinHi), holdForTime(), ramp(0)};
     }},
    // NegLin to the larger root of the quadratic, hold, PosTrap.
    {46, 1, 0, 1, 2, true, 22, 20, "negLinAccSpare", "negLinAcc",
     [](const AxisPlan&, const PlannerState& h) {
         EXPECT_EQ(hint(h.negLinAcc), hint(h.negLinAccSpare));
         return Shape{ramp(h.negLinAcc), holdForTime(), ramp(A), ramp(0)};
     }},
    // Hold a0, then a Tri pulse up to vT at the end of T.
    {48, 0.5, 0, 0.75, 1.5, true, 24, kNoId, "linHldLo", "",
     [](const AxisPlan& r, const PlannerState& h) {
         EXPECT_EQ(hint(h.linHldLo), r.curAcc);
         auto of = [](double s) { return Shape{holdForTime(), ramp(s), ramp(0)}; };
         return of(levelReachingVel(r, of, r.curAcc, kTriTop));
     }},
    {97, 0.5, 0, 0.75, 1.5, true, 24, 22, "linHldLo", "negLinAcc",
     [](const AxisPlan& r, const PlannerState& h) {
         EXPECT_EQ(hint(h.linHldLo), r.curAcc);
         EXPECT_EQ(hint(h.negLinAcc), r.curAcc);
         auto of = [](double s) { return Shape{holdForTime(), ramp(s), ramp(0)}; };
         return of(levelReachingVel(r, of, r.curAcc, kTriTop));
     }},
    // Hold a0, then a Trap pulse holding A up to vT.
    {49, 0.5, 0, 1.4375, 2, true, kNoId, 20, "", "negLinAcc",
     [](const AxisPlan& r, const PlannerState& h) {
         EXPECT_EQ(hint(h.negLinAcc), r.curAcc);
         return Shape{holdForVel(), ramp(A), holdForTime(), ramp(0)};
     }},
    // Up to a hold level, hold, on up to A and down to zero at vT.
    {50, 0.25, 0, 1.046875, 2, true, 24, 26, "linHldLo", "linHldLo linHldHi",
     [](const AxisPlan&, const PlannerState& h) {
         // The far-below call runs last: linHldLo = a0, linHldHi = the level.
         EXPECT_EQ(hint(h.linHldLo), 0.25);
         EXPECT_NEAR(hint(h.linHldHi), 0.5, 1e-12);
         return Shape{ramp(h.linHldHi), holdForTime(), ramp(A), ramp(0)};
     }},
    // From here the velocity comes down; a true end test commits a ramp of a0
    // to zero. Negative Trap pulse straight down to vT, then cruise.
    {52, 0.5, 1, 0, 3, false, kNoId, kNoId, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(-A), holdForVel(), ramp(0), holdForTime()};
     }},
    // a0 ramped to zero, cruise at vZ, negative Trap pulse.
    {53, 0.5, 1, 0, 3, false, kNoId, kNoId, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(0), holdForTime(), ramp(-A), holdForVel(), ramp(0)};
     }},
    // Negative Trap pulse, then a negative Tri pulse of the seeded peak.
    {56, 0, 1.625, 0, 2.5, false, kNoId, 9, "", "trapTriSeed",
     [](const AxisPlan&, const PlannerState& h) {
         const double q = hint(h.trapTriSeed);
         EXPECT_NEAR(q, 0.5, 1e-12);
         return Shape{ramp(-A), holdForVel(), ramp(0), ramp(-q), ramp(0)};
     }},
    // Negative Tri pulse from a0 straight down to vT, then cruise; its peak is
    // left on the false side.
    {57, 0.5, 1, 0.75, 2, false, kNoId, kNoId, "hldLinHi", "",
     [](const AxisPlan& r, const PlannerState& h) {
         auto of = [](double s) { return Shape{ramp(-s), ramp(0), holdForTime()}; };
         const double s = levelReachingVel(r, of, 0, kTriTop);
         EXPECT_NEAR(hint(h.hldLinHi), s, 1e-9);
         return of(s);
     }},
    // a0 ramped to zero, cruise at vZ, negative Tri pulse.
    {58, 0.5, 1, 0.75, 2, false, kNoId, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) { return Shape{ramp(0), holdForTime(), ramp(-s), ramp(0)}; };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Negative Tri pulse of the seeded peak, then a negative Trap pulse.
    {59, 0, 1.625, 0, 2.5, false, 13, kNoId, "triTrapSeed", "",
     [](const AxisPlan&, const PlannerState& h) {
         const double q = hint(h.triTrapSeed);
         return Shape{ramp(-q), ramp(0), ramp(-A), holdForVel(), ramp(0)};
     }},
    // Full negative Tri pulse, cruise, negative Trap pulse.
    {60, 0, 2, 0, 4, false, 13, kNoId, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(-A), ramp(0), holdForTime(), ramp(-A), holdForVel(), ramp(0)};
     }},
    // Negative Trap pulse, cruise, full negative Tri pulse.
    {61, 0, 2, 0, 4, false, 15, 9, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(-A), holdForVel(), ramp(0), holdForTime(), ramp(-A), ramp(0)};
     }},
    // A negative hold level entered and left at full jerk (also node 72).
    {64, 0, 1, 0.5, 1.5, false, 25, 19, "linHldLo linHldHi", "hldLinLo",
     [](const AxisPlan&, const PlannerState& h) {
         EXPECT_EQ(hint(h.hldLinLo), hint(h.linHldHi));
         EXPECT_EQ(h.linHldLo, 0.0);
         return Shape{ramp(-h.hldLinLo), holdForTime(), ramp(0)};
     }},
    // Full negative Tri pulse, cruise, negative Tri pulse down to vT.
    {66, 0, 1, 0, 3, false, kNoId, 9, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(-A), ramp(0), holdForTime(), ramp(-s), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Negative Tri pulse, cruise, full negative Tri pulse.
    {69, 0, 1.5, 0, 3, false, 13, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(-s), ramp(0), holdForTime(), ramp(-A), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Negative Trap pulse, Lin ramp up to a negative hold level, hold, ramp to
    // zero.
    {73, 0, 1, 0, 2, false, 19, 17, "hldLinHi", "hldLinHi",
     [](const AxisPlan& r, const PlannerState&) {
         auto st = markedState();
         AxisPlan probe = r;
         probe.tgtPos = -1e6;
         Step2Tree.nodes[73](*st, probe);
         EXPECT_NEAR(st->hldLinHi, 0.5, 1e-12);
         return Shape{ramp(-A), ramp(-st->hldLinHi), holdForTime(), ramp(0)};
     }},
    // Down to the hold level, hold, on down to -A and back to zero.
    {74, 0, 1, 0, 2, false, 27, 25, "linHldLo linHldHi", "linHldLo",
     [](const AxisPlan& r, const PlannerState&) {
         auto st = markedState();
         AxisPlan probe = r;
         probe.tgtPos = -1e6;
         Step2Tree.nodes[74](*st, probe);
         EXPECT_NEAR(st->linHldLo, 0.5, 1e-12);
         return Shape{ramp(-st->linHldLo), holdForTime(), ramp(-A), ramp(0)};
     }},
    // Full negative Tri pulse, cruise, positive Tri pulse up to vT.
    {77, 0, 1, 1, 3, false, 3, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(-A), ramp(0), holdForTime(), ramp(s), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Positive Tri pulse from a0, cruise, full negative Tri pulse.
    {79, 0.5, 0, 0, 3, true, kNoId, 2, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(s), ramp(0), holdForTime(), ramp(-A), ramp(0)};
         };
         return of(levelReachingVel(r, of, r.curAcc, kTriTop));
     }},
    // Negative Trap pulse, cruise, full positive Tri pulse.
    {81, 0, 1, 0, 4, false, 1, 5, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(-A), holdForVel(), ramp(0), holdForTime(), ramp(A), ramp(0)};
     }},
    // Full positive pulse to vS, cruise, negative Trap pulse.
    {83, 0.5, 0, -1, 4, true, 4, 6, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(A), ramp(0), holdForTime(), ramp(-A), holdForVel(), ramp(0)};
     }},
    // Negative Tri pulse, cruise, full positive Tri pulse.
    {85, 0, 0.5, 0, 3, false, 3, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) {
             return Shape{ramp(-s), ramp(0), holdForTime(), ramp(A), ramp(0)};
         };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
    // Full negative Tri pulse, cruise, positive Trap pulse.
    {87, 0, 0, 1, 4, false, 7, 5, "", "",
     [](const AxisPlan&, const PlannerState&) {
         return Shape{ramp(-A), ramp(0), holdForTime(), ramp(A), holdForVel(), ramp(0)};
     }},
    // Two positive Tri pulses, the first at the larger root; strict test.
    {89, 0.5, 0, 0.75, 1.25, false, 10, kNoId, "triTriSeed1", "",
     [](const AxisPlan& r, const PlannerState& h) {
         const double ap = hint(h.triTriSeed);
         EXPECT_NEAR(ap, 1.25, 1e-12);
         auto of = [ap](double o) { return Shape{ramp(ap), ramp(0), ramp(o), ramp(0)}; };
         return of(levelReachingVel(r, of, 0, ap));
     }},
    // a0 ramped to zero, cruise at vZ, Tri pulse up to vT.
    {90, 0.5, 0, 1, 3, true, kNoId, kNoId, "", "",
     [](const AxisPlan& r, const PlannerState&) {
         auto of = [](double s) { return Shape{ramp(0), holdForTime(), ramp(s), ramp(0)}; };
         return of(levelReachingVel(r, of, 0, kTriTop));
     }},
};

TEST(Step2TreeEndPosition, NodeAnswerChangesAtTheEndOfItsShape) {
    for (const EndCase& c : kEnds) {
        SCOPED_TRACE("node " + std::to_string(c.node));
        const AxisPlan base = stateAt(c.a0, c.v0, c.vT, 0.0, c.T);
        const PlannerState hints = hintsOf(c.node, base);
        const ShapeEnd e = runShape(base, c.shape(base, hints));
        expectRealShapeEndingAtTarget(base, e);

        const double delta = 1e-9 * (1.0 + std::fabs(e.p));
        for (bool above : {true, false}) {
            SCOPED_TRACE(above ? "target beyond the end" : "target short of the end");
            auto st = markedState();
            AxisPlan rec = base;
            rec.tgtPos = above ? e.p + delta : e.p - delta;
            bool result = false;
            {
                StdoutCapture quiet;
                result = Step2Tree.nodes[c.node](*st, rec);
            }
            EXPECT_EQ(result, above == c.trueAbove);
            EXPECT_EQ(rec.step2Profile, above ? c.idAbove : c.idBelow);
            EXPECT_EQ(writtenHints(*st), above ? c.hintsAbove : c.hintsBelow);
            const bool appends = appendsOnTheWay(c.node, result);
            EXPECT_EQ(rec.pointCount, appends ? 2 : 1);
            if (!appends) {
                EXPECT_EQ(rec.curAcc, c.a0);
            }
        }
    }
}

// Node 68 keeps its own peak q = s - A with a hold of T - 2s/J: the sections
// fill T, but they arrive at vT only when s = A. The node still compares with
// the end of exactly those sections.
TEST(Step2TreeEndPosition, Node68ComparesWithItsOwnSections) {
    const AxisPlan base = stateAt(0.0, 2.5, 0.0, 0.0, 2.0);
    const double s = std::sqrt(3.0);  // A^2 - ((J T - A) A - (v0 - vT) J) = 3
    const double q = s - kA;
    const Shape own{ramp(-kA), hold(2.0 - 2.0 * s / kJ), ramp(0), ramp(-q), ramp(0)};
    const ShapeEnd e = runShape(base, own);
    EXPECT_GE(e.shortest, 0.0);
    EXPECT_NEAR(e.t, 2.0, 1e-12);
    EXPECT_GT(std::fabs(e.v - base.tgtVel), 1.0);  // not at vT
    const double delta = 1e-9 * (1.0 + std::fabs(e.p));
    for (bool above : {true, false}) {
        auto st = markedState();
        AxisPlan rec = base;
        rec.tgtPos = above ? e.p + delta : e.p - delta;
        EXPECT_EQ(Step2Tree.nodes[68](*st, rec), !above);
        EXPECT_EQ(rec.step2Profile, above ? kNoId : 9);
        EXPECT_EQ(writtenHints(*st), "");
    }
}

// Two Tri pulses of the same sign fill T: their peaks are the two roots of a
// quadratic. Each root is tried first; the side of the target picks the seed.
TEST(Step2TreeEndPosition, TwoRootSearches) {
    struct Case {
        int node;
        double v0, vT, T;
        double sign;  // of the pulses
    } cases[] = {{38, 0, 0.25, 0.875, 1.0}, {93, 0, 0.25, 0.875, 1.0},
                 {63, 1, 0.5, 1.25, -1.0},  {71, 1, 0.5, 1.25, -1.0}};
    for (const Case& c : cases) {
        SCOPED_TRACE("node " + std::to_string(c.node));
        const bool rising = c.sign > 0.0;
        const AxisPlan base = stateAt(0.0, c.v0, c.vT, 0.0, c.T);
        auto run = [&](double pT, PlannerState& st) {
            AxisPlan rec = base;
            rec.tgtPos = pT;
            const bool r = Step2Tree.nodes[c.node](st, rec);
            return std::make_pair(r, rec.step2Profile);
        };
        // Far on either side one attempt matches; its first peak is the seed.
        auto low = markedState();
        auto high = markedState();
        run(-1e6, *low);
        run(1e6, *high);
        // Rising: far behind caps with the smaller root, far beyond raises
        // with the larger. Falling: the seed is the magnitude of the first peak.
        const double small = rising ? low->triTriSeed : high->triTriSeed;
        const double large = rising ? high->triTriSeed : low->triTriSeed;
        EXPECT_EQ(rising ? low->triTriSeedMode : high->triTriSeedMode, 2);
        EXPECT_EQ(rising ? high->triTriSeedMode : low->triTriSeedMode, 1);
        EXPECT_LT(small, large);

        // Both orders are real shapes filling T and ending at vT.
        const double sg = c.sign;
        const Shape smallFirst{ramp(sg * small), ramp(0), ramp(sg * large), ramp(0)};
        const Shape largeFirst{ramp(sg * large), ramp(0), ramp(sg * small), ramp(0)};
        const ShapeEnd eS = runShape(base, smallFirst), eL = runShape(base, largeFirst);
        expectRealShapeEndingAtTarget(base, eS);
        expectRealShapeEndingAtTarget(base, eL);

        const double lo = std::min(eS.p, eL.p), hi = std::max(eS.p, eL.p);
        const double d = 1e-9;
        const int triTri = rising ? 10 : 11;
        struct Probe {
            double pT;
            bool result;
            int id;
            int mode;
            double seed;
        } probes[] = {
            // Rising: short of the small-first end caps; beyond the large-first end raises.
            {lo - d, false, triTri, rising ? 2 : 1, rising ? small : large},
            {hi + d, false, triTri, rising ? 1 : 2, rising ? large : small},
            // Between the two ends no attempt matches.
            {(lo + hi) / 2.0, !rising, rising ? triTri : 28, kUntouchedFlag, kUntouched},
        };
        for (const Probe& p : probes) {
            auto st = markedState();
            const auto [result, id] = run(p.pT, *st);
            EXPECT_EQ(result, p.result) << p.pT;
            EXPECT_EQ(id, p.id) << p.pT;
            EXPECT_EQ(st->triTriSeedMode, p.mode) << p.pT;
            if (p.seed == kUntouched) {
                EXPECT_EQ(st->triTriSeed, kUntouched);
            } else {
                EXPECT_NEAR(st->triTriSeed, p.seed, 1e-12) << p.pT;
            }
        }
    }
}

// ---------------------------------------------------- time and velocity tests

// A remaining time equal to the limiting time makes a time test true (>=),
// and sets the id of its true side; the next representable time above does
// not. Every value here is exact in binary.
TEST(Step2TreeBoundary, TimeTestsIncludeTheLimit) {
    struct Case {
        int node;
        double a0, v0, vT, limit;
        int idTrue, idFalse;
    } cases[] = {
        {13, 0, 0, 1, 3, 0, kNoId},          {16, 0, 0, -1.5, 3, 2, kNoId},
        {18, 0.5, 0, 1.0625, 1.75, kNoId, kNoId}, {19, 0.5, 0, 0.5625, 1.25, kNoId, kNoId},
        {29, 0, 0, 1, 2, kNoId, kNoId},      {25, 0, 0, 1, 2, kNoId, kNoId},
        {28, 0, 0, 2, 3, kNoId, kNoId},      {37, 0, 0, 1, 2, kNoId, 10},
        {92, 0, 0, 1, 2, kNoId, 10},         {55, 0, 0, -2, 3, kNoId, kNoId},
        {62, 0, 1, 0, 2, kNoId, 11},         {70, 0, 1, 0, 2, kNoId, 11},
        {67, 0, 1, 0, 2, kNoId, kNoId},      {65, 0, 1, 0, 2, kNoId, kNoId},
        {76, 0, 0, 1.5, 3, 3, kNoId},        {78, 0, 0, 1.5, 3, 2, kNoId},
        {80, 0, 1, 0, 3, 1, kNoId},          {82, 1, 1.25, 0, 2.5, 6, kNoId},
        {84, 0, 1.5, 0, 3, 3, kNoId},        {86, 0, 0, 1, 3, 7, kNoId},
        {88, 1, 0, 0.75, 1.5, kNoId, kNoId},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("node " + std::to_string(c.node));
        for (bool atLimit : {true, false}) {
            auto st = markedState();
            const double T = atLimit ? c.limit : std::nextafter(c.limit, 10.0);
            AxisPlan rec = stateAt(c.a0, c.v0, c.vT, 0.0, T);
            EXPECT_EQ(Step2Tree.nodes[c.node](*st, rec), atLimit);
            EXPECT_EQ(rec.step2Profile, atLimit ? c.idTrue : c.idFalse);
        }
    }
    // Nodes 19 and 88 keep the peak of their Tri pulse: here exactly 1.
    auto st = markedState();
    AxisPlan rec = stateAt(0.5, 0, 0.5625, 0.0, 1.25);
    Step2Tree.nodes[19](*st, rec);
    EXPECT_EQ(st->triPeakAcc, 1.0);
    rec = stateAt(1, 0, 0.75, 0.0, 1.5);
    Step2Tree.nodes[88](*st, rec);
    EXPECT_EQ(st->triPeakAcc, 1.0);
}

// A target velocity equal to the compared velocity makes a velocity test true
// (node 5 alone is strict); one step below it does not.
TEST(Step2TreeBoundary, VelocityTestsIncludeEquality) {
    struct Case {
        int node;
        double a0, v0, T;
        double vEdge;   // the vT (node 5: the v0) at which the test flips
        bool trueUp;    // true for vT at or above the edge (else at or below)
    } cases[] = {
        {9, 0.5, 0.25, 1, 0.3125, true},    // vT = vZ
        {10, 0.5, 0, 1, 0.4375, true},      // vT = vS
        {14, 0.5, 0, 1, 0.5625, true},      // a0^2 added, as the tree has it
        {27, 0.5, 0, 1, 0.9375, true},
        {41, 0.5, 0, 1, 0.4375, false},     // holding a0 still reaches vT
        {94, 0.5, 0, 1, 0.4375, false},
        {47, 0.5, 0, 1, 0.5625, false},
        {51, 0.5, 0, 1, -0.4375, true},
        {54, 0, 1, 1, 0, false},
        {75, 0.5, 0, 1, -0.0625, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("node " + std::to_string(c.node));
        const double beyond = c.trueUp ? -10.0 : 10.0;  // direction that turns it false
        for (bool atEdge : {true, false}) {
            auto st = markedState();
            const double vT = atEdge ? c.vEdge : std::nextafter(c.vEdge, beyond);
            AxisPlan rec = stateAt(c.a0, c.v0, vT, 0.0, c.T);
            EXPECT_EQ(Step2Tree.nodes[c.node](*st, rec), atEdge);
            EXPECT_EQ(rec.step2Profile, kNoId);
            EXPECT_EQ(writtenHints(*st), "");
        }
    }
    // Node 14 is not node 10's test: at vT = vS with a0 > 0 it is false.
    {
        auto st = freshState();
        AxisPlan rec = stateAt(0.5, 0, 0.4375, 0.0, 1);
        EXPECT_FALSE(Step2Tree.nodes[14](*st, rec));
    }
    // Node 5 compares strictly: (A^2 - a0^2)/(2J) + v0 = -V is false.
    {
        auto st = freshState();
        AxisPlan rec = stateAt(0.5, -kV - 0.1875, 0, 0.0, 1);
        EXPECT_FALSE(Step2Tree.nodes[5](*st, rec));
        rec.curVel = std::nextafter(rec.curVel, 0.0);
        EXPECT_TRUE(Step2Tree.nodes[5](*st, rec));
    }
    // Nodes 24 and 91: a0 equal to the kept Tri peak is enough.
    for (int node : {24, 91}) {
        auto st = markedState();
        st->triPeakAcc = 0.75;
        AxisPlan rec = stateAt(0.75, 0, 1, 0.0, 1);
        EXPECT_TRUE(Step2Tree.nodes[node](*st, rec)) << node;
        EXPECT_EQ(rec.step2Profile, 10) << node;
    }
    auto st = markedState();
    st->triPeakAcc = 0.75;
    AxisPlan rec = stateAt(std::nextafter(0.75, 0.0), 0, 1, 0.0, 1);
    EXPECT_FALSE(Step2Tree.nodes[91](*st, rec));
    EXPECT_EQ(rec.step2Profile, kNoId);
}

// At an end position exactly on the target the end tests answer true (>=),
// except node 89, which needs the shape to pass the target.
TEST(Step2TreeBoundary, EndPositionOnTheTarget) {
    // At rest on the target with no time left: every shape is empty (its
    // guarded peaks add nothing at this scale) and ends on p0.
    for (int node : {12, 57, 58, 90, 89}) {
        auto st = markedState();
        AxisPlan rec = makeAxis(1.0, 0.0, 0.0, 1.0, kV, kA, kJ);
        rec.step2Profile = kNoId;
        EXPECT_EQ(Step2Tree.nodes[node](*st, rec), node != 89) << node;
    }
}

// ------------------------------------------------------------- the guards

TEST(Step2TreeGuards, RadicandAtOrBelowZeroUsesTheTinyValue) {
    // Node 88's peak: (vT - v0) J - a0^2/2 = 0 exactly, then below zero.
    for (double vT : {0.25, 0.0}) {
        auto st = markedState();
        AxisPlan rec = stateAt(1.0, 0.0, vT, 0.0, 0.5);
        EXPECT_TRUE(Step2Tree.nodes[88](*st, rec));  // (a0 + 2e-50)/J >= T
        EXPECT_EQ(st->triPeakAcc, kRootGuard);
    }
    // Node 19: vT = vZ.
    {
        auto st = markedState();
        AxisPlan rec = stateAt(0.5, 0.25, 0.3125, 0.0, 0.25);
        EXPECT_TRUE(Step2Tree.nodes[19](*st, rec));  // tZ + 2e-50/J >= T
        EXPECT_EQ(st->triPeakAcc, kRootGuard);
    }
    // Nodes 12 and 57 leave their guarded peak as the bound.
    for (int node : {12, 57}) {
        auto st = markedState();
        AxisPlan rec = stateAt(0.0, 0.5, 0.5, node == 12 ? -1.0 : 5.0, 1.0);
        EXPECT_FALSE(Step2Tree.nodes[node](*st, rec)) << node;
        EXPECT_EQ(st->hldLinHi, kRootGuard) << node;
    }
    // Node 89's root: (c + 1e-50)/2.
    {
        auto st = markedState();
        AxisPlan rec = stateAt(0.5, 0.0, 0.0, 1e6, 1.0);
        const double c = (kJ * 1.0 + 0.5) / 2.0;
        EXPECT_FALSE(Step2Tree.nodes[89](*st, rec));
        EXPECT_EQ(st->triTriSeed, (c + kRootGuard) / 2.0);
    }
    // Nodes 43 and 64: (b - 1e-50)/2 and (1e-50 - J T)/2.
    {
        auto st = markedState();
        AxisPlan rec = stateAt(0.0, 0.0, 10.0, -1e6, 1.0);
        EXPECT_FALSE(Step2Tree.nodes[43](*st, rec));
        EXPECT_EQ(st->linHldHi, (kJ - kRootGuard) / 2.0);
        rec = stateAt(0.0, 10.0, 0.0, 1e6, 1.0);
        EXPECT_FALSE(Step2Tree.nodes[64](*st, rec));
        EXPECT_EQ(st->linHldHi, -(kRootGuard - kJ) / 2.0);
    }
    // Every node from 9 on, on states where its radicands are zero or
    // negative, answers without leaving a NaN anywhere.
    const double states[][5] = {
        {0, 0, 0, 0, 0.8}, {0.5, 1, -3, 2, 1.3}, {0.5, -3, 1, -2, 1.3}, {1, 0, 0, 0, 0.7},
    };
    for (int node = 9; node < kStep2NodeCount; ++node) {
        for (const auto& s : states) {
            auto st = freshState();
            AxisPlan rec = stateAt(s[0], s[1], s[2], s[3], s[4]);
            {
                StdoutCapture quiet;
                Step2Tree.nodes[node](*st, rec);
            }
            const double values[] = {st->triPeakAcc, st->hldLinLo, st->hldLinHi, st->linHldLo,
                                     st->linHldHi, st->negLinAcc, st->negLinAccSpare,
                                     st->trapTriSeed, st->triTrapSeed, st->triTriSeed,
                                     rec.curPos, rec.curVel, rec.curAcc, rec.remTime};
            for (double v : values) EXPECT_FALSE(std::isnan(v)) << "node " << node;
        }
    }
}

// Where a node doubles or quadruples a guarded root it takes 2e-50 or 4e-50:
// on a time (or acceleration) scale of that size the limit shows it.
TEST(Step2TreeGuards, ScaledGuardsOnTheirOwnScale) {
    struct Case {
        int node;
        double A, v0, vT;
        double limit;  // the time test's limiting time with the guard in it
    } cases[] = {
        {16, 1e-50, 0, 1, 2e-50},   // (2A + 2e-50)/J
        {29, 1e-50, 0, 0, 2e-50},   // (2A + 2e-50)/J
        {78, 1e-50, 0, -1, 2e-50},  // (2A + 2e-50)/J
        {19, 1, 0, 0, 1e-50},       // 2e-50/J
        {88, 1, 0, 0, 1e-50},       // 2e-50/J
        {37, 1, 0, 0, 2e-50},       // 4e-50/J
        {62, 1, 0, 0, 2e-50},       // 4e-50/J
    };
    for (const Case& c : cases) {
        for (bool atLimit : {true, false}) {
            auto st = freshState();
            const double T = atLimit ? c.limit : std::nextafter(c.limit, 1.0);
            AxisPlan rec = stateAt(0.0, c.v0, c.vT, 0.0, T);
            rec.maxAcc = c.A;
            EXPECT_EQ(Step2Tree.nodes[c.node](*st, rec), atLimit) << "node " << c.node;
        }
    }
}

// Where a node uses the square of a guarded root for the velocity after the
// pulse, it is the tiny square: the pulse counts as empty, and the node's end
// is that of the rest of its sections.
TEST(Step2TreeGuards, GuardedSquareMakesAnEmptyPulse) {
    struct Case {
        int node;
        double v0, vT;
        bool trueBelow;  // P >= pT
        double rest;     // the pulse that follows the cruise
    } cases[] = {{69, 0, 0, true, -kA}, {79, 1, 0, false, -kA}, {85, 0, 1, true, kA}};
    for (const Case& c : cases) {
        SCOPED_TRACE("node " + std::to_string(c.node));
        const double T = 3.0;
        const AxisPlan base = stateAt(0.0, c.v0, c.vT, 0.0, T);
        const ShapeEnd e = runShape(base, Shape{hold(T - 2.0 * kA / kJ), ramp(c.rest), ramp(0)});
        for (bool above : {true, false}) {
            auto st = freshState();
            AxisPlan rec = base;
            rec.tgtPos = e.p + (above ? 1e-12 : -1e-12);
            EXPECT_EQ(Step2Tree.nodes[c.node](*st, rec), above != c.trueBelow);
        }
    }
}

// ------------------------------------------------------- appended sections

// The ramp of a0 to zero that nodes 20, 21, 52, 53, 57, 58 and 90 commit on
// one branch continues the curve so far (here one section up from rest to
// a0, stored mirrored or not) and leaves the working state on its end point.
TEST(Step2TreeAppend, CommittedRampContinuesTheCurve) {
    struct Case {
        int node;
        double v0, vT, pT;  // a target on the side that commits the ramp
    } cases[] = {{20, 0, 1.0625, -1e6}, {21, 0, 0.5625, -1e6}, {90, 0, 1, -1e6},
                 {52, 1, 0, -1e6},      {53, 1, 0, -1e6},      {57, 1, 0.75, -1e6},
                 {58, 1, 0.75, -1e6}};
    const double a0 = 0.5, rise = a0 / kJ;
    for (const Case& c : cases) {
        for (int inv : {1, -1}) {
            SCOPED_TRACE("node " + std::to_string(c.node) + " inv " + std::to_string(inv));
            // Point 0 at rest, then a ramp at jerk J up to a0 (working frame).
            AxisPlan rec = stateAt(0.0, c.v0, c.vT, c.pT, 3.0);
            rec.inv = inv;
            rec.secPos[0] = rec.secAcc[0] = 0.0;
            rec.secVel[0] = c.v0 * inv;
            rec.curAcc = a0;
            rec.curVel = c.v0 + kJ * rise * rise / 2.0;
            rec.curPos = c.v0 * rise + kJ * rise * rise * rise / 6.0;
            rec.planTime = rise;
            appendPoint(rec);

            auto st = freshState();
            const double rem0 = rec.remTime;
            const bool result = Step2Tree.nodes[c.node](*st, rec);
            ASSERT_TRUE(appendsOnTheWay(c.node, result));
            ASSERT_EQ(rec.pointCount, 3);
            const CurveReport r = expectPhysicalCurve(rec);
            EXPECT_NEAR(r.peakJerk, kJ, 1e-12);
            EXPECT_DOUBLE_EQ(rec.planTime, 2.0 * rise);
            expectStateIsLastPoint(rec, rise, rem0);
            EXPECT_EQ(rec.secAcc[2], 0.0);
            EXPECT_EQ(std::signbit(rec.secAcc[2]), inv < 0);  // 0 times inv
        }
    }
}

// ------------------------------------------------------------- diagnostics

TEST(Step2TreeDiagnostics, PrintedLinesWithTracingOff) {
    struct Case {
        double a0, v0, vT, pT, T;
        const char* text;
        int id;
    } cases[] = {
        {0.5, 0, 0.5, 0.375, 1.15, "D26-89\n", 10},
        {0.5, 0, 0.4375, 0, 1, "D46-complex -0.750000\n", 22},
        {0.5, 0.5, 0, 0.5, 1.75, "D71 branched\n", 19},
    };
    for (const Case& c : cases) {
        auto st = freshState();
        AxisPlan rec = stateAt(c.a0, c.v0, c.vT, c.pT, c.T);
        StdoutCapture cap;
        walkStep2(*st, Step2Tree, rec);
        EXPECT_EQ(cap.text(), c.text);
        EXPECT_EQ(rec.step2Profile, c.id);
    }
}

// Node 26's fall-back: neither its own end test nor node 89's passes, so it
// reports and ends the walk with node 89's id and seed. When node 89 passes,
// node 26 hands on to node 41 silently.
TEST(Step2TreeDiagnostics, Node26FallsBackOnNode89) {
    auto st = markedState();
    AxisPlan rec = stateAt(0.5, 0, 0.5, 0.375, 1.15);
    StdoutCapture cap;
    EXPECT_TRUE(Step2Tree.nodes[26](*st, rec));
    EXPECT_EQ(cap.text(), "D26-89\n");
    EXPECT_EQ(rec.step2Profile, 10);
    EXPECT_EQ(writtenHints(*st), "triTriSeed1");

    auto st2 = markedState();
    AxisPlan rec2 = stateAt(0.5, 0, 0.5, -1e6, 1.15);
    StdoutCapture cap2;
    EXPECT_FALSE(Step2Tree.nodes[26](*st2, rec2));
    EXPECT_EQ(cap2.text(), "");
    EXPECT_EQ(rec2.step2Profile, kNoId);
}

// Node 46 without a real root: the stand-in peak goes to negLinAccSpare,
// which no solver reads, and negLinAcc keeps what it held.
TEST(Step2TreeDiagnostics, Node46WithoutARealRoot) {
    auto st = markedState();
    st->negLinAcc = 0.3;
    AxisPlan rec = stateAt(0.5, 0, 0.4375, 0, 1);
    StdoutCapture cap;
    EXPECT_TRUE(Step2Tree.nodes[46](*st, rec));
    EXPECT_EQ(cap.text(), "D46-complex -0.750000\n");
    EXPECT_EQ(rec.step2Profile, 22);
    EXPECT_EQ(st->negLinAcc, 0.3);
    // w = J T = 2, d = (vT - v0) J = 0.875: ((d - a0^2/2) / ((w - a0)/2) - (w - a0)/2) / 2
    EXPECT_DOUBLE_EQ(st->negLinAccSpare, ((0.875 - 0.125) / 0.75 - 0.75) / 2.0);
}

}  // namespace
}  // namespace vekta::test
