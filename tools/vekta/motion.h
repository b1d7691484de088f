// A motion as the vekta tool describes it: what one parameter update receives,
// read from JSON or from the command line, or the embedded demo move.
#ifndef VEKTA_TOOLS_VEKTA_MOTION_H
#define VEKTA_TOOLS_VEKTA_MOTION_H

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

// A realistic six-axis joint move (radians): different distances and limits
// per axis, axis 1 already moving away from its target.
Motion demoMotion();

// Reads a motion; throws std::runtime_error with a readable message on a
// missing or misspelt key, a value of the wrong type or an impossible value.
Motion motionFromJson(const nlohmann::json& j);
nlohmann::json motionToJson(const Motion& m);

// Builds a motion from command-line pieces: one "pos,vel,acc,target,maxVel,maxAcc"
// string per axis and, for the conveyor mode, "velocity,limit,spare".
Motion motionFromArgs(const std::string& mode, double jerkRatio, const std::vector<std::string>& axes,
                      const std::string& conveyor);

// Parses "x,y,z" into exactly `count` numbers; throws std::runtime_error.
std::vector<double> parseNumbers(const std::string& text, std::size_t count, const std::string& what);

}  // namespace vekta::cli

#endif
