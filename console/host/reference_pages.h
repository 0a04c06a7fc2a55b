// The pages of the reference that stand in a folder.
#pragma once

#include "console/host/plugin_host.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

class ReferencePages {
  public:
    ReferencePages(const PluginHost& host, std::filesystem::path folder)
        : host_(host), folder_(std::move(folder)) {}

    // Of a function, with or without "VlFile_", or of the function that a script step mirrors; as
    // text. Empty when there is none.
    std::string page(std::u16string_view name) const;
    // Two parts of the page.
    std::string switches_and_codes(std::u16string_view name) const;
    // A line for each switch in the text that the function does not have; none without its page.
    std::string unknown_switches(const std::u16string& function,
                                 std::u16string_view switches) const;
    // What is said when there is no page, with the name that may be meant.
    std::string no_page(std::u16string_view name) const;

  private:
    std::u16string function_of(std::u16string_view name) const;
    std::string markdown(std::u16string_view name) const;
    const std::vector<std::string>& switches_of(const std::u16string& function) const;

    const PluginHost& host_;
    std::filesystem::path folder_;
    mutable std::map<std::u16string, std::vector<std::string>> switches_; // as far as needed
};

} // namespace vell::console
