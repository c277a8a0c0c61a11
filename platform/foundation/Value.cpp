#include "platform/foundation/Value.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <variant>

namespace quillomat {

namespace {

/// Below this many members a plain walk finds a key faster than an index does.
constexpr std::size_t smallObject = 8;

struct Null {
    friend bool operator==(Null, Null) { return true; }
};

/// Members in their order, and for the larger objects the same sorted by key.
struct ObjectNode {
    Value::Object members;
    std::vector<std::size_t> sorted;
};

std::vector<std::size_t> sortedByKey(const Value::Object& members) {
    std::vector<std::size_t> order(members.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return members[a].first < members[b].first; });
    return order;
}

/// Of members with one key the last one's value stands at the first one's place.
Value::Object withoutDuplicates(Value::Object members) {
    const std::vector<std::size_t> order = sortedByKey(members);
    std::vector<bool> dropped(members.size());
    bool any = false;
    for (std::size_t i = 1, first = 0; i < order.size(); ++i) {
        if (members[order[i]].first != members[order[first]].first) {
            first = i;
            continue;
        }
        members[order[first]].second = std::move(members[order[i]].second);
        dropped[order[i]] = true;
        any = true;
    }
    if (!any) {
        return members;
    }
    Value::Object kept;
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (!dropped[i]) {
            kept.push_back(std::move(members[i]));
        }
    }
    return kept;
}

} // namespace

struct Value::Node {
    std::variant<Null, bool, std::int64_t, double, std::string, Array, ObjectNode> content;

    template <typename T> static std::shared_ptr<const Node> of(T content) {
        return std::make_shared<const Node>(Node{std::move(content)});
    }
    template <typename T> static const T* get(const Value& value) {
        return value.node_ ? std::get_if<T>(&value.node_->content) : nullptr;
    }
};

Value Value::null() {
    static const Value shared(Node::of(Null{}));
    return shared;
}

Value Value::boolean(bool value) {
    static const Value no(Node::of(false));
    static const Value yes(Node::of(true));
    return value ? yes : no;
}

Value Value::integer(std::int64_t value) {
    return Value(Node::of(value));
}

Value Value::real(double value) {
    return Value(Node::of(value));
}

Value Value::string(std::string value) {
    return Value(Node::of(std::move(value)));
}

Value Value::array(Array elements) {
    return Value(Node::of(std::move(elements)));
}

Value Value::object(Object members) {
    ObjectNode node{withoutDuplicates(std::move(members)), {}};
    if (node.members.size() > smallObject) {
        node.sorted = sortedByKey(node.members);
    }
    return Value(Node::of(std::move(node)));
}

Value::Kind Value::kind() const {
    // In the order of the node's alternatives.
    constexpr std::array kinds{Kind::null,   Kind::boolean, Kind::integer, Kind::real,
                               Kind::string, Kind::array,   Kind::object};
    return node_ ? kinds[node_->content.index()] : Kind::nothing;
}

bool Value::booleanValue() const {
    const auto* value = Node::get<bool>(*this);
    return value != nullptr && *value;
}

std::int64_t Value::integerValue() const {
    const auto* value = Node::get<std::int64_t>(*this);
    return value != nullptr ? *value : 0;
}

double Value::realValue() const {
    if (const auto* value = Node::get<double>(*this)) {
        return *value;
    }
    return static_cast<double>(integerValue());
}

const std::string& Value::stringValue() const {
    static const std::string none;
    const auto* value = Node::get<std::string>(*this);
    return value != nullptr ? *value : none;
}

const Value::Array& Value::elements() const {
    static const Array none;
    const auto* value = Node::get<Array>(*this);
    return value != nullptr ? *value : none;
}

const Value::Object& Value::members() const {
    static const Object none;
    const auto* value = Node::get<ObjectNode>(*this);
    return value != nullptr ? value->members : none;
}

std::size_t Value::count() const {
    return isObject() ? members().size() : elements().size();
}

Value Value::operator[](std::string_view key) const {
    const auto* node = Node::get<ObjectNode>(*this);
    if (node == nullptr) {
        return {};
    }
    const Object& all = node->members;
    if (node->sorted.empty()) {
        const auto found =
            std::find_if(all.begin(), all.end(), [&](const Member& member) { return member.first == key; });
        return found != all.end() ? found->second : Value();
    }
    const auto found =
        std::lower_bound(node->sorted.begin(), node->sorted.end(), key,
                         [&](std::size_t index, std::string_view wanted) { return all[index].first < wanted; });
    return found != node->sorted.end() && all[*found].first == key ? all[*found].second : Value();
}

Value Value::at(std::size_t index) const {
    const Array& all = elements();
    return index < all.size() ? all[index] : Value();
}

Value Value::withMember(std::string_view key, Value member) const {
    Object changed = members();
    changed.emplace_back(key, std::move(member));
    return object(std::move(changed));
}

Value Value::withElement(Value element) const {
    Array changed = elements();
    changed.push_back(std::move(element));
    return array(std::move(changed));
}

bool operator==(const Value& a, const Value& b) {
    if (a.node_ == b.node_) {
        return true;
    }
    if (a.kind() != b.kind()) {
        return false;
    }
    if (a.isObject()) {
        const auto& members = a.members();
        return a.count() == b.count() && std::all_of(members.begin(), members.end(), [&](const Value::Member& member) {
                   return b.contains(member.first) && b[member.first] == member.second;
               });
    }
    switch (a.kind()) {
    case Value::Kind::boolean:
        return a.booleanValue() == b.booleanValue();
    case Value::Kind::integer:
        return a.integerValue() == b.integerValue();
    case Value::Kind::real:
        return a.realValue() == b.realValue();
    case Value::Kind::string:
        return a.stringValue() == b.stringValue();
    case Value::Kind::array:
        return a.elements() == b.elements();
    default:
        return true;
    }
}

namespace {

using Json = nlohmann::ordered_json;

/// Builds values from the parser's events. The parser keeps no call stack of its own, nor does this: what is open lies
/// in a vector, so that a document of brackets costs the limits and no more.
class ValueBuilder final : public nlohmann::json_sax<Json> {
public:
    explicit ValueBuilder(const JsonLimits& limits) : limits_(limits) {}

    bool null() override { return add(Value::null()); }
    bool boolean(bool value) override { return add(Value::boolean(value)); }
    bool number_integer(number_integer_t value) override { return add(Value::integer(value)); }
    bool number_unsigned(number_unsigned_t value) override {
        return value > static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max())
                   ? add(Value::real(static_cast<double>(value)))
                   : add(Value::integer(static_cast<std::int64_t>(value)));
    }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return add(Value::real(value)); }
    bool string(string_t& value) override { return add(Value::string(std::move(value))); }
    bool binary(binary_t& /*value*/) override { return refuse("binary data"); }
    bool start_object(std::size_t /*size*/) override { return open(/*isObject=*/true); }
    bool start_array(std::size_t /*size*/) override { return open(/*isObject=*/false); }
    bool key(string_t& value) override {
        open_.back().members.emplace_back(std::move(value), Value());
        return true;
    }
    bool end_object() override {
        Value value = Value::object(std::move(open_.back().members));
        return close(std::move(value));
    }
    bool end_array() override {
        Value value = Value::array(std::move(open_.back().elements));
        return close(std::move(value));
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        return refuse(shortened(error.what()));
    }

    [[nodiscard]] Value takeRoot() { return std::move(root_); }
    [[nodiscard]] const std::string& reason() const { return reason_; }

private:
    struct Open {
        bool isObject = false;
        Value::Object members;
        Value::Array elements;
    };

    bool refuse(std::string reason) {
        reason_ = std::move(reason);
        return false;
    }

    /// The parser's message without its own error code in front and the text it quotes behind, which may be anything.
    static std::string shortened(std::string_view message) {
        if (const auto end = message.find("] "); end != std::string_view::npos) {
            message.remove_prefix(end + 2);
        }
        constexpr std::string_view opening = "parse error at ";
        if (message.starts_with(opening)) {
            message.remove_prefix(opening.size());
        }
        if (message.starts_with("number overflow")) {
            return "a number is too large";
        }
        return std::string(message.substr(0, message.find("; last read: ")));
    }

    bool isWithinLimits() {
        if (++count_ > limits_.values) {
            return refuse("more than " + std::to_string(limits_.values) + " values");
        }
        return true;
    }

    bool open(bool isObject) {
        if (open_.size() >= limits_.depth) {
            return refuse("nested deeper than " + std::to_string(limits_.depth) + " levels");
        }
        open_.push_back({isObject, {}, {}});
        return isWithinLimits();
    }

    bool close(Value value) {
        open_.pop_back();
        --count_;
        return add(std::move(value));
    }

    bool add(Value value) {
        if (!isWithinLimits()) {
            return false;
        }
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (open_.back().isObject) {
            open_.back().members.back().second = std::move(value);
        } else {
            open_.back().elements.push_back(std::move(value));
        }
        return true;
    }

    const JsonLimits& limits_;
    std::vector<Open> open_;
    Value root_;
    std::size_t count_ = 0;
    std::string reason_;
};

} // namespace

Result<Value> parseJson(std::string_view text, const JsonLimits& limits) {
    if (text.size() > limits.bytes) {
        return Failure{"larger than " + std::to_string(limits.bytes) + " bytes"};
    }
    // The parser takes a NUL for the end of the text and would not look at what follows.
    if (const auto zero = text.find('\0'); zero != std::string_view::npos) {
        return Failure{"byte " + std::to_string(zero + 1) + " is NUL"};
    }
    ValueBuilder builder(limits);
    if (!Json::sax_parse(text.begin(), text.end(), &builder)) {
        return Failure{builder.reason()};
    }
    Value root = builder.takeRoot();
    if (!root.isObject() && !root.isArray()) {
        return Failure{"line 1: neither an object nor an array"};
    }
    return root;
}

Result<Value> parseJson(std::span<const std::byte> bytes, const JsonLimits& limits) {
    return parseJson(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), limits);
}

namespace {

class JsonWriter {
public:
    explicit JsonWriter(JsonStyle style) : isIndented_(style == JsonStyle::indented) {}

    void write(const Value& value, std::size_t depth) {
        if (value.isObject()) {
            writeAll(value.members(), '{', '}', depth, [this](const Value::Member& member, std::size_t inside) {
                text_ += quoted(member.first) + ": ";
                write(member.second, inside);
            });
        } else if (value.isArray()) {
            writeAll(value.elements(), '[', ']', depth,
                     [this](const Value& element, std::size_t inside) { write(element, inside); });
        } else {
            text_ += scalar(value);
        }
    }

    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    static std::string quoted(const std::string& string) {
        return Json(string).dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    static std::string scalar(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::boolean:
            return value.booleanValue() ? "true" : "false";
        case Value::Kind::integer:
            return std::to_string(value.integerValue());
        case Value::Kind::real:
            return Json(value.realValue()).dump();
        case Value::Kind::string:
            return quoted(value.stringValue());
        default:
            return "null";
        }
    }

    void breakLine(std::size_t depth) {
        if (isIndented_) {
            text_.append("\n").append(2 * depth, ' ');
        }
    }

    template <typename All, typename WriteOne>
    void writeAll(const All& all, char opening, char closing, std::size_t depth, WriteOne writeOne) {
        text_ += opening;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (i > 0) {
                text_ += isIndented_ ? "," : ", ";
            }
            breakLine(depth + 1);
            writeOne(all[i], depth + 1);
        }
        if (!all.empty()) {
            breakLine(depth);
        }
        text_ += closing;
    }

    bool isIndented_;
    std::string text_;
};

} // namespace

std::string writeJson(const Value& value, JsonStyle style) {
    JsonWriter writer(style);
    writer.write(value, 0);
    return writer.take() + (style == JsonStyle::indented ? "\n" : "");
}

} // namespace quillomat
