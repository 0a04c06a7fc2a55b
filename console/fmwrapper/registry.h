// The functions and steps that plug-ins have registered, and what environments report.
#pragma once

#include "console/fmwrapper/objects.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vell::console {

// A countdown to the call that answers an error.
struct PlannedError {
    std::uint32_t calls_left = 0;
    fm::Errcode error = 0;

    std::optional<fm::Errcode> due() {
        if (calls_left == 0 || --calls_left != 0)
            return std::nullopt;
        return error;
    }
};

struct FunctionEntry {
    std::u16string name;
    std::u16string prototype;
    std::u16string description;
    StandInFunction shown; // points into the strings
};

struct StepEntry {
    std::u16string name;
    std::u16string definition;
    std::u16string description;
    StandInStep shown;
};

struct Registry {
    std::mutex mutex; // of everything here
    std::vector<std::unique_ptr<FunctionEntry>> functions;
    std::vector<std::unique_ptr<StepEntry>> steps;
    PlannedError registration_error;
    PlannedError unregistration_error;
    std::uint64_t session_id = 0;
    std::uint64_t file_id = 0;
    StandInEvaluator evaluator = nullptr;
    void* evaluator_context = nullptr;
};

Registry& registry();

} // namespace vell::console
