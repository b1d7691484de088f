// The planner handles of vekta_c.h: a VektaPlanner is a PlannerState of its
// own (with its output sink), and every function is the default planner's
// entry point applied to it.
#include <cstddef>
#include <cstdint>
#include <new>

#include "check/plan_check.h"
#include "planner/sampler.h"
#include "planner/updates.h"
#include "vekta/vekta_c.h"

struct VektaPlanner {
    vekta::PlannerState state;
};

namespace {

vekta::OutputSink& outputOf(VektaPlanner* planner) { return planner->state.output; }

}  // namespace

VektaPlanner* vektaPlannerCreate(void) { return new (std::nothrow) VektaPlanner{}; }

void vektaPlannerDestroy(VektaPlanner* planner) { delete planner; }

size_t vektaPlannerSize(void) { return sizeof(VektaPlanner); }

VektaPlanner* vektaPlannerInit(void* mem) {
    if (mem == nullptr || reinterpret_cast<std::uintptr_t>(mem) % alignof(std::max_align_t) != 0) {
        return nullptr;
    }
    return new (mem) VektaPlanner{};
}

int vektaPlannerPositionUpdate(VektaPlanner* planner, int n, const double* tgtPos,
                               const double* maxVel, const double* maxAcc, double jerkRatio,
                               const double* curPos, const double* curVel, const double* curAcc) {
    return vekta::positionUpdate(planner->state, n, tgtPos, maxVel, maxAcc, jerkRatio, curPos,
                                 curVel, curAcc) ? 1 : 0;
}

int vektaPlannerVelocityUpdate(VektaPlanner* planner, int n, const double* maxVel,
                               const double* maxAcc, double jerkRatio, const double* curPos,
                               const double* curVel, const double* curAcc) {
    return vekta::velocityUpdate(planner->state, n, maxVel, maxAcc, jerkRatio, curPos, curVel,
                                 curAcc) ? 1 : 0;
}

int vektaPlannerConveyorUpdate(VektaPlanner* planner, int n, double conveyorVel,
                               double conveyorLimit, const double* tgtPos, const double* maxVel,
                               const double* maxAcc, double jerkRatio, double spare) {
    return vekta::conveyorUpdate(planner->state, n, conveyorVel, conveyorLimit, tgtPos, maxVel,
                                 maxAcc, jerkRatio, spare) ? 1 : 0;
}

int vektaPlannerSample(VektaPlanner* planner, int axis, int nSamples, double* pos, double* vel,
                       double* acc, int* count) {
    return vekta::samplePlan(planner->state, axis, nSamples, pos, vel, acc, *count);
}

double vektaPlannerLeftTime(const VektaPlanner* planner) { return vekta::leftMoveTime(planner->state); }

int vektaPlannerCheck(const VektaPlanner* planner, char* message, int messageSize) {
    return vekta::checkPlan(planner->state, message, messageSize);
}

void vektaPlannerSetTrace(VektaPlanner* planner, int on) { planner->state.traceOn = on != 0; }

void vektaPlannerSetRecovery(VektaPlanner* planner, int on) { planner->state.recovery = on != 0; }

void vektaPlannerOutputToStdout(VektaPlanner* planner) {
    outputOf(planner) = {vekta::kOutputStdout, nullptr, nullptr, nullptr};
}

void vektaPlannerOutputToFile(VektaPlanner* planner, FILE* file) {
    outputOf(planner) = {file ? vekta::kOutputFile : vekta::kOutputOff, file, nullptr, nullptr};
}

void vektaPlannerOutputToCallback(VektaPlanner* planner, VektaOutputFn fn, void* user) {
    outputOf(planner) = {fn ? vekta::kOutputCallback : vekta::kOutputOff, nullptr, fn, user};
}

void vektaPlannerOutputOff(VektaPlanner* planner) {
    outputOf(planner) = {vekta::kOutputOff, nullptr, nullptr, nullptr};
}
