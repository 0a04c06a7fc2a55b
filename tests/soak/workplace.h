// Where calls of a soak work: copies of files that are only read, and an empty folder for each
// piece of work, all of it in the temporary folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vell::soak {

using Random = std::mt19937_64;

// A number below `end`, the same on every machine.
inline std::size_t below(std::size_t end, Random& random) {
    return static_cast<std::size_t>(random() % end);
}

class Workplace {
  public:
    // Copies the files of the reference's examples, and of the corpus as many as `most`, chosen by
    // `seed`; without a corpus, those of the examples stand for it.
    Workplace(const std::filesystem::path& examples, const std::filesystem::path& corpus,
              std::size_t most, std::uint64_t seed);
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;
    ~Workplace();

    const std::filesystem::path& folder() const { return folder_; }
    const std::filesystem::path& examples() const { return examples_; }
    const std::vector<std::filesystem::path>& corpus() const { return corpus_; }

    // Another copy of the examples.
    std::filesystem::path examples_for(const std::wstring& name) const;
    // A folder of that name, emptied.
    std::filesystem::path empty_folder(const std::wstring& name) const;

  private:
    std::filesystem::path folder_;
    std::filesystem::path examples_;
    std::vector<std::filesystem::path> corpus_;
};

// Also what calls have made read-only.
void delete_all(const std::filesystem::path& folder);

std::string read_bytes(const std::filesystem::path& path);
void write_bytes(const std::filesystem::path& path, std::string_view bytes);

// Of a folder with "\" at its end, as it stands in calculations.
std::u16string folder_text(const std::filesystem::path& folder);

} // namespace vell::soak
