// Statements of any text, and any text as a condition: a condition that is taken means the same to the XPath
// engine.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "module/data/connection.h"
#include "module/data/internal/table_store.h"
#include "platform/files/paths.h"
#include "platform/text/utf.h"

namespace {

constexpr const char* kSchema =
    "<s xmlns:od='o'><e name='T'><complexType><sequence><e name='a' od:sqlSType='int'/><e name='b' "
    "od:sqlSType='real'/><e name='c'/>"
    "</sequence></complexType></e></s>";
constexpr const char* kData =
    "<dataroot><T><a>1</a><b>2.5</b><c>x</c></T><T><a>2</a><c></c></T><T><a>10</a><b>x</b><c>y</c></T><T/>"
    "<T><b>1</b><c>1</c></T></dataroot>";

_Connection& connection() {
  static _Connection opened;
  static const bool isOpen = [] {
    const auto folder =
        std::filesystem::temp_directory_path() / ("korvane-fuzz-sql-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "T.xsd") << kSchema;
    std::ofstream(folder / "T.xml") << kData;
    return opened.Open(_bstr_t(platform::fromNative(folder)), L"", L"", 0) == 0;
  }();
  if (!isOpen) std::abort();
  return opened;
}

void compareCondition(const std::wstring& text) {
  const std::string condition = platform::toUtf8(text);
  if (condition.find('\0') != std::string::npos) return;
  const auto filter = mek::RowFilter::parse("T[" + condition + "]");
  if (!filter || !filter->predicate) return;
  const auto store = mek::TableStore::parse(kData);
  const auto nodes = store->document()->selectNodes(platform::wideFromUtf8("dataroot/T[" + condition + "]"));
  const auto rows = store->rows("T")->select(&*filter->predicate, store->base());
  if (!nodes || nodes.length() != static_cast<int>(rows.size())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = platform::fromUtf8({reinterpret_cast<const char*>(data), size});
  connection().Execute(_bstr_t(std::wstring_view(text)), nullptr, 0);
  compareCondition(text);
  return 0;
}
