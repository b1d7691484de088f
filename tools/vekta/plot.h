// The picture of a sampled motion: position, velocity, acceleration and jerk
// over time with their units, one colour per axis, the limits as labelled
// dashed lines. Drawn by gnuplot (Debian's gnuplot-nox) from a script
// generated here, as PNG, SVG or PDF by the file's extension.
#ifndef VEKTA_TOOLS_VEKTA_PLOT_H
#define VEKTA_TOOLS_VEKTA_PLOT_H

#include <string>

#include "trajectory.h"

namespace vekta::cli {

enum class PlotFormat { Png, Svg, Pdf };

// The format the file name asks for (.png, .svg or .pdf, in any case); throws
// std::runtime_error for another or no extension.
PlotFormat plotFormatOf(const std::string& path);

// `path` with `suffix` put before its extension: ("out/a.png", "-stop") gives
// "out/a-stop.png".
std::string withSuffix(const std::string& path, const std::string& suffix);

// Whether a gnuplot program is on the PATH.
bool gnuplotFound();

// The gnuplot script that draws `tr` into `path`; the samples are carried
// inside the script, so no data file is needed.
std::string gnuplotScript(const Trajectory& tr, const std::string& path, const std::string& title, const Units& u);

// Runs gnuplot on that script, its standard output sent nowhere (a picture
// never lands on the terminal). Returns an empty string on success, otherwise
// what went wrong in one line.
std::string drawPlot(const Trajectory& tr, const std::string& path, const std::string& title, const Units& u);

}  // namespace vekta::cli

#endif
