#include "host/database/storedgroup.h"

#include <algorithm>
#include <cstdlib>

#include "host/database/database.h"

namespace {

constexpr int kLastFileCode = 1071;
constexpr int kLongestChunk = UINT16_MAX;

void setBinary(resbuf& node, const CString& bytes) {
  const int size = std::min(bytes.GetLength(), kLongestChunk);
  node.resval.rbinary.buf = static_cast<char*>(std::malloc(static_cast<std::size_t>(std::max(size, 1))));
  node.resval.rbinary.clen = static_cast<std::int16_t>(size);
  for (int i = 0; i < size; ++i) node.resval.rbinary.buf[i] = static_cast<char>(bytes.GetAt(i));
}

/// A handle as the text that stands in files.
CString handleText(std::int64_t handle) {
  return KvDbHandle(static_cast<std::uint64_t>(handle)).toText();
}

resbuf* nodeOf(const KvDbStoredGroup& group, const KvDbDatabase* database) {
  resbuf* node = kvutNewRb(group.code == 0 ? RTDXF0 : group.code);
  if (!node) return nullptr;
  switch (kvutRbKind(group.code)) {
    case KvRbKind::Text:
      kvutSetText(node, group.kind == KvDxfKind::Handle ? handleText(group.integer) : group.text);
      break;
    case KvRbKind::Real:
      node->resval.rreal = group.point.x;
      break;
    case KvRbKind::Point:
      node->resval.rpoint[0] = group.point.x;
      node->resval.rpoint[1] = group.point.y;
      node->resval.rpoint[2] = group.point.z;
      break;
    case KvRbKind::Short:
      node->resval.rint = static_cast<std::int16_t>(group.integer);
      break;
    case KvRbKind::Long:
      node->resval.rlong = static_cast<std::int32_t>(group.integer);
      break;
    case KvRbKind::Int64:
      node->resval.mnLongPtr = group.integer;
      break;
    case KvRbKind::Name:
      node->resval.rlname[0] = group.integer;
      node->resval.rlname[1] = database ? database->serial() : 0;
      break;
    case KvRbKind::Binary:
      setBinary(*node, group.text);
      break;
    case KvRbKind::None:
      break;
  }
  return node;
}

/// Of references that no class knows the code tells what they mean: 340 to 349 is needed, others may go.
KvDbReference referenceOf(int code) {
  constexpr int kFirstHard = 340, kLastHard = 349;
  return code >= kFirstHard && code <= kLastHard ? KvDbReference::HardPointer : KvDbReference::SoftPointer;
}

/// Extended data name objects by their handles as text.
constexpr int kHandleText = 1005;

/// The object of a handle as an id, so that it follows a copy, and whether there is one.
void writeReference(KvDbDwgFiler& filer, KvDbHandle handle, int code, const KvDbObject& owner) {
  const KvDbObjectId id = owner.database() ? owner.database()->idFromHandle(handle) : KvDbObjectId();
  filer.writeBool(!id.isNull());
  filer.writeId(id, referenceOf(code));
}

/// The handle that stands in the copy: 0 for an object that did not come along.
KvDbHandle readReference(KvDbDwgFiler& filer, KvDbHandle old, int code) {
  const bool wasThere = filer.readBool();
  const KvDbObjectId id = filer.readId(referenceOf(code));
  if (!id.isNull()) return id.handle();
  return wasThere ? KvDbHandle() : old;
}

void writeGroup(KvDbDwgFiler& filer, const KvDxfGroup& group, const KvDbObject& owner) {
  filer.writeInt16(group.code);
  filer.writeUInt8(static_cast<std::uint8_t>(group.kind));
  filer.writeUInt8(group.dimensions);
  switch (group.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      filer.writeString(CString(group.text));
      if (group.code == kHandleText)
        writeReference(filer, KvDbHandle(CString(group.text)), group.code, owner);
      break;
    case KvDxfKind::Point:
    case KvDxfKind::Real:
      filer.writePoint3d(group.point);
      break;
    case KvDxfKind::Handle: {
      filer.writeInt64(group.integer);
      writeReference(filer, KvDbHandle(static_cast<std::uint64_t>(group.integer)), group.code, owner);
      break;
    }
    default:
      filer.writeInt64(group.integer);
      break;
  }
}

void readGroup(KvDbDwgFiler& filer, KvDbStoredGroup& group) {
  group.code = filer.readInt16();
  group.kind = static_cast<KvDxfKind>(filer.readUInt8());
  group.dimensions = filer.readUInt8();
  switch (group.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      group.text = filer.readString();
      if (group.code == kHandleText) {
        const KvDbHandle old(group.text), now = readReference(filer, old, group.code);
        if (now != old) group.text = now.isNull() ? CString(L"0") : now.toText();
      }
      break;
    case KvDxfKind::Point:
    case KvDxfKind::Real:
      group.point = filer.readPoint3d();
      break;
    case KvDxfKind::Handle: {
      group.integer = filer.readInt64();
      const KvDbHandle old(static_cast<std::uint64_t>(group.integer));
      group.integer = static_cast<std::int64_t>(readReference(filer, old, group.code).value());
      break;
    }
    default:
      group.integer = filer.readInt64();
      break;
  }
}

}  // namespace

KvDbStoredGroup::KvDbStoredGroup(const KvDxfGroup& group)
    : code(group.code),
      kind(group.kind),
      dimensions(group.dimensions),
      point(group.point),
      integer(group.integer),
      text(group.text) {}

KvDxfGroup KvDbStoredGroup::view() const {
  return {code, kind, dimensions, text.view(), point, integer};
}

void kvdbWriteGroups(KvDbDwgFiler& filer, const std::vector<KvDbStoredGroup>& groups,
                     const KvDbObject& owner) {
  filer.writeUInt32(static_cast<std::uint32_t>(groups.size()));
  for (const KvDbStoredGroup& group : groups) writeGroup(filer, group.view(), owner);
}

void kvdbWriteGroups(KvDbDwgFiler& filer, const KvDbGroupList& groups, const KvDbObject& owner) {
  filer.writeUInt32(groups.count());
  for (const KvDxfGroup& group : groups) writeGroup(filer, group, owner);
}

std::vector<KvDbStoredGroup> kvdbReadGroups(KvDbDwgFiler& filer) {
  std::vector<KvDbStoredGroup> groups(filer.readUInt32());
  for (KvDbStoredGroup& group : groups) readGroup(filer, group);
  return groups;
}

KvDbGroupList kvdbReadGroupList(KvDbDwgFiler& filer) {
  KvDbGroupList groups;
  for (std::uint32_t left = filer.readUInt32(); left > 0; --left) {
    KvDbStoredGroup group;
    readGroup(filer, group);
    groups.append(group.view());
  }
  return groups;
}

resbuf* kvdbChainOf(std::span<const KvDbStoredGroup> groups, const KvDbDatabase* database) {
  resbuf* head = nullptr;
  resbuf** link = &head;
  for (const KvDbStoredGroup& group : groups)
    if (resbuf* node = nodeOf(group, database)) {
      *link = node;
      link = &node->rbnext;
    }
  return head;
}

bool kvdbStoredGroupOf(const resbuf& node, KvDbStoredGroup& group) {
  if (node.restype < 0 || node.restype > kLastFileCode) return false;
  group.code = node.restype;
  group.kind = kvdxfKind(node.restype);
  switch (kvutRbKind(node.restype)) {
    case KvRbKind::Text:
      group.text = CString(node.resval.rstring);
      if (group.kind == KvDxfKind::Handle)
        group.integer = static_cast<std::int64_t>(KvDbHandle(group.text).value());
      return true;
    case KvRbKind::Real:
      group.point.x = node.resval.rreal;
      return true;
    case KvRbKind::Point:
      group.point = {node.resval.rpoint[0], node.resval.rpoint[1], node.resval.rpoint[2]};
      return true;
    case KvRbKind::Short:
      group.integer = node.resval.rint;
      return true;
    case KvRbKind::Long:
      group.integer = node.resval.rlong;
      return true;
    case KvRbKind::Int64:
      group.integer = node.resval.mnLongPtr;
      return true;
    case KvRbKind::Name:
      group.integer = node.resval.rlname[0];
      return true;
    case KvRbKind::Binary:
      for (std::size_t i = 0; i < node.resval.rbinary.size(); ++i)
        group.text += static_cast<wchar_t>(static_cast<unsigned char>(node.resval.rbinary.buf[i]));
      return true;
    default:
      return false;
  }
}
