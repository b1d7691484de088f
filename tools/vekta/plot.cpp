#include "plot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace vekta::cli {

namespace {

// One colour per axis, distinct on white: the first ten for most colour-blind
// readers too, the last six darker.
const char* const kAxisColours[VEKTA_MAX_AXES] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd", "#8c564b",
                                                  "#e377c2", "#7f7f7f", "#bcbd22", "#17becf", "#393b79", "#637939",
                                                  "#8c6d31", "#843c39", "#7b4173", "#000000"};

// A gnuplot single-quoted string: a quote inside is written twice.
std::string singleQuoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        out += c;
        if (c == '\'') out += '\'';
    }
    return out + "'";
}

// A gnuplot double-quoted string, where "\n" breaks the line.
std::string doubleQuoted(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '\n') {
            out += "\\n";
        } else {
            if (c == '"' || c == '\\') out += '\\';
            out += c;
        }
    }
    return out + "\"";
}

std::string format(const char* fmt, double x) {
    char buf[64];
    std::snprintf(buf, sizeof buf, fmt, x);
    return buf;
}

std::string extensionOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    return path.substr(dot);
}

std::string terminalFor(PlotFormat f) {
    switch (f) {
        case PlotFormat::Png:
            return "pngcairo size 1400,1800 font 'Sans,11'";
        case PlotFormat::Svg:
            return "svg size 1400,1800 font 'Sans,11' background '#ffffff'";
        case PlotFormat::Pdf:
            return "pdfcairo size 10in,13in font 'Sans,9'";
    }
    return "";
}

struct Panel {
    const char* quantity;
    const char* unit;
    int column;   // of axis 0's quantity; axis i is at column + 4 i
    bool steps;   // jerk: constant over the period that ends at the sample
};

// A line of the plot command and the separator gnuplot needs before the next.
void addCurve(std::string& cmd, const std::string& curve) { cmd += curve + ", \\\n     "; }

}  // namespace

PlotFormat plotFormatOf(const std::string& path) {
    std::string ext = extensionOf(path);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (ext == ".png") return PlotFormat::Png;
    if (ext == ".svg") return PlotFormat::Svg;
    if (ext == ".pdf") return PlotFormat::Pdf;
    const std::string what = ext.empty() ? "no plot format" : "unknown plot format \"" + ext + "\"";
    throw std::runtime_error(what + ": end the name in .png, .svg or .pdf");
}

std::string withSuffix(const std::string& path, const std::string& suffix) {
    const std::string ext = extensionOf(path);
    return path.substr(0, path.size() - ext.size()) + suffix + ext;
}

bool gnuplotFound() {
    const char* path = std::getenv("PATH");
    std::string dirs = path != nullptr ? path : "/usr/bin:/bin";
    std::size_t from = 0;
    while (from <= dirs.size()) {
        std::size_t end = dirs.find(':', from);
        if (end == std::string::npos) end = dirs.size();
        const std::string dir = end > from ? dirs.substr(from, end - from) : ".";
        if (access((dir + "/gnuplot").c_str(), X_OK) == 0) return true;
        from = end + 1;
    }
    return false;
}

std::string gnuplotScript(const Trajectory& tr, const std::string& path, const std::string& title, const Units& u) {
    const Motion& m = tr.motion;
    const bool conveyor = m.mode == Mode::Conveyor;
    std::string s;
    s += "set encoding utf8\n";
    s += "set terminal " + terminalFor(plotFormatOf(path)) + " noenhanced\n";
    s += "set output " + singleQuoted(path) + "\n";
    s += "set datafile separator ','\n";
    s += "$samples << EOD\n";
    const std::string time = "%." + std::to_string(timeDecimals(tr.period())) + "f";
    for (const Row& r : tr.rows) {
        s += format(time.c_str(), r.t);
        for (int i = 0; i < m.axes; ++i) {
            s += format(",%.10g", r.pos[i]) + format(",%.10g", r.vel[i]) + format(",%.10g", r.acc[i]) +
                 format(",%.10g", r.jerk[i]);
        }
        s += "\n";
    }
    s += "EOD\n";
    const double tEnd = std::max(tr.rows.back().t, tr.period());
    s += "set xrange [0:" + format("%.6g", tEnd) + "]\n";
    s += "set grid\n";
    s += "set offsets 0, 0, graph 0.06, graph 0.06\n";  // keep curves on a limit off the frame
    s += "set lmargin at screen 0.08\nset rmargin at screen 0.70\n";
    s += "set key at screen 0.72, graph 1 left top vertical Left reverse samplen 3\n";
    std::string heading = title;
    if (conveyor) {
        heading += "\nconveyor catch-up, drawn in the fixed frame: axis 0 ends moving with the conveyor at " +
                   format("%g ", m.conveyorVel) + u.vel +
                   ";\nits limits hold in the conveyor's frame, so its velocity limits are shifted by that much";
    }
    s += "set multiplot layout 4,1 title " + doubleQuoted(heading) + " font ',13'\n";

    const Panel panels[4] = {{"position", u.pos, 2, false},
                             {"velocity", u.vel, 3, false},
                             {"acceleration", u.acc, 4, false},
                             {"jerk", u.jerk, 5, true}};
    for (int p = 0; p < 4; ++p) {
        const Panel& panel = panels[p];
        s += "set ylabel " + singleQuoted(std::string(panel.quantity) + " [" + panel.unit + "]") + "\n";
        if (p == 3) s += "set xlabel 't [s]'\n";
        std::string cmd = "plot ";
        for (int i = 0; i < m.axes; ++i) {
            const std::string colour = std::string("lc rgb '") + kAxisColours[i] + "'";
            const std::string axis = "axis " + std::to_string(i);
            const std::string col = std::to_string(panel.column + 4 * i);
            addCurve(cmd, "$samples using 1:" + col + (panel.steps ? " with fsteps" : " with lines") + " lw 2 " +
                              colour + (p == 0 ? " title " + singleQuoted(axis) : " notitle"));
            if (p == 0) {
                if (m.mode == Mode::Velocity) continue;
                // The target; a conveyor carries axis 0's along.
                const bool carried = conveyor && i == 0;
                const std::string target = carried ? format("%.10g + ", m.tgt[0]) + format("%.10g * x", m.conveyorVel)
                                                   : format("%.10g", m.tgt[i]);
                addCurve(cmd, target + " with lines dt 3 lw 1 " + colour + " " +
                                  (carried ? "title " + singleQuoted("axis 0 target, carried by the conveyor")
                                           : std::string("notitle")));
                continue;
            }
            // The limits, dashed: +-V, +-A, +-J of the axis.
            const double limit = p == 1 ? m.maxVel[i] : (p == 2 ? m.maxAcc[i] : tr.jerkLimit(i));
            const double centre = conveyor && i == 0 && p == 1 ? m.conveyorVel : 0.0;
            std::string name = axis + " limit: " + (centre != 0.0 ? format("%g ", centre) : "") + "±" +
                               format("%g ", limit) + panel.unit;
            if (centre != 0.0) name += " (conveyor's frame)";
            addCurve(cmd, format("%.10g", centre + limit) + " with lines dt 2 lw 1 " + colour + " title " +
                              singleQuoted(name));
            addCurve(cmd, format("%.10g", centre - limit) + " with lines dt 2 lw 1 " + colour + " notitle");
        }
        if (p == 0 && m.mode != Mode::Velocity && !(conveyor && m.axes == 1)) {
            addCurve(cmd, "keyentry with lines dt 3 lw 1 lc rgb 'gray30' title 'targets (dotted)'");
        }
        if (conveyor && p == 0) {
            addCurve(cmd, format("%.10g", m.conveyorLimit) + " with lines dt 4 lw 2 lc rgb 'gray30' title " +
                              singleQuoted("conveyor limit (axis 0)"));
        }
        if (conveyor && p == 1) {
            addCurve(cmd, format("%.10g", m.conveyorVel) + " with lines dt 3 lw 2 lc rgb 'gray30' title " +
                              singleQuoted("conveyor velocity"));
        }
        cmd.erase(cmd.rfind(", \\\n     "));
        s += cmd + "\n";
    }
    s += "unset multiplot\n";
    return s;
}

std::string drawPlot(const Trajectory& tr, const std::string& path, const std::string& title, const Units& u) {
    const std::string script = gnuplotScript(tr, path, title, u);
    std::remove(path.c_str());  // so that a stale picture is never taken for a new one
    // The script goes in on standard input from a temporary file, gnuplot's
    // messages to another; its standard output, where it would write the
    // picture when it cannot open the file, to /dev/null.
    std::FILE* in = std::tmpfile();
    std::FILE* err = std::tmpfile();
    if (in == nullptr || err == nullptr) {
        if (in != nullptr) std::fclose(in);
        if (err != nullptr) std::fclose(err);
        return "cannot make a temporary file for gnuplot";
    }
    std::fwrite(script.data(), 1, script.size(), in);
    std::fflush(in);
    std::rewind(in);
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0) {
        const int devNull = open("/dev/null", O_WRONLY);
        dup2(fileno(in), STDIN_FILENO);
        dup2(devNull, STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        execlp("gnuplot", "gnuplot", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = -1;
    if (pid > 0) waitpid(pid, &status, 0);
    // gnuplot's last line says what went wrong.
    std::string said, line;
    std::rewind(err);
    for (int c; (c = std::fgetc(err)) != EOF;) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        const std::size_t first = line.find_first_not_of(" \t");
        if (first != std::string::npos) said = line.substr(first);
        line.clear();
    }
    std::fclose(in);
    std::fclose(err);
    if (pid < 0) return "cannot start gnuplot";
    if (!WIFEXITED(status)) return "gnuplot stopped before it drew " + path;
    if (WEXITSTATUS(status) == 127) {
        return "gnuplot not found: install it with tools/install-deps.sh (Debian package gnuplot-nox)";
    }
    if (WEXITSTATUS(status) != 0) return "gnuplot failed to draw " + path + (said.empty() ? "" : ": " + said);
    struct stat st {};
    if (stat(path.c_str(), &st) != 0 || st.st_size == 0) return "gnuplot wrote no picture to " + path;
    return "";
}

}  // namespace vekta::cli
