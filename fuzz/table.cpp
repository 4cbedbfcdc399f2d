// Data files of any bytes: read from text or through the tree, the rows are the same.
#include <cstdint>
#include <cstdlib>

#include "module/data/internal/table_store.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void compareRows(mek::TableStore& text, mek::TableStore& tree, const CString& name) {
  mek::RowSet* a = text.rows(platform::utf8From(name));
  mek::RowSet* b = tree.rows(platform::utf8From(name));
  require(a && b && a->rowCount == b->rowCount && a->irregular.empty());
  for (const mek::Column& column : a->columns) {
    const _bstr_t field{std::wstring_view(column.wideName)};
    const mek::RowSet::FieldReader fromText(*a, field, text.base()), fromTree(*b, field, tree.base());
    for (std::uint32_t row = 0; row < a->rowCount; ++row) require(fromText.value(row) == fromTree.value(row));
    for (const char* condition : {"=1", "!=1", "<2", "='a'", "!='a'"}) {
      const auto filter =
          mek::RowFilter::parse(platform::utf8From(name) + "[" + column.name + condition + "]");
      if (filter)
        require(a->select(&*filter->predicate, text.base()) == b->select(&*filter->predicate, tree.base()));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto text = mek::TableStore::parse(bytes);
  const auto tree = mek::TableStore::parse(bytes, nullptr, true);
  require(static_cast<bool>(text) == static_cast<bool>(tree));
  if (!text || !text->isReadFromText()) return 0;
  require(tree->hasDataRoot());
  require(text->document()->toUtf8() == tree->document()->toUtf8());
  const auto rows = tree->document()->selectNodes(L"dataroot/*");
  for (int i = 0; i < rows.length() && i < 20; ++i) compareRows(*text, *tree, rows.item(i).nodeName());
  return 0;
}
