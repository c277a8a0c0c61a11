// A value, or a readable one-line reason why there is none: what reading anything from outside returns.
#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>

namespace quillomat {

/// The reason of a failure: lower case, one line, without the name of the input (the caller knows it).
struct Failure {
    std::string reason;
};

template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Failure failure) : reason_(std::move(failure.reason)) {}

    [[nodiscard]] explicit operator bool() const { return value_.has_value(); }
    [[nodiscard]] const T& value() const& {
        assert(value_);
        return *value_;
    }
    [[nodiscard]] T&& value() && {
        assert(value_);
        return std::move(*value_);
    }
    [[nodiscard]] const T& operator*() const& { return value(); }
    [[nodiscard]] const T* operator->() const { return &value(); }
    [[nodiscard]] const std::string& reason() const { return reason_; }

private:
    std::optional<T> value_;
    std::string reason_;
};

/// Success without a value, or the reason of a failure.
class [[nodiscard]] Status {
public:
    Status() = default;
    Status(Failure failure) : reason_(std::move(failure.reason)) {}

    [[nodiscard]] explicit operator bool() const { return !reason_.has_value(); }
    [[nodiscard]] const std::string& reason() const {
        assert(reason_);
        return *reason_;
    }

private:
    std::optional<std::string> reason_;
};

} // namespace quillomat
