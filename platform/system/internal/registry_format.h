#pragma once
// One value line of the registry file, read and written.
#include <string>
#include <string_view>

#include "platform/system/registry.h"

namespace platform {

std::string_view registryTrimmed(std::string_view line);

/// Null on success, otherwise what was expected. `line` is valid UTF-8 without white space at its ends.
const char* parseRegistryLine(std::string_view line, std::wstring& name, RegistryValue& value);

/// The line that parseRegistryLine reads back as the same name and value.
std::string formatRegistryLine(std::wstring_view name, const RegistryValue& value);

}  // namespace platform
