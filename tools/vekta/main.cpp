// vekta: look at what the library plans.
//
//   vekta demo     plan and sample an embedded six-axis move; table, CSV, PNG
//   vekta plan     the same for a motion from a JSON file or the command line
//   vekta verify   the randomized end-to-end sweep, with a progress bar
//   vekta bench    plan and sample timings
//
// The library prints diagnostics on standard output; they are silenced while
// it plans and samples unless --library-output (or --trace) is given, so that
// the tool's own output stays readable.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "motion.h"
#include "plot.h"
#include "sweep.h"
#include "trajectory.h"
#include "vekta/vekta.h"

namespace vekta::cli {
namespace {

struct OutputOptions {
    std::string csv, plot, saveMotion;
    bool noPlot = false, libraryOutput = false, trace = false;
};

void addOutputOptions(CLI::App* cmd, OutputOptions& o, bool defaults) {
    cmd->add_option("--csv", o.csv, "write the samples to this CSV file")->capture_default_str();
    cmd->add_option("--plot", o.plot, "draw position, velocity, acceleration and jerk into this PNG file")
        ->capture_default_str();
    if (defaults) cmd->add_flag("--no-plot", o.noPlot, "do not draw the PNG");
    cmd->add_option("--save-motion", o.saveMotion, "write the motion as JSON (a starting point for `vekta plan`)");
    cmd->add_flag("--library-output", o.libraryOutput, "show the library's own standard output");
    cmd->add_flag("--trace", o.trace, "turn on the library's trace prints (implies --library-output)");
}

bool writeText(const std::string& path, const std::string& text) {
    std::ofstream out(path);
    out << text;
    return static_cast<bool>(out);
}

// Plans, samples and reports one motion: the table on stdout, then the files.
std::string titleFor(const std::string& what, const Trajectory& tr) {
    const Motion& m = tr.motion;
    char text[256];
    std::snprintf(text, sizeof text, "%s: %s update, %d %s, jerk limit = %g x acceleration limit, planned %.3f s",
                  what.c_str(), modeName(m.mode), m.axes, m.axes == 1 ? "axis" : "axes", m.jerkRatio, tr.plannedTime);
    return text;
}

int showMotion(const Motion& m, const OutputOptions& o, const std::string& what) {
    if (!o.saveMotion.empty()) {
        if (!writeText(o.saveMotion, motionToJson(m).dump(2) + "\n")) {
            std::fprintf(stderr, "vekta: cannot write %s\n", o.saveMotion.c_str());
            return 1;
        }
    }
    const Trajectory tr = runTrajectory(m, o.libraryOutput, o.trace);
    if (o.libraryOutput || o.trace) std::printf("\n");
    printTable(stdout, tr);
    if (!tr.accepted) return 1;

    int status = tr.finished ? 0 : 1;
    if (!o.csv.empty()) {
        std::FILE* f = std::fopen(o.csv.c_str(), "w");
        if (f == nullptr) {
            std::fprintf(stderr, "vekta: cannot write %s\n", o.csv.c_str());
            return 1;
        }
        writeCsv(f, tr);
        const bool ok = std::fclose(f) == 0;
        if (!ok) {
            std::fprintf(stderr, "vekta: cannot write %s\n", o.csv.c_str());
            return 1;
        }
        std::printf("samples: %s (%zu rows)\n", o.csv.c_str(), tr.rows.size());
    }
    if (!o.plot.empty() && !o.noPlot) {
        std::fflush(stdout);
        const std::string error = drawPlot(tr, o.plot, titleFor(what, tr));
        if (error.empty()) {
            std::printf("plot:    %s\n", o.plot.c_str());
        } else {
            std::fprintf(stderr, "vekta: %s\n", error.c_str());
            status = 1;
        }
    }
    if (!o.saveMotion.empty()) std::printf("motion:  %s\n", o.saveMotion.c_str());
    return status;
}

Motion readMotionFile(const std::string& path) {
    nlohmann::json j;
    try {
        if (path == "-") {
            j = nlohmann::json::parse(std::cin);
        } else {
            std::ifstream in(path);
            if (!in) throw std::runtime_error("cannot read " + path);
            j = nlohmann::json::parse(in);
        }
    } catch (const nlohmann::json::parse_error& e) {
        throw std::runtime_error(path + ": " + e.what());
    }
    return motionFromJson(j);
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
    for (int i = 0; i < kMaxAxes; ++i) {
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
    std::uint64_t count = 100000, seed = 1, only = 0;
    bool replay = false, noProgress = false, strict = false;
    OutputOptions out;
};

int replayCase(const VerifyOptions& v) {
    const sweep::Motion m = sweep::drawMotion(v.seed, v.only);
    sweep::printMotion(stdout, m);
    std::fflush(stdout);
    // The replay shows the library's output, as the sweep's replay line promises.
    setTestLevel(v.out.trace);
    const sweep::Outcome o = sweep::runMotion(m);
    setTestLevel(false);
    std::fflush(stdout);
    std::printf("planned %.17g s, %d periods;", o.plannedTime, o.periods);
    for (int k = 0; k < sweep::kFailureKinds; ++k) {
        if (o.failed[k]) std::printf(" %s", sweep::failureName(k));
    }
    std::printf("%s\n", o.any() ? "" : " ok");
    if (!v.out.csv.empty() || !v.out.plot.empty()) {
        OutputOptions files = v.out;
        files.libraryOutput = files.trace = false;
        std::printf("\n");
        const Motion cm = fromSweep(m);
        showMotion(cm, files, "vekta verify --seed " + std::to_string(v.seed) + " --case " + std::to_string(v.only));
    }
    return o.any() ? 1 : 0;
}

int verify(const VerifyOptions& v) {
    if (v.replay) return replayCase(v);
    sweep::Summary s;
    s.seed = v.seed;
    ProgressBar bar(v.count, !v.noProgress && isatty(STDERR_FILENO) != 0);
    long failing = 0;
    {
        sweep::QuietStdout quiet;
        for (std::uint64_t i = 0; i < v.count; ++i) {
            const sweep::Motion m = sweep::drawMotion(v.seed, i);
            const sweep::Outcome o = sweep::runMotion(m);
            failing += o.any();
            s.add(i, m, o);
            bar.update(i + 1, failing);
        }
        bar.finish();
        sweep::printSummary(quiet.out(), s, "vekta verify");
    }
    return v.strict && failing > 0 ? 1 : 0;
}

// ---- bench -------------------------------------------------------------------

struct BenchOptions {
    int count = 1000, repeat = 20;
    std::uint64_t seed = 1;
};

using Clock = std::chrono::steady_clock;

double nanoseconds(Clock::duration d) { return std::chrono::duration<double, std::nano>(d).count(); }

bool planSweepMotion(const sweep::Motion& m) {
    return vektaPostionModeParaUpd(m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0);
}

// Times every motion `repeat` times; a motion's time is the fastest of its
// repetitions (the others carry interrupts and cache misses of the machine,
// not of the planner).
void benchPlans(std::FILE* out, const std::vector<sweep::Motion>& set, int repeat) {
    std::vector<double> best(set.size(), 1e300);
    double total = 0.0;
    long calls = 0;
    for (int r = 0; r < repeat; ++r) {
        for (std::size_t k = 0; k < set.size(); ++k) {
            const auto t0 = Clock::now();
            planSweepMotion(set[k]);
            const double ns = nanoseconds(Clock::now() - t0);
            best[k] = std::min(best[k], ns);
            total += ns;
            ++calls;
        }
    }
    std::vector<double> sorted = best;
    std::sort(sorted.begin(), sorted.end());
    const std::string label = set[0].axes == 1 ? "plan, 1 axis" : "plan, 6 axes";
    std::fprintf(out, "%-14s %10.2f %10.2f %10.2f %10.2f   (%zu motions x %d)\n", label.c_str(), total / calls / 1000.0, sorted[sorted.size() / 2] / 1000.0,
                 sorted[sorted.size() * 99 / 100] / 1000.0, sorted.back() / 1000.0, set.size(), repeat);
}

void benchSamples(std::FILE* out, const std::vector<sweep::Motion>& set) {
    double total = 0.0;
    long samples = 0;
    double pos[1], vel[1], acc[1];
    for (const sweep::Motion& m : set) {
        if (!planSweepMotion(m)) continue;
        bool done = false;
        const auto t0 = Clock::now();
        for (int period = 0; !done && period < kMaxPeriods; ++period) {
            done = true;
            for (int i = 0; i < m.axes; ++i) {
                int count = 0;
                done &= vektaPositionModePerFreedom(i, 1, pos, vel, acc, count) == 1;
            }
            samples += m.axes;
        }
        total += nanoseconds(Clock::now() - t0);
    }
    std::fprintf(out, "%-14s %10.1f ns per call (one axis, one period; %ld calls over the 6-axis motions)\n",
                 "sample", total / static_cast<double>(samples), samples);
}

int bench(const BenchOptions& b) {
    std::vector<sweep::Motion> one, six;
    for (std::uint64_t i = 0; one.size() < static_cast<std::size_t>(b.count) ||
                              six.size() < static_cast<std::size_t>(b.count);
         ++i) {
        const sweep::Motion m = sweep::drawMotion(b.seed, i);
        if (m.mode != sweep::Mode::Position) continue;
        auto& set = m.axes == 1 ? one : six;
        if (set.size() < static_cast<std::size_t>(b.count)) set.push_back(m);
    }
    sweep::QuietStdout quiet;
    std::FILE* out = quiet.out();
    std::fprintf(out, "position updates drawn by the sweep (seed %llu), library output to /dev/null\n",
                 static_cast<unsigned long long>(b.seed));
    std::fprintf(out, "%-14s %10s %10s %10s %10s   [us]\n", "", "mean", "median", "p99", "worst");
    benchPlans(out, one, b.repeat);
    benchPlans(out, six, b.repeat);
    benchSamples(out, six);
    std::fprintf(out, "(a motion's time is its fastest repetition; `make bench` runs the Google Benchmark suite)\n");
    return 0;
}

}  // namespace
}  // namespace vekta::cli

int main(int argc, char** argv) {
    using namespace vekta::cli;
    CLI::App app{"vekta: plan, sample, plot and check jerk-limited motions with libvekta"};
    app.require_subcommand(1);

    OutputOptions demoOut;
    demoOut.csv = "vekta-demo.csv";
    demoOut.plot = "vekta-demo.png";
    CLI::App* demo = app.add_subcommand("demo", "plan and sample an embedded six-axis move: table, CSV and PNG");
    addOutputOptions(demo, demoOut, true);

    OutputOptions planOut;
    std::string motionFile, mode = "position", conveyor;
    double jerkRatio = 10.0;
    std::vector<std::string> axes;
    CLI::App* plan = app.add_subcommand("plan", "plan and sample a motion from a JSON file or the command line");
    plan->add_option("motion", motionFile, "JSON motion file ('-' for standard input)");
    CLI::Option* axisOpt = plan->add_option("--axis", axes, "one axis: pos,vel,acc,target,maxVel,maxAcc (give 1 or 6)")
                               ->excludes("motion");
    plan->add_option("--mode", mode, "position, velocity or conveyor (with --axis)")
        ->capture_default_str()
        ->needs(axisOpt);
    plan->add_option("--jerk-ratio", jerkRatio, "jerk limit = acceleration limit x ratio (with --axis)")
        ->capture_default_str()
        ->needs(axisOpt);
    plan->add_option("--conveyor", conveyor, "conveyor mode: velocity,limit,spare (with --axis)")->needs(axisOpt);
    addOutputOptions(plan, planOut, false);

    VerifyOptions verifyOpts;
    CLI::App* verifyCmd = app.add_subcommand("verify", "the randomized end-to-end sweep");
    verifyCmd->add_option("--count", verifyOpts.count, "motions to draw")->capture_default_str();
    verifyCmd->add_option("--seed", verifyOpts.seed, "seed of the sweep")->capture_default_str();
    CLI::Option* caseOpt =
        verifyCmd->add_option("--case", verifyOpts.only, "replay this one motion with the library's output");
    verifyCmd->add_flag("--no-progress", verifyOpts.noProgress, "no progress bar on stderr");
    verifyCmd->add_flag("--strict", verifyOpts.strict, "exit with status 1 when any motion fails a check");
    verifyCmd->add_flag("--trace", verifyOpts.out.trace, "with --case: the library's trace prints")->needs(caseOpt);
    verifyCmd->add_option("--csv", verifyOpts.out.csv, "with --case: write the samples")->needs(caseOpt);
    verifyCmd->add_option("--plot", verifyOpts.out.plot, "with --case: draw the PNG")->needs(caseOpt);

    BenchOptions benchOpts;
    CLI::App* benchCmd = app.add_subcommand("bench", "plan and sample timings (a quick look; see `make bench`)");
    benchCmd->add_option("--count", benchOpts.count, "motions per set")->capture_default_str()->check(
        CLI::PositiveNumber);
    benchCmd->add_option("--repeat", benchOpts.repeat, "timed repetitions of every motion")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    benchCmd->add_option("--seed", benchOpts.seed, "seed of the drawn motions")->capture_default_str();

    CLI11_PARSE(app, argc, argv);

    try {
        if (demo->parsed()) {
            const Motion m = demoMotion();
            return showMotion(m, demoOut, "vekta demo");
        }
        if (plan->parsed()) {
            Motion m;
            if (!axes.empty()) {
                m = motionFromArgs(mode, jerkRatio, axes, conveyor);
            } else if (!motionFile.empty()) {
                m = readMotionFile(motionFile);
            } else {
                std::fprintf(stderr, "vekta plan: give a JSON motion file or --axis (see vekta plan --help)\n");
                return 2;
            }
            return showMotion(m, planOut, "vekta plan");
        }
        if (verifyCmd->parsed()) {
            verifyOpts.replay = caseOpt->count() > 0;
            return verify(verifyOpts);
        }
        if (benchCmd->parsed()) return bench(benchOpts);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vekta: %s\n", e.what());
        return 2;
    }
    return 0;
}
