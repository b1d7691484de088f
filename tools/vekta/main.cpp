// vekta: look at what the library plans.
//
//   vekta demo     an embedded six-axis move and the fastest stop from half-way;
//                  tables, CSV, plots
//   vekta plan     the same for a motion from a JSON file or the command line:
//                  1 or 6 axes with a jerk ratio through the vekta.h functions,
//                  anything else (up to VEKTA_MAX_AXES axes, a period, a jerk
//                  limit per axis) through the library's own calls
//   vekta verify   the randomized end-to-end sweep, with a progress bar
//
// Timings are the benchmark suite's (bench/, `make bench`).
//
// Every subcommand exits 0 when what it planned passed the plan check, 1 when
// the library or the check refused a plan (saying why on one line of stderr),
// 2 for a usage, input or output error; outputs are checked before planning.
// The library prints diagnostics on standard output; they are silenced while
// it plans and samples unless --library-output (or --trace) is given, so that
// the tool's own output stays readable.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "motion.h"
#include "plot.h"
#include "sweep.h"
#include "trajectory.h"
#include "vekta/vekta.h"
#include "vekta/vekta_c.h"

namespace vekta::cli {
namespace {

// Exit status, the same for every subcommand.
constexpr int kPlanned = 0;  // planned, checked and sampled to the end (verify: every motion clean)
constexpr int kRefused = 1;  // the library or the plan check refused a plan, or it did not finish
constexpr int kBadUsage = 2;  // bad arguments, a bad input file, an output that cannot be written

const char* const kExitStatus =
    "Exit status (every subcommand): 0 planned and checked; 1 the library or the plan check refused a plan\n"
    "(the reason on one line of stderr), or a verified motion failed; 2 a usage, input or output error.";

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

struct OutputOptions {
    std::string csv, plot, saveMotion, units = "m";
    bool noPlot = false, libraryOutput = false, trace = false;
};

void addOutputOptions(CLI::App* cmd, OutputOptions& o, bool defaults) {
    cmd->add_option("--csv", o.csv, "write the samples to this CSV file")->capture_default_str();
    cmd->add_option("--plot", o.plot, "draw position, velocity, acceleration and jerk into this .png, .svg or .pdf")
        ->capture_default_str();
    if (defaults) cmd->add_flag("--no-plot", o.noPlot, "draw no picture");
    cmd->add_option("--units", o.units, "units of the positions: m or rad (labels only)")->capture_default_str();
    cmd->add_option("--save-motion", o.saveMotion, "write the motion as JSON (a starting point for `vekta plan`)");
    cmd->add_flag("--library-output", o.libraryOutput, "show the library's own standard output");
    cmd->add_flag("--trace", o.trace, "turn on the library's trace prints (implies --library-output)");
}

// An output file must be writable before anything is planned: its directory
// exists and takes new files, and it is not a directory itself.
void checkWritable(const std::string& option, const std::string& path) {
    if (path.empty()) fail(option + ": no file name");
    const std::string what = option + " " + path + ": ";
    struct stat st {};
    if (stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) fail(what + "is a directory");
        if (access(path.c_str(), W_OK) != 0) fail(what + "is not writable");
        return;
    }
    const std::size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
    if (stat(dir.c_str(), &st) != 0) fail(what + "directory " + dir + " does not exist");
    if (!S_ISDIR(st.st_mode)) fail(what + dir + " is not a directory");
    if (access(dir.c_str(), W_OK) != 0) fail(what + "directory " + dir + " is not writable");
}

void checkPlot(const std::string& path) {
    checkWritable("--plot", path);
    try {
        plotFormatOf(path);
    } catch (const std::runtime_error& e) {
        fail("--plot " + path + ": " + e.what());
    }
    if (!gnuplotFound()) fail("--plot: gnuplot not found: install it with tools/install-deps.sh (Debian: gnuplot-nox)");
}

// Everything the options ask for that can be checked before planning.
void checkOutputs(const OutputOptions& o) {
    unitsNamed(o.units);
    if (!o.csv.empty()) checkWritable("--csv", o.csv);
    if (!o.saveMotion.empty()) checkWritable("--save-motion", o.saveMotion);
    if (!o.plot.empty() && !o.noPlot) checkPlot(o.plot);
}

std::string titleFor(const std::string& what, const Trajectory& tr) {
    const Motion& m = tr.motion;
    char text[320];
    if (m.ownCalls()) {
        std::snprintf(text, sizeof text, "%s: %s, planned %.3f s", what.c_str(), describe(m).c_str(), tr.plannedTime);
        return text;
    }
    std::snprintf(text, sizeof text, "%s: %s update, %d %s, jerk limit = %g x acceleration limit, planned %.3f s",
                  what.c_str(), modeName(m.mode), m.axes, m.axes == 1 ? "axis" : "axes", m.jerkRatio, tr.plannedTime);
    return text;
}

// The table of a planned trajectory, then its files; the reason on stderr when
// it was refused. Returns the exit status.
int report(const Trajectory& tr, const OutputOptions& o, const std::string& command, const std::string& title,
           const std::string& csv, const std::string& plot) {
    const Units u = unitsNamed(o.units);
    if (o.libraryOutput || o.trace) std::printf("\n");
    printTable(stdout, tr, u);
    const std::string why = refusal(tr);
    if (tr.accepted) {
        // A plan the check refuses is still written out: it is worth a look.
        if (!csv.empty()) {
            std::FILE* f = std::fopen(csv.c_str(), "w");
            if (f != nullptr) writeCsv(f, tr);
            if (f == nullptr || std::fclose(f) != 0) {
                std::fprintf(stderr, "%s: cannot write %s: %s\n", command.c_str(), csv.c_str(), std::strerror(errno));
                return kBadUsage;
            }
            std::printf("samples: %s (%zu rows)\n", csv.c_str(), tr.rows.size());
        }
        if (!plot.empty()) {
            std::fflush(stdout);
            const std::string error = drawPlot(tr, plot, titleFor(title, tr), u);
            if (!error.empty()) {
                std::fprintf(stderr, "%s: %s\n", command.c_str(), error.c_str());
                return kBadUsage;
            }
            std::printf("plot:    %s\n", plot.c_str());
        }
    }
    if (why.empty()) return kPlanned;
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", command.c_str(), why.c_str());
    return kRefused;
}

int saveMotion(const Motion& m, const OutputOptions& o, const std::string& command) {
    if (o.saveMotion.empty()) return kPlanned;
    std::ofstream out(o.saveMotion);
    out << motionToJson(m).dump(2) << "\n";
    out.close();
    if (!out) {
        std::fprintf(stderr, "%s: cannot write %s\n", command.c_str(), o.saveMotion.c_str());
        return kBadUsage;
    }
    std::printf("motion:  %s\n", o.saveMotion.c_str());
    return kPlanned;
}

int showMotion(const Motion& m, const OutputOptions& o, const std::string& command) {
    if (saveMotion(m, o, command) != kPlanned) return kBadUsage;
    const Trajectory tr = runTrajectory(m, o.libraryOutput, o.trace);
    return report(tr, o, command, command, o.csv, o.noPlot ? "" : o.plot);
}

// The demo: the embedded move, then the fastest stop from its half-way state
// (a velocity update), drawn beside it as <plot>-stop.<ext>.
int demo(const OutputOptions& o) {
    const std::string command = "vekta demo";
    const std::string stopPlot = o.plot.empty() || o.noPlot ? "" : withSuffix(o.plot, "-stop");
    checkOutputs(o);
    if (!stopPlot.empty()) checkPlot(stopPlot);
    const Motion m = demoMotion();
    if (saveMotion(m, o, command) != kPlanned) return kBadUsage;
    const Trajectory move = runTrajectory(m, o.libraryOutput, o.trace);
    const int status = report(move, o, command, command, o.csv, o.noPlot ? "" : o.plot);
    if (status == kBadUsage || !move.accepted) return status;

    std::printf("\nthe fastest stop from the move's state half-way (t = %.3f s):\n",
                static_cast<double>(static_cast<int>(move.plannedTime / 2.0 / move.period())) * move.period());
    const Trajectory stop = runTrajectory(stopHalfWay(move), o.libraryOutput, o.trace);
    return std::max(status, report(stop, o, command, "vekta demo, stop from half-way", "", stopPlot));
}

// ---- verify ------------------------------------------------------------------

class ProgressBar {
public:
    ProgressBar(std::uint64_t total, bool shown) : total_(total), shown_(shown) {}
    // Redrawn at most ten times a second, and once at the end.
    void update(std::uint64_t done, long failing) {
        if (!shown_ || total_ == 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (now - lastDraw_ < std::chrono::milliseconds(100) && done != total_) return;
        lastDraw_ = now;
        constexpr int kWidth = 40;
        const int filled = static_cast<int>(done * kWidth / total_);
        const double seconds = std::chrono::duration<double>(now - start_).count();
        std::fprintf(stderr, "\r[%.*s%*s] %5.1f%%  %llu/%llu motions  %ld failing  %.1f s", filled,
                     "########################################", kWidth - filled, "",
                     100.0 * static_cast<double>(done) / static_cast<double>(total_),
                     static_cast<unsigned long long>(done), static_cast<unsigned long long>(total_), failing,
                     seconds);
    }
    void finish() {
        if (shown_) std::fprintf(stderr, "\n");
    }

private:
    std::uint64_t total_;
    bool shown_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point lastDraw_{};
};

Motion fromSweep(const sweep::Motion& s) {
    Motion m;
    m.mode = s.mode == sweep::Mode::Position ? Mode::Position : Mode::Velocity;
    m.axes = s.axes;
    m.jerkRatio = s.jerkRatio;
    for (int i = 0; i < s.axes; ++i) {
        m.pos[i] = s.pos[i];
        m.vel[i] = s.vel[i];
        m.acc[i] = s.acc[i];
        m.tgt[i] = s.tgt[i];
        m.maxVel[i] = s.maxVel[i];
        m.maxAcc[i] = s.maxAcc[i];
    }
    return m;
}

struct VerifyOptions {
    std::string count = "100000", seed = "1", only;
    bool noProgress = false, strict = false, recovery = false;
    OutputOptions out;
};

// --recovery: both modes side by side, per class of motion. A conveyor
// catch-up is drawn beside every motion from its targets and limits.
enum { kRest, kMoving, kBeyond, kStop, kConveyor, kClasses };
const char* const kClassName[kClasses] = {"rest", "moving inside the limits", "beyond a limit", "velocity stop",
                                          "conveyor"};

struct ModeTally {
    long motions = 0, planned = 0, refused = 0, passing = 0, invalidSuccess = 0;
    // The worst section join and end of the plans, relative to the motion's
    // scale (its largest position, V times its time, V^2 / A): every section
    // integrated from its start with its implied jerk against the next point.
    double worstJoin = 0.0, worstEnd = 0.0;
    void add(bool ok) {
        const int code = vektaCheckPlan(nullptr, 0);
        motions += 1;
        planned += ok;
        refused += !ok;
        passing += ok && code == VEKTA_CHECK_OK;
        invalidSuccess += ok && code != VEKTA_CHECK_OK;
    }
};

bool conveyorCatchUp(const sweep::Motion& m) {
    return vektaPostionModeParaUpdConveyor(m.axes, 0.1 * m.maxVel[0], 50.0, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio,
                                           0.01);
}

// Measure the joins of every axis's curve of the shadow planner's plan.
void measureJoins(const VektaPlanner* shadow, int axes, double maxVel, double maxAcc, ModeTally& t) {
    for (int axis = 0; axis < axes; ++axis) {
        double time[16], pos[16], vel[16], acc[16];
        const int n = vektaPlannerCurve(shadow, axis, time, pos, vel, acc, 16);
        if (n < 1 || n > 16) return;
        double scale = std::max(maxVel * time[n - 1], maxVel * maxVel / maxAcc);
        for (int i = 0; i < n; ++i) scale = std::max(scale, std::fabs(pos[i]));
        for (int i = 1; i < n; ++i) {
            const double dt = time[i] - time[i - 1];
            const double jerk = dt > 0.0 ? (acc[i] - acc[i - 1]) / dt : 0.0;
            const double end = pos[i - 1] + vel[i - 1] * dt + acc[i - 1] * dt * dt / 2.0 + jerk * dt * dt * dt / 6.0;
            const double miss = std::fabs(end - pos[i]) / scale;
            t.worstJoin = std::max(t.worstJoin, miss);
            if (i == n - 1) t.worstEnd = std::max(t.worstEnd, miss);
        }
    }
}

// Plan motion m on the shadow planner in the mode given and measure its joins.
void measureMotion(VektaPlanner* shadow, const sweep::Motion& m, int c, bool recovery, ModeTally& t) {
    vektaPlannerSetRecovery(shadow, recovery ? 1 : 0);
    const bool ok = c == kConveyor
                        ? vektaPlannerConveyorUpdate(shadow, m.axes, 0.1 * m.maxVel[0], 50.0, m.tgt, m.maxVel,
                                                     m.maxAcc, m.jerkRatio, 0.01)
                    : m.mode == sweep::Mode::Position
                        ? vektaPlannerPositionUpdate(shadow, m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos,
                                                     m.vel, m.acc)
                        : vektaPlannerVelocityUpdate(shadow, m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel,
                                                     m.acc);
    if (ok) measureJoins(shadow, m.axes, m.maxVel[0], m.maxAcc[0], t);
}

void printModes(std::FILE* out, const ModeTally (&t)[kClasses][2]) {
    std::fprintf(out, "\n%-26s %-9s %9s %9s %9s %11s %16s %11s %11s\n", "class", "mode", "motions", "planned",
                 "refused", "pass check", "invalid+success", "worst join", "worst end");
    for (int c = 0; c < kClasses; ++c) {
        for (int r = 0; r < 2; ++r) {
            const ModeTally& x = t[c][r];
            std::fprintf(out, "%-26s %-9s %9ld %9ld %9ld %11ld %16ld %11.1e %11.1e\n", r == 0 ? kClassName[c] : "",
                         r ? "recovery" : "default", x.motions, x.planned, x.refused, x.passing, x.invalidSuccess,
                         x.worstJoin, x.worstEnd);
        }
    }
    std::fprintf(out, "(joins: each section integrated from its start point, relative to the motion's scale)\n");
}

int replayCase(const VerifyOptions& v, std::uint64_t seed, std::uint64_t index) {
    const std::string command = "vekta verify";
    checkOutputs(v.out);
    const sweep::Motion m = sweep::drawMotion(seed, index);
    sweep::printMotion(stdout, m);
    std::fflush(stdout);
    // The replay shows the library's output, as the sweep's replay line promises.
    setTestLevel(v.out.trace);
    const sweep::Outcome o = sweep::runMotion(m);
    setTestLevel(false);
    std::fflush(stdout);
    std::printf("planned %.17g s, %d periods;", o.plannedTime, o.periods);
    std::string failed;
    for (int k = 0; k < sweep::kFailureKinds; ++k) {
        if (o.failed[k]) failed += std::string(failed.empty() ? "" : ", ") + sweep::failureName(k);
    }
    std::printf(" %s\n", failed.empty() ? "ok" : failed.c_str());
    // Planned once more through the tool for the files and the reason of a refusal.
    const Trajectory tr = runTrajectory(fromSweep(m), false, false);
    if (!v.out.csv.empty() || !v.out.plot.empty()) {
        std::printf("\n");
        const int status = report(tr, v.out, command, sweep::replayCommand("vekta verify", seed, index), v.out.csv,
                                  v.out.plot);
        if (status == kBadUsage) return status;
    }
    if (failed.empty()) return kPlanned;
    const std::string why = refusal(tr);
    std::fprintf(stderr, "%s: motion %llu of seed %llu failed: %s%s\n", command.c_str(),
                 static_cast<unsigned long long>(index), static_cast<unsigned long long>(seed), failed.c_str(),
                 why.empty() ? "" : ("; " + why).c_str());
    return kRefused;
}

int verify(const VerifyOptions& v) {
    const std::uint64_t seed = parseInteger(v.seed, 0, UINT64_MAX, "--seed");
    if (!v.only.empty()) return replayCase(v, seed, parseInteger(v.only, 0, UINT64_MAX, "--case"));
    const std::uint64_t count = parseInteger(v.count, 1, 10000000, "--count");
    sweep::Summary s;
    s.seed = seed;
    ProgressBar bar(count, !v.noProgress && isatty(STDERR_FILENO) != 0);
    long failing = 0;
    ModeTally modes[kClasses][2];
    // The joins are measured on a planner of the tool's own planning every
    // motion once more in each mode (the curves of the default planner are
    // not to be read).
    std::unique_ptr<VektaPlanner, void (*)(VektaPlanner*)> shadow(vektaPlannerCreate(), vektaPlannerDestroy);
    {
        sweep::QuietStdout quiet;
        for (std::uint64_t i = 0; i < count; ++i) {
            const sweep::Motion m = sweep::drawMotion(seed, i);
            if (v.recovery) {  // the default mode first, for the side-by-side table
                const int c = m.mode == sweep::Mode::Velocity ? kStop : static_cast<int>(m.start);
                vektaSetRecovery(false);
                modes[c][0].add(!sweep::runMotion(m).failed[sweep::kRejected]);
                modes[kConveyor][0].add(conveyorCatchUp(m));
                vektaSetRecovery(true);
                modes[kConveyor][1].add(conveyorCatchUp(m));
                for (int r = 0; r < 2; ++r) {
                    measureMotion(shadow.get(), m, c, r == 1, modes[c][r]);
                    measureMotion(shadow.get(), m, kConveyor, r == 1, modes[kConveyor][r]);
                }
            }
            const sweep::Outcome o = sweep::runMotion(m);
            if (v.recovery) {
                const int c = m.mode == sweep::Mode::Velocity ? kStop : static_cast<int>(m.start);
                modes[c][1].motions += 1;
                modes[c][1].planned += !o.failed[sweep::kRejected];
                modes[c][1].refused += o.failed[sweep::kRejected];
                modes[c][1].passing += !o.failed[sweep::kRejected] && o.checkCode == VEKTA_CHECK_OK;
                modes[c][1].invalidSuccess += !o.failed[sweep::kRejected] && o.checkCode != VEKTA_CHECK_OK;
            }
            failing += o.any();
            s.add(i, m, o);
            bar.update(i + 1, failing);
        }
        bar.finish();
        sweep::printSummary(quiet.out(), s, v.recovery ? "vekta verify --recovery" : "vekta verify");
        if (v.recovery) printModes(quiet.out(), modes);
    }
    if (failing == 0) return kPlanned;
    std::string kinds;
    for (int k = 0; k < sweep::kFailureKinds; ++k) {
        if (s.failures[k] > 0) {
            kinds += (kinds.empty() ? "" : ", ") + std::string(sweep::failureName(k)) + " " +
                     std::to_string(s.failures[k]);
        }
    }
    std::fprintf(stderr, "vekta verify: %ld of %llu motions failed (%s); replay one with %s\n", failing,
                 static_cast<unsigned long long>(count), kinds.c_str(),
                 sweep::replayCommand("vekta verify", seed, s.exampleIndex[0]).c_str());
    return kRefused;
}

}  // namespace
}  // namespace vekta::cli

int main(int argc, char** argv) {
    using namespace vekta::cli;
    CLI::App app{"vekta: plan, sample, plot and check jerk-limited motions with libvekta"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("vekta ") + VEKTA_VERSION);
    app.footer(kExitStatus);

    OutputOptions demoOut;
    demoOut.csv = "vekta-demo.csv";
    demoOut.plot = "vekta-demo.png";
    CLI::App* demoCmd = app.add_subcommand(
        "demo", "plan and sample an embedded six-axis move and the fastest stop from half-way: tables, CSV, plots");
    addOutputOptions(demoCmd, demoOut, true);

    OutputOptions planOut;
    std::string motionFile;
    MotionArgs args;
    CLI::App* plan = app.add_subcommand("plan", "plan and sample a motion from a JSON file or the command line");
    plan->add_option("motion", motionFile, "JSON motion file ('-' for standard input)");
    CLI::Option* axisOpt =
        plan->add_option("--axis", args.axes,
                         "one axis: pos,vel,acc,target,maxVel,maxAcc[,maxJerk] (give 1 to " +
                             std::to_string(VEKTA_MAX_AXES) + "; maxJerk on every axis or none)")
            ->excludes("motion");
    plan->add_option("--mode", args.mode, "position, velocity or conveyor (with --axis)")
        ->capture_default_str()
        ->needs(axisOpt);
    CLI::Option* ratioOpt =
        plan->add_option("--jerk-ratio", args.jerkRatio, "jerk limit = acceleration limit x ratio (with --axis)")
            ->capture_default_str()
            ->needs(axisOpt);
    plan->add_option("--period", args.period,
                     "control period in seconds, 0.0001 to 1 (with --axis; without it, 0.005)")
        ->needs(axisOpt);
    plan->add_option("--conveyor", args.conveyor, "conveyor mode: velocity,limit,spare (with --axis)")->needs(axisOpt);
    addOutputOptions(plan, planOut, false);
    bool planRecovery = false;
    plan->add_flag("--recovery", planRecovery,
                   "recovery mode: repair the shapes the planner misses, refuse a plan the check rejects");

    VerifyOptions verifyOpts;
    CLI::App* verifyCmd = app.add_subcommand("verify", "the randomized end-to-end sweep");
    verifyCmd->add_option("--count", verifyOpts.count, "motions to draw (1 to 10000000)")->capture_default_str();
    verifyCmd->add_option("--seed", verifyOpts.seed, "seed of the sweep")->capture_default_str();
    CLI::Option* caseOpt =
        verifyCmd->add_option("--case", verifyOpts.only, "replay this one motion with the library's output");
    verifyCmd->add_flag("--no-progress", verifyOpts.noProgress, "no progress bar on stderr");
    verifyCmd->add_flag("--recovery", verifyOpts.recovery,
                        "plan in recovery mode, and compare both modes per class of motion");
    // A failing motion always gives status 1 now; the flag stays for old scripts.
    verifyCmd->add_flag("--strict", verifyOpts.strict)->group("");
    verifyCmd->add_flag("--trace", verifyOpts.out.trace, "with --case: the library's trace prints")->needs(caseOpt);
    verifyCmd->add_option("--csv", verifyOpts.out.csv, "with --case: write the samples")->needs(caseOpt);
    verifyCmd->add_option("--plot", verifyOpts.out.plot, "with --case: draw the motion (.png, .svg or .pdf)")
        ->needs(caseOpt);
    verifyCmd->add_option("--units", verifyOpts.out.units, "with --case: units of the positions, m or rad")
        ->needs(caseOpt);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return app.exit(e);  // --help, --version
    } catch (const CLI::ParseError& e) {
        // CLI11 asks for a subcommand before it complains about an unknown word.
        const std::vector<std::string> extra = app.remaining();
        if (app.get_subcommands().empty() && !extra.empty()) {
            std::fprintf(stderr, "vekta: unknown subcommand \"%s\": use demo, plan or verify\n",
                         extra[0].c_str());
        } else {
            std::fprintf(stderr, "vekta: %s (see vekta --help)\n", e.what());
        }
        return kBadUsage;
    }

    std::string command = "vekta";
    for (const CLI::App* sub : app.get_subcommands()) command += " " + sub->get_name();
    try {
        vektaSetRecovery(planRecovery || verifyOpts.recovery);
        if (demoCmd->parsed()) return demo(demoOut);
        if (plan->parsed()) {
            checkOutputs(planOut);
            Motion m;
            if (!args.axes.empty()) {
                args.jerkRatioGiven = ratioOpt->count() > 0;
                m = motionFromArgs(args);
            } else if (!motionFile.empty()) {
                m = readMotionFile(motionFile);
            } else {
                fail("give a JSON motion file or --axis (see vekta plan --help)");
            }
            return showMotion(m, planOut, "vekta plan");
        }
        if (verifyCmd->parsed()) return verify(verifyOpts);
    } catch (const std::exception& e) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s: %s\n", command.c_str(), e.what());
        return kBadUsage;
    }
    return kPlanned;
}
