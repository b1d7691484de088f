// The exported sampling entry points: thin wrappers over the default state.
#include "api/sampler.h"
#include "vekta/vekta.h"

using vekta::defaultState;

int vektaPositionModePerFreedom(int axis, int nSamples, double* pos, double* vel, double* acc,
                                int& count) {
    return vekta::samplePlan(defaultState(), axis, nSamples, pos, vel, acc, count);
}

int vektaVelocityModePerFreedom(int axis, int nSamples, double* pos, double* vel, double* acc,
                                int& count) {
    return vekta::samplePlan(defaultState(), axis, nSamples, pos, vel, acc, count);
}

double getLeftMoveTime() { return vekta::leftMoveTime(defaultState()); }

void setTestLevel(bool on) { defaultState().traceOn = on; }

void vektaDebugInfo() {}
