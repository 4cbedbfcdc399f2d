#pragma once
// Globally unique identifiers.
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/text/cstring.h"

namespace platform {

struct Guid {
  std::uint32_t data1 = 0;
  std::uint16_t data2 = 0, data3 = 0;
  std::array<std::uint8_t, 8> data4{};
  friend auto operator<=>(const Guid&, const Guid&) = default;
};

/// A random one (version 4), from the system's own source.
Guid newGuid();

CString guidText(const Guid& guid);  ///< "{C791997C-DCAE-4D74-896A-DD68E361E2B2}"
/// Reads that form, in either case, with or without the braces; none for anything else.
std::optional<Guid> guidFromText(std::wstring_view text);

}  // namespace platform
