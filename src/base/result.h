// A value or the error that stands in its place.
//
// The standard's std::expected would serve, but the libstdc++ that goes with GCC 12 cannot be used
// by the clang that builds the sanitizer and fuzzer variants; this is the part of it that we need.
#pragma once

#include "src/base/error_code.h"

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace vell {

template <typename E>
struct Failure {
    E error;
};
template <typename E>
Failure(E) -> Failure<E>;

template <typename T, typename E = ErrorCode>
class [[nodiscard]] Result {
  public:
    using value_type = T;

    template <typename U = T>
    requires(std::is_constructible_v<T, U&&> && !std::is_same_v<std::remove_cvref_t<U>, Result> &&
             !std::is_same_v<std::remove_cvref_t<U>, Failure<E>>) Result(U&& value)
        : state_(std::in_place_index<0>, std::forward<U>(value)) {}
    Result(Failure<E> failure) : state_(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return state_.index() == 0; }
    bool has_value() const { return state_.index() == 0; }

    T& value() & { return std::get<0>(state_); }
    const T& value() const& { return std::get<0>(state_); }
    T&& value() && { return std::get<0>(std::move(state_)); }
    const E& error() const { return std::get<1>(state_).error; }

    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

  private:
    std::variant<T, Failure<E>> state_;
};

template <typename E>
class [[nodiscard]] Result<void, E> {
  public:
    using value_type = void;

    Result() = default;
    Result(Failure<E> failure) : error_(std::move(failure.error)) {}

    explicit operator bool() const { return !error_; }
    bool has_value() const { return !error_; }
    void value() const {}
    const E& error() const { return *error_; }

  private:
    std::optional<E> error_;
};

} // namespace vell

// Evaluates a Result; returns its error from the enclosing function, or is its value.
//
// Not for a member of an aggregate in braces behind one that owns something: clang 14 and GCC 12 do
// not destroy what is initialised already when the return comes in between.
#define VELL_TRY(expression)                                                                       \
    __extension__({                                                                                \
        auto&& vell_result = (expression);                                                         \
        if (!vell_result.has_value())                                                              \
            return ::vell::Failure{vell_result.error()};                                           \
        std::move(vell_result).value();                                                            \
    })
