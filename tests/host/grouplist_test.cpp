#include "host/database/grouplist.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

KvDxfGroup group(int code, KvDxfKind kind) {
  KvDxfGroup made;
  made.code = static_cast<std::int16_t>(code);
  made.kind = kind;
  return made;
}

/// Each kind, and each width of a value.
std::vector<KvDxfGroup> allShapes() {
  std::vector<KvDxfGroup> groups;
  for (std::wstring_view text : {L"", L"x", L"\u4e2d\u6587 \U0001F600"})
    groups.push_back(group(1, KvDxfKind::Text)), groups.back().text = text;
  groups.push_back(group(310, KvDxfKind::Binary));
  groups.back().text = std::wstring_view(L"\0\xFF\0", 3);
  for (int dimensions : {2, 3})
    for (double z : {0.0, 4.5}) {
      groups.push_back(group(10, KvDxfKind::Point));
      groups.back().dimensions = static_cast<std::uint8_t>(dimensions);
      groups.back().point = {1.25, -2, z};
    }
  groups.push_back(group(40, KvDxfKind::Real));
  groups.back().point.x = -1e-300;
  for (std::int64_t value : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{INT32_MAX},
                             std::int64_t{INT32_MIN}, std::int64_t{INT32_MAX} + 1, INT64_MIN})
    for (KvDxfKind kind :
         {KvDxfKind::Int16, KvDxfKind::Int32, KvDxfKind::Int64, KvDxfKind::Bool, KvDxfKind::Handle})
      groups.push_back(group(70, kind)), groups.back().integer = value;
  return groups;
}

void expectSame(const KvDbGroupList& list, const std::vector<KvDxfGroup>& groups) {
  ASSERT_EQ(list.count(), groups.size());
  std::size_t i = 0;
  for (const KvDxfGroup& kept : list) {
    const KvDxfGroup& wanted = groups[i];
    SCOPED_TRACE(i++);
    EXPECT_EQ(kept.code, wanted.code);
    EXPECT_EQ(kept.kind, wanted.kind);
    EXPECT_EQ(kept.dimensions, wanted.dimensions);
    EXPECT_EQ(kept.text, wanted.text);
    EXPECT_EQ(kept.integer, wanted.integer);
    EXPECT_TRUE(kept.point.x == wanted.point.x && kept.point.y == wanted.point.y &&
                kept.point.z == wanted.point.z);
  }
}

TEST(GroupList, GivesBackWhatItTook) {
  const auto groups = allShapes();
  KvDbGroupList grown;
  for (const KvDxfGroup& one : groups) grown.append(one);
  expectSame(grown, groups);
  expectSame(KvDbGroupList(groups), groups);
  KvDbGroupList copy = grown;
  grown.append(groups.front());
  expectSame(copy, groups);
  const KvDbGroupList moved = std::move(copy);
  EXPECT_TRUE(copy.isEmpty());
  copy.append(groups.front());
  expectSame(moved, groups);
  EXPECT_EQ(copy.count(), 1u);
}

TEST(GroupList, ChangesAHandleOfAnyWidth) {
  auto groups = allShapes();
  for (std::int64_t handle : {std::int64_t{0x1F}, std::int64_t{INT32_MAX} + 1}) {
    KvDbGroupList list(groups);
    ASSERT_TRUE(list.setInteger(70, handle));
    auto wanted = groups;
    for (KvDxfGroup& one : wanted)
      if (one.code == 70) {
        one.integer = handle;
        break;
      }
    expectSame(list, wanted);
  }
  KvDbGroupList list(groups);
  EXPECT_FALSE(list.setInteger(330, 1));
  expectSame(list, groups);
}

}  // namespace
