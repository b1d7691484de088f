// The exported entry points: thin wrappers over the process-wide default state.
#include "api/default_state.h"
#include "check/plan_check.h"
#include "planner/sampler.h"
#include "planner/updates.h"
#include "vekta/vekta.h"

using vekta::defaultState;

vekta::PlannerState vekta::processState;  // a record: one for both copies

namespace {

// samplePlan on the default planner, whose address the compiler knows: the
// one-sample path a controller takes every period reads it without a pointer.
[[gnu::noinline]] int sampleAnyDefault(int axis, int nSamples, double* pos, double* vel, double* acc, int& count) {
    return vekta::sampleAnyCall(defaultState(), axis, nSamples, pos, vel, acc, count);
}

int sampleDefault(int axis, int nSamples, double* pos, double* vel, double* acc, int& count) {
    return vekta::sampleAxis(defaultState(), axis, nSamples, pos, vel, acc, count,
                             [&] { return sampleAnyDefault(axis, nSamples, pos, vel, acc, count); });
}

}  // namespace

int vektaPositionModePerFreedom(int axis, int nSamples, double* pos, double* vel, double* acc,
                                int& count) {
    return sampleDefault(axis, nSamples, pos, vel, acc, count);
}

int vektaVelocityModePerFreedom(int axis, int nSamples, double* pos, double* vel, double* acc,
                                int& count) {
    return sampleDefault(axis, nSamples, pos, vel, acc, count);
}

double getLeftMoveTime() { return vekta::leftMoveTime(defaultState()); }

void setTestLevel(bool on) { defaultState().traceOn = on; }

void vektaSetRecovery(bool on) { defaultState().recovery = on; }

void vektaDebugInfo() {}

bool vektaPostionModeParaUpd(int n, const double* tgtPos, const double* maxVel,
                             const double* maxAcc, double jerkRatio, const double* curPos,
                             const double* curVel, const double* curAcc, double /*spare*/) {
    return vekta::positionUpdate(defaultState(), vekta::kLegacyCounts, n, tgtPos, maxVel, maxAcc, {nullptr, jerkRatio}, curPos,
                                 curVel, curAcc);
}

bool vektaVelocityModeParaUpd(int n, const double* maxVel, const double* maxAcc, double jerkRatio,
                              const double* curPos, const double* curVel, const double* curAcc,
                              double /*spare*/) {
    return vekta::velocityUpdate(defaultState(), vekta::kLegacyCounts, n, maxVel, maxAcc, {nullptr, jerkRatio}, curPos, curVel,
                                 curAcc);
}

bool vektaPostionModeParaUpdConveyor(int n, double conveyorVel, double conveyorLimit,
                                     const double* tgtPos, const double* maxVel,
                                     const double* maxAcc, double jerkRatio, double spare) {
    return vekta::conveyorUpdate(defaultState(), vekta::kLegacyCounts, n, conveyorVel, conveyorLimit, tgtPos, maxVel,
                                 maxAcc, {nullptr, jerkRatio}, spare);
}

int vektaCheckPlan(char* message, int messageSize) {
    return vekta::checkPlan(defaultState(), message, messageSize);
}
