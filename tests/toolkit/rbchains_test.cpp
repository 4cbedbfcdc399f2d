// Chains: occurrences, marker pairs, appending, cutting, copies of extended data, records of entities.
#include "module/toolkit/rbchains.h"

#include "tests/toolkit/support.h"

namespace {

struct Chain {
  explicit Chain(resbuf* first) : head(first) {}
  ~Chain() { kvutRelRb(head); }
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;
  int length() const {
    int nodes = 0;
    for (const resbuf* node = head; node; node = node->rbnext) ++nodes;
    return nodes;
  }
  resbuf* head;
};

const double kPoint[3] = {1, 2, 3};

TEST(RbChains, OccurrencesCountFromOne) {
  const Chain chain(kvutBuildList(70, 1, 40, 2.5, 70, 2, 8, L"L", 70, 3, 0));
  resbuf* first = IM_GetSubResbuf(chain.head, 70, 1);
  EXPECT_EQ(IM_GetSubResbuf(chain.head, 70, 0), first);
  EXPECT_EQ(IM_GetSubResbuf(chain.head, 70, -3), first);
  EXPECT_EQ(Use_get_resbuf(chain.head, 70, 0), nullptr);
  EXPECT_EQ(Use_get_resbuf(chain.head, 70, 1), first);
  EXPECT_EQ(IM_GetSubResbuf(chain.head, 70, 3)->resval.rint, 3);
  EXPECT_EQ(IM_GetSubResbuf(chain.head, 70, 4), nullptr);
  CString text = L"before";
  EXPECT_EQ(IM_GetRbValueOf(chain.head, text, 1, 1), 0);
  EXPECT_EQ(text, L"before");
  EXPECT_EQ(IM_GetRbValueOf(chain.head, text, 8, 1), 1);
  EXPECT_EQ(text, L"L");
  EXPECT_EQ(IM_GetRbValueOf(chain.head, static_cast<double*>(nullptr), 40, 1), 0);
  int value = 0;
  EXPECT_EQ(IM_GetRbValueOf(nullptr, value, 70, 1), 0);
}

TEST(RbChains, OnlyAFirstOccurrenceIsMade) {
  const Chain chain(kvutBuildList(8, L"L", 40, 1.0, 0));
  EXPECT_EQ(IM_SetRbValueOf(chain.head, 7, 70, 2), 0);
  EXPECT_EQ(chain.length(), 2);
  EXPECT_EQ(IM_SetRbValueOf(chain.head, 7, 70, 1), 1);
  EXPECT_EQ(IM_SetRbValueOf(chain.head, -1, 70, 1), 1);
  EXPECT_EQ(IM_SetRbValueOf(chain.head, kPoint, 10, 0), 1);
  EXPECT_EQ(IM_SetRbValueOf(chain.head, L"other", 8, 1), 1);
  EXPECT_EQ(chain.length(), 4);
  int value = 0;
  EXPECT_EQ(IM_GetRbValueOf(chain.head, value, 70, 1), 1);
  EXPECT_EQ(value, -1);  // 16 bits, with their sign
  double point[3];
  EXPECT_EQ(IM_GetRbValueOf(chain.head, point, 10, 1), 1);
  EXPECT_EQ(point[2], 3);
  EXPECT_EQ(IM_SetRbValueOf(chain.head, static_cast<const double*>(nullptr), 10, 1), 0);
  EXPECT_EQ(IM_SetRbValueOf(nullptr, 7, 70, 1), 0);
}

TEST(RbChains, MarkersMustStandDirectlyBefore) {
  const Chain chain(
      kvutBuildList(1000, L"A", 1000, L"A", 1070, 5, 1000, L"a", 1040, 2.5, 1070, 5, 1040, 9.0, 0));
  int value = 0;
  double real = 0;
  EXPECT_EQ(IM_GetNextValueOf(chain.head, 1000, L"A", 1070, value), 1);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(IM_GetNextValueOf(chain.head, 1000, L"A", 1040, real), 0);  // case counts
  EXPECT_EQ(IM_GetNextValueOf(chain.head, 1000, L"a", 1040, real), 1);
  EXPECT_EQ(real, 2.5);
  EXPECT_EQ(IM_GetNextValueOf(chain.head, 1070, 5, 1040, real), 1);
  EXPECT_EQ(real, 9.0);  // the first 1070 of that value isn't followed by a 1040
  EXPECT_EQ(IM_SetNextValueOf(chain.head, 1070, 5, 1040, 4.0), 1);
  EXPECT_EQ(IM_SetNextValueOf(chain.head, 1070, 6, 1040, 4.0), 0);
  EXPECT_EQ(IM_SetNextValueOf(chain.head, 1000, L"A", 1070, 65536 + 8), 1);
  IM_GetNextValueOf(chain.head, 1000, L"A", 1070, value);
  EXPECT_EQ(value, 8);
}

TEST(RbChains, TailsAreLimitedToAThousandAndOneNodes) {
  resbuf* head = kvutNewRb(70);
  resbuf* last = head;
  for (int i = 1; i < 1001; ++i) last = last->rbnext = kvutNewRb(70);
  const Chain chain(head);
  EXPECT_EQ(GetLinkTail(head), last);
  last->rbnext = kvutNewRb(70);
  EXPECT_EQ(GetLinkTail(head), nullptr);
  EXPECT_EQ(GetLinkTail(nullptr), nullptr);
}

TEST(RbChains, TheHeadIsNeverCut) {
  const Chain chain(kvutBuildList(5, L"2A", 8, L"L", 5, L"2B", 0));
  EXPECT_EQ(IM_DelHandleFromRb(chain.head), 1);
  EXPECT_EQ(chain.length(), 2);
  EXPECT_EQ(IM_DelSegFromRb(chain.head, 5), 0);
  EXPECT_EQ(chain.head->restype, 5);
  EXPECT_EQ(IM_DelSegFromRb(nullptr, 5), 0);
  resbuf* more = kvutBuildList(40, 1.0, 41, 2.0, 0);
  EXPECT_EQ(IM_AddRbToTail(chain.head, more), more->rbnext);
  EXPECT_EQ(IM_AddRbToTail(nullptr, more), nullptr);
  // A chain that hangs on it already, whole or in part, closes no ring.
  for (resbuf* again : {more, more->rbnext, chain.head})
    EXPECT_EQ(IM_AddRbToTail(chain.head, again), more->rbnext);
  EXPECT_EQ(more->rbnext->rbnext, nullptr);
}

TEST(RbChains, CopiesKeepTheProductsOwnCodesOnly) {
  const double scale = 3;
  const Chain chain(kvutBuildList(-3, 1001, L"APP", 1000, L"t", 1010, kPoint, 1041, scale, 1070, 5, 1071,
                                  70000, 1040, 2.5, 1005, L"2F", 0));
  resbuf* out = nullptr;
  EXPECT_EQ(IM_XDataResbufCopy(&out, chain.head), RTNORM);
  const Chain copy(out);
  CString codes;
  for (const resbuf* node = out; node; node = node->rbnext) codes.AppendFormat(L"%d ", node->restype);
  EXPECT_EQ(codes, L"-3 1001 1000 1070 1071 1040 1005 ");
  long value = 0;
  IM_GetRbValueOf(out, value, 1071, 1);
  EXPECT_EQ(value, 70000);
  EXPECT_EQ(IM_XDataResbufCopy(nullptr, chain.head), RTERROR);
  resbuf* none = out;
  EXPECT_EQ(IM_XDataResbufCopy(&none, nullptr), RTNONE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(IM_AddXDataToResbuf(&none, chain.head), RTERROR);
}

class RbRecordTest : public test::ToolkitTest {};

TEST_F(RbRecordTest, ExtentsOfARecordLeaveTheDrawingAsItWas) {
  const double center[3] = {10, 20, 7};
  const Chain chain(kvutBuildList(RTDXF0, L"CIRCLE", 10, center, 40, 2.0, 0));
  double least[3], greatest[3];
  ASSERT_EQ(IM_getRbextentWCS(chain.head, least, greatest), RTNORM);
  EXPECT_EQ(least[0], 8);
  EXPECT_EQ(greatest[1], 22);
  EXPECT_EQ(greatest[2], 0);
  kvds_name last;
  EXPECT_EQ(kvdbEntLast(last), RTERROR);
  int visibility = -1;
  EXPECT_EQ(IM_GetRbValueOf(chain.head, visibility, 60, 1), 1);
  EXPECT_EQ(visibility, 0);
  // With a handle the entity itself is asked, and it stays.
  const KvDbObjectId id = add(new KvDbLine({0, 0, 0}, {5, -1, 0}));
  const Chain known(kvutBuildList(5, id.handle().toText(), 60, 1, 0));
  ASSERT_EQ(IM_getRbextentWCS(known.head, least, greatest), RTNORM);
  EXPECT_EQ(greatest[0], 5);
  EXPECT_TRUE(id.isValid());
  const Chain wrong(kvutBuildList(RTDXF0, L"CIRCLE", 10, center, 40, -2.0, 0));
  EXPECT_EQ(IM_getRbextentWCS(wrong.head, least, greatest), RTERROR);
  EXPECT_EQ(IM_getRbextentWCS(nullptr, least, greatest), RTERROR);
}

TEST_F(RbRecordTest, ExtentsOfWhatOnlyBeginsTakeNothingOfTheDrawing) {
  const KvDbObjectId own = add(new KvDbLine({0, 0, 0}, {5, -1, 0}));
  const double center[3] = {10, 20, 7};
  double least[3], greatest[3];
  for (resbuf* record :
       {kvutBuildList(RTDXF0, L"POLYLINE", 66, 1, 0), kvutBuildList(RTDXF0, L"BLOCK", 2, L"B", 10, center, 0),
        kvutBuildList(RTDXF0, L"LAYER", 2, L"A", 70, 0, 0),
        kvutBuildList(RTDXF0, L"VERTEX", 10, center, 0)}) {
    const Chain chain(record);
    EXPECT_EQ(IM_getRbextentWCS(record, least, greatest), RTERROR);
    EXPECT_TRUE(own.isValid());
  }
  // Nothing is left open: a circle is one of the space again, and is measured.
  const Chain circle(kvutBuildList(RTDXF0, L"CIRCLE", 10, center, 40, 2.0, 0));
  EXPECT_EQ(IM_getRbextentWCS(circle.head, least, greatest), RTNORM);
  // A caller's own block takes nothing in.
  const Chain head(kvutBuildList(RTDXF0, L"BLOCK", 2, L"B", 10, center, 70, 0, 0)),
      end(kvutBuildList(RTDXF0, L"ENDBLK", 0));
  ASSERT_EQ(kvdbEntMake(head.head), RTNORM);
  EXPECT_EQ(IM_getRbextentWCS(circle.head, least, greatest), RTERROR);
  EXPECT_EQ(kvdbEntMake(end.head), RTKWORD);
  auto* block = open<KvDbBlockTableRecord>(drawing().recordId(KvDbTable::Block, L"B"));
  EXPECT_TRUE(block->entities().isEmpty());
  block->close();
  EXPECT_TRUE(own.isValid());
}

TEST_F(RbRecordTest, PointsAndLengthsGoThroughTheMatrix) {
  double matrix[4][4] = {{0, -2, 0, 10}, {2, 0, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 1}};
  const Chain chain(kvutBuildList(10, kPoint, 40, 1.5, 50, 90.0, 18, kPoint, 0));
  EXPECT_EQ(IM_xformrb(chain.head, matrix), 1);
  double point[3], real = 0;
  IM_GetRbValueOf(chain.head, point, 18, 1);
  EXPECT_EQ(point[0], 6);
  EXPECT_EQ(point[1], 2);
  EXPECT_EQ(point[2], 6);
  IM_GetRbValueOf(chain.head, real, 40, 1);
  EXPECT_NEAR(real, 3, 1e-12);
  IM_GetRbValueOf(chain.head, real, 50, 1);
  EXPECT_EQ(real, 90);
}

TEST_F(RbRecordTest, PointsAreWrittenBackToTheDrawing) {
  const KvDbObjectId id = add(new KvDbLine({0, 0, 0}, {5, 0, 0}));
  kvds_name name;
  kvdbGetKvdsName(name, id);
  const Chain record(kvdbEntGet(name));
  EXPECT_EQ(Use_set_point(record.head, kPoint, 11, 1), RTNORM);
  auto* line = open<KvDbLine>(id);
  EXPECT_EQ(line->endPoint(), KvGePoint3d(1, 2, 3));
  line->close();
  EXPECT_EQ(Use_set_point(record.head, kPoint, 11, 2), RTERROR);
  EXPECT_EQ(Use_set_point(record.head, nullptr, 11, 1), RTERROR);
}

}  // namespace
