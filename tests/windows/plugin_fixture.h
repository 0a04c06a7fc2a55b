// The plug-in, linked into the test program, behind the console's host.
#pragma once

#include "console/host/plugin_host.h"
#include "src/host/licence.h"
#include "src/host/plugin_state.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

extern "C" void FMExternCallProc(vell::host::CallRecord* record);

namespace vell::test {

using console::PluginHost;
using console::PluginHostOptions;
using console::Value;

inline constexpr std::uint8_t pro = 1;
inline constexpr std::uint8_t server = 3;
inline constexpr std::uint8_t web_server = 4;
inline constexpr std::uint8_t server_sase = 7;
inline constexpr std::uint8_t web_server_fmse = 8;

// What a test file holds, and its end with the test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    std::wstring path(std::wstring_view name = L"") const; // ends with "\" for an empty name
    std::u16string file(std::wstring_view name, std::string_view contents) const;

  private:
    std::wstring folder_;
};

std::string read_file(const std::wstring& path);

class Plugin : public ::testing::Test {
  public:
    static constexpr auto server_log = L"Vell Plugin FMServer.log";
    static constexpr auto web_log = L"Vell Plugin Web Engine.log";

  protected:
    Plugin();
    ~Plugin() override; // checks that no object of the host is left

    std::int64_t start(PluginHostOptions options = {});
    PluginHost& host() { return *host_; }

    // The result as text; "ERRCODE: …" when the body itself failed.
    std::u16string call(std::u16string_view function, std::vector<Value> arguments);
    std::u16string call_id(std::int16_t id, std::vector<Value> arguments);

    // Lines that came to a server's log since the last call or the start of the test, without their
    // time.
    std::vector<std::string> new_log_lines(const std::wstring& name = server_log);

  private:
    std::unique_ptr<PluginHost> host_;
    std::int64_t live_objects_;
    std::map<std::wstring, std::size_t> log_positions_;
};

} // namespace vell::test
