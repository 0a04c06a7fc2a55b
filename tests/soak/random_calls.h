// Calls with parameters that nobody would give: any value in any place, switches of the function in
// any number. All paths lead to the folder that the caller names, or to nothing.
#pragma once

#include "console/host/plugin_host.h"
#include "tests/soak/workplace.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vell::soak {

class RandomCalls {
  public:
    // The switches are those of the reference's pages.
    RandomCalls(const console::PluginHost& host, const std::filesystem::path& reference);

    // Puts a few files into the folder, for the paths to lead to.
    static void prepare(const Workplace& workplace, const std::filesystem::path& folder,
                        Random& random);

    // One call; the error of a function that failed as a whole is its message.
    Result<console::Value, std::string> call(const std::filesystem::path& folder,
                                             Random& random) const;

  private:
    struct Choice {
        const console::RegisteredFunction* function;
        std::vector<std::u16string> switches;
    };

    static console::Value any_value(const std::filesystem::path& folder, Random& random);
    static std::u16string any_switches(const Choice& choice, Random& random);

    const console::PluginHost& host_;
    std::vector<Choice> choices_;
};

} // namespace vell::soak
