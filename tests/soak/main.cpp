// vell_soak mixed|damaged|failures SECONDS SEED FILES PROJECT [CORPUS]: long runs of the plug-in's
// file on a server host. FILES is how many files of the corpus are taken, PROJECT the folder of the
// checkout. tests/soak/run calls it.
#include "console/host/wide_text.h"
#include "src/plugin/messages.h"
#include "tests/soak/soak.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace vell::soak {
namespace {

constexpr std::uint8_t server = 3;

int failed(const std::string& message) {
    std::printf("vell_soak: %s\n", message.c_str());
    return 2;
}

std::filesystem::path program_folder() {
    std::wstring path(MAX_PATH * 4, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

bool perform(const std::wstring& kind, const Work& work) {
    if (kind == L"damaged")
        return soak_damaged(work);
    return kind == L"failures" ? soak_failures(work) : soak_mixed(work);
}

int run(const std::vector<std::wstring>& arguments) {
    if (arguments.size() < 5)
        return failed("parameters are missing; tests/soak/run gives them");
    const auto number = [&](std::size_t i) {
        return std::wcstoull(arguments[i].c_str(), nullptr, 10);
    };
    const std::filesystem::path project = arguments[4];
    const std::filesystem::path corpus = arguments.size() > 5 ? arguments[5] : L"";
    const Workplace workplace(project / "docs/reference/files", corpus, number(3), number(2));
    std::filesystem::current_path(workplace.folder()); // of paths that are only a name

    console::PluginHost host({.application_type = server});
    if (const auto loaded = host.load((program_folder() / "VellFile.fmx64").wstring()); !loaded)
        return failed(loaded.error());
    if (host.start_up() != plugin::startup_accepted)
        return failed("the plug-in does not start");
    console::Session session(host);
    const bool is_fine = perform(arguments[0], {host, session, workplace, project / "tests/soak",
                                                project / "docs/reference/functions",
                                                std::chrono::seconds(number(1)), number(2)});
    std::filesystem::current_path(program_folder()); // the other one is deleted
    std::printf("%s\n", is_fine ? "All is well." : "NOT as it should be.");
    return is_fine ? 0 : 1;
}

} // namespace
} // namespace vell::soak

int wmain(int count, wchar_t** arguments) {
    try {
        return vell::soak::run({arguments + 1, arguments + count});
    } catch (const std::exception& error) {
        return vell::soak::failed(error.what());
    }
}
