#include "src/base/md5.h"

#include "src/base/number_text.h"

#include <gtest/gtest.h>

#include <string>

namespace vell {
namespace {

// Some of RFC 1321, A.5, and lengths around the end of a block.
TEST(Md5, GivesTheDigestsOfTheStandard) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "D41D8CD98F00B204E9800998ECF8427E"},
        {"abc", "900150983CD24FB0D6963F7D28E17F72"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "D174AB98D277D9F5A5611C2C9F419D9F"},
        {"1234567890123456789012345678901234567890123456789012345678901234567890"
         "1234567890",
         "57EDF4A22BE3C955AC49DA2E2107B67A"},
        {std::string(55, 'x'), "04364420E25C512FD958A70738AA8F72"},
        {std::string(56, 'x'), "668A72D5BA17F08E62DABCAFAD6DB14B"},
        {std::string(64, 'x'), "C1BB4F81D892B2D57947682AEB252456"},
        {std::string(1000, 'x'), "398533D48111E9F664B1F64CB10C4B63"},
    };
    for (const auto& [message, digest] : cases)
        EXPECT_EQ(hexadecimal(md5(message)), digest) << message.size();
}

} // namespace
} // namespace vell
