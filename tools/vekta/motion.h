// A motion as the vekta tool describes it: what one parameter update receives,
// read from JSON or from the command line, or the embedded demo move.
#ifndef VEKTA_TOOLS_VEKTA_MOTION_H
#define VEKTA_TOOLS_VEKTA_MOTION_H

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace vekta::cli {

constexpr int kMaxAxes = 6;

enum class Mode { Position, Velocity, Conveyor };

const char* modeName(Mode m);

struct Motion {
    Mode mode = Mode::Position;
    int axes = 0;  // 1 or 6
    double jerkRatio = 10.0;
    // Present state (ignored by the conveyor update, which starts at rest at 0).
    double pos[kMaxAxes] = {}, vel[kMaxAxes] = {}, acc[kMaxAxes] = {};
    double tgt[kMaxAxes] = {};  // ignored by the velocity update
    double maxVel[kMaxAxes] = {}, maxAcc[kMaxAxes] = {};
    // Conveyor catch-up only.
    double conveyorVel = 0.0, conveyorLimit = 0.0, spare = 1.0;
};

// A six-axis move: different distances and limits per axis, axis 1 already
// moving away from its target.
Motion demoMotion();

// Reads a motion; throws std::runtime_error with a readable message on a
// missing or misspelt key, a value of the wrong type or an impossible value.
Motion motionFromJson(const nlohmann::json& j);
nlohmann::json motionToJson(const Motion& m);

// Reads a motion file ('-': standard input). Every error names the file and,
// for a bad value, the field: "m.json: axes[0].limits.velocity: 1e400 is not a
// finite number".
Motion readMotionFile(const std::string& path);

// Builds a motion from command-line pieces: one "pos,vel,acc,target,maxVel,maxAcc"
// string per axis and, for the conveyor mode, "velocity,limit,spare".
Motion motionFromArgs(const std::string& mode, double jerkRatio, const std::vector<std::string>& axes,
                      const std::string& conveyor);

// Strict parsing of what a user types. A number is written in decimal
// ("-1.5", "2e-3"): no hex, no inf or nan, nothing before or after it, and
// finite. An integer is decimal digits only, within [lo, hi]. Both throw
// std::runtime_error naming `what`.
double parseNumber(const std::string& text, const std::string& what);
std::uint64_t parseInteger(const std::string& text, std::uint64_t lo, std::uint64_t hi, const std::string& what);

// Parses "x,y,z" into one number per field; throws std::runtime_error naming
// `what` and the field.
std::vector<double> parseNumbers(const std::string& text, const std::vector<std::string>& fields,
                                 const std::string& what);

}  // namespace vekta::cli

#endif
