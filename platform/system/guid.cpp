#include "platform/system/guid.h"

#include <sys/random.h>

#include <cstring>
#include <random>

namespace platform {

Guid newGuid() {
  std::array<std::uint8_t, 16> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    std::random_device source;
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(source());
  }
  Guid guid;
  std::memcpy(&guid.data1, bytes.data(), 4);
  std::memcpy(&guid.data2, bytes.data() + 4, 2);
  std::memcpy(&guid.data3, bytes.data() + 6, 2);
  std::memcpy(guid.data4.data(), bytes.data() + 8, 8);
  guid.data3 = static_cast<std::uint16_t>((guid.data3 & 0x0FFF) | 0x4000);   // version 4
  guid.data4[0] = static_cast<std::uint8_t>((guid.data4[0] & 0x3F) | 0x80);  // variant of RFC 4122
  return guid;
}

CString guidText(const Guid& guid) {
  CString text;
  text.Format(L"{%08X-%04X-%04X-%02X%02X-", guid.data1, guid.data2, guid.data3, guid.data4[0], guid.data4[1]);
  for (std::size_t i = 2; i < guid.data4.size(); ++i) text.AppendFormat(L"%02X", guid.data4[i]);
  return text + L"}";
}

std::optional<Guid> guidFromText(std::wstring_view text) {
  constexpr std::wstring_view kShape = L"xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  if (text.size() == kShape.size() + 2 && text.front() == L'{' && text.back() == L'}')
    text = text.substr(1, kShape.size());
  if (text.size() != kShape.size()) return std::nullopt;
  std::array<std::uint8_t, 16> bytes{};
  std::size_t digits = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const wchar_t c = text[at];
    if (kShape[at] == L'-') {
      if (c != L'-') return std::nullopt;
      continue;
    }
    const std::size_t digit =
        std::wstring_view(L"0123456789abcdef").find(c >= L'A' && c <= L'F' ? c + 0x20 : c);
    if (digit == std::wstring_view::npos) return std::nullopt;
    auto& byte = bytes[digits++ / 2];
    byte = static_cast<std::uint8_t>(byte * 16u + digit);
  }
  Guid guid;
  for (std::size_t i = 0; i < 4; ++i) guid.data1 = guid.data1 << 8 | bytes[i];
  guid.data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
  guid.data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
  for (std::size_t i = 0; i < 8; ++i) guid.data4[i] = bytes[8 + i];
  return guid;
}

}  // namespace platform
