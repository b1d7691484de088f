#include "trajectory.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <memory>
#include <stdexcept>

#include "sweep.h"
#include "vekta/vekta.h"
#include "vekta/vekta_c.h"

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

// Runs `call` with the standard output sent to a temporary file and returns
// what was printed.
template <typename Call>
std::string captureStdout(Call call) {
    std::fflush(stdout);
    std::FILE* tmp = std::tmpfile();
    const int saved = dup(STDOUT_FILENO);
    if (tmp == nullptr || saved < 0) {
        call();
        if (tmp != nullptr) std::fclose(tmp);
        if (saved >= 0) close(saved);
        return "";
    }
    dup2(fileno(tmp), STDOUT_FILENO);
    call();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::string text;
    std::rewind(tmp);
    char buf[4096];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, tmp)) > 0;) text.append(buf, n);
    std::fclose(tmp);
    return text;
}

// The lines of the library's output that say why something failed: its error,
// overflow and refusal lines, not the always-printed update lines.
std::string libraryErrors(const std::string& output) {
    static const char* const kWords[] = {"error", "fail", "overflow", "incorrect", "timeout"};
    std::string found, line;
    std::size_t from = 0;
    while (from < output.size()) {
        std::size_t end = output.find('\n', from);
        if (end == std::string::npos) end = output.size();
        line = output.substr(from, end - from);
        from = end + 1;
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
        std::string lower = line;
        for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (const char* w : kWords) {
            if (lower.find(w) != std::string::npos) {
                found += (found.empty() ? "" : "; ") + line;
                break;
            }
        }
    }
    return found;
}

// The velocity of the frame an axis's velocity limit holds in: the conveyor's
// for axis 0 of a catch-up, otherwise the fixed frame.
double conveyorFrame(const Motion& m, int axis) { return m.mode == Mode::Conveyor && axis == 0 ? m.conveyorVel : 0.0; }

// The own call for the motion's mode, with the jerk limits it asks for.
int ownCall(VektaPlanner* p, const Motion& m) {
    double jerk[VEKTA_MAX_AXES];
    for (int i = 0; i < m.axes; ++i) jerk[i] = m.jerkLimit(i);
    switch (m.mode) {
        case Mode::Position:
            return vektaPlannerMove(p, m.axes, m.tgt, m.maxVel, m.maxAcc, jerk, m.pos, m.vel, m.acc);
        case Mode::Velocity:
            return vektaPlannerStop(p, m.axes, m.maxVel, m.maxAcc, jerk, m.pos, m.vel, m.acc);
        case Mode::Conveyor:
            return vektaPlannerCatchUp(p, m.axes, m.conveyorVel, m.conveyorLimit, m.tgt, m.maxVel, m.maxAcc, jerk);
    }
    return VEKTA_INVALID_ARGUMENT;
}

const char* statusName(int status) {
    switch (status) {
        case VEKTA_INVALID_ARGUMENT:
            return "invalid argument";
        case VEKTA_NO_PROFILE:
            return "no profile";
        case VEKTA_PLAN_REFUSED:
            return "plan refused";
        case VEKTA_CONVEYOR_OUT_OF_REACH:
            return "conveyor out of reach";
        default:
            return "status";
    }
}

// Axis i of `row` is sampled: its jerk since the previous row, its summary.
void account(Trajectory& tr, Row& row, int i) {
    AxisSummary& s = tr.axis[i];
    row.jerk[i] = (row.acc[i] - tr.rows.back().acc[i]) / tr.period();
    s.end = row.pos[i];
    s.peakVel = std::max(s.peakVel, std::fabs(row.vel[i] - conveyorFrame(tr.motion, i)));
    s.peakAcc = std::max(s.peakAcc, std::fabs(row.acc[i]));
    s.peakJerk = std::max(s.peakJerk, std::fabs(row.jerk[i]));
}

// Through the vekta.h functions: the update, then each axis sampled until it
// reports its end.
void runLegacy(Trajectory& tr, bool shown) {
    const Motion& m = tr.motion;
    tr.updateOutput = captureStdout([&] { tr.accepted = update(m); });
    if (shown) {
        std::fwrite(tr.updateOutput.data(), 1, tr.updateOutput.size(), stdout);
        std::fflush(stdout);
    }
    char why[256];
    tr.checkCode = vektaCheckPlan(why, sizeof why);
    tr.checkMessage = why;
    std::unique_ptr<sweep::QuietStdout> quiet;
    if (!shown) quiet = std::make_unique<sweep::QuietStdout>();
    if (tr.accepted) {
        tr.plannedTime = getLeftMoveTime();
        int remaining = m.axes;
        const int budget = periodBudget(m.period);
        for (int period = 1; remaining > 0 && period <= budget; ++period) {
            Row row = tr.rows.back();
            row.t = period * m.period;
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
                account(tr, row, i);
            }
            tr.rows.push_back(row);
        }
        tr.finished = remaining == 0;
    }
    std::fflush(stdout);
    setTestLevel(false);
}

// Through the library's own calls: the period, the call, then vektaPlannerNext
// once a period until every axis has finished.
void runOwnCalls(Trajectory& tr, bool shown, bool trace) {
    const Motion& m = tr.motion;
    const std::unique_ptr<VektaPlanner, void (*)(VektaPlanner*)> planner(vektaPlannerCreate(), vektaPlannerDestroy);
    VektaPlanner* p = planner.get();
    if (p == nullptr) throw std::runtime_error("out of memory for a planner");
    if (shown) vektaPlannerOutputToStdout(p);
    vektaPlannerSetTrace(p, trace);
    tr.status = vektaPlannerSetPeriod(p, m.period);
    if (tr.status == VEKTA_OK) tr.status = ownCall(p, m);
    tr.accepted = tr.status == VEKTA_OK;
    tr.reason = vektaPlannerError(p);
    char why[256];
    tr.checkCode = vektaPlannerCheck(p, why, sizeof why);
    tr.checkMessage = why;
    if (!tr.accepted) return;
    tr.plannedTime = vektaPlannerDuration(p);
    const int budget = periodBudget(m.period);
    double pos[VEKTA_MAX_AXES], vel[VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES];
    for (int period = 1; !tr.finished && period <= budget; ++period) {
        const int done = vektaPlannerNext(p, pos, vel, acc);
        if (done < 0) break;
        Row row = tr.rows.back();
        row.t = period * m.period;
        for (int i = 0; i < m.axes; ++i) {
            row.pos[i] = pos[i];
            row.vel[i] = vel[i];
            row.acc[i] = acc[i];
            if (done == 1) tr.axis[i].finishedPeriod = period;
            account(tr, row, i);
        }
        tr.rows.push_back(row);
        tr.finished = done == 1;
    }
    std::fflush(stdout);
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

Units unitsNamed(const std::string& name) {
    if (name == "m") return {"m", "m/s", "m/s^2", "m/s^3"};
    if (name == "rad") return {"rad", "rad/s", "rad/s^2", "rad/s^3"};
    throw std::runtime_error("--units: \"" + name + "\" is neither m nor rad");
}

int periodBudget(double period) {
    return static_cast<int>(std::min(200000.0, std::floor(200.0 / period + 1e-9)));
}

int timeDecimals(double period) {
    int d = 3;
    for (double scaled = period * 1e3; d < 9 && std::fabs(scaled - std::round(scaled)) > 1e-6; scaled *= 10.0) ++d;
    return d;
}

std::string describe(const Motion& m) {
    const char* axes = m.axes == 1 ? "axis" : "axes";
    char text[160];
    if (!m.ownCalls()) {
        std::snprintf(text, sizeof text, "%s update, %d %s, jerk ratio %g", modeName(m.mode), m.axes, axes,
                      m.jerkRatio);
        return text;
    }
    static const char* const kCall[] = {"position move (vektaPlannerMove)", "velocity stop (vektaPlannerStop)",
                                        "conveyor catch-up (vektaPlannerCatchUp)"};
    char jerk[48] = "jerk limit per axis";
    if (!m.jerkPerAxis) std::snprintf(jerk, sizeof jerk, "jerk ratio %g", m.jerkRatio);
    std::snprintf(text, sizeof text, "%s, %d %s, %s, period %g s", kCall[static_cast<int>(m.mode)], m.axes, axes,
                  jerk, m.period);
    return text;
}

Trajectory runTrajectory(const Motion& m, bool libraryOutput, bool trace) {
    Trajectory tr;
    tr.motion = m;
    const bool shown = libraryOutput || trace;

    tr.rows.push_back(startRow(m));
    for (int i = 0; i < m.axes; ++i) {
        AxisSummary& s = tr.axis[i];
        s.start = tr.rows[0].pos[i];
        s.target = m.mode == Mode::Velocity ? NAN : m.tgt[i];
        s.end = s.start;
        s.finishedPeriod = -1;
    }
    if (m.ownCalls()) {
        runOwnCalls(tr, shown, trace);
        return tr;
    }
    setTestLevel(trace);
    runLegacy(tr, shown);
    return tr;
}

std::string refusal(const Trajectory& tr) {
    const Motion& m = tr.motion;
    const std::string check = "plan check (code " + std::to_string(tr.checkCode) + "): " + tr.checkMessage;
    if (!tr.accepted && m.ownCalls()) {
        return std::string("the library refused the motion (") + statusName(tr.status) + "): " + tr.reason;
    }
    if (!tr.accepted) {
        std::string library = libraryErrors(tr.updateOutput);
        if (library.empty() && m.mode == Mode::Conveyor && m.spare < 0.002) {
            library = "the conveyor update refuses a spare below 0.002, silently";
        }
        return "the library refused the motion: " + (library.empty() ? "it printed no reason" : library) + "; " +
               check;
    }
    if (tr.checkCode != VEKTA_CHECK_OK) {
        return "the plan check refused the plan (code " + std::to_string(tr.checkCode) + "): " + tr.checkMessage;
    }
    if (!tr.finished) {
        const int budget = periodBudget(tr.period());
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%g", budget * tr.period());
        return "not every axis finished within " + std::to_string(budget) + " periods (" + seconds + " s)";
    }
    return "";
}

Motion stopHalfWay(const Trajectory& tr) {
    const std::size_t half = std::min(tr.rows.size() - 1, static_cast<std::size_t>(tr.plannedTime / 2.0 / tr.period()));
    const Row& r = tr.rows[half];
    Motion stop = tr.motion;
    stop.mode = Mode::Velocity;
    for (int i = 0; i < stop.axes; ++i) {
        stop.pos[i] = stop.tgt[i] = r.pos[i];
        stop.vel[i] = r.vel[i];
        stop.acc[i] = r.acc[i];
    }
    return stop;
}

void writeCsv(std::FILE* out, const Trajectory& tr) {
    std::fprintf(out, "t");
    for (int i = 0; i < tr.motion.axes; ++i) std::fprintf(out, ",pos%d,vel%d,acc%d,jerk%d", i, i, i, i);
    std::fprintf(out, "\n");
    const int decimals = timeDecimals(tr.period());
    for (const Row& r : tr.rows) {
        std::fprintf(out, "%.*f", decimals, r.t);
        for (int i = 0; i < tr.motion.axes; ++i) {
            std::fprintf(out, ",%.12g,%.12g,%.12g,%.12g", r.pos[i], r.vel[i], r.acc[i], r.jerk[i]);
        }
        std::fprintf(out, "\n");
    }
}

void printTable(std::FILE* out, const Trajectory& tr, const Units& u) {
    const Motion& m = tr.motion;
    std::fprintf(out, "%s", describe(m).c_str());
    if (m.mode == Mode::Conveyor && m.ownCalls()) {
        std::fprintf(out, ", conveyor %g up to %g", m.conveyorVel, m.conveyorLimit);
    } else if (m.mode == Mode::Conveyor) {
        std::fprintf(out, ", conveyor %g up to %g (spare %g)", m.conveyorVel, m.conveyorLimit, m.spare);
    }
    std::fprintf(out, "\n");
    if (!tr.accepted) {
        std::fprintf(out, "the library rejected this motion: nothing to sample\n");
        return;
    }
    std::fprintf(out, "planned duration %.6f s (%s); sampled every %g s; units %s, %s, %s, %s\n", tr.plannedTime,
                 m.ownCalls() ? "all axes" : "axis 0", tr.period(), u.pos, u.vel, u.acc, u.jerk);
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
            std::snprintf(doneAt, sizeof doneAt, "%.*f s", timeDecimals(tr.period()), s.finishedPeriod * tr.period());
            std::snprintf(period, sizeof period, "%d", s.finishedPeriod);
        }
        std::fprintf(out, "%4d %9.4f %9s %9.4f %9s  %8.4f / %-8.4g %8.4f / %-8.4g %9.3f / %-8.4g %6s\n", i, s.start,
                     target, s.end, doneAt, s.peakVel, m.maxVel[i], s.peakAcc, m.maxAcc[i], s.peakJerk,
                     tr.jerkLimit(i), period);
    }
    if (m.mode == Mode::Conveyor) {
        std::fprintf(out, "axis 0 is shown in the fixed frame: its target moves with the conveyor (%g + %g t) and its "
                          "peak |v| is taken in the conveyor's frame (v - %g), where its limit holds\n",
                     m.tgt[0], m.conveyorVel, m.conveyorVel);
    }
    if (!tr.finished) {
        const int budget = periodBudget(tr.period());
        std::fprintf(out, "not every axis finished within %d periods (%g s)\n", budget, budget * tr.period());
    }
}

}  // namespace vekta::cli
