#include "numeric/axis_curve.h"

#include "numeric/numerics.h"

namespace vekta {
inline namespace VEKTA_COPY {

void appendPoint(AxisPlan& rec) {
    const double s = static_cast<double>(rec.inv);
    const int k = rec.pointCount;
    if (pointFits(k)) {
        rec.secTime[k] = rec.planTime;
        rec.secPos[k] = rec.curPos * s;
        rec.secVel[k] = rec.curVel * s;
        rec.secAcc[k] = rec.curAcc * s;
    }
    rec.pointCount = k + 1;
}

int appendAccToZero(AxisPlan& rec) {
    const double dt = rec.curAcc / rec.maxJerk;
    rec.planTime += dt;
    const double vel = rec.curVel + 0.5 * rec.curAcc * dt;
    const double pos = rec.curPos + rec.curVel * dt + 0.5 * rec.curAcc * dt * dt -
                       rec.maxJerk * cube(dt) / 6.0;
    rec.curAcc = 0.0;
    rec.curVel = vel;
    rec.curPos = pos;
    const double s = static_cast<double>(rec.inv);
    const int k = rec.pointCount;
    if (pointFits(k)) {
        rec.secTime[k] = rec.planTime;
        rec.secPos[k] = rec.curPos * s;
        rec.secAcc[k] = 0.0 * s;  // a signed zero in the mirrored frame (0.0 / s alike)
        rec.secVel[k] = rec.curVel * s;
    }
    rec.pointCount = k + 1;
    rec.remTime -= dt;
    return rec.pointCount;
}

void takeSnapshot(AxisPlan& rec) {
    rec.snapPointCount = rec.pointCount;
    rec.snapPlanTime = rec.planTime;
    rec.snapPos = rec.curPos;
    rec.snapVel = rec.curVel;
    rec.snapAcc = rec.curAcc;
    rec.snapTgtPos = rec.tgtPos;
    rec.snapTgtVel = rec.tgtVel;
    rec.snapInv = rec.inv;
}

void restoreSnapshot(AxisPlan& rec) {
    rec.curPos = rec.snapPos;
    rec.pointCount = rec.snapPointCount;
    rec.curVel = rec.snapVel;
    rec.curAcc = rec.snapAcc;
    rec.tgtPos = rec.snapTgtPos;
    rec.tgtVel = rec.snapTgtVel;
}

void negateState(AxisPlan& rec) {
    rec.curPos = -rec.curPos;
    rec.tgtPos = -rec.tgtPos;
    rec.curVel = -rec.curVel;
    rec.tgtVel = -rec.tgtVel;
    rec.curAcc = -rec.curAcc;
}

void mirrorAxis(AxisPlan& rec) {
    negateState(rec);
    rec.inv = -rec.inv;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
