#include "console/selftest/options.h"

#include "console/host/wide_text.h"

#include <cwchar>
#include <stdexcept>

namespace vell::selftest {
namespace {

std::chrono::seconds seconds_of(const std::wstring& text) {
    const unsigned long value = std::wcstoul(text.c_str(), nullptr, 10);
    if (value == 0 || value > 100'000)
        throw std::runtime_error("--limit takes a number of seconds");
    return std::chrono::seconds(value);
}

} // namespace

Options read_options(int count, wchar_t** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::wstring option = arguments[i];
        const auto value = [&] {
            if (++i == count)
                throw std::runtime_error(console::narrow(option) + " takes a value");
            return std::wstring(arguments[i]);
        };
        if (option == L"--filter")
            options.filter = console::narrow(value());
        else if (option == L"--report")
            options.report = std::filesystem::absolute(value());
        else if (option == L"--work")
            options.work = std::filesystem::absolute(value());
        else if (option == L"--limit")
            options.limit = seconds_of(value());
        else if (option == L"--all")
            options.all = true;
        else if (option == L"--list")
            options.list = true;
        else if (option == L"--help" || option == L"-h" || option == L"/?")
            options.help = true;
        else
            throw std::runtime_error(console::narrow(option) + " is no option; --help lists them");
    }
    return options;
}

} // namespace vell::selftest
