// What stands at the top of every FM_ function: the call is counted, a failure asked for through
// StandIn_FailCall is delivered, and exceptions become statuses.
#pragma once

#include "console/fmwrapper/control.h"

#include <atomic>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace vell::console {

struct CallCounter {
    std::atomic<std::uint64_t> calls{0};
    std::atomic<std::uint64_t> fail_at{0}; // the call that fails; 0 is none
};
extern CallCounter call_counter;

// Writes the status of the failure that is due, or raises it.
void deliver_failure(const char* function, fm::Status* status);

inline void set_status(fm::Status* status, fm::StatusCode code) {
    if (status != nullptr)
        status->code = static_cast<std::int32_t>(code);
}

// A null object, a position outside of a vector, an unknown number: the host's unknown failure.
struct BadCall : std::invalid_argument {
    BadCall() : std::invalid_argument("bad host call") {}
};

template <typename T>
T& checked(T* object) {
    if (object == nullptr)
        throw BadCall();
    return *object;
}

template <typename Body>
auto guarded(const char* function, fm::Status* status, Body&& body) noexcept {
    using Answer = std::invoke_result_t<Body>;
    const std::uint64_t call = call_counter.calls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (call == call_counter.fail_at.load(std::memory_order_relaxed)) [[unlikely]] {
        deliver_failure(function, status);
        return Answer();
    }
    set_status(status, fm::StatusCode::Ok);
    try {
        return body();
    } catch (const std::bad_alloc&) {
        set_status(status, fm::StatusCode::AllocationFailure);
    } catch (...) {
        set_status(status, fm::StatusCode::UnknownFailure);
    }
    return Answer();
}

// Live objects --------------------------------------------------------------------------------

extern std::atomic<std::int64_t> live_objects[static_cast<std::size_t>(StandInObject::Count_)];

template <typename T>
struct KindOf;
#define VELL_KIND(name)                                                                            \
    template <>                                                                                    \
    struct KindOf<fm::name> {                                                                      \
        static constexpr auto index = static_cast<std::size_t>(StandInObject::name);               \
    }
VELL_KIND(Text);
VELL_KIND(Data);
VELL_KIND(DataVect);
VELL_KIND(BinaryData);
VELL_KIND(DateTime);
VELL_KIND(FixPt);
VELL_KIND(QuadChar);
VELL_KIND(Locale);
VELL_KIND(CharacterStyle);
VELL_KIND(Color);
VELL_KIND(ExprEnv);
#undef VELL_KIND

template <typename T>
T* counted(T* object) {
    live_objects[KindOf<T>::index].fetch_add(1, std::memory_order_relaxed);
    return object;
}

template <typename T, typename... Arguments>
T* create(const char* function, fm::Status* status, Arguments&&... arguments) noexcept {
    return guarded(function, status,
                   [&] { return counted(new T{std::forward<Arguments>(arguments)...}); });
}

// Deleting is counted as a call but never fails.
template <typename T>
void destroy(T* object, fm::Status* status) noexcept {
    call_counter.calls.fetch_add(1, std::memory_order_relaxed);
    set_status(status, fm::StatusCode::Ok);
    if (object == nullptr)
        return;
    delete object;
    live_objects[KindOf<T>::index].fetch_sub(1, std::memory_order_relaxed);
}

} // namespace vell::console
