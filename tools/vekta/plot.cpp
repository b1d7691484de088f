#include "plot.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vekta::cli {

namespace {

// One colour per axis, distinct on white and for most colour-blind readers.
const char* const kAxisColours[kMaxAxes] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd", "#8c564b"};

// A gnuplot single-quoted string: a quote inside is written twice.
std::string quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        out += c;
        if (c == '\'') out += '\'';
    }
    return out + "'";
}

std::string format(const char* fmt, double x) {
    char buf[64];
    std::snprintf(buf, sizeof buf, fmt, x);
    return buf;
}

struct Panel {
    const char* label;
    int column;           // of axis 0's quantity; axis i is at column + 4 i
    bool steps;           // jerk: constant over the period that ends at the sample
    const char* dash;     // dash type of the reference lines
};

}  // namespace

std::string gnuplotScript(const Trajectory& tr, const std::string& pngPath, const std::string& title) {
    const Motion& m = tr.motion;
    std::string s;
    s += "set terminal pngcairo size 1400,1800 font 'Sans,11' noenhanced\n";
    s += "set output " + quoted(pngPath) + "\n";
    s += "set datafile separator ','\n";
    s += "$samples << EOD\n";
    for (const Row& r : tr.rows) {
        s += format("%.3f", r.t);
        for (int i = 0; i < m.axes; ++i) {
            s += format(",%.10g", r.pos[i]) + format(",%.10g", r.vel[i]) + format(",%.10g", r.acc[i]) +
                 format(",%.10g", r.jerk[i]);
        }
        s += "\n";
    }
    s += "EOD\n";
    const double tEnd = std::max(tr.rows.back().t, kPeriod);
    s += "set xrange [0:" + format("%.6g", tEnd) + "]\n";
    s += "set grid\n";
    s += "set offsets 0, 0, graph 0.06, graph 0.06\n";  // keep curves on a limit off the frame
    s += "set lmargin at screen 0.08\nset rmargin at screen 0.86\n";
    s += "set multiplot layout 4,1 title " + quoted(title) + " font ',14'\n";

    const Panel panels[4] = {{"position", 2, false, "3"},
                             {"velocity", 3, false, "2"},
                             {"acceleration", 4, false, "2"},
                             {"jerk (per period)", 5, true, "2"}};
    for (int p = 0; p < 4; ++p) {
        const Panel& panel = panels[p];
        s += "set ylabel " + quoted(panel.label) + "\n";
        if (p == 0) {
            s += "set key outside right top vertical\n";
        } else {
            s += "unset key\n";
        }
        if (p == 3) s += "set xlabel 't [s]'\n";
        std::string cmd = "plot ";
        for (int i = 0; i < m.axes; ++i) {
            const std::string colour = std::string("lc rgb '") + kAxisColours[i] + "'";
            const std::string col = std::to_string(panel.column + 4 * i);
            cmd += "$samples using 1:" + col + (panel.steps ? " with fsteps" : " with lines") + " lw 2 " + colour +
                   " title 'axis " + std::to_string(i) + "', \\\n     ";
            // Reference lines: the target for the position, the limits for the others.
            if (p == 0) {
                if (m.mode != Mode::Velocity) {
                    // A conveyor catch-up ends on the target carried along by the conveyor.
                    const double shift = m.mode == Mode::Conveyor && i == 0 ? tr.plannedTime * m.conveyorVel : 0.0;
                    cmd += format("%.10g", m.tgt[i] + shift) + " with lines dt " + panel.dash + " lw 1 " + colour +
                           " notitle, \\\n     ";
                }
            } else {
                const double limit = p == 1 ? m.maxVel[i] : (p == 2 ? m.maxAcc[i] : tr.jerkLimit(i));
                for (double sign : {1.0, -1.0}) {
                    cmd += format("%.10g", sign * limit) + " with lines dt " + panel.dash + " lw 1 " + colour +
                           " notitle, \\\n     ";
                }
            }
        }
        if (p == 0) {
            cmd += "keyentry with lines dt 2 lc rgb 'gray40' title '+/- limit', \\\n     ";
            if (m.mode != Mode::Velocity) {
                cmd += "keyentry with lines dt 3 lc rgb 'gray40' title 'target', \\\n     ";
            }
        }
        cmd.erase(cmd.rfind(", \\\n     "));
        s += cmd + "\n";
    }
    s += "unset multiplot\n";
    return s;
}

std::string drawPlot(const Trajectory& tr, const std::string& pngPath, const std::string& title) {
    const std::string script = gnuplotScript(tr, pngPath, title);
    std::remove(pngPath.c_str());  // so that a stale picture is never taken for a new one
    std::FILE* gp = popen("gnuplot", "w");
    if (gp == nullptr) return "could not start gnuplot";
    std::fwrite(script.data(), 1, script.size(), gp);
    const int status = pclose(gp);
    if (status != 0) {
        if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
            return "gnuplot not found: install it with tools/install-deps.sh (Debian package gnuplot-nox)";
        }
        return "gnuplot failed to draw " + pngPath;
    }
    struct stat st {};
    if (stat(pngPath.c_str(), &st) != 0 || st.st_size == 0) return "gnuplot wrote no picture to " + pngPath;
    return "";
}

}  // namespace vekta::cli
