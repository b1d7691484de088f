// The picture of a sampled motion: position, velocity, acceleration and jerk
// over time, one colour per axis, the limits as dashed lines. Drawn by gnuplot
// (Debian's gnuplot-nox) from a script generated here.
#ifndef VEKTA_TOOLS_VEKTA_PLOT_H
#define VEKTA_TOOLS_VEKTA_PLOT_H

#include <string>

#include "trajectory.h"

namespace vekta::cli {

// The gnuplot script that draws `tr` into the PNG `pngPath`; the samples are
// carried inside the script, so no data file is needed.
std::string gnuplotScript(const Trajectory& tr, const std::string& pngPath, const std::string& title);

// Runs gnuplot on that script. Returns an empty string on success, otherwise
// what went wrong.
std::string drawPlot(const Trajectory& tr, const std::string& pngPath, const std::string& title);

}  // namespace vekta::cli

#endif
