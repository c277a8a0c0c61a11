// A parsed JSON value: immutable, cheap to copy, object keys in the document's order.
#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillomat {

/// One JSON value, or nothing at all (a missing key, an unreadable document). Nothing and JSON null are different: a
/// null is present. Every look-up in the wrong kind of value gives nothing, so look-ups chain without tests.
class Value {
public:
    using Member = std::pair<std::string, Value>;
    using Array = std::vector<Value>;
    using Object = std::vector<Member>;

    enum class Kind { nothing, null, boolean, integer, real, string, array, object };

    Value() = default;
    [[nodiscard]] static Value null();
    [[nodiscard]] static Value boolean(bool value);
    [[nodiscard]] static Value integer(std::int64_t value);
    [[nodiscard]] static Value real(double value);
    [[nodiscard]] static Value string(std::string value);
    [[nodiscard]] static Value array(Array elements);
    /// A later member of the same key replaces an earlier one, in the earlier one's place.
    [[nodiscard]] static Value object(Object members);

    [[nodiscard]] Kind kind() const;
    /// Whether there is a value, a null included.
    [[nodiscard]] bool isPresent() const { return kind() != Kind::nothing; }
    [[nodiscard]] bool isString() const { return kind() == Kind::string; }
    [[nodiscard]] bool isArray() const { return kind() == Kind::array; }
    [[nodiscard]] bool isObject() const { return kind() == Kind::object; }

    [[nodiscard]] bool booleanValue() const;              // false unless a boolean; conversions are in Conversions.h
    [[nodiscard]] std::int64_t integerValue() const;      // 0 unless an integer
    [[nodiscard]] double realValue() const;               // the number as a double; 0 unless a number
    [[nodiscard]] const std::string& stringValue() const; // empty unless a string
    [[nodiscard]] const Array& elements() const;          // empty unless an array
    [[nodiscard]] const Object& members() const;          // empty unless an object

    [[nodiscard]] std::size_t count() const; // elements or members; 0 for the rest
    [[nodiscard]] Value operator[](std::string_view key) const;
    [[nodiscard]] Value at(std::size_t index) const;
    [[nodiscard]] bool contains(std::string_view key) const { return (*this)[key].isPresent(); }

    /// This object with the member set (at its old place, or last); of any other kind, an object with that member
    /// alone.
    [[nodiscard]] Value withMember(std::string_view key, Value member) const;
    /// This array with the element added; of any other kind, an array of that element alone.
    [[nodiscard]] Value withElement(Value element) const;

    /// Equal kinds and equal contents; the order of an object's members does not count.
    friend bool operator==(const Value& a, const Value& b);

private:
    struct Node;
    explicit Value(std::shared_ptr<const Node> node) : node_(std::move(node)) {}
    std::shared_ptr<const Node> node_;
};

/// Limits of a document that is read: hostile ones must not exhaust stack or memory.
struct JsonLimits {
    std::size_t bytes = std::size_t{64} << 20;
    std::size_t depth = 512;
    std::size_t values = 2'000'000;
};

/// Parses a whole JSON document (RFC 8259, UTF-8, strict; a byte-order mark is accepted). The top level must be an
/// object or an array. Integers beyond 64 bits become reals. Fails with a one-line reason that names line or byte.
[[nodiscard]] Result<Value> parseJson(std::span<const std::byte> bytes, const JsonLimits& limits = {});
[[nodiscard]] Result<Value> parseJson(std::string_view text, const JsonLimits& limits = {});

/// The value as JSON text: two-space indented with a final line feed, or all on one line without one. Nothing and
/// numbers that are not finite are written as null, bytes that are no UTF-8 as replacement characters.
enum class JsonStyle { indented, compact };
[[nodiscard]] std::string writeJson(const Value& value, JsonStyle style = JsonStyle::indented);

} // namespace quillomat
