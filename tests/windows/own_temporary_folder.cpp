// The whole program has a temporary folder of its own, below the user's: what other programs put
// there meanwhile is not taken for something that a test has left behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <windows.h>

namespace vell::test {
namespace {

class OwnTemporaryFolder : public ::testing::Environment {
  public:
    OwnTemporaryFolder()
        : folder_(std::filesystem::temp_directory_path() /
                  (L"vell tests " + std::to_wstring(GetCurrentProcessId()))) {}

    void SetUp() override {
        std::filesystem::create_directory(folder_);
        ASSERT_TRUE(SetEnvironmentVariableW(L"TMP", folder_.c_str()));
    }
    void TearDown() override {
        RemoveDirectoryW(folder_.c_str());
    } // unless something is left in it

  private:
    std::filesystem::path folder_;
};

const ::testing::Environment* const own_folder =
    ::testing::AddGlobalTestEnvironment(new OwnTemporaryFolder);

} // namespace
} // namespace vell::test
