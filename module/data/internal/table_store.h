#pragma once
// One data file in memory: its rows by columns, and its tree when someone asks for it.
//
// A file in the plain form of an export (rows of simple fields under the element `dataroot`, nothing else) is
// read straight from its text, which costs a tenth of a tree's memory. Every other file goes through the
// tree, with the same answers. Main thread only.
#include <deque>
#include <filesystem>
#include <memory>
#include <unordered_map>

#include "module/data/internal/row_set.h"
#include "platform/xml/dom.h"

namespace mek {

class TableStore {
 public:
  /// Null when the file can't be read or isn't well formed; `error` then says what.
  static std::shared_ptr<TableStore> load(const std::filesystem::path& path,
                                          platform::XmlError* error = nullptr);
  /// The same from bytes. `throughTree` takes the longer way for every form of file, for comparison.
  static std::shared_ptr<TableStore> parse(std::string_view bytes, platform::XmlError* error = nullptr,
                                           bool throughTree = false);

  /// True when the document's element is `dataroot`.
  bool hasDataRoot() const { return hasDataRoot_; }
  /// The rows of a name, case included; null when there are none.
  RowSet* rows(std::string_view name);
  /// Where the cells of all rows stand.
  const char* base() const { return base_; }
  /// Made on the first call. Never null.
  const std::shared_ptr<IXMLDOMDocument>& document();
  bool isReadFromText() const { return fromText_; }

 private:
  static std::shared_ptr<TableStore> make(platform::XmlSource source, platform::XmlError* error,
                                          bool throughTree);
  void readTree();
  void readTreeRow(platform::XmlNodeView row);
  bool readTreeChild(RowSet& set, platform::XmlNodeView child);
  RowSet& obtain(std::string_view name);

  platform::XmlSource source_;  ///< cells stand here when the rows were read from text
  std::size_t textLength_ = 0;  ///< of the file's own text in source_; decoded values stand behind it
  std::string values_;          ///< cells stand here otherwise
  const char* base_ = nullptr;
  std::deque<RowSet> sets_;
  std::unordered_map<std::string_view, RowSet*> setsByName_;
  std::shared_ptr<IXMLDOMDocument> document_;
  bool hasDataRoot_ = false;
  bool fromText_ = false;
};

}  // namespace mek
