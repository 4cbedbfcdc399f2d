#pragma once
// Groups of drawing files that are kept as they are: extended data, records of free groups, what a class
// doesn't know.
#include <span>
#include <vector>

#include "host/base/resbuf.h"
#include "host/database/dxffiler.h"
#include "host/database/filer.h"
#include "host/database/grouplist.h"

/// A group with its own copy of the value. References are kept as handles.
struct KvDbStoredGroup {
  KvDbStoredGroup() = default;
  explicit KvDbStoredGroup(const KvDxfGroup& group);
  /// The group, referring to this object's text.
  KvDxfGroup view() const;

  std::int16_t code = 0;
  KvDxfKind kind = KvDxfKind::Text;
  std::uint8_t dimensions = 3;
  KvGePoint3d point;
  std::int64_t integer = 0;
  CString text;
};

/// Filing of groups that `owner` holds. References are filed as ids too, so that they follow a copy.
void kvdbWriteGroups(KvDbDwgFiler& filer, const std::vector<KvDbStoredGroup>& groups,
                     const KvDbObject& owner);
std::vector<KvDbStoredGroup> kvdbReadGroups(KvDbDwgFiler& filer);
void kvdbWriteGroups(KvDbDwgFiler& filer, const KvDbGroupList& groups, const KvDbObject& owner);
KvDbGroupList kvdbReadGroupList(KvDbDwgFiler& filer);

/// The groups as a chain owned by the caller; null for none. References become entity names of that drawing.
resbuf* kvdbChainOf(std::span<const KvDbStoredGroup> groups, const KvDbDatabase* database);
/// One node as a group; false for a code that no file knows.
bool kvdbStoredGroupOf(const resbuf& node, KvDbStoredGroup& group);
