#include "console/host/terminal.h"

#include "console/host/wide_text.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>

namespace vell::console {

namespace {

bool is_console(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

DWORD write_failure = ERROR_SUCCESS; // of standard output, the first one

// The error of a write; none where the reader has gone, who wants no more.
DWORD last_write_error() {
    switch (const DWORD error = GetLastError()) {
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
    case ERROR_PIPE_NOT_CONNECTED:
        return ERROR_SUCCESS;
    default:
        return error;
    }
}

void write(DWORD which, std::string_view utf8) {
    const HANDLE handle = GetStdHandle(which);
    if (is_console(handle)) {
        // A console takes limited amounts at a time.
        constexpr std::size_t piece = 8192;
        const std::wstring text = widen(utf8);
        for (std::size_t at = 0; at < text.size(); at += piece) {
            const auto count = static_cast<DWORD>(std::min(piece, text.size() - at));
            DWORD written = 0;
            WriteConsoleW(handle, text.data() + at, count, &written, nullptr);
        }
        return;
    }
    constexpr std::size_t piece = 1 << 24;
    while (!utf8.empty()) {
        DWORD written = 0;
        const auto count = static_cast<DWORD>(std::min(piece, utf8.size()));
        if (!WriteFile(handle, utf8.data(), count, &written, nullptr) || written == 0) {
            if (which == STD_OUTPUT_HANDLE && write_failure == ERROR_SUCCESS)
                write_failure = last_write_error();
            return;
        }
        utf8.remove_prefix(written);
    }
}

} // namespace

void write_output(std::string_view utf8) {
    write(STD_OUTPUT_HANDLE, utf8);
}
void write_error(std::string_view utf8) {
    write(STD_ERROR_HANDLE, utf8);
}

std::uint32_t output_error() {
    return write_failure;
}

bool input_is_console() {
    return is_console(GetStdHandle(STD_INPUT_HANDLE));
}

bool error_is_console() {
    return is_console(GetStdHandle(STD_ERROR_HANDLE));
}

std::optional<std::u16string> read_console_line(std::string_view prompt) {
    write_output(prompt);
    const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
    std::wstring line;
    while (line.empty() || line.back() != L'\n') {
        wchar_t buffer[1024];
        DWORD count = 0;
        if (!ReadConsoleW(handle, buffer, 1024, &count, nullptr) || count == 0)
            return std::nullopt;
        line.append(buffer, count);
        if (line.front() == L'\x1A' || line.front() == L'\x04') // Ctrl+Z, Ctrl+D
            return std::nullopt;
    }
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    return to_utf16(line);
}

std::optional<std::u16string> read_line(std::istream& stream) {
    std::string line;
    if (!std::getline(stream, line))
        return std::nullopt;
    if (line.ends_with('\r'))
        line.pop_back();
    if (line.starts_with("\xEF\xBB\xBF"))
        line.erase(0, 3);
    return utf16_from_utf8(line);
}

std::istream& standard_input() {
    _setmode(_fileno(stdin), _O_BINARY);
    return std::cin;
}

} // namespace vell::console
