// The Python module `vekta`: a Planner class over the planner handles of
// vekta_c.h, taking numpy arrays or sequences and giving numpy arrays back.
#include <pybind11/functional.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cmath>
#include <string>
#include <vector>

#include "vekta/vekta_c.h"

namespace py = pybind11;

namespace {

constexpr double kPeriod = 0.005;
constexpr int kMaxPeriods = 2000000;  // about 2.8 hours of motion

using Values = py::array_t<double, py::array::c_style | py::array::forcecast>;

// One Python planner: the library's planner, and the lines of the call in
// progress (kept to name the reason when a call fails).
class Planner {
public:
    Planner() : p_(vektaPlannerCreate()) {
        if (p_ == nullptr) throw std::bad_alloc();
        vektaPlannerOutputToCallback(p_, &Planner::collect, this);
    }
    ~Planner() { vektaPlannerDestroy(p_); }
    Planner(const Planner&) = delete;
    Planner& operator=(const Planner&) = delete;

    void position(const Values& target, const Values& maxVel, const Values& maxAcc, double jerkRatio,
                  const Values& pos, py::object vel, py::object acc) {
        const int n = axes(target, "target");
        const std::vector<double> v = orZeros(vel, n, "vel"), a = orZeros(acc, n, "acc");
        run([&] {
            return vektaPlannerPositionUpdate(p_, n, target.data(), limits(maxVel, n, "max_vel"),
                                              limits(maxAcc, n, "max_acc"), jerkRatio,
                                              sized(pos, n, "pos"), v.data(), a.data());
        });
        n_ = n;
    }

    void velocity(const Values& maxVel, const Values& maxAcc, double jerkRatio, const Values& pos,
                  const Values& vel, py::object acc) {
        const int n = axes(pos, "pos");
        const std::vector<double> a = orZeros(acc, n, "acc");
        run([&] {
            return vektaPlannerVelocityUpdate(p_, n, limits(maxVel, n, "max_vel"), limits(maxAcc, n, "max_acc"),
                                              jerkRatio, pos.data(), sized(vel, n, "vel"), a.data());
        });
        n_ = n;
    }

    void conveyor(double conveyorVel, double conveyorLimit, const Values& target, const Values& maxVel,
                  const Values& maxAcc, double jerkRatio, double spare) {
        const int n = axes(target, "target");
        run([&] {
            return vektaPlannerConveyorUpdate(p_, n, conveyorVel, conveyorLimit, target.data(),
                                              limits(maxVel, n, "max_vel"), limits(maxAcc, n, "max_acc"),
                                              jerkRatio, spare);
        });
        n_ = n;
    }

    py::tuple sample() {
        const auto verdict = check();
        if (verdict.first == VEKTA_CHECK_NO_PLAN || verdict.first == VEKTA_CHECK_CONVEYOR_REFUSED) {
            throw VektaError("vekta: nothing to sample: " + verdict.second);
        }
        std::vector<double> p, v, a;
        int finished = 0;
        for (int period = 0; finished < n_ && period < kMaxPeriods; ++period) {
            finished = 0;
            for (int axis = 0; axis < n_; ++axis) {
                double s[3] = {};
                int count = 0;
                finished += vektaPlannerSample(p_, axis, 1, &s[0], &s[1], &s[2], &count);
                p.push_back(s[0]), v.push_back(s[1]), a.push_back(s[2]);
            }
            flushPending();
        }
        const py::ssize_t rows = static_cast<py::ssize_t>(p.size()) / (n_ > 0 ? n_ : 1);
        py::array_t<double> t(rows);
        for (py::ssize_t i = 0; i < rows; ++i) t.mutable_at(i) = static_cast<double>(i + 1) * kPeriod;
        auto table = [&](const std::vector<double>& x) {
            py::array_t<double> out({rows, static_cast<py::ssize_t>(n_)});
            std::copy(x.begin(), x.end(), out.mutable_data());
            return out;
        };
        return py::make_tuple(t, table(p), table(v), table(a));
    }

    std::pair<int, std::string> check() const {
        char message[256];
        const int code = vektaPlannerCheck(p_, message, sizeof message);
        return {code, message};
    }

    double leftTime() const { return vektaPlannerLeftTime(p_); }
    void setRecovery(bool on) { recovery_ = on, vektaPlannerSetRecovery(p_, on ? 1 : 0); }
    bool recovery() const { return recovery_; }
    void setTrace(bool on) { trace_ = on, vektaPlannerSetTrace(p_, on ? 1 : 0); }
    bool trace() const { return trace_; }

    // None: nothing printed; a callable: called with the lines of each call.
    // The lines are collected either way, to name the reason of a refusal.
    void setOutput(py::object output) { output_ = output; }
    py::object output() const { return output_; }

private:
    static void collect(const char* text, size_t length, void* user) {
        static_cast<Planner*>(user)->lines_.append(text, length);
    }

    // Passes the lines collected so far to the output, if any.
    void flushPending() {
        if (!lines_.empty() && !output_.is_none()) output_(lines_);
        lines_.clear();
    }

    // Runs an update; on refusal raises VektaError with the library's error
    // lines and the plan check's verdict.
    template <typename Update>
    void run(Update update) {
        lines_.clear();
        const bool ok = update() != 0;
        std::string reason;
        for (std::size_t at = 0; at < lines_.size();) {
            std::size_t end = lines_.find('\n', at);
            end = end == std::string::npos ? lines_.size() : end;
            const std::string line = lines_.substr(at, end - at);
            if (line.find("error") != std::string::npos || line.rfind("vekta:", 0) == 0 ||
                line.find("curve overflow") != std::string::npos) {
                reason += (reason.empty() ? "" : "; ") + line;
            }
            at = end + 1;
        }
        flushPending();
        if (!ok) {
            const auto verdict = check();
            throw VektaError(reason.empty() ? verdict.second : reason + "; plan check: " + verdict.second);
        }
    }

    static int axes(const Values& x, const char* name) {
        if (x.ndim() != 1 || (x.size() != 1 && x.size() != 6)) {
            throw py::value_error(std::string(name) + ": 1 or 6 values, one per axis");
        }
        return static_cast<int>(x.size());
    }
    static const double* sized(const Values& x, int n, const char* name) {
        if (x.ndim() != 1 || x.size() != n) throw py::value_error(std::string(name) + ": " + std::to_string(n) + " values");
        return x.data();
    }
    static const double* limits(const Values& x, int n, const char* name) { return sized(x, n, name); }
    static std::vector<double> orZeros(const py::object& x, int n, const char* name) {
        if (x.is_none()) return std::vector<double>(n, 0.0);
        const Values values = py::cast<Values>(x);
        const double* d = sized(values, n, name);
        return std::vector<double>(d, d + n);
    }

public:
    struct VektaError : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

private:
    VektaPlanner* p_;
    int n_ = 0;
    bool recovery_ = false;
    bool trace_ = false;
    std::string lines_;
    py::object output_ = py::none();
};

}  // namespace

PYBIND11_MODULE(vekta, m) {
    m.doc() = "Jerk-limited, time-synchronised point-to-point motions for 1 or 6 axes, sampled at 5 ms.";
    py::register_exception<Planner::VektaError>(m, "VektaError", PyExc_RuntimeError);
    m.attr("PERIOD") = kPeriod;

    py::class_<Planner>(m, "Planner", R"(A planner of its own: 1 or 6 axes, one plan at a time.

Each update plans from the present state; sample() then hands out the motion.
Limits are per axis; the jerk limit of an axis is max_acc x jerk_ratio. A
refused update raises VektaError with the library's reason.)")
        .def(py::init<>(), "A planner with no plan, recovery and trace off, output off.")
        .def("position", &Planner::position, py::arg("target"), py::arg("max_vel"), py::arg("max_acc"),
             py::arg("jerk_ratio"), py::arg("pos"), py::arg("vel") = py::none(), py::arg("acc") = py::none(),
             "Plans every axis from (pos, vel, acc) to rest on target; six axes end together.")
        .def("velocity", &Planner::velocity, py::arg("max_vel"), py::arg("max_acc"), py::arg("jerk_ratio"),
             py::arg("pos"), py::arg("vel"), py::arg("acc") = py::none(),
             "Plans the fastest synchronised stop from (pos, vel, acc).")
        .def("conveyor", &Planner::conveyor, py::arg("conveyor_vel"), py::arg("conveyor_limit"),
             py::arg("target"), py::arg("max_vel"), py::arg("max_acc"), py::arg("jerk_ratio"),
             py::arg("spare") = 1.0,
             "Plans a catch-up from rest with a conveyor moving along axis 0 at conveyor_vel; target is "
             "relative to the robot in the conveyor's frame. Refused when the catch-up ends at or beyond "
             "conveyor_limit.")
        .def("sample", &Planner::sample,
             "Samples the plan to its end: (t, pos, vel, acc), t of shape (k,) at 5 ms, 10 ms, ... and the "
             "others (k, axes). Continues from the periods already sampled. Raises VektaError when there "
             "is no plan, or a refused catch-up's.")
        .def("check", &Planner::check,
             "Checks the current plan: (code, reason), code 0 and 'ok' when it may be sampled.")
        .def_property_readonly("left_time", &Planner::leftTime, "Seconds axis 0's plan still has to run.")
        .def_property("recovery", &Planner::recovery, &Planner::setRecovery,
                      "Recovery mode for the updates that follow (off by default).")
        .def_property("trace", &Planner::trace, &Planner::setTrace, "The planner's trace lines (off by default).")
        .def_property("output", &Planner::output, &Planner::setOutput,
                      "None (the default: nothing printed) or a callable given the library's lines of each "
                      "call, e.g. sys.stdout.write.");
}
