#include "module/data/internal/table_store.h"

#include "module/data/internal/table_text.h"

namespace mek {

using platform::XmlError;
using platform::XmlNodeType;
using platform::XmlNodeView;
using platform::XmlSource;

namespace {

constexpr const char* kRootName = "dataroot";

}  // namespace

std::shared_ptr<TableStore> TableStore::load(const std::filesystem::path& path, XmlError* error) {
  XmlError own;
  XmlError& out = error ? *error : own;
  XmlSource source;
  if (!platform::readXmlSource(path, {}, source, out)) return nullptr;
  auto store = make(std::move(source), &out, false);
  if (!store) out.path = path;
  return store;
}

std::shared_ptr<TableStore> TableStore::parse(std::string_view bytes, XmlError* error, bool throughTree) {
  XmlError own;
  XmlError& out = error ? *error : own;
  XmlSource source;
  out = {};
  if (!platform::decodeXmlSource(std::string(bytes), source, out)) return nullptr;
  return make(std::move(source), &out, throughTree);
}

std::shared_ptr<TableStore> TableStore::make(XmlSource source, XmlError* error, bool throughTree) {
  auto store = std::make_shared<TableStore>();
  const std::string_view text = source.text();
  std::string decoded;
  if (!throughTree && readTableText(text, platform::XmlLimits().items, store->sets_, decoded)) {
    store->textLength_ = text.size();
    source.buffer += decoded;
    store->source_ = std::move(source);
    store->base_ = store->source_.text().data();
    store->hasDataRoot_ = store->fromText_ = true;
    for (RowSet& set : store->sets_) store->setsByName_.emplace(set.name, &set);
    return store;
  }
  store->sets_.clear();
  store->document_ = platform::parseXmlSource(std::move(source), error);
  if (!store->document_) return nullptr;
  store->readTree();
  return store;
}

const std::shared_ptr<IXMLDOMDocument>& TableStore::document() {
  if (!document_) {
    XmlSource copy;
    copy.buffer.assign(base_, textLength_);
    document_ = platform::parseXmlSource(std::move(copy));
    if (!document_) document_ = std::make_shared<IXMLDOMDocument>();
  }
  return document_;
}

RowSet* TableStore::rows(std::string_view name) {
  const auto found = setsByName_.find(name);
  return found == setsByName_.end() ? nullptr : found->second;
}

RowSet& TableStore::obtain(std::string_view name) {
  if (RowSet* known = rows(name)) return *known;
  RowSet& set = sets_.emplace_back(name);
  setsByName_.emplace(set.name, &set);
  return set;
}

void TableStore::readTree() {
  const XmlNodeView root = document_->documentElement().view();
  hasDataRoot_ = std::string_view(root.name()) == kRootName;
  if (!hasDataRoot_) return;
  for (XmlNodeView row = root.firstChild(); row; row = row.nextSibling())
    if (row.type() == XmlNodeType::Element) readTreeRow(row);
  for (RowSet& set : sets_) {
    set.sparse = set.sparse || !set.complete();
    if (!set.sparse) continue;
    set.columns.clear();
    set.irregular.resize(set.rowCount);
    for (std::uint32_t i = 0; i < set.rowCount; ++i) set.irregular[i] = i;
  }
  base_ = values_.data();
}

void TableStore::readTreeRow(XmlNodeView row) {
  RowSet& set = obtain(row.name());
  set.beginRow();
  set.nodes.push_back(row);
  bool isSimple = true;
  for (XmlNodeView child = row.firstChild(); child && !set.sparse; child = child.nextSibling())
    if (child.type() == XmlNodeType::Element) isSimple = readTreeChild(set, child) && isSimple;
  if (!isSimple) set.irregular.push_back(set.rowCount - 1);
}

/// False when the child makes its row irregular.
bool TableStore::readTreeChild(RowSet& set, XmlNodeView child) {
  Column* column = set.obtain(child.name());
  const XmlNodeView first = child.firstChild();
  Cell cell{0, Cell::kNull};
  if (first && first.type() != XmlNodeType::Element) {
    const std::string_view value = first.value();
    cell = {static_cast<std::uint32_t>(values_.size()), static_cast<std::uint32_t>(value.size())};
    values_ += value;
  }
  const RowSet::Put put = column ? set.put(*column, cell) : RowSet::Put::TooSparse;
  if (put == RowSet::Put::TooSparse) set.sparse = true;
  const bool isText = !first || first.type() == XmlNodeType::Text || first.type() == XmlNodeType::CData;
  return put == RowSet::Put::Done && isText && (!first || !first.nextSibling());
}

}  // namespace mek
