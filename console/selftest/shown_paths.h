// Paths that other texts stand for in what is shown: a report does not tell whose machine it is of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vell::selftest {

class ShownPaths {
  public:
    // Separators of what is shown become those that the path has where it is found. Of two paths
    // that begin alike, the longer one is to be added first.
    void add(std::u16string_view path, std::string_view shown);

    // The text with every path replaced, in whatever way it is written there: with either
    // separator, in other letter case, or as C++ writes a literal, with doubled backslashes and
    // `\xE4`.
    std::string in(std::string_view utf8) const;

  private:
    struct Entry {
        std::u16string path;
        std::string shown;
    };
    std::vector<Entry> entries_;
};

} // namespace vell::selftest
