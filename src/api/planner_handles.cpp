// The planner handles of vekta_c.h: a VektaPlanner is a PlannerState of its
// own (with its output sink). The library's own calls go to the checked
// requests; the handle forms are the default planner's entry points applied
// to the handle's state. Every function takes a NULL planner and returns its
// failure value.
#include <cstddef>
#include <cstdint>
#include <new>

#include "check/plan_check.h"
#include "planner/requests.h"
#include "planner/sampler.h"
#include "planner/updates.h"
#include "vekta/vekta_c.h"

struct VektaPlanner {
    vekta::PlannerState state;
    bool ownMemory;  // made by vektaPlannerCreate: vektaPlannerDestroy frees it
};

static_assert(VEKTA_MAX_AXES == vekta::kMaxAxes, "the public and the internal axis capacity are one");

namespace {

vekta::OutputSink& outputOf(VektaPlanner* planner) { return planner->state.output; }

// A new planner prints nothing until its output is switched on.
VektaPlanner* makePlanner(void* mem, bool ownMemory) {
    VektaPlanner* planner = new (mem) VektaPlanner{};
    planner->ownMemory = ownMemory;
    outputOf(planner) = {vekta::kOutputOff, nullptr, nullptr, nullptr};
    return planner;
}

}  // namespace

VektaPlanner* vektaPlannerCreate(void) {
    void* mem = ::operator new(sizeof(VektaPlanner), std::nothrow);
    return mem != nullptr ? makePlanner(mem, true) : nullptr;
}

void vektaPlannerDestroy(VektaPlanner* planner) {
    if (planner == nullptr || !planner->ownMemory) return;
    planner->~VektaPlanner();
    ::operator delete(planner);
}

size_t vektaPlannerSize(void) { return sizeof(VektaPlanner); }

VektaPlanner* vektaPlannerInit(void* mem) {
    if (mem == nullptr || reinterpret_cast<std::uintptr_t>(mem) % alignof(std::max_align_t) != 0) {
        return nullptr;
    }
    return makePlanner(mem, false);
}

// ---- The library's own calls

int vektaPlannerMove(VektaPlanner* planner, int axes, const double* target, const double* maxVel,
                     const double* maxAcc, const double* maxJerk, const double* pos, const double* vel,
                     const double* acc) {
    if (planner == nullptr) return VEKTA_INVALID_ARGUMENT;
    return vekta::requestMove(planner->state, {axes, target, maxVel, maxAcc, maxJerk, pos, vel, acc});
}

int vektaPlannerStop(VektaPlanner* planner, int axes, const double* maxVel, const double* maxAcc,
                     const double* maxJerk, const double* pos, const double* vel, const double* acc) {
    if (planner == nullptr) return VEKTA_INVALID_ARGUMENT;
    return vekta::requestStop(planner->state, {axes, nullptr, maxVel, maxAcc, maxJerk, pos, vel, acc});
}

int vektaPlannerCatchUp(VektaPlanner* planner, int axes, double conveyorVel, double conveyorLimit,
                        const double* target, const double* maxVel, const double* maxAcc,
                        const double* maxJerk) {
    if (planner == nullptr) return VEKTA_INVALID_ARGUMENT;
    return vekta::requestCatchUp(planner->state, conveyorVel, conveyorLimit,
                                 {axes, target, maxVel, maxAcc, maxJerk, nullptr, nullptr, nullptr});
}

const char* vektaPlannerError(const VektaPlanner* planner) {
    return planner != nullptr ? planner->state.error : "planner is NULL";
}

int vektaPlannerSetPeriod(VektaPlanner* planner, double seconds) {
    if (planner == nullptr) return VEKTA_INVALID_ARGUMENT;
    return vekta::requestPeriod(planner->state, seconds);
}

double vektaPlannerPeriod(const VektaPlanner* planner) {
    return planner != nullptr ? vekta::updatePeriod(planner->state) : 0.0;
}

int vektaPlannerAxes(const VektaPlanner* planner) {
    return planner != nullptr && vekta::hasPlan(planner->state) ? planner->state.axisCount : 0;
}

double vektaPlannerDuration(const VektaPlanner* planner) {
    return planner != nullptr ? vekta::planDuration(planner->state) : 0.0;
}

double vektaPlannerMinimumTime(const VektaPlanner* planner, int axis) {
    return planner != nullptr ? vekta::axisMinimumTime(planner->state, axis) : -1.0;
}

int vektaPlannerStateAt(const VektaPlanner* planner, double t, double* pos, double* vel, double* acc) {
    return planner != nullptr ? vekta::planStateAt(planner->state, t, pos, vel, acc) : -1;
}

int vektaPlannerNext(VektaPlanner* planner, double* pos, double* vel, double* acc) {
    return planner != nullptr ? vekta::planNext(planner->state, pos, vel, acc) : -1;
}

int vektaPlannerCurve(const VektaPlanner* planner, int axis, double* time, double* pos, double* vel, double* acc,
                      int capacity) {
    if (planner == nullptr) return -1;
    const vekta::PlannerState& st = planner->state;
    const bool planned = !st.planFailed && st.planMode != vekta::kNoPlanMode && st.axisCount >= 1;
    if (!planned || axis < 0 || axis >= st.axisCount) return -1;
    const vekta::AxisPlan& r = st.records[axis];
    for (int i = 0; i < r.pointCount && i < capacity; ++i) {
        if (time != nullptr) time[i] = r.secTime[i];
        if (pos != nullptr) pos[i] = r.secPos[i];
        if (vel != nullptr) vel[i] = r.secVel[i];
        if (acc != nullptr) acc[i] = r.secAcc[i];
    }
    return r.pointCount;
}

// ---- The handle forms of the vekta.h functions

int vektaPlannerPositionUpdate(VektaPlanner* planner, int n, const double* tgtPos, const double* maxVel,
                               const double* maxAcc, double jerkRatio, const double* curPos,
                               const double* curVel, const double* curAcc) {
    if (planner == nullptr) return 0;
    return vekta::positionUpdate(planner->state, vekta::kLegacyCounts, n, tgtPos, maxVel, maxAcc,
                                 {nullptr, jerkRatio}, curPos, curVel, curAcc) ? 1 : 0;
}

int vektaPlannerVelocityUpdate(VektaPlanner* planner, int n, const double* maxVel, const double* maxAcc,
                               double jerkRatio, const double* curPos, const double* curVel,
                               const double* curAcc) {
    if (planner == nullptr) return 0;
    return vekta::velocityUpdate(planner->state, vekta::kLegacyCounts, n, maxVel, maxAcc, {nullptr, jerkRatio},
                                 curPos, curVel, curAcc) ? 1 : 0;
}

int vektaPlannerConveyorUpdate(VektaPlanner* planner, int n, double conveyorVel, double conveyorLimit,
                               const double* tgtPos, const double* maxVel, const double* maxAcc,
                               double jerkRatio, double spare) {
    if (planner == nullptr) return 0;
    return vekta::conveyorUpdate(planner->state, vekta::kLegacyCounts, n, conveyorVel, conveyorLimit, tgtPos,
                                 maxVel, maxAcc, {nullptr, jerkRatio}, spare) ? 1 : 0;
}

int vektaPlannerSample(VektaPlanner* planner, int axis, int nSamples, double* pos, double* vel, double* acc,
                       int* count) {
    if (planner == nullptr || count == nullptr) return -1;
    return vekta::samplePlan(planner->state, axis, nSamples, pos, vel, acc, *count);
}

double vektaPlannerLeftTime(const VektaPlanner* planner) {
    return planner != nullptr ? vekta::leftMoveTime(planner->state) : 0.0;
}

int vektaPlannerCheck(const VektaPlanner* planner, char* message, int messageSize) {
    if (planner == nullptr) {
        if (message != nullptr && messageSize > 0) message[0] = '\0';
        return VEKTA_CHECK_NO_PLAN;
    }
    return vekta::checkPlan(planner->state, message, messageSize);
}

// ---- Switches and output

void vektaPlannerSetTrace(VektaPlanner* planner, int on) {
    if (planner != nullptr) planner->state.traceOn = on != 0;
}

void vektaPlannerSetRecovery(VektaPlanner* planner, int on) {
    if (planner != nullptr) planner->state.recovery = on != 0;
}

void vektaPlannerOutputToStdout(VektaPlanner* planner) {
    if (planner != nullptr) outputOf(planner) = {vekta::kOutputStdout, nullptr, nullptr, nullptr};
}

void vektaPlannerOutputToFile(VektaPlanner* planner, FILE* file) {
    if (planner != nullptr) outputOf(planner) = {file ? vekta::kOutputFile : vekta::kOutputOff, file, nullptr, nullptr};
}

void vektaPlannerOutputToCallback(VektaPlanner* planner, VektaOutputFn fn, void* user) {
    if (planner != nullptr) outputOf(planner) = {fn ? vekta::kOutputCallback : vekta::kOutputOff, nullptr, fn, user};
}

void vektaPlannerOutputOff(VektaPlanner* planner) {
    if (planner != nullptr) outputOf(planner) = {vekta::kOutputOff, nullptr, nullptr, nullptr};
}
