// A motion as the vekta tool describes it: what one parameter update receives,
// read from JSON or from the command line, or the embedded demo move.
#ifndef VEKTA_TOOLS_VEKTA_MOTION_H
#define VEKTA_TOOLS_VEKTA_MOTION_H

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "vekta/vekta_c.h"

namespace vekta::cli {

// The period of the vekta.h functions, in seconds.
constexpr double kLegacyPeriod = 0.005;

enum class Mode { Position, Velocity, Conveyor };

const char* modeName(Mode m);

// A motion of 1 or 6 axes with a jerk ratio and no period goes through the
// vekta.h functions, as a controller written for them would plan it; any
// other (another axis count, a period, a jerk limit per axis) through the
// library's own calls on a planner of its own.
struct Motion {
    Mode mode = Mode::Position;
    int axes = 0;  // 1 to VEKTA_MAX_AXES
    double jerkRatio = 10.0;  // the jerk limit is maxAcc x jerkRatio ...
    bool jerkPerAxis = false;  // ... unless maxJerk holds one per axis
    bool periodGiven = false;
    double period = kLegacyPeriod;  // seconds
    // Present state (ignored by the conveyor update, which starts at rest at 0).
    double pos[VEKTA_MAX_AXES] = {}, vel[VEKTA_MAX_AXES] = {}, acc[VEKTA_MAX_AXES] = {};
    double tgt[VEKTA_MAX_AXES] = {};  // ignored by the velocity update
    double maxVel[VEKTA_MAX_AXES] = {}, maxAcc[VEKTA_MAX_AXES] = {}, maxJerk[VEKTA_MAX_AXES] = {};
    // Conveyor catch-up only (the spare is read by the vekta.h update only).
    double conveyorVel = 0.0, conveyorLimit = 0.0, spare = 1.0;

    double jerkLimit(int i) const { return jerkPerAxis ? maxJerk[i] : maxAcc[i] * jerkRatio; }
    // Whether it is planned through the library's own calls.
    bool ownCalls() const { return (axes != 1 && axes != 6) || periodGiven || jerkPerAxis; }
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

// The command-line pieces of a motion, as typed.
struct MotionArgs {
    std::string mode = "position";
    std::string jerkRatio = "10";
    bool jerkRatioGiven = false;
    std::string period;                // empty: none given
    std::vector<std::string> axes;     // "pos,vel,acc,target,maxVel,maxAcc[,maxJerk]" each
    std::string conveyor;              // "velocity,limit,spare" for the conveyor mode
};

// Builds a motion from command-line pieces.
Motion motionFromArgs(const MotionArgs& args);

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
