// The compiled module of the Python package `vekta` (vekta._vekta): vekta.Planner
// over a planner handle of vekta_c.h, taking numbers, sequences or numpy arrays
// and giving numpy arrays back.
//
// Every argument is converted and checked here, with the GIL held, into arrays
// of the module's own; the library then plans and samples with the GIL
// released and the planner's lock held, so that planners on other Python
// threads run meanwhile and a planner shared by two threads is used by one at
// a time. A thread waiting for the lock has always released the GIL first.
//
// The docstrings begin with a text signature ("name(args)\n--\n\n"), which
// Python reads for inspect.signature and help(); pybind11's own signatures are
// off. The types are in _vekta.pyi.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vekta/vekta_c.h"

#ifndef VEKTA_VERSION
#error "VEKTA_VERSION must be defined (the project's version)"
#endif

namespace py = pybind11;

namespace {

constexpr double kDefaultPeriod = 0.005;
// vekta.h: the conveyor update refuses a spare time below this, without a word.
constexpr double kMinConveyorSpare = 0.002;
// The most values sample() returns in one array (400 MB; three such arrays).
constexpr double kMostSampledValues = 5e7;

using AxisValues = std::array<double, VEKTA_MAX_AXES>;
using Args = std::vector<py::object>;

PyObject* vektaErrorType = nullptr;  // vekta.VektaError, made when the module loads

// ---- Errors

// A failed plan: vekta.VektaError with .status and .reason.
[[noreturn]] void raiseVektaError(int status, const std::string& reason) {
    py::object error = py::reinterpret_borrow<py::object>(vektaErrorType)(reason);
    error.attr("status") = status;
    error.attr("reason") = reason;
    PyErr_SetObject(vektaErrorType, error.ptr());
    throw py::error_already_set();
}

std::string shapeText(const py::array& a) {
    std::string text = "(";
    for (py::ssize_t d = 0; d < a.ndim(); ++d) text += (d ? ", " : "") + std::to_string(a.shape(d));
    return text + (a.ndim() == 1 ? ",)" : ")");
}

// ---- Arguments

// The arguments of a call matched to its parameters as Python matches them,
// with Python's messages; the parameters not given are None.
Args bindArgs(const std::string& fn, const std::vector<std::string>& names, size_t required,
              const py::args& args, const py::kwargs& kwargs) {
    if (args.size() > names.size()) {
        throw py::type_error(fn + "() takes " + std::to_string(names.size()) + " arguments (" +
                             std::to_string(args.size()) + " given)");
    }
    Args out(names.size());
    for (size_t i = 0; i < args.size(); ++i) out[i] = args[i];
    for (const auto& item : kwargs) {
        const std::string name = py::str(item.first);
        size_t i = 0;
        while (i < names.size() && names[i] != name) ++i;
        if (i == names.size()) throw py::type_error(fn + "() got an unexpected keyword argument '" + name + "'");
        if (out[i]) throw py::type_error(fn + "() got multiple values for argument '" + name + "'");
        out[i] = py::reinterpret_borrow<py::object>(item.second);
    }
    for (size_t i = 0; i < names.size(); ++i) {
        if (out[i]) continue;
        if (i < required) throw py::type_error(fn + "() missing required argument '" + names[i] + "'");
        out[i] = py::none();
    }
    return out;
}

// x as a numpy array of real numbers (any shape, not yet float64). Strings are
// refused before numpy could read "1.5" as a number, and so are complex
// numbers, booleans and other objects. `one`: a single number is wanted.
py::array realArray(py::handle x, const std::string& name, bool one = false) {
    const std::string wanted = name + (one ? " must be a real number, not " : " must be real numbers, not ");
    if (py::isinstance<py::str>(x) || py::isinstance<py::bytes>(x)) throw py::type_error(wanted + "a string");
    // Kept for the module's life (never destroyed after the interpreter).
    static const auto* asarray = new py::object(py::module_::import("numpy").attr("asarray"));
    py::array a;
    try {
        a = (*asarray)(x);
    } catch (const py::error_already_set&) {
        throw py::value_error(name + " must be a number or a flat sequence of numbers");
    }
    const char kind = a.dtype().kind();
    if (kind == 'i' || kind == 'u' || kind == 'f') return a;
    std::string what = kind == 'c' ? "complex" : kind == 'b' ? "bool" : kind == 'U' || kind == 'S' ? "strings" : "";
    if (what.empty()) {  // objects: name the first that is not a number
        what = py::str(x.get_type().attr("__name__"));
        for (const py::handle item : a.attr("flat")) {
            if (PyFloat_Check(item.ptr()) || (PyLong_Check(item.ptr()) && !PyBool_Check(item.ptr()))) continue;
            what = py::str(item.get_type().attr("__name__"));
            break;
        }
    }
    throw py::type_error(wanted + what);
}

// One real number (int, float or a numpy real scalar).
double toNumber(py::handle x, const std::string& name) {
    if (PyFloat_CheckExact(x.ptr())) return PyFloat_AS_DOUBLE(x.ptr());
    const py::array a = realArray(x, name, true);
    if (a.ndim() != 0) throw py::value_error(name + " must be a single number, not shape " + shapeText(a));
    return py::cast<double>(a.attr("item")());
}

// A flat sequence of real numbers as float64, copied (any length).
std::vector<double> toValues(py::handle x, const std::string& name) {
    const py::array a = realArray(x, name);
    if (a.ndim() != 1) {
        throw py::value_error(name + " must be a flat sequence of numbers, not " +
                              (a.ndim() == 0 ? std::string("a single number") : "shape " + shapeText(a)));
    }
    const auto values = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
    return std::vector<double>(values.data(), values.data() + values.size());
}

// One value per axis. `axes` is 0 for the array that sets the axis count (1 to
// 16, or `only` when given: the handle forms' 1 or 6), else that count;
// `counted` names the array that set it. Returns the count.
int perAxis(py::handle x, const std::string& name, AxisValues& out, int axes, const std::string& counted,
            const char* only = nullptr) {
    const std::vector<double> values = toValues(x, name);
    const int n = static_cast<int>(values.size());
    if (axes == 0 && only != nullptr && n != 1 && n != 6) {
        throw py::value_error(name + " has " + std::to_string(n) + " values; " + only + " takes 1 or 6 axes");
    }
    if (axes == 0 && (n < 1 || n > VEKTA_MAX_AXES)) {
        throw py::value_error(name + " has " + std::to_string(n) + " values; a planner takes 1 to " +
                              std::to_string(VEKTA_MAX_AXES) + " axes");
    }
    if (axes != 0 && n != axes) {
        throw py::value_error(name + " has " + std::to_string(n) + (n == 1 ? " value, " : " values, ") + counted +
                              " has " + std::to_string(axes) + ": give one per axis");
    }
    std::copy(values.begin(), values.end(), out.begin());
    return n;
}

// Values for numpy, left uninitialised until the library writes every one.
struct Buffer {
    std::unique_ptr<double[]> values{new double[0]};
    void resize(size_t n) { values.reset(new double[n]); }
    double* at(size_t i) { return values.get() + i; }
};

// A buffer handed to numpy without a copy.
py::array_t<double> toArray(Buffer&& buffer, std::vector<py::ssize_t> shape) {
    double* owned = buffer.values.release();
    py::capsule owner(owned, [](void* p) { delete[] static_cast<double*>(p); });
    return py::array_t<double>(std::move(shape), owned, owner);
}

py::array_t<double> toArray(const double* values, int n) {
    py::array_t<double> out(n);
    std::copy(values, values + n, out.mutable_data());
    return out;
}

// ---- The planner

// The arrays of one request, converted before the library is called.
struct Request {
    int axes = 0;
    AxisValues target{}, maxVel{}, maxAcc{}, maxJerk{}, pos{}, vel{}, acc{};
    bool hasVel = false, hasAcc = false;
};

// What a call into the library left: its status, reason and printed lines.
struct Outcome {
    int status = VEKTA_OK;
    std::string reason;
    std::string lines;
};

class Planner {
public:
    explicit Planner(double period) : p_(vektaPlannerCreate(), &vektaPlannerDestroy) {
        if (!p_) throw std::bad_alloc();
        vektaPlannerOutputOff(p_.get());
        if (vektaPlannerSetPeriod(p_.get(), period) != VEKTA_OK) throw py::value_error(vektaPlannerError(p_.get()));
    }

    // ---- The library's own calls

    void move(const Args& a) {
        Request r;
        convert([&] {
            r.axes = perAxis(a[0], "target", r.target, 0, "");
            limits(a[1], a[2], a[3], r, "target");
            if (!a[4].is_none()) perAxis(a[4], "pos", r.pos, r.axes, "target");
            state(a[5], a[6], r, "target");
        });
        plan([&](VektaPlanner* p) {
            return vektaPlannerMove(p, r.axes, r.target.data(), r.maxVel.data(), r.maxAcc.data(), r.maxJerk.data(),
                                    r.pos.data(), r.hasVel ? r.vel.data() : nullptr,
                                    r.hasAcc ? r.acc.data() : nullptr);
        });
    }

    void stop(const Args& a) {
        Request r;
        convert([&] {
            r.axes = perAxis(a[3], "pos", r.pos, 0, "");
            limits(a[0], a[1], a[2], r, "pos");
            state(a[4], a[5], r, "pos");
        });
        plan([&](VektaPlanner* p) {
            return vektaPlannerStop(p, r.axes, r.maxVel.data(), r.maxAcc.data(), r.maxJerk.data(), r.pos.data(),
                                    r.hasVel ? r.vel.data() : nullptr, r.hasAcc ? r.acc.data() : nullptr);
        });
    }

    void catchUp(const Args& a) {
        Request r;
        double conveyorVel = 0.0, conveyorLimit = 0.0;
        convert([&] {
            conveyorVel = toNumber(a[0], "conveyor_vel");
            conveyorLimit = toNumber(a[1], "conveyor_limit");
            r.axes = perAxis(a[2], "target", r.target, 0, "");
            limits(a[3], a[4], a[5], r, "target");
        });
        plan([&](VektaPlanner* p) {
            return vektaPlannerCatchUp(p, r.axes, conveyorVel, conveyorLimit, r.target.data(), r.maxVel.data(),
                                       r.maxAcc.data(), r.maxJerk.data());
        });
    }

    // ---- The handle forms (1 or 6 axes, a jerk ratio)

    void position(const Args& a) {
        Request r;
        double ratio = 0.0;
        convert([&] {
            r.axes = perAxis(a[0], "target", r.target, 0, "", "position()");
            perAxis(a[1], "max_vel", r.maxVel, r.axes, "target");
            perAxis(a[2], "max_acc", r.maxAcc, r.axes, "target");
            ratio = toNumber(a[3], "jerk_ratio");
            perAxis(a[4], "pos", r.pos, r.axes, "target");
            state(a[5], a[6], r, "target");
        });
        planLegacy([&](VektaPlanner* p) {
            return vektaPlannerPositionUpdate(p, r.axes, r.target.data(), r.maxVel.data(), r.maxAcc.data(), ratio,
                                              r.pos.data(), r.vel.data(), r.acc.data());
        });
    }

    void velocity(const Args& a) {
        Request r;
        double ratio = 0.0;
        convert([&] {
            r.axes = perAxis(a[3], "pos", r.pos, 0, "", "velocity()");
            perAxis(a[0], "max_vel", r.maxVel, r.axes, "pos");
            perAxis(a[1], "max_acc", r.maxAcc, r.axes, "pos");
            ratio = toNumber(a[2], "jerk_ratio");
            perAxis(a[4], "vel", r.vel, r.axes, "pos");
            state(py::none(), a[5], r, "pos");
        });
        planLegacy([&](VektaPlanner* p) {
            return vektaPlannerVelocityUpdate(p, r.axes, r.maxVel.data(), r.maxAcc.data(), ratio, r.pos.data(),
                                              r.vel.data(), r.acc.data());
        });
    }

    void conveyor(const Args& a) {
        Request r;
        double conveyorVel = 0.0, conveyorLimit = 0.0, ratio = 0.0, spare = 1.0;
        convert([&] {
            conveyorVel = toNumber(a[0], "conveyor_vel");
            conveyorLimit = toNumber(a[1], "conveyor_limit");
            r.axes = perAxis(a[2], "target", r.target, 0, "", "conveyor()");
            perAxis(a[3], "max_vel", r.maxVel, r.axes, "target");
            perAxis(a[4], "max_acc", r.maxAcc, r.axes, "target");
            ratio = toNumber(a[5], "jerk_ratio");
            if (!a[6].is_none()) spare = toNumber(a[6], "spare");
            // The library refuses it silently and keeps the plan it had.
            if (!(spare >= kMinConveyorSpare)) {
                throw py::value_error("spare is " + py::str(py::float_(spare)).cast<std::string>() +
                                      " s; the conveyor update refuses a spare below 0.002 s");
            }
        });
        planLegacy([&](VektaPlanner* p) {
            return vektaPlannerConveyorUpdate(p, r.axes, conveyorVel, conveyorLimit, r.target.data(),
                                              r.maxVel.data(), r.maxAcc.data(), ratio, spare);
        });
    }

    // ---- Reading the plan

    py::tuple stateAt(py::handle t) {
        const bool one = PyFloat_Check(t.ptr()) || realArray(t, "t").ndim() == 0;
        const std::vector<double> times = one ? std::vector<double>{toNumber(t, "t")} : toValues(t, "t");
        for (size_t i = 0; i < times.size(); ++i) {
            if (std::isnan(times[i])) {
                throw py::value_error(one ? std::string("t is nan; it must be a time in seconds")
                                          : "t[" + std::to_string(i) + "] is nan; times must be seconds");
            }
        }
        const auto k = static_cast<py::ssize_t>(times.size());
        Buffer pos, vel, acc;
        const int axes = withPlanner([&](VektaPlanner* p) {
            const int n = vektaPlannerAxes(p);
            pos.resize(times.size() * n), vel.resize(times.size() * n), acc.resize(times.size() * n);
            for (size_t i = 0; i < times.size() && n > 0; ++i) {
                vektaPlannerStateAt(p, times[i], pos.at(i * n), vel.at(i * n), acc.at(i * n));
            }
            return n;
        });
        if (axes == 0) noPlan();
        std::vector<py::ssize_t> shape{axes};
        if (!one) shape.insert(shape.begin(), k);
        return py::make_tuple(toArray(std::move(pos), shape), toArray(std::move(vel), shape),
                              toArray(std::move(acc), shape));
    }

    py::tuple next() {
        AxisValues pos, vel, acc;
        int axes = 0;
        const int result = withPlanner([&](VektaPlanner* p) {
            axes = vektaPlannerAxes(p);
            return vektaPlannerNext(p, pos.data(), vel.data(), acc.data());
        });
        if (result < 0) noPlan();
        return py::make_tuple(toArray(pos.data(), axes), toArray(vel.data(), axes), toArray(acc.data(), axes),
                              result == 1);
    }

    py::tuple sample() {
        Buffer t, pos, vel, acc;
        size_t rows = 0;
        double duration = 0.0, period = 0.0;
        int axes = 0;
        withPlanner([&](VektaPlanner* p) {
            axes = vektaPlannerAxes(p);
            duration = vektaPlannerDuration(p);
            period = vektaPlannerPeriod(p);
            // The periods through the first at or past the end (where next() reports
            // finished), at least one; a time is formed from its period number, as
            // the sampler forms it.
            double last = std::ceil(duration / period);
            if (last < 1.0) last = 1.0;
            while ((last - 1.0) * period >= duration && last > 1.0) last -= 1.0;
            while (last * period < duration) last += 1.0;
            if (axes == 0 || (last + 1.0) * axes > kMostSampledValues) return;
            rows = static_cast<size_t>(last) + 1;
            t.resize(rows), pos.resize(rows * axes), vel.resize(rows * axes), acc.resize(rows * axes);
            for (size_t i = 0; i < rows; ++i) {
                *t.at(i) = static_cast<double>(static_cast<int>(i)) * period;
                vektaPlannerStateAt(p, *t.at(i), pos.at(i * axes), vel.at(i * axes), acc.at(i * axes));
            }
        });
        if (axes == 0) noPlan();
        if (rows == 0) {
            throw py::value_error("the motion lasts " + std::to_string(duration) +
                                  " s: too many periods for sample(); take its states with state_at in pieces");
        }
        const auto k = static_cast<py::ssize_t>(rows);
        return py::make_tuple(toArray(std::move(t), {k}), toArray(std::move(pos), {k, axes}),
                              toArray(std::move(vel), {k, axes}), toArray(std::move(acc), {k, axes}));
    }

    double duration() { return withPlanner([](VektaPlanner* p) { return vektaPlannerDuration(p); }); }
    double period() { return withPlanner([](VektaPlanner* p) { return vektaPlannerPeriod(p); }); }
    int axes() { return withPlanner([](VektaPlanner* p) { return vektaPlannerAxes(p); }); }

    py::array_t<double> minimumTimes() {
        AxisValues times{};
        const int axes = withPlanner([&](VektaPlanner* p) {
            const int n = vektaPlannerAxes(p);
            for (int i = 0; i < n; ++i) times[i] = vektaPlannerMinimumTime(p, i);
            return n;
        });
        return toArray(times.data(), axes);
    }

    std::string repr() {
        int axes = 0;
        double period = 0.0, duration = 0.0;
        withPlanner([&](VektaPlanner* p) {
            axes = vektaPlannerAxes(p), period = vektaPlannerPeriod(p), duration = vektaPlannerDuration(p);
        });
        const auto g = [](double x) { return py::repr(py::float_(x)).cast<std::string>(); };
        return "<vekta.Planner axes=" + std::to_string(axes) + " period=" + g(period) + " duration=" + g(duration) +
               ">";
    }

    // ---- The handle forms' readings and switches

    py::tuple check() {
        char message[256];
        const int code = withPlanner([&](VektaPlanner* p) { return vektaPlannerCheck(p, message, sizeof message); });
        return py::make_tuple(code, std::string(message));
    }

    double leftTime() { return withPlanner([](VektaPlanner* p) { return vektaPlannerLeftTime(p); }); }
    bool recovery() const { return recovery_; }
    void setRecovery(py::handle on) {
        recovery_ = flag(on, "recovery");
        withPlanner([&](VektaPlanner* p) { vektaPlannerSetRecovery(p, recovery_ ? 1 : 0); });
    }
    bool trace() const { return trace_; }
    void setTrace(py::handle on) {
        trace_ = flag(on, "trace");
        withPlanner([&](VektaPlanner* p) { vektaPlannerSetTrace(p, trace_ ? 1 : 0); });
    }
    py::object output() const { return output_; }
    void setOutput(py::object output) {
        if (!output.is_none() && !PyCallable_Check(output.ptr())) {
            throw py::type_error("output must be None or a callable taking a string");
        }
        output_ = std::move(output);
    }

private:
    // Runs f on the planner with the GIL released and the planner's lock held.
    // f must not touch Python.
    template <typename F>
    auto withPlanner(F f) -> decltype(f(static_cast<VektaPlanner*>(nullptr))) {
        py::gil_scoped_release release;
        std::lock_guard<std::mutex> lock(mutex_);
        return f(p_.get());
    }

    // Converts a request's arguments; when one is refused the planner is left
    // without a plan, as after any failed call, and the error goes on.
    template <typename F>
    void convert(F f) {
        try {
            f();
        } catch (...) {
            // An axis count the library refuses: its documented way to no plan.
            withPlanner([](VektaPlanner* p) {
                vektaPlannerMove(p, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
            });
            throw;
        }
    }

    void limits(py::handle maxVel, py::handle maxAcc, py::handle maxJerk, Request& r, const char* counted) {
        perAxis(maxVel, "max_vel", r.maxVel, r.axes, counted);
        perAxis(maxAcc, "max_acc", r.maxAcc, r.axes, counted);
        perAxis(maxJerk, "max_jerk", r.maxJerk, r.axes, counted);
    }

    void state(py::handle vel, py::handle acc, Request& r, const char* counted) {
        if (!vel.is_none()) r.hasVel = true, perAxis(vel, "vel", r.vel, r.axes, counted);
        if (!acc.is_none()) r.hasAcc = true, perAxis(acc, "acc", r.acc, r.axes, counted);
    }

    // One of the library's own calls: ValueError for an argument it refuses,
    // VektaError for a plan it could not make.
    template <typename Call>
    void plan(Call call) {
        const bool quiet = output_.is_none();
        const Outcome o = withPlanner([&](VektaPlanner* p) {
            if (quiet) {
                vektaPlannerOutputOff(p);
            } else {
                vektaPlannerOutputToCallback(p, &collect, this);
            }
            Outcome out;
            out.status = call(p);
            if (out.status != VEKTA_OK) out.reason = vektaPlannerError(p);
            out.lines.swap(lines_);
            return out;
        });
        emit(o.lines);
        if (o.status == VEKTA_INVALID_ARGUMENT) throw py::value_error(o.reason);
        if (o.status != VEKTA_OK) raiseVektaError(o.status, o.reason);
    }

    // A handle form: true or false, the reason in its error lines and the plan
    // check's verdict.
    template <typename Update>
    void planLegacy(Update update) {
        int verdict = VEKTA_CHECK_OK;
        char message[256] = "";
        const Outcome o = withPlanner([&](VektaPlanner* p) {
            vektaPlannerOutputToCallback(p, &collect, this);
            Outcome out;
            if (update(p) == 0) {
                verdict = vektaPlannerCheck(p, message, sizeof message);
                out.status = verdict == VEKTA_CHECK_CONVEYOR_REFUSED ? VEKTA_CONVEYOR_OUT_OF_REACH
                             : verdict == VEKTA_CHECK_OK || verdict == VEKTA_CHECK_NO_PLAN ? VEKTA_NO_PROFILE
                                                                                           : VEKTA_PLAN_REFUSED;
            }
            out.lines.swap(lines_);
            return out;
        });
        emit(o.lines);
        if (o.status == VEKTA_OK) return;
        std::string reason;
        for (size_t at = 0; at < o.lines.size();) {
            size_t end = o.lines.find('\n', at);
            end = end == std::string::npos ? o.lines.size() : end;
            const std::string line = o.lines.substr(at, end - at);
            if (line.find("error") != std::string::npos || line.rfind("vekta:", 0) == 0 ||
                line.find("curve overflow") != std::string::npos) {
                reason += (reason.empty() ? "" : "; ") + line;
            }
            at = end + 1;
        }
        raiseVektaError(o.status, reason.empty() ? message : reason + "; plan check: " + message);
    }

    static void collect(const char* text, size_t length, void* user) {
        static_cast<Planner*>(user)->lines_.append(text, length);
    }

    // The lines of a call for the output, when there is one.
    void emit(const std::string& lines) const {
        if (!lines.empty() && !output_.is_none()) output_(lines);
    }

    [[noreturn]] static void noPlan() {
        throw std::runtime_error("no plan: the last call failed, or none has planned yet");
    }

    static bool flag(py::handle on, const char* name) {
        if (!PyBool_Check(on.ptr())) throw py::type_error(std::string(name) + " must be True or False");
        return on.ptr() == Py_True;
    }

    std::unique_ptr<VektaPlanner, void (*)(VektaPlanner*)> p_;
    std::mutex mutex_;
    std::string lines_;  // the lines of the call in progress (under the lock)
    bool recovery_ = false;
    bool trace_ = false;
    py::object output_ = py::none();
};

// A method whose parameters are matched by bindArgs.
template <typename Body>
void method(py::class_<Planner>& cls, const char* name, std::vector<std::string> params, size_t required,
            Body body, const char* doc) {
    cls.def(
        name,
        [name, params, required, body](Planner& self, const py::args& args, const py::kwargs& kwargs) {
            return body(self, bindArgs(name, params, required, args, kwargs));
        },
        doc);
}

}  // namespace

PYBIND11_MODULE(_vekta, m) {
    py::options options;
    options.disable_function_signatures();
    m.doc() = "The compiled module of vekta: the Planner, over the library's planner handle.";
    m.attr("__version__") = VEKTA_VERSION;
    m.attr("MAX_AXES") = VEKTA_MAX_AXES;
    m.attr("MIN_PERIOD") = VEKTA_MIN_PERIOD;
    m.attr("MAX_PERIOD") = VEKTA_MAX_PERIOD;
    m.attr("PERIOD") = kDefaultPeriod;
    m.attr("OK") = static_cast<int>(VEKTA_OK);
    m.attr("INVALID_ARGUMENT") = static_cast<int>(VEKTA_INVALID_ARGUMENT);
    m.attr("NO_PROFILE") = static_cast<int>(VEKTA_NO_PROFILE);
    m.attr("PLAN_REFUSED") = static_cast<int>(VEKTA_PLAN_REFUSED);
    m.attr("CONVEYOR_OUT_OF_REACH") = static_cast<int>(VEKTA_CONVEYOR_OUT_OF_REACH);

    vektaErrorType = PyErr_NewExceptionWithDoc(
        "vekta.VektaError",
        "A motion the library could not plan. .status is the library's status (NO_PROFILE, PLAN_REFUSED or "
        "CONVEYOR_OUT_OF_REACH), .reason its reason in words, also the message.",
        PyExc_RuntimeError, nullptr);
    if (vektaErrorType == nullptr) throw py::error_already_set();
    m.attr("VektaError") = py::reinterpret_borrow<py::object>(vektaErrorType);

    py::class_<Planner> cls(m, "Planner", R"(Planner(period=0.005)
--

A planner of its own: any arm of 1 to 16 axes, one plan at a time, sampled
every `period` seconds (0.0001 to 1 s, fixed for the planner's life).

move, stop and catch_up plan a motion in which every axis ends at the same
time; state_at, next and sample read it. Positions are in the caller's unit
(m or rad), velocities in unit/s, accelerations in unit/s^2, jerks in
unit/s^3, times in seconds. An argument the library refuses raises ValueError
with its reason, a motion it cannot plan vekta.VektaError; after any failure
the planner has no plan. The GIL is released while the library plans and
samples; one planner may be shared by threads (one call at a time).)");
    cls.def(py::init([](const py::args& args, const py::kwargs& kwargs) {
                const Args a = bindArgs("Planner", {"period"}, 0, args, kwargs);
                return std::make_unique<Planner>(a[0].is_none() ? kDefaultPeriod : toNumber(a[0], "period"));
            }),
            "__init__(self, period=0.005)\n--\n\n"
            "A planner with no plan, sampling every `period` seconds. ValueError, with the library's reason, "
            "for a period outside 0.0001 to 1 s.");

    method(cls, "move", {"target", "max_vel", "max_acc", "max_jerk", "pos", "vel", "acc"}, 4,
           [](Planner& p, const Args& a) { p.move(a); },
           "move(self, target, max_vel, max_acc, max_jerk, pos=None, vel=None, acc=None)\n--\n\n"
           "Plans every axis from (pos, vel, acc) to rest on target (unit); all axes end together. One value "
           "per axis in each: max_vel (unit/s), max_acc (unit/s^2) and max_jerk (unit/s^3) positive; pos "
           "(unit) None for all zeros, vel (unit/s) and acc (unit/s^2) None for rest.");
    method(cls, "stop", {"max_vel", "max_acc", "max_jerk", "pos", "vel", "acc"}, 4,
           [](Planner& p, const Args& a) { p.stop(a); },
           "stop(self, max_vel, max_acc, max_jerk, pos, vel=None, acc=None)\n--\n\n"
           "Plans the fastest synchronised stop from (pos, vel, acc): every axis to rest, all at the same "
           "time. Limits as for move (unit/s, unit/s^2, unit/s^3); vel and acc None for zeros.");
    method(cls, "catch_up", {"conveyor_vel", "conveyor_limit", "target", "max_vel", "max_acc", "max_jerk"}, 6,
           [](Planner& p, const Args& a) { p.catchUp(a); },
           "catch_up(self, conveyor_vel, conveyor_limit, target, max_vel, max_acc, max_jerk)\n--\n\n"
           "Plans a catch-up with a conveyor moving along axis 0 at conveyor_vel (unit/s): the arm starts at "
           "rest at 0 and reaches target (unit) in the conveyor's frame, axis 0 ending with the conveyor's "
           "velocity; the states are in the fixed frame. VektaError (CONVEYOR_OUT_OF_REACH) when the target "
           "would reach conveyor_limit (unit) first.");
    method(cls, "state_at", {"t"}, 1, [](Planner& p, const Args& a) { return p.stateAt(a[0]); },
           "state_at(self, t)\n--\n\n"
           "(pos, vel, acc) of every axis at t seconds after the call that planned: arrays of shape (axes,) "
           "for one time, (k, axes) for k times. The start state before 0, the end state past the end; at "
           "t = (k + 1) * period exactly what the k-th next() gives. Moves nothing. RuntimeError without a "
           "plan.");
    method(cls, "next", {}, 0, [](Planner& p, const Args&) { return p.next(); },
           "next(self)\n--\n\n"
           "(pos, vel, acc, finished) at the next period: the k-th call after a plan gives the state at "
           "(k + 1) * period, each an array of shape (axes,) (unit, unit/s, unit/s^2); finished is True from "
           "the period at or past the end on (the end state). RuntimeError without a plan.");
    method(cls, "sample", {}, 0, [](Planner& p, const Args&) { return p.sample(); },
           "sample(self)\n--\n\n"
           "The whole motion as (t, pos, vel, acc): t (s) of shape (k,) at 0, period, 2 * period, ... through "
           "the first period at or past the end (where next() reports finished), the others of shape (k, axes). "
           "Moves nothing: next() goes on where it was. RuntimeError without a plan.");
    cls.def_property_readonly("duration", &Planner::duration,
                              "Seconds from the call that planned to the end of every axis; 0.0 without a plan.");
    cls.def_property_readonly("period", &Planner::period, "The sampling period in seconds.");
    cls.def_property_readonly("axes", &Planner::axes, "The axis count of the plan; 0 without a plan.");
    cls.def_property_readonly("minimum_times", &Planner::minimumTimes,
                              "Seconds each axis would take alone, as fast as its limits allow, shape (axes,); "
                              "the slowest sets the duration. Empty without a plan.");
    cls.def("__repr__", &Planner::repr);

    method(cls, "position", {"target", "max_vel", "max_acc", "jerk_ratio", "pos", "vel", "acc"}, 5,
           [](Planner& p, const Args& a) { p.position(a); },
           "position(self, target, max_vel, max_acc, jerk_ratio, pos, vel=None, acc=None)\n--\n\n"
           "The handle form of a move, for 1 or 6 axes: every axis from (pos, vel, acc) to rest on target, the "
           "jerk limit of an axis being max_acc * jerk_ratio (unit/s^3). VektaError with the library's lines "
           "and the plan check's verdict when refused.");
    method(cls, "velocity", {"max_vel", "max_acc", "jerk_ratio", "pos", "vel", "acc"}, 5,
           [](Planner& p, const Args& a) { p.velocity(a); },
           "velocity(self, max_vel, max_acc, jerk_ratio, pos, vel, acc=None)\n--\n\n"
           "The handle form of a stop, for 1 or 6 axes: the fastest synchronised stop from (pos, vel, acc).");
    method(cls, "conveyor",
           {"conveyor_vel", "conveyor_limit", "target", "max_vel", "max_acc", "jerk_ratio", "spare"}, 6,
           [](Planner& p, const Args& a) { p.conveyor(a); },
           "conveyor(self, conveyor_vel, conveyor_limit, target, max_vel, max_acc, jerk_ratio, spare=1.0)\n--\n\n"
           "The handle form of a catch-up, for 1 or 6 axes. ValueError for a spare below 0.002 s, which the "
           "conveyor update refuses.");
    method(cls, "check", {}, 0, [](Planner& p, const Args&) { return p.check(); },
           "check(self)\n--\n\n"
           "The plan check's verdict on the current plan: (code, reason), (0, 'ok') when it may be sampled.");
    cls.def_property_readonly("left_time", &Planner::leftTime,
                              "Seconds axis 0's plan still has to run after the periods next() handed out.");
    cls.def_property("recovery", &Planner::recovery, &Planner::setRecovery,
                     "Recovery mode for the handle forms that follow (False by default; the library's own "
                     "calls always recover).");
    cls.def_property("trace", &Planner::trace, &Planner::setTrace, "The planner's trace lines (False by default).");
    cls.def_property("output", &Planner::output, &Planner::setOutput,
                     "None (the default: nothing printed) or a callable given the library's lines of each "
                     "planning call, e.g. sys.stdout.write.");
}
