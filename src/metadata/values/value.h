// What is known of a file, as a tree of named values: the form between the readers of each kind of
// metadata and the answers in JSON or as single values.
#pragma once

#include "src/base/json_writer.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace vell::metadata {

class Value;
using Values = std::vector<Value>;

// Members in their order; the first of a name counts.
class Members {
  public:
    // False, and nothing done, where the name is there already.
    bool add(std::string name, Value value);
    bool has(const std::string& name) const;
    // Null where there is none. Letters A to Z compare without case.
    const Value* find(std::string_view name) const;
    // To be changed; of exactly this name.
    Value* find_same(std::string_view name);

    bool empty() const;
    void write_members(JsonWriter& json) const; // of an object that is begun
    const std::vector<std::pair<std::string, Value>>& entries() const { return entries_; }

  private:
    std::vector<std::pair<std::string, Value>> entries_;
    std::unordered_set<std::string> names_; // only where there are many
};

class Value {
  public:
    struct Null {};

    Value() = default;
    Value(std::string text) : content_(std::move(text)) {}
    Value(std::string_view text) : content_(std::string(text)) {}
    Value(const char* text) : content_(std::string(text)) {}
    Value(double number) : content_(number) {}
    Value(std::int64_t number) : content_(number) {}
    Value(std::uint64_t number) : content_(number) {}
    Value(Values values) : content_(std::move(values)) {}
    Value(Members members) : content_(std::move(members)) {}

    // The same value with another text for people: "1/250" for 0.004.
    Value shown_as(std::string text) && {
        shown_ = std::move(text);
        return std::move(*this);
    }

    Values* array() { return std::get_if<Values>(&content_); }
    const Values* array() const { return std::get_if<Values>(&content_); }
    const Members* members() const { return std::get_if<Members>(&content_); }

    void write(JsonWriter& json) const;
    // Texts as they stand, numbers in digits, arrays joined by `separator`, members as
    // their JSON.
    std::string readable(std::string_view separator) const;

  private:
    std::variant<Null, std::string, double, std::int64_t, std::uint64_t, Values, Members> content_;
    std::string shown_;
};

inline bool Members::empty() const {
    return entries_.empty();
}

} // namespace vell::metadata
