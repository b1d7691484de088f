#include "trajectory.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "sweep.h"
#include "vekta/vekta.h"

namespace vekta::cli {

namespace {

bool update(const Motion& m) {
    switch (m.mode) {
        case Mode::Position:
            return vektaPostionModeParaUpd(m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc,
                                           0.0);
        case Mode::Velocity:
            return vektaVelocityModeParaUpd(m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0);
        case Mode::Conveyor:
            return vektaPostionModeParaUpdConveyor(m.axes, m.conveyorVel, m.conveyorLimit, m.tgt, m.maxVel,
                                                   m.maxAcc, m.jerkRatio, m.spare);
    }
    return false;
}

int sample(Mode mode, int axis, double& p, double& v, double& a, int& count) {
    return mode == Mode::Velocity ? vektaVelocityModePerFreedom(axis, 1, &p, &v, &a, count)
                                  : vektaPositionModePerFreedom(axis, 1, &p, &v, &a, count);
}

Row startRow(const Motion& m) {
    Row r{};
    for (int i = 0; i < m.axes; ++i) {
        // The conveyor catch-up starts at rest at 0 in the fixed frame.
        if (m.mode == Mode::Conveyor) continue;
        r.pos[i] = m.pos[i];
        r.vel[i] = m.vel[i];
        r.acc[i] = m.acc[i];
    }
    return r;
}

}  // namespace

Trajectory runTrajectory(const Motion& m, bool libraryOutput, bool trace) {
    Trajectory tr;
    tr.motion = m;
    std::unique_ptr<sweep::QuietStdout> quiet;
    if (!libraryOutput && !trace) quiet = std::make_unique<sweep::QuietStdout>();
    setTestLevel(trace);

    tr.rows.push_back(startRow(m));
    for (int i = 0; i < m.axes; ++i) {
        AxisSummary& s = tr.axis[i];
        s.start = tr.rows[0].pos[i];
        s.target = m.mode == Mode::Velocity ? NAN : m.tgt[i];
        s.end = s.start;
        s.finishedPeriod = -1;
    }

    tr.accepted = update(m);
    if (tr.accepted) {
        tr.plannedTime = getLeftMoveTime();
        char why[256];
        tr.checkCode = vektaCheckPlan(why, sizeof why);
        if (tr.checkCode != VEKTA_CHECK_OK) tr.checkMessage = why;
        int remaining = m.axes;
        for (int period = 1; remaining > 0 && period <= kMaxPeriods; ++period) {
            Row row = tr.rows.back();
            row.t = period * kPeriod;
            for (int i = 0; i < m.axes; ++i) {
                AxisSummary& s = tr.axis[i];
                // A finished axis holds its end state; the controller stops asking.
                if (s.finishedPeriod < 0) {
                    int count = 0;
                    const int done = sample(m.mode, i, row.pos[i], row.vel[i], row.acc[i], count);
                    if (done) {
                        s.finishedPeriod = period;
                        --remaining;
                    }
                }
                row.jerk[i] = (row.acc[i] - tr.rows.back().acc[i]) / kPeriod;
                s.end = row.pos[i];
                s.peakVel = std::max(s.peakVel, std::fabs(row.vel[i]));
                s.peakAcc = std::max(s.peakAcc, std::fabs(row.acc[i]));
                s.peakJerk = std::max(s.peakJerk, std::fabs(row.jerk[i]));
            }
            tr.rows.push_back(row);
        }
        tr.finished = remaining == 0;
    }
    std::fflush(stdout);
    setTestLevel(false);
    return tr;
}

void writeCsv(std::FILE* out, const Trajectory& tr) {
    std::fprintf(out, "t");
    for (int i = 0; i < tr.motion.axes; ++i) std::fprintf(out, ",pos%d,vel%d,acc%d,jerk%d", i, i, i, i);
    std::fprintf(out, "\n");
    for (const Row& r : tr.rows) {
        std::fprintf(out, "%.3f", r.t);
        for (int i = 0; i < tr.motion.axes; ++i) {
            std::fprintf(out, ",%.12g,%.12g,%.12g,%.12g", r.pos[i], r.vel[i], r.acc[i], r.jerk[i]);
        }
        std::fprintf(out, "\n");
    }
}

void printTable(std::FILE* out, const Trajectory& tr) {
    const Motion& m = tr.motion;
    std::fprintf(out, "%s update, %d %s, jerk ratio %g", modeName(m.mode), m.axes, m.axes == 1 ? "axis" : "axes",
                 m.jerkRatio);
    if (m.mode == Mode::Conveyor) {
        std::fprintf(out, ", conveyor %g up to %g (spare %g)", m.conveyorVel, m.conveyorLimit, m.spare);
    }
    std::fprintf(out, "\n");
    if (!tr.accepted) {
        std::fprintf(out, "the library rejected this motion: nothing to sample\n");
        return;
    }
    std::fprintf(out, "planned duration %.6f s (axis 0); sampled every %g s\n", tr.plannedTime, kPeriod);
    if (tr.checkCode == VEKTA_CHECK_OK) {
        std::fprintf(out, "plan check: passed\n");
    } else {
        std::fprintf(out, "plan check: refused (code %d): %s\n", tr.checkCode, tr.checkMessage.c_str());
    }
    std::fprintf(out, "%4s %9s %9s %9s %9s  %-19s %-19s %-20s %6s\n", "axis", "start", "target", "end", "done at",
                 "peak |v| / limit", "peak |a| / limit", "peak |j| / limit", "period");
    for (int i = 0; i < m.axes; ++i) {
        const AxisSummary& s = tr.axis[i];
        char target[32], doneAt[32], period[32];
        if (std::isnan(s.target)) {
            std::snprintf(target, sizeof target, "%s", "-");
        } else {
            std::snprintf(target, sizeof target, "%.4f", s.target);
        }
        if (s.finishedPeriod < 0) {
            std::snprintf(doneAt, sizeof doneAt, "%s", "-");
            std::snprintf(period, sizeof period, "%s", "never");
        } else {
            std::snprintf(doneAt, sizeof doneAt, "%.3f s", s.finishedPeriod * kPeriod);
            std::snprintf(period, sizeof period, "%d", s.finishedPeriod);
        }
        std::fprintf(out, "%4d %9.4f %9s %9.4f %9s  %8.4f / %-8.4g %8.4f / %-8.4g %9.3f / %-8.4g %6s\n", i, s.start,
                     target, s.end, doneAt, s.peakVel, m.maxVel[i], s.peakAcc, m.maxAcc[i], s.peakJerk,
                     tr.jerkLimit(i), period);
    }
    if (!tr.finished) {
        std::fprintf(out, "not every axis finished within %d periods (%g s)\n", kMaxPeriods, kMaxPeriods * kPeriod);
    }
}

}  // namespace vekta::cli
