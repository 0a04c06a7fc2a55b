// What the calculation language asks of the world around it: the plug-in's functions, the host's
// answers to Get( … ), and containers made from files.
#pragma once

#include "console/calc/value.h"
#include "src/base/result.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

struct ExternalFunction {
    std::u16string name;
    std::u16string prototype;
    int min_arguments = 0;
    int max_arguments = 0;  // -1: any number
    std::size_t handle = 0; // the owner's own
};

// Functions that plug-ins have registered. Several entries may share a name and differ in their
// argument counts.
class ExternalFunctions {
  public:
    virtual ~ExternalFunctions() = default;
    virtual std::span<const ExternalFunction> all() const = 0;
    // The error is a message.
    virtual Result<Value, std::string> call(const ExternalFunction& function,
                                            std::span<const Value> arguments) = 0;
};

enum class GetItem : std::uint8_t {
    ApplicationArchitecture,
    ApplicationVersion,
    CurrentDate,
    CurrentTime,
    CurrentTimestamp,
    DesktopPath,
    DocumentsPath,
    FilePath,
    HostName,
    InstalledFMPlugins,
    StatusAreaState,
    SystemDrive,
    SystemPlatform,
    TemporaryPath,
    UserName,
    WindowContentHeight,
    WindowContentWidth,
    WindowName,
};

struct GetItemName {
    std::u16string_view name;
    GetItem item;
};
std::span<const GetItemName> get_items();
std::optional<GetItem> find_get_item(std::u16string_view name);

class HostServices {
  public:
    virtual ~HostServices() = default;
    virtual Value get(GetItem item) = 0;
    virtual Result<Value, std::string> container_from_file(std::u16string_view path) = 0;
};

// Variables by their lower-case names, the leading $ included. An unknown one reads as empty.
using Variables = std::map<std::u16string, Value, std::less<>>;

} // namespace vell::console
