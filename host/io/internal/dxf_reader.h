#pragma once
// From groups to a drawing.
#include <array>
#include <memory>
#include <memory_resource>
#include <optional>
#include <unordered_map>

#include "host/database/block.h"
#include "host/io/internal/dxf_text.h"
#include "host/io/internal/dxf_tokens.h"

namespace kvio {

/// A type or marker as it stands in files, and the class that bears it.
struct NamedClass {
  KvDbSharedText name;
  const KvRxClass* known = nullptr;
};

class DxfReader : public KvDxfResolver {
 public:
  DxfReader(KvDbDatabase& database, std::string_view bytes, KvIoReport& report, KvIoMode mode);
  Kvad::ErrorStatus read();

  KvDbObjectId object(std::int64_t handle) override;
  KvDbObjectId layer(std::wstring_view name) override { return record(KvDbTable::Layer, name); }
  KvDbObjectId linetype(std::wstring_view name) override { return record(KvDbTable::Linetype, name); }
  KvDbObjectId textStyle(std::wstring_view name) override { return record(KvDbTable::TextStyle, name); }
  KvDbObjectId dimStyle(std::wstring_view name) override { return record(KvDbTable::DimStyle, name); }
  KvDbObjectId block(std::wstring_view name) override { return record(KvDbTable::Block, name); }
  KvDbSharedText shared(std::wstring_view name) override { return named(name).name; }

 private:
  /// The names looked up last, the newest replacing the oldest.
  struct NameCache {
    struct Entry {
      std::wstring name;
      KvDbObjectId id;
    };
    std::array<Entry, 8> entries;
    std::size_t next = 0;
  };
  /// The groups of one object, from behind its type.
  struct Record {
    std::wstring_view type;
    std::vector<KvDxfGroup> groups;
    KvIoMessage place;
    const KvDxfGroup* find(int code) const;
    std::wstring_view text(int code) const;
    KvDbHandle handle() const;
    std::int64_t owner() const;
  };

  void findEncoding(std::string_view bytes);
  bool advance();  // the next raw group into current_
  bool is(int code, std::string_view text) const {
    return hasCurrent_ && current_.code == code && current_.bytes == text;
  }
  KvDxfGroup takeGroup();  // the current group, points put together; advances
  std::wstring_view keep(std::wstring_view text);
  std::wstring_view keepText(std::string_view bytes);  // decoded
  Record*
  takeRecord();  // null at a fault; good until the next; the record that begins at the current group 0
  bool isSectionEnd() const { return !hasCurrent_ || is(0, "ENDSEC") || is(0, "EOF") || is(0, "SECTION"); }

  bool fail(const KvIoMessage& place, const CString& text);
  /// In strict mode a fault; otherwise a repair, and reading goes on.
  bool mend(const KvIoMessage& place, const CString& text, KvDbFault fault = KvDbFault::FileStructure);

  bool readSection();
  bool readHeader();
  bool readTables();
  bool readTable();
  bool readBlocks();
  bool readBlock(const Record& begin);
  bool readEntities();
  bool readObjects();
  bool readOther(const CString& name);
  void keepGroupsUntilSectionEnd(std::vector<KvDbStoredGroup>& groups);
  bool addEntity(Record& record, KvDbBlockTableRecord* block);
  std::unique_ptr<KvDbEntity> makeEntity(const Record& record);
  KvDbBlockTableRecord* blockOf(const Record& record);
  KvDbBlockTableRecord* blockRecord(const Record& begin, const CString& name);
  template <class T>
  T* place(std::unique_ptr<T> object, const Record& record, KvDbObjectId owner);
  KvDbObjectId record(KvDbTable table, std::wstring_view name);
  KvDbObjectId makeRecord(KvDbTable table, const CString& name);
  const NamedClass& named(std::wstring_view name);
  void finish();

  KvDbDatabase& database_;
  DxfTokens tokens_;
  KvIoReport& report_;
  KvIoMode mode_;
  TextEncoding encoding_;
  RawGroup current_;
  bool hasCurrent_ = false;
  bool failed_ = false;
  Record record_;                          // the one taken last
  std::array<std::byte, 16384> textRoom_;  // enough for most objects
  std::pmr::monotonic_buffer_resource texts_{textRoom_.data(), textRoom_.size()};
  NamedClass named_[64];  // by a mark of the name; the last one with that mark stays
  NameCache cache_[kKvDbTableCount];
  KvDbSequence* openSequence_ = nullptr;
  KvDbObjectId openOwner_;  // whose row it is
  KvDbBlockTableRecord* lastBlock_ = nullptr;
  std::int64_t lastOwner_ = -1;
  bool lastWasPaper_ = false;
};

}  // namespace kvio
