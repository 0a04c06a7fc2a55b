#include "src/metadata/values/value.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"

#include <algorithm>
#include <type_traits>

namespace vell::metadata {
namespace {

using Entry = std::pair<std::string, Value>;

constexpr std::size_t many = 16; // members that are looked through one by one

} // namespace

bool Members::add(std::string name, Value value) {
    if (has(name))
        return false;
    if (entries_.size() == many)
        for (const Entry& entry : entries_)
            names_.insert(entry.first);
    if (entries_.size() >= many)
        names_.insert(name);
    entries_.emplace_back(std::move(name), std::move(value));
    return true;
}

bool Members::has(const std::string& name) const {
    return names_.empty() ? std::ranges::find(entries_, name, &Entry::first) != entries_.end()
                          : names_.contains(name);
}

const Value* Members::find(std::string_view name) const {
    const auto found = std::ranges::find_if(entries_, [&](const auto& entry) {
        return equal_ignoring_case(std::string_view(entry.first), name);
    });
    return found == entries_.end() ? nullptr : &found->second;
}

Value* Members::find_same(std::string_view name) {
    const auto found = std::ranges::find(entries_, name, &Entry::first);
    return found == entries_.end() ? nullptr : &found->second;
}

void Members::write_members(JsonWriter& json) const {
    for (const auto& [name, value] : entries_) {
        json.key(name);
        value.write(json);
    }
}

void Value::write(JsonWriter& json) const {
    std::visit(
        [&](const auto& content) {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, Null>) {
                json.null();
            } else if constexpr (std::is_same_v<Content, std::string>) {
                json.value(content);
            } else if constexpr (std::is_same_v<Content, Values>) {
                json.begin_array();
                for (const Value& each : content)
                    each.write(json);
                json.end_array();
            } else if constexpr (std::is_same_v<Content, Members>) {
                json.begin_object();
                content.write_members(json);
                json.end_object();
            } else {
                json.number(content);
            }
        },
        content_);
}

std::string Value::readable(std::string_view separator) const {
    if (!shown_.empty())
        return shown_;
    if (const auto* const text = std::get_if<std::string>(&content_))
        return *text;
    if (const auto* const values = array()) {
        std::string joined;
        for (const Value& each : *values)
            joined +=
                (&each == values->data() ? "" : std::string(separator)) + each.readable(separator);
        return joined;
    }
    if (std::holds_alternative<Null>(content_))
        return {};
    JsonWriter json;
    write(json);
    return json.take();
}

} // namespace vell::metadata
