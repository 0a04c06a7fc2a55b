// The whole program has a temporary folder of its own, below the user's: what other programs put
// there meanwhile is not taken for something that a test has left behind.
#include "tests/windows/plugin_fixture.h"

#include <optional>

namespace vell::test {
namespace {

class OwnTemporaryFolder : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_TRUE(SetEnvironmentVariableW(L"TMP", folder_.emplace().path().c_str()));
    }
    void TearDown() override { folder_.reset(); }

  private:
    std::optional<TemporaryFolder> folder_;
};

const ::testing::Environment* const own_folder =
    ::testing::AddGlobalTestEnvironment(new OwnTemporaryFolder);

} // namespace
} // namespace vell::test
