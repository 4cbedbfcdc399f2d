// A schema and a data file of any bytes (a zero byte between them), opened and asked.
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "module/data/connection.h"
#include "platform/files/paths.h"

namespace {

const std::filesystem::path& folder() {
  static const std::filesystem::path path = [] {
    auto made =
        std::filesystem::temp_directory_path() / ("korvane-fuzz-schema-" + std::to_string(::getpid()));
    std::filesystem::create_directories(made);
    return made;
  }();
  return path;
}

void write(const char* name, std::string_view content) {
  std::ofstream(folder() / name, std::ios::binary) << content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t middle = std::min(bytes.find('\0'), bytes.size());
  write("T.xsd", bytes.substr(0, middle));
  write("T.xml", bytes.substr(std::min(middle + 1, bytes.size())));
  _Connection connection;
  if (connection.Open(_bstr_t(platform::fromNative(folder())), L"", L"", 0) != 0) return 0;
  for (const wchar_t* sql : {L"select * from T", L"select * from T where a=1 order by a",
                             L"select count(*) from T group by a", L"select max(a) from T"})
    connection.Execute(sql, nullptr, 0);
  return 0;
}
