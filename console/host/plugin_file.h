// Opens a plug-in's file with the checks that the host makes before it asks the plug-in anything.
#pragma once

#include "src/base/result.h"
#include "src/host/bridge/call_record.h"

#include <string>

namespace vell::console {

struct PluginFile {
    void* library = nullptr; // a module handle, to be freed by the caller
    host::EntryPoint entry = nullptr;
    std::string file_version; // "14.0.0.508"
};

Result<PluginFile, std::string> open_plugin_file(const std::wstring& path);
void close_plugin_file(void* library);

// The message of a Windows error, with its number.
std::string windows_error_text(unsigned long code);

} // namespace vell::console
