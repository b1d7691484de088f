// A randomized end-to-end sweep of the library through its exported functions:
// draw motions, plan them, sample every axis to the end, and check what a
// controller relies on (accepted, synchronised, on target, within limits,
// minimal in time).
#ifndef VEKTA_TOOLS_SWEEP_H
#define VEKTA_TOOLS_SWEEP_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "double_s.h"

namespace vekta::sweep {

enum class Mode { Position, Velocity };
enum class StartClass { Rest, Moving, Beyond };
constexpr int kStartClasses = 3;
constexpr int kModes = 2;

// One motion as the update receives it.
struct Motion {
    int axes;  // 1 or 6
    Mode mode;
    StartClass start;
    double jerkRatio;
    double pos[6], vel[6], acc[6], tgt[6], maxVel[6], maxAcc[6];
};

// What can go wrong with a motion, in the order they are reported.
enum Failure {
    kRejected,         // the update returned 0
    kNoEnd,            // an axis did not finish within the period budget
    kNotSynchronised,  // six axes did not all finish in the same period
    kOffTarget,        // last sample not on the target (position) or not at rest
    kVelocityLimit,    // a sample beyond maxVel
    kAccelerationLimit,
    kJerkLimit,        // acceleration changed by more than J x 5 ms between samples
    kNotMinimal,       // single-axis rest-to-rest duration differs from the double-S optimum
    kFailureKinds
};
const char* failureName(int kind);

// vektaCheckPlan's codes, 0 (ok) .. kCheckCodes - 1.
constexpr int kCheckCodes = 13;
const char* checkCodeName(int code);

struct Outcome {
    bool failed[kFailureKinds];
    int checkCode;        // vektaCheckPlan right after the update (0 = ok)
    double plannedTime;   // axis 0's planned duration
    int periods;          // periods until every axis finished
    double minimalError;  // |planned - double-S| for single-axis rest-to-rest moves, else 0
    bool any() const;
};

// The motion number `index` of the sweep with `seed` (independent of the others).
Motion drawMotion(std::uint64_t seed, std::uint64_t index);

// Plan and sample one motion through the exported functions.
Outcome runMotion(const Motion& m);

struct ClassTally {
    long cases = 0, accepted = 0, synchronised = 0, onTarget = 0, withinLimits = 0, clean = 0;
    long checked = 0;                 // plans that pass vektaCheckPlan
    long byCheckCode[kCheckCodes] = {};
    long checkedNotClean = 0;         // passed the check, yet a sampled failure
    long cleanNotChecked = 0;         // no sampled failure, yet refused by the check
};

struct Summary {
    std::uint64_t seed = 0;
    long cases = 0;
    long failures[kFailureKinds] = {};
    ClassTally byClass[kStartClasses][kModes];
    double worstMinimalError = 0.0;
    static constexpr int kKeptExamples = 10;
    int examples = 0;
    std::uint64_t exampleIndex[kKeptExamples] = {};
    int exampleKind[kKeptExamples] = {};  // a failure kind, or kFailureKinds + check code
    void keepExample(std::uint64_t index, int kind);
    void add(std::uint64_t index, const Motion& m, const Outcome& o);
};

// The command line that replays motion `index` of the sweep with `seed`.
std::string replayCommand(const char* program, std::uint64_t seed, std::uint64_t index);

// Print a motion's update arguments, one axis a line.
void printMotion(std::FILE* out, const Motion& m);

void printSummary(std::FILE* out, const Summary& s, const char* program);

// Sends the library's standard output to /dev/null while it lives; `out()`
// writes to the original standard output.
class QuietStdout {
public:
    QuietStdout();
    ~QuietStdout();
    QuietStdout(const QuietStdout&) = delete;
    QuietStdout& operator=(const QuietStdout&) = delete;
    std::FILE* out() const { return saved_; }

private:
    int savedFd_;
    std::FILE* saved_;
};

}  // namespace vekta::sweep

#endif
