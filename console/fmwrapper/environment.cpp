// Environments: registration and evaluation.
#include "console/fmwrapper/registry.h"

#include <algorithm>

using namespace vell;
using console::checked;
using console::guarded;
using console::HostError;

namespace vell::console {

Registry& registry() {
    static Registry instance;
    return instance;
}

} // namespace vell::console

namespace {

using console::FunctionEntry;
using console::registry;
using console::StepEntry;

void set_plugin_id(char (&to)[4], const fm::QuadChar& plugin_id) {
    for (int i = 0; i < 4; ++i)
        to[i] = static_cast<char>(plugin_id.type >> (24 - 8 * i));
}

template <typename Entries>
auto find_entry(Entries& entries, const fm::QuadChar& plugin_id, std::int16_t id) {
    char wanted[4];
    set_plugin_id(wanted, plugin_id);
    return std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
        return entry->shown.id == id && std::equal(wanted, wanted + 4, entry->shown.plugin_id);
    });
}

template <typename Entry>
fm::Errcode register_entry(std::vector<std::unique_ptr<Entry>>& entries,
                           const fm::QuadChar& plugin_id, std::unique_ptr<Entry> entry) {
    const std::lock_guard lock(registry().mutex);
    if (const auto error = registry().registration_error.due())
        return *error;
    if (find_entry(entries, plugin_id, entry->shown.id) != entries.end())
        return number(HostError::AlreadyRegistered);
    set_plugin_id(entry->shown.plugin_id, plugin_id);
    entries.push_back(std::move(entry));
    return number(HostError::None);
}

template <typename Entry>
fm::Errcode unregister_entry(std::vector<std::unique_ptr<Entry>>& entries,
                             const fm::QuadChar& plugin_id, std::int16_t id) {
    const std::lock_guard lock(registry().mutex);
    if (const auto error = registry().unregistration_error.due())
        return *error;
    const auto found = find_entry(entries, plugin_id, id);
    if (found == entries.end())
        return number(HostError::NotRegistered);
    entries.erase(found);
    return number(HostError::None);
}

fm::Errcode register_function(const fm::QuadChar* plugin_id, std::int16_t function_id,
                              const fm::Text* name, const fm::Text* prototype,
                              const fm::Text* description, std::int16_t min_args,
                              std::int16_t max_args, std::uint32_t flags, fm::ExternalBody body) {
    auto entry = std::make_unique<FunctionEntry>();
    entry->name = checked(name).units.get();
    entry->prototype = checked(prototype).units.get();
    if (description != nullptr)
        entry->description = description->units.get();
    entry->shown = {{},
                    function_id,
                    entry->name.c_str(),
                    entry->prototype.c_str(),
                    description != nullptr ? entry->description.c_str() : nullptr,
                    min_args,
                    max_args,
                    flags,
                    body};
    return register_entry(registry().functions, checked(plugin_id), std::move(entry));
}

} // namespace

fm::Errcode FM_ExprEnv_RegisterExternalFunction(const fm::QuadChar* plugin_id,
                                                std::int16_t function_id, const fm::Text* name,
                                                const fm::Text* prototype, std::int16_t min_args,
                                                std::int16_t max_args, std::uint32_t flags,
                                                fm::ExternalBody body, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return register_function(plugin_id, function_id, name, prototype, nullptr, min_args,
                                 max_args, flags, body);
    });
}

fm::Errcode FM_ExprEnv_RegisterExternalFunctionEx(
    const fm::QuadChar* plugin_id, std::int16_t function_id, const fm::Text* name,
    const fm::Text* prototype, const fm::Text* description, std::int16_t min_args,
    std::int16_t max_args, std::uint32_t flags, fm::ExternalBody body, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return register_function(plugin_id, function_id, name, prototype, &checked(description),
                                 min_args, max_args, flags, body);
    });
}

fm::Errcode FM_ExprEnv_UnRegisterExternalFunction(const fm::QuadChar* plugin_id,
                                                  std::int16_t function_id, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return unregister_entry(registry().functions, checked(plugin_id), function_id);
    });
}

fm::Errcode FM_ExprEnv_RegisterScriptStep(const fm::QuadChar* plugin_id, std::int16_t step_id,
                                          const fm::Text* name, const fm::Text* definition,
                                          const fm::Text* description, std::uint32_t flags,
                                          fm::ExternalBody body, fm::Status* status) {
    return guarded(__func__, status, [&] {
        auto entry = std::make_unique<StepEntry>();
        entry->name = checked(name).units.get();
        entry->definition = checked(definition).units.get();
        entry->description = checked(description).units.get();
        entry->shown = {{},
                        step_id,
                        entry->name.c_str(),
                        entry->definition.c_str(),
                        entry->description.c_str(),
                        flags,
                        body};
        return register_entry(registry().steps, checked(plugin_id), std::move(entry));
    });
}

fm::Errcode FM_ExprEnv_UnRegisterScriptStep(const fm::QuadChar* plugin_id, std::int16_t step_id,
                                            fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return unregister_entry(registry().steps, checked(plugin_id), step_id); });
}

fm::ExprEnv* FM_ExprEnv_Constructor1(fm::Status* status) {
    return console::create<fm::ExprEnv>(__func__, status);
}

void FM_ExprEnv_Delete(fm::ExprEnv* self, fm::Status* status) {
    console::destroy(self, status);
}

fm::PtrType FM_ExprEnv_SessionID(const fm::ExprEnv* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        checked(self);
        const std::lock_guard lock(registry().mutex);
        return registry().session_id;
    });
}

fm::PtrType FM_ExprEnv_FileID(const fm::ExprEnv* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        checked(self);
        const std::lock_guard lock(registry().mutex);
        return registry().file_id;
    });
}

fm::Errcode FM_ExprEnv_Evaluate(const fm::ExprEnv* self, const fm::Text* expression,
                                fm::Data* result, fm::Status* status) {
    return guarded(__func__, status, [&] {
        console::StandInEvaluator evaluator = nullptr;
        void* context = nullptr;
        {
            const std::lock_guard lock(registry().mutex);
            evaluator = registry().evaluator;
            context = registry().evaluator_context;
        }
        // Called without the lock: the expression may call a plug-in that comes back here.
        if (evaluator == nullptr)
            return number(HostError::NotSupported);
        return evaluator(self, &checked(expression), &checked(result), context);
    });
}
