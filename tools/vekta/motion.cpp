#include "motion.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace vekta::cli {

namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

Mode parseMode(const std::string& name) {
    if (name == "position") return Mode::Position;
    if (name == "velocity") return Mode::Velocity;
    if (name == "conveyor") return Mode::Conveyor;
    fail("mode must be \"position\", \"velocity\" or \"conveyor\", not \"" + name + "\"");
}

// Every key of `obj` must be one of `known`: a misspelt key would otherwise
// silently fall back to its default.
void rejectUnknownKeys(const json& obj, const std::set<std::string>& known, const std::string& where) {
    for (auto it = obj.begin(); it != obj.end(); ++it) {
        if (known.count(it.key()) == 0) fail(where + ": unknown key \"" + it.key() + "\"");
    }
}

double number(const json& obj, const char* key, const std::string& where, bool required, double fallback) {
    const auto it = obj.find(key);
    if (it == obj.end()) {
        if (required) fail(where + ": \"" + key + "\" is missing");
        return fallback;
    }
    if (!it->is_number()) fail(where + ": \"" + key + "\" must be a number");
    return it->get<double>();  // finite: the reader refuses an overflowing number
}

const json& object(const json& obj, const char* key, const std::string& where) {
    const auto it = obj.find(key);
    if (it == obj.end()) fail(where + ": \"" + key + "\" is missing");
    if (!it->is_object()) fail(where + ": \"" + key + "\" must be an object");
    return *it;
}

const std::string kAxisCounts = "1 to " + std::to_string(VEKTA_MAX_AXES);

// The checks every motion must pass, wherever it came from. The library's own
// calls check their limits and period themselves and say why they refuse
// them; the vekta.h functions do not, so the tool checks their limits.
void validate(const Motion& m) {
    if (m.axes < 1 || m.axes > VEKTA_MAX_AXES) {
        fail("a motion has " + kAxisCounts + " axes, not " + std::to_string(m.axes));
    }
    if (!m.jerkPerAxis && (!(m.jerkRatio > 0.0) || !std::isfinite(m.jerkRatio))) {
        fail("the jerk ratio must be positive");
    }
    if (m.ownCalls()) return;
    for (int i = 0; i < m.axes; ++i) {
        if (!(m.maxVel[i] > 0.0) || !(m.maxAcc[i] > 0.0)) {
            fail("axis " + std::to_string(i) + ": the velocity and acceleration limits must be positive");
        }
    }
    if (m.mode == Mode::Conveyor && !(m.conveyorVel >= 0.0)) fail("the conveyor velocity must not be negative");
}

// Where the JSON reader is, as a path ("axes[0].limits.velocity"), so that a
// value it cannot read can be named. An array's index counts the elements
// already finished, which is the index of the one being read.
struct JsonPath {
    struct Level {
        bool array;
        std::size_t index;
        std::string key;
    };
    std::vector<Level> levels;

    bool event(json::parse_event_t ev, const json& parsed) {
        switch (ev) {
            case json::parse_event_t::object_start:
                levels.push_back({false, 0, ""});
                break;
            case json::parse_event_t::array_start:
                levels.push_back({true, 0, ""});
                break;
            case json::parse_event_t::key:
                levels.back().key = parsed.get<std::string>();
                break;
            case json::parse_event_t::object_end:
            case json::parse_event_t::array_end:
                levels.pop_back();
                [[fallthrough]];
            case json::parse_event_t::value:
                if (!levels.empty() && levels.back().array) ++levels.back().index;
                break;
        }
        return true;
    }

    std::string text() const {
        std::string s;
        for (const Level& l : levels) {
            if (l.array) {
                s += "[" + std::to_string(l.index) + "]";
            } else {
                s += (s.empty() ? "" : ".") + l.key;
            }
        }
        return s.empty() ? "the top level" : s;
    }
};

// nlohmann's messages start with "[json.exception.parse_error.101] ".
std::string withoutExceptionId(const char* what) {
    const char* close = std::strchr(what, ']');
    return close != nullptr && what[0] == '[' ? std::string(close + 1 + (close[1] == ' ')) : what;
}

json parseJson(std::istream& in) {
    JsonPath path;
    try {
        return json::parse(in, [&path](int, json::parse_event_t ev, json& parsed) { return path.event(ev, parsed); });
    } catch (const json::out_of_range& e) {
        // The only range error of the reader: a number beyond double (406).
        const std::string what = e.what();
        const std::size_t open = what.find('\''), close = what.rfind('\'');
        const std::string number = open < close ? what.substr(open + 1, close - open - 1) : "a number";
        fail(path.text() + ": " + number + " is not a finite number");
    } catch (const json::exception& e) {
        fail(withoutExceptionId(e.what()));
    }
}

}  // namespace

const char* modeName(Mode m) {
    switch (m) {
        case Mode::Position:
            return "position";
        case Mode::Velocity:
            return "velocity";
        case Mode::Conveyor:
            return "conveyor";
    }
    return "?";
}

Motion demoMotion() {
    Motion m;
    m.mode = Mode::Position;
    m.axes = 6;
    m.jerkRatio = 10.0;
    // Base, shoulder and elbow are slower than the wrist axes.
    const double pos[6] = {0.0, -0.3, 0.5, 1.0, -0.2, 0.0};
    const double vel[6] = {0.0, 0.6, 0.0, 0.0, 0.0, 0.0};
    const double acc[6] = {0.0, 1.5, 0.0, 0.0, 0.0, 0.0};
    const double tgt[6] = {1.2, -0.9, 1.4, -1.0, 0.2, 3.1};
    const double maxVel[6] = {2.0, 1.8, 2.2, 3.0, 3.0, 4.0};
    const double maxAcc[6] = {6.0, 5.0, 7.0, 10.0, 10.0, 14.0};
    for (int i = 0; i < 6; ++i) {
        m.pos[i] = pos[i];
        m.vel[i] = vel[i];
        m.acc[i] = acc[i];
        m.tgt[i] = tgt[i];
        m.maxVel[i] = maxVel[i];
        m.maxAcc[i] = maxAcc[i];
    }
    return m;
}

Motion motionFromJson(const json& j) {
    if (!j.is_object()) fail("a motion is a JSON object");
    rejectUnknownKeys(j, {"mode", "jerkRatio", "period", "axes", "conveyor"}, "motion");
    Motion m;
    const auto mode = j.find("mode");
    if (mode != j.end()) {
        if (!mode->is_string()) fail("motion: \"mode\" must be a string");
        m.mode = parseMode(mode->get<std::string>());
    }
    const bool ratioGiven = j.contains("jerkRatio");
    m.jerkRatio = number(j, "jerkRatio", "motion", false, 0.0);
    m.periodGiven = j.contains("period");
    m.period = number(j, "period", "motion", false, kLegacyPeriod);

    const auto axes = j.find("axes");
    if (axes == j.end() || !axes->is_array()) fail("motion: \"axes\" must be an array of " + kAxisCounts + " axes");
    if (axes->empty() || axes->size() > VEKTA_MAX_AXES) {
        fail("motion: \"axes\" must hold " + kAxisCounts + " axes, not " + std::to_string(axes->size()));
    }
    m.axes = static_cast<int>(axes->size());
    // Either every axis gives its maxJerk, or none does and the ratio sets them.
    m.jerkPerAxis = (*axes)[0].is_object() && (*axes)[0].contains("maxJerk");
    const bool needsTarget = m.mode != Mode::Velocity;
    for (int i = 0; i < m.axes; ++i) {
        const json& a = (*axes)[i];
        const std::string where = "axis " + std::to_string(i);
        if (!a.is_object()) fail(where + ": must be an object");
        rejectUnknownKeys(a, {"position", "velocity", "acceleration", "target", "maxJerk", "limits"}, where);
        if (a.contains("maxJerk") != m.jerkPerAxis) {
            fail(where + ": \"maxJerk\" is " + (m.jerkPerAxis ? "missing" : "given") + ": axis 0 " +
                 (m.jerkPerAxis ? "gives" : "does not give") + " one, and every axis must do the same");
        }
        m.maxJerk[i] = number(a, "maxJerk", where, false, 0.0);
        m.pos[i] = number(a, "position", where, false, 0.0);
        m.vel[i] = number(a, "velocity", where, false, 0.0);
        m.acc[i] = number(a, "acceleration", where, false, 0.0);
        m.tgt[i] = number(a, "target", where, needsTarget, m.pos[i]);
        const json& limits = object(a, "limits", where);
        rejectUnknownKeys(limits, {"velocity", "acceleration"}, where + " limits");
        m.maxVel[i] = number(limits, "velocity", where + " limits", true, 0.0);
        m.maxAcc[i] = number(limits, "acceleration", where + " limits", true, 0.0);
    }
    if (m.jerkPerAxis && ratioGiven) {
        fail("motion: \"jerkRatio\" and a \"maxJerk\" per axis are alternatives: give one");
    }
    if (!m.jerkPerAxis && !ratioGiven) fail("motion: \"jerkRatio\" is missing (or give every axis a \"maxJerk\")");

    const auto conveyor = j.find("conveyor");
    if (m.mode == Mode::Conveyor) {
        const json& c = object(j, "conveyor", "motion");
        rejectUnknownKeys(c, {"velocity", "limit", "spare"}, "conveyor");
        m.conveyorVel = number(c, "velocity", "conveyor", true, 0.0);
        m.conveyorLimit = number(c, "limit", "conveyor", true, 0.0);
        m.spare = number(c, "spare", "conveyor", false, 1.0);
    } else if (conveyor != j.end()) {
        fail("motion: \"conveyor\" is only read in the conveyor mode");
    }
    validate(m);
    return m;
}

json motionToJson(const Motion& m) {
    json j;
    j["mode"] = modeName(m.mode);
    if (!m.jerkPerAxis) j["jerkRatio"] = m.jerkRatio;
    if (m.periodGiven) j["period"] = m.period;
    json axes = json::array();
    for (int i = 0; i < m.axes; ++i) {
        json a;
        if (m.mode != Mode::Conveyor) {
            a["position"] = m.pos[i];
            a["velocity"] = m.vel[i];
            a["acceleration"] = m.acc[i];
        }
        if (m.mode != Mode::Velocity) a["target"] = m.tgt[i];
        if (m.jerkPerAxis) a["maxJerk"] = m.maxJerk[i];
        a["limits"] = {{"velocity", m.maxVel[i]}, {"acceleration", m.maxAcc[i]}};
        axes.push_back(a);
    }
    j["axes"] = axes;
    if (m.mode == Mode::Conveyor) {
        j["conveyor"] = {{"velocity", m.conveyorVel}, {"limit", m.conveyorLimit}, {"spare", m.spare}};
    }
    return j;
}

Motion readMotionFile(const std::string& path) {
    const std::string name = path == "-" ? "standard input" : path;
    try {
        if (path == "-") return motionFromJson(parseJson(std::cin));
        struct stat st {};
        if (stat(path.c_str(), &st) != 0) fail(std::strerror(errno));
        if (S_ISDIR(st.st_mode)) fail("is a directory, not a motion file");
        std::ifstream in(path);
        if (!in) fail(std::strerror(errno));
        return motionFromJson(parseJson(in));
    } catch (const std::runtime_error& e) {
        throw std::runtime_error(name + ": " + e.what());
    }
}

double parseNumber(const std::string& text, const std::string& what) {
    // [+-] digits [. digits] [e [+-] digits], with digits on at least one side of the point.
    std::size_t i = 0, digits = 0;
    const auto skipDigits = [&] {
        const std::size_t from = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
        return i - from;
    };
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    digits += skipDigits();
    if (i < text.size() && text[i] == '.') {
        ++i;
        digits += skipDigits();
    }
    bool ok = digits > 0;
    if (ok && i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        ok = skipDigits() > 0;
    }
    if (!ok || i != text.size()) fail(what + ": \"" + text + "\" is not a decimal number");
    const double x = std::strtod(text.c_str(), nullptr);
    if (!std::isfinite(x)) fail(what + ": " + text + " is not a finite number");
    return x;
}

std::uint64_t parseInteger(const std::string& text, std::uint64_t lo, std::uint64_t hi, const std::string& what) {
    const std::string range = "an integer from " + std::to_string(lo) + " to " + std::to_string(hi);
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (!digits) fail(what + ": \"" + text + "\" is not " + range);
    errno = 0;
    const unsigned long long x = std::strtoull(text.c_str(), nullptr, 10);
    if (errno == ERANGE || x < lo || x > hi) fail(what + ": " + text + " is not " + range);
    return x;
}

std::vector<double> parseNumbers(const std::string& text, const std::vector<std::string>& fields,
                                 const std::string& what) {
    std::vector<std::string> items;
    std::stringstream in(text + ",");  // so that a trailing empty field is read too
    std::string item;
    while (std::getline(in, item, ',')) items.push_back(item);
    if (items.size() != fields.size()) {
        std::string names;
        for (const std::string& f : fields) names += (names.empty() ? "" : ",") + f;
        fail(what + ": expected " + std::to_string(fields.size()) + " comma-separated numbers (" + names +
             "), got \"" + text + "\"");
    }
    std::vector<double> out;
    for (std::size_t k = 0; k < items.size(); ++k) out.push_back(parseNumber(items[k], what + " " + fields[k]));
    return out;
}

Motion motionFromArgs(const MotionArgs& args) {
    Motion m;
    m.jerkRatio = parseNumber(args.jerkRatio, "--jerk-ratio");
    m.mode = parseMode(args.mode);
    if (!args.period.empty()) {
        m.periodGiven = true;
        m.period = parseNumber(args.period, "--period");
    }
    if (args.axes.empty() || args.axes.size() > VEKTA_MAX_AXES) {
        fail("give --axis " + kAxisCounts + " times, not " + std::to_string(args.axes.size()));
    }
    m.axes = static_cast<int>(args.axes.size());
    std::vector<std::string> fields = {"position", "velocity", "acceleration", "target", "maxVel", "maxAcc"};
    for (int i = 0; i < m.axes; ++i) {
        const std::string& text = args.axes[i];
        const std::string what = "--axis " + std::to_string(i);
        const auto commas = std::count(text.begin(), text.end(), ',');
        if (commas != 5 && commas != 6) {
            fail(what + ": expected 6 comma-separated numbers (position,velocity,acceleration,target,maxVel,"
                        "maxAcc) or 7 (and maxJerk), got \"" + text + "\"");
        }
        if (i == 0) {
            m.jerkPerAxis = commas == 6;
            if (m.jerkPerAxis) fields.push_back("maxJerk");
        } else if ((commas == 6) != m.jerkPerAxis) {
            fail(what + ": " + (m.jerkPerAxis ? "no" : "a") + " maxJerk, unlike --axis 0: give it on every --axis "
                 "or on none");
        }
        const auto v = parseNumbers(text, fields, what);
        m.pos[i] = v[0];
        m.vel[i] = v[1];
        m.acc[i] = v[2];
        m.tgt[i] = v[3];
        m.maxVel[i] = v[4];
        m.maxAcc[i] = v[5];
        if (m.jerkPerAxis) m.maxJerk[i] = v[6];
    }
    if (m.jerkPerAxis && args.jerkRatioGiven) {
        fail("--jerk-ratio and a maxJerk per --axis are alternatives: give one");
    }
    const std::string& conveyor = args.conveyor;
    if (m.mode == Mode::Conveyor) {
        if (conveyor.empty()) fail("the conveyor mode needs --conveyor velocity,limit,spare");
        const auto c = parseNumbers(conveyor, {"velocity", "limit", "spare"}, "--conveyor");
        m.conveyorVel = c[0];
        m.conveyorLimit = c[1];
        m.spare = c[2];
    } else if (!conveyor.empty()) {
        fail("--conveyor is only read in the conveyor mode");
    }
    validate(m);
    return m;
}

}  // namespace vekta::cli
