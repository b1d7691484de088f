// vekta::Planner: the library's own calls of vekta_c.h as a C++17 class,
// header-only, over the shared library's C functions.
//
// A Planner owns one planner (vektaPlannerCreate, vektaPlannerDestroy); it
// can be moved, not copied. Nothing throws and nothing allocates after the
// constructor. A Planner whose creation failed (out of memory), or one moved
// from, holds no planner: valid() is false, every planning call returns
// Status::InvalidArgument, error() says "planner is NULL" and the readers
// return what vekta_c.h names for a NULL planner.
//
// Each method is its C function (same arguments, same results), with the
// status as a vekta::Status. Overloads take the arrays as vekta::Values
// (anything with std::data and std::size: std::array, std::vector, a C array,
// or a pointer and a count): the axis count is the length of the first array,
// the others must have the same length (vel and acc may be empty: zero), and
// a call whose lengths differ is refused with Status::InvalidArgument, leaves
// no plan and is named by error(). The output switches take get().
#ifndef VEKTA_PLANNER_HPP
#define VEKTA_PLANNER_HPP

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

#include "vekta_c.h"

namespace vekta {

// What the planning calls return (VektaStatus).
enum class Status : int {
    Ok = VEKTA_OK,
    InvalidArgument = VEKTA_INVALID_ARGUMENT,
    NoProfile = VEKTA_NO_PROFILE,
    PlanRefused = VEKTA_PLAN_REFUSED,
    ConveyorOutOfReach = VEKTA_CONVEYOR_OUT_OF_REACH
};

// A view of size values of T at data, one per axis; it does not own them.
template <class T>
class Span {
public:
    constexpr Span() noexcept = default;
    constexpr Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
    // From std::array, std::vector, a C array and the like.
    template <class C, class = std::enable_if_t<
                           !std::is_same_v<std::decay_t<C>, Span> &&
                           std::is_convertible_v<decltype(std::data(std::declval<C&>())), T*>>>
    constexpr Span(C&& values) noexcept : data_(std::data(values)), size_(std::size(values)) {}

    constexpr T* data() const noexcept { return data_; }
    constexpr std::size_t size() const noexcept { return size_; }
    constexpr bool empty() const noexcept { return size_ == 0; }

private:
    T* data_ = nullptr;
    std::size_t size_ = 0;
};

using Values = Span<const double>;  // what a call reads
using Output = Span<double>;        // what stateAt and next write

class Planner {
public:
    static constexpr int kMaxAxes = VEKTA_MAX_AXES;

    // A new planner: no plan, a 5 ms period, output off.
    Planner() noexcept : planner_(vektaPlannerCreate()) {}
    ~Planner() { vektaPlannerDestroy(planner_); }

    Planner(Planner&& other) noexcept : planner_(std::exchange(other.planner_, nullptr)) {
        std::memcpy(lengthError_, other.lengthError_, sizeof lengthError_);
    }
    Planner& operator=(Planner&& other) noexcept {
        if (this != &other) {
            vektaPlannerDestroy(planner_);
            planner_ = std::exchange(other.planner_, nullptr);
            std::memcpy(lengthError_, other.lengthError_, sizeof lengthError_);
        }
        return *this;
    }
    Planner(const Planner&) = delete;
    Planner& operator=(const Planner&) = delete;

    bool valid() const noexcept { return planner_ != nullptr; }
    explicit operator bool() const noexcept { return valid(); }

    // The handle, for the C functions (output switches, trace, the handle
    // forms); it stays owned by this Planner.
    VektaPlanner* get() const noexcept { return planner_; }

    // ---- Planning: vektaPlannerMove, vektaPlannerStop, vektaPlannerCatchUp

    Status move(int axes, const double* target, const double* maxVel, const double* maxAcc,
                const double* maxJerk, const double* pos, const double* vel = nullptr,
                const double* acc = nullptr) noexcept {
        lengthError_[0] = '\0';
        return Status(vektaPlannerMove(planner_, axes, target, maxVel, maxAcc, maxJerk, pos, vel, acc));
    }
    Status move(Values target, Values maxVel, Values maxAcc, Values maxJerk, Values pos, Values vel = {},
                Values acc = {}) noexcept {
        const std::size_t n = target.size();
        if (differ("target", n, "maxVel", maxVel, false) || differ("target", n, "maxAcc", maxAcc, false) ||
            differ("target", n, "maxJerk", maxJerk, false) || differ("target", n, "pos", pos, false) ||
            differ("target", n, "vel", vel, true) || differ("target", n, "acc", acc, true)) {
            return refuse();
        }
        return move(count(n), target.data(), maxVel.data(), maxAcc.data(), maxJerk.data(), pos.data(),
                    orNull(vel), orNull(acc));
    }

    Status stop(int axes, const double* maxVel, const double* maxAcc, const double* maxJerk,
                const double* pos, const double* vel = nullptr, const double* acc = nullptr) noexcept {
        lengthError_[0] = '\0';
        return Status(vektaPlannerStop(planner_, axes, maxVel, maxAcc, maxJerk, pos, vel, acc));
    }
    Status stop(Values maxVel, Values maxAcc, Values maxJerk, Values pos, Values vel = {},
                Values acc = {}) noexcept {
        const std::size_t n = maxVel.size();
        if (differ("maxVel", n, "maxAcc", maxAcc, false) || differ("maxVel", n, "maxJerk", maxJerk, false) ||
            differ("maxVel", n, "pos", pos, false) || differ("maxVel", n, "vel", vel, true) ||
            differ("maxVel", n, "acc", acc, true)) {
            return refuse();
        }
        return stop(count(n), maxVel.data(), maxAcc.data(), maxJerk.data(), pos.data(), orNull(vel),
                    orNull(acc));
    }

    Status catchUp(int axes, double conveyorVel, double conveyorLimit, const double* target,
                   const double* maxVel, const double* maxAcc, const double* maxJerk) noexcept {
        lengthError_[0] = '\0';
        return Status(
            vektaPlannerCatchUp(planner_, axes, conveyorVel, conveyorLimit, target, maxVel, maxAcc, maxJerk));
    }
    Status catchUp(double conveyorVel, double conveyorLimit, Values target, Values maxVel, Values maxAcc,
                   Values maxJerk) noexcept {
        const std::size_t n = target.size();
        if (differ("target", n, "maxVel", maxVel, false) || differ("target", n, "maxAcc", maxAcc, false) ||
            differ("target", n, "maxJerk", maxJerk, false)) {
            return refuse();
        }
        return catchUp(count(n), conveyorVel, conveyorLimit, target.data(), maxVel.data(), maxAcc.data(),
                       maxJerk.data());
    }

    // Why the last planning call or setPeriod failed, in words; "" after a
    // success. Valid until the next call on this Planner.
    const char* error() const noexcept {
        return lengthError_[0] != '\0' ? lengthError_ : vektaPlannerError(planner_);
    }

    // ---- The period and the plan

    Status setPeriod(double seconds) noexcept {
        lengthError_[0] = '\0';
        return Status(vektaPlannerSetPeriod(planner_, seconds));
    }
    double period() const noexcept { return vektaPlannerPeriod(planner_); }
    int axes() const noexcept { return vektaPlannerAxes(planner_); }
    double duration() const noexcept { return vektaPlannerDuration(planner_); }
    double minimumTime(int axis) const noexcept { return vektaPlannerMinimumTime(planner_, axis); }

    // 0, or -1 (nothing written) without a plan, for a NaN t or a NULL array;
    // the Output forms also for an array shorter than axes().
    int stateAt(double t, double* pos, double* vel, double* acc) const noexcept {
        return vektaPlannerStateAt(planner_, t, pos, vel, acc);
    }
    int stateAt(double t, Output pos, Output vel, Output acc) const noexcept {
        return fits(pos, vel, acc) ? stateAt(t, pos.data(), vel.data(), acc.data()) : -1;
    }

    // 0 while moving, 1 once every axis has finished, -1 as stateAt.
    int next(double* pos, double* vel, double* acc) noexcept { return vektaPlannerNext(planner_, pos, vel, acc); }
    int next(Output pos, Output vel, Output acc) noexcept {
        return fits(pos, vel, acc) ? next(pos.data(), vel.data(), acc.data()) : -1;
    }

private:
    static int count(std::size_t n) noexcept { return n > INT_MAX ? INT_MAX : static_cast<int>(n); }
    static const double* orNull(Values v) noexcept { return v.empty() ? nullptr : v.data(); }

    // Names the first array whose length is not the axis count.
    bool differ(const char* first, std::size_t axes, const char* name, Values v, bool mayBeEmpty) noexcept {
        if (v.size() == axes || (mayBeEmpty && v.empty())) return false;
        std::snprintf(lengthError_, sizeof lengthError_,
                      "%s has %zu values and %s %zu: every array must hold one value per axis%s", name, v.size(),
                      first, axes, mayBeEmpty ? " (or none)" : "");
        return true;
    }
    // A refused call leaves no plan, as the library's own refusals do: an
    // axis count of 0 makes the library drop it.
    Status refuse() noexcept {
        if (planner_ == nullptr) lengthError_[0] = '\0';
        vektaPlannerMove(planner_, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        return Status::InvalidArgument;
    }
    bool fits(Output pos, Output vel, Output acc) const noexcept {
        const auto n = static_cast<std::size_t>(axes());
        return pos.size() >= n && vel.size() >= n && acc.size() >= n;
    }

    VektaPlanner* planner_;
    char lengthError_[128] = {};
};

}  // namespace vekta

#endif  // VEKTA_PLANNER_HPP
