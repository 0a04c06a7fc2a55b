// Which checks are run, by their names: patterns with * and ? as GoogleTest has them, separated by
// colons, and behind a dash those that are left out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vell::selftest {

class NameFilter {
  public:
    explicit NameFilter(std::string_view patterns);

    bool takes(std::string_view name) const;

  private:
    std::vector<std::string> wanted_; // none means all
    std::vector<std::string> left_out_;
};

} // namespace vell::selftest
