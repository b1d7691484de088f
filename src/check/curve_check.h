// A physical check of a written curve: each section is integrated from its
// start point with the constant jerk implied by its two end points, and the
// result is compared with the next stored point.
#ifndef VEKTA_CHECK_CURVE_CHECK_H
#define VEKTA_CHECK_CURVE_CHECK_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

struct CurveReport {
    int sections;             // pointCount - 1 (0 for a bad point count)
    bool pointCountValid;     // 1 <= pointCount <= kMaxPoints
    bool finite;              // every stored value finite
    bool timesNonDecreasing;  // no section of negative duration
    double maxVelMismatch;    // |integrated end velocity - stored velocity|
    double maxPosMismatch;    // |integrated end position - stored position|
    int worstSection;         // index of the end point of the largest mismatch
    double maxAccJump;        // acceleration step across a zero-length section
    double peakVel;           // largest |v| anywhere inside the sections
    double peakAcc;           // largest |a| anywhere inside the sections
    double peakJerk;          // largest |jerk| of a section of positive length
    double endTime, endAcc, endVel, endPos;  // the last stored point
};

// Integrate every section of rec's curve (points 0 .. pointCount - 1).
CurveReport checkCurve(const AxisPlan& rec);

// One section, from point i - 1 to point i (1 <= i < kMaxPoints), integrated
// from its start point with its implied jerk.
struct SectionReport {
    double dt;             // duration (negative when time goes back)
    double jerk;           // implied jerk; 0 for a section of zero length
    double velEnd, posEnd;  // integrated end state, to compare with point i
    double peakVel;        // largest |v| inside: both ends and a turning point
    double peakVelTime;    // time of that largest |v|
};
SectionReport integrateSection(const AxisPlan& rec, int i);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
