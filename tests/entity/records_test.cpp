// Records of entities: what is made of them, read from them and changed in them.
#include <cmath>
#include <functional>
#include <numbers>

#include "host/editor/sysvars.h"
#include "host/editor/views.h"
#include "host/entities/attribute.h"
#include "host/entities/dimension.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/text.h"
#include "module/core/host_values.h"
#include "module/entity/dim_override.h"
#include "module/entity/drawing_values.h"
#include "module/entity/entity_makers.h"
#include "module/entity/entity_records.h"
#include "module/toolkit/rbchains.h"
#include "siblings/resources/mekres.h"
#include "tests/toolkit/support.h"

namespace {

constexpr double kQuarter = 1.5707963267948966;

class RecordsTest : public test::ToolkitTest {
 protected:
  /// The record of the newest entity.
  resbuf* last() {
    kvutRelRb(record_);
    kvds_name name = {0, 0};
    kvdbEntLast(name);
    return record_ = kvdbEntGet(name);
  }
  ~RecordsTest() override { kvutRelRb(record_); }
  CString type() { return IM_GetRbEntType(last()); }
  double real(int code) {
    double value = std::nan("");
    get_real(last(), &value, code);
    return value;
  }
  int whole(int code) {
    int value = -99;
    get_int(last(), &value, code);
    return value;
  }
  int countEntities() {
    kvds_name name = {0, 0};
    int count = kvdbEntNext(nullptr, name) == RTNORM;
    while (count && next_ent(name) == RTNORM) ++count;
    return count;
  }
  KvGePoint3d point(int code) {
    kvds_point p = {NAN, NAN, NAN};
    get_point(last(), p, code);
    return {p[0], p[1], p[2]};
  }
  void set(const wchar_t* variable, KvEdVarValue value) {
    EXPECT_EQ(host->editor().variables().set(variable, value), Kvad::eOk);
  }

  const double a[3] = {1, 2, 0}, b[3] = {5, 2, 0}, c[3] = {5, 6, 0}, d[3] = {1, 6, 0};

 private:
  resbuf* record_ = nullptr;
};

TEST_F(RecordsTest, MakersMakeTheirTypes) {
  const struct {
    const wchar_t* type;
    std::function<int()> plain, colored;
  } cases[] = {
      {L"LINE", [&] { return md_line(a, b); }, [&] { return md_line_color(a, b, 3); }},
      {L"CIRCLE", [&] { return md_circle(a, 2.5); }, [&] { return md_circle_color(a, 2.5, 3); }},
      {L"ARC", [&] { return md_arc(a, 2.5, 30, 120); }, [&] { return md_arc_color(a, 2.5, 30, 120, 3); }},
      {L"SOLID", [&] { return md_solid(a, b, c, d); }, [&] { return md_solid_color(a, b, c, d, 3); }},
      {L"TEXT", [&] { return md_text(a, 2.5, 30, L"t"); },
       [&] { return md_text_color(a, 2.5, 30, L"t", 3); }},
      {L"TEXT", [&] { return md_text_j(a, 2.5, 30, L"t", 1, 2); },
       [&] { return md_text_j_color(a, 2.5, 30, L"t", 1, 2, 3); }},
      {L"ATTDEF", [&] { return md_attdef(a, 2.5, 0, L"v", L"TAG", L"p", 0); },
       [&] { return md_attdef_color(a, 2.5, 0, L"v", L"TAG", L"p", 0, 3); }},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(one.plain(), RTNORM);
    EXPECT_EQ(type(), one.type);
    EXPECT_EQ(whole(62), -99);
    EXPECT_EQ(one.colored(), RTNORM);
    EXPECT_EQ(type(), one.type);
    EXPECT_EQ(whole(62), 3);
  }
  EXPECT_EQ(countEntities(), 14);
  EXPECT_TRUE(shown.IsEmpty());
}

TEST_F(RecordsTest, MakersKeepTheirValues) {
  md_arc(a, 2.5, 30, 120);
  EXPECT_EQ(point(10), KvGePoint3d(1, 2, 0));
  EXPECT_EQ(real(40), 2.5);
  EXPECT_EQ(real(50), 30);
  EXPECT_EQ(real(51), 120);
  md_text_j(b, 3.5, 45, L"\u4E2D \u6587", 1, 2);
  wchar_t text[64];
  EXPECT_EQ(get_string(last(), text, 1), RTNORM);
  EXPECT_EQ(CString(text), L"\u4E2D \u6587");
  EXPECT_EQ(whole(72), 1);
  EXPECT_EQ(whole(73), 2);
  EXPECT_EQ(point(11), KvGePoint3d(5, 2, 0));
  md_solid(a, b, c, d);
  EXPECT_EQ(point(12), KvGePoint3d(5, 6, 0));
  EXPECT_EQ(point(13), KvGePoint3d(1, 6, 0));
}

TEST_F(RecordsTest, ArrowsAreSolidsOrLinesBetweenTheirWings) {
  const double tip[3] = {0, 0, 0}, base[3] = {10, 0, 0};
  EXPECT_EQ(md_arrow(tip, base, 4), RTNORM);
  EXPECT_EQ(type(), L"SOLID");
  EXPECT_NEAR(point(10).y, 2, 1e-12);
  EXPECT_NEAR(point(11).y, -2, 1e-12);
  EXPECT_NEAR(point(11).x, 10, 1e-12);
  EXPECT_EQ(point(12), KvGePoint3d());
  EXPECT_EQ(point(13), KvGePoint3d());
  EXPECT_EQ(md_arrow_color(tip, base, 4, 5), RTNORM);
  EXPECT_EQ(type(), L"LINE");
  EXPECT_NEAR(point(10).y, 2, 1e-12);
  EXPECT_NEAR(point(11).y, -2, 1e-12);
  EXPECT_EQ(whole(62), 5);
}

TEST_F(RecordsTest, BlocksAndInserts) {
  const double origin[3] = {0, 0, 0};
  EXPECT_EQ(md_block_head(L"PART", origin), RTNORM);
  EXPECT_EQ(md_line(a, b), RTNORM);
  EXPECT_EQ(md_block_end(), RTNORM);
  wchar_t name[131] = L"";
  EXPECT_EQ(md_block_head_color(L"*U1", origin, 2), RTNORM);
  EXPECT_EQ(md_circle(a, 1), RTNORM);
  EXPECT_EQ(md_block_end(name), RTNORM);
  EXPECT_EQ(name[0], L'*');
  EXPECT_EQ(countEntities(), 0);
  for (const auto& [block, flags] : {std::pair<CString, int>{L"PART", 0}, {name, 1}}) {
    auto* record = open<KvDbBlockTableRecord>(drawing().recordId(KvDbTable::Block, block));
    EXPECT_EQ(record->isAnonymous(), flags == 1);
    EXPECT_EQ(record->entities().length(), 1);
    record->close();
  }
  EXPECT_EQ(md_insert(L"PART", a, 30, 0), RTNORM);
  EXPECT_EQ(type(), L"INSERT");
  EXPECT_EQ(real(50), 30);
  EXPECT_EQ(md_insert_color(L"PART", a, 0, 4), RTNORM);
  EXPECT_TRUE(std::isnan(real(50)) || real(50) == 0);
  EXPECT_EQ(whole(62), 4);
  EXPECT_TRUE(shown.IsEmpty());
}

TEST_F(RecordsTest, SequencesEndByThemselves) {
  const double origin[3] = {0, 0, 0};
  md_block_head(L"PART", origin);
  md_attdef(a, 2, 0, L"v", L"TAG", L"p", 0);
  md_block_end();
  EXPECT_EQ(md_insert(L"PART", a, 0, 1), RTNORM);
  EXPECT_EQ(md_attrib(a, 2, 0, L"one", L"TAG", 0), RTNORM);
  EXPECT_EQ(md_attrib_color(b, 2, 0, L"two", L"OTHER", 0, 6), RTNORM);
  kvds_name name = {0, 0};
  EXPECT_EQ(kvdbEntLast(name), RTERROR);  // still open
  EXPECT_EQ(md_seqend(), RTNORM);
  EXPECT_EQ(type(), L"INSERT");
  EXPECT_EQ(countEntities(), 4);  // with attributes and end mark

  EXPECT_EQ(md_wide_line(a, b, 0.5), RTNORM);
  EXPECT_EQ(md_vertex_pair(c, d), RTNORM);
  EXPECT_EQ(type(), L"INSERT");
  EXPECT_EQ(md_seqend(), RTNORM);
  EXPECT_EQ(type(), L"POLYLINE");
  EXPECT_EQ(real(40), 0.5);
  EXPECT_EQ(real(41), 0.5);
  EXPECT_EQ(countEntities(), 10);
  EXPECT_EQ(md_wide_line_color(a, b, 0.5, 2), RTNORM);
  EXPECT_EQ(md_seqend(), RTNORM);
  EXPECT_EQ(whole(62), 2);
  EXPECT_TRUE(shown.IsEmpty());
}

TEST_F(RecordsTest, FailuresTellWhatWasNotMade) {
  const double* none = nullptr;
  const wchar_t* noText = nullptr;
  const struct {
    unsigned int message;
    std::function<int()> call;
  } cases[] = {
      {1176, [&] { return md_line(none, b); }},
      {1176, [&] { return md_line_color(a, none, 1); }},
      {1177, [&] { return md_circle(none, 1); }},
      {1178, [&] { return md_arc(none, 1, 0, 1); }},
      {1176, [&] { return md_solid(a, b, c, none); }},
      {1176, [&] { return md_arrow(none, b, 1); }},
      {1176, [&] { return md_arrow_color(a, none, 1, 1); }},
      {1179, [&] { return md_text(a, 1, 0, noText); }},
      {1179, [&] { return md_text_j(none, 1, 0, L"t", 0, 0); }},
      {1180, [&] { return md_block_head(noText, a); }},
      {1181, [&] { return md_block_end(); }},
      {1181, [&] { return md_block_end(nullptr); }},
      {1182, [&] { return md_insert(L"NOT_THERE", a, 0, 0); }},
      {1182, [&] { return md_insert_color(L"NOT_THERE", a, 0, 1); }},
      {1183, [&] { return md_attrib(a, 1, 0, L"v", L"T", 0); }},  // no insert is open
      {1183, [&] { return md_attdef(none, 1, 0, L"v", L"T", L"p", 0); }},
      {1184, [&] { return md_seqend(); }},
      {1176, [&] { return md_wide_line(none, b, 1); }},
      {1176, [&] { return md_wide_line_color(a, none, 1, 1); }},
      {1176, [&] { return md_vertex_pair(a, b); }},  // no polyline is open
  };
  for (const auto& one : cases) {
    shown.Empty();
    EXPECT_EQ(one.call(), RTERROR);
    const CString message = IM_GetStringFromRc(one.message, 256);
    EXPECT_FALSE(message.IsEmpty());
    EXPECT_GE(shown.Find(message), 0) << one.message;
  }
  EXPECT_EQ(countEntities(), 0);
}

TEST_F(RecordsTest, AccessorsByCode) {
  md_line(a, b);
  resbuf* record = last();
  wchar_t text[64] = L"";
  int number = 0;
  double value = 0;
  kvds_point p = {0, 0, 0};
  EXPECT_EQ(get_etype(record, text), RTNORM);
  EXPECT_EQ(CString(text), L"LINE");
  EXPECT_EQ(get_point(record, p, 11), RTNORM);
  EXPECT_EQ(p[0], 5);
  EXPECT_EQ(get_resbuf(record, 999), nullptr);
  // Absent, of another sort, or nowhere to put it.
  EXPECT_EQ(get_int(record, &number, 62), RTERROR);
  EXPECT_EQ(get_real(record, &value, 40), RTERROR);
  EXPECT_EQ(get_string(record, text, 10), RTERROR);
  EXPECT_EQ(get_int(record, &number, 8), RTERROR);
  EXPECT_EQ(get_real(record, nullptr, 10), RTERROR);
  EXPECT_EQ(get_etype(nullptr, text), RTERROR);
  EXPECT_EQ(set_int(record, 3, 62), RTERROR);
  EXPECT_EQ(set_real(record, 3, 8), RTERROR);
  EXPECT_EQ(set_point(record, nullptr, 10), RTERROR);
  EXPECT_EQ(set_string(record, L"x", 10), RTERROR);
  EXPECT_EQ(set_string(nullptr, L"x", 8), RTERROR);
}

TEST_F(RecordsTest, SettersChangeTheEntity) {
  md_circle_color(a, 2, 3);
  EXPECT_EQ(set_real(last(), 7.5, 40), RTNORM);
  EXPECT_EQ(real(40), 7.5);
  EXPECT_EQ(set_int(last(), 5, 62), RTNORM);
  EXPECT_EQ(whole(62), 5);
  EXPECT_EQ(set_point(last(), c, 10), RTNORM);
  EXPECT_EQ(point(10), KvGePoint3d(5, 6, 0));
  EXPECT_EQ(set_string(last(), L"0", 8), RTNORM);
  EXPECT_EQ(set_string(last(), L"NO_SUCH_LINETYPE", 6), RTERROR);
  resbuf* record = last();
  kvds_name name = {0, 0};
  kvdbEntLast(name);
  kvdbEntDel(name);
  EXPECT_EQ(set_string(record, L"0", 8), RTERROR);
  EXPECT_EQ(set_real(record, 1, 40), RTNORM);  // here it isn't asked
}

TEST_F(RecordsTest, AccessorsByKey) {
  resbuf* chain = kvutBuildList(1001, L"X", 1070, 40, 1040, 1.5, 1070, 41, 1070, 6, 1070, 42, 1000, L"text",
                                1070, 43, 1010, a, 1070, 3, 1070, 3, 1070, 9, 1070, 44, 0);
  EXPECT_EQ(get_real_ex(chain, 1070, 40), 1.5);
  EXPECT_EQ(get_int_ex(chain, 1070, 41), 6);
  EXPECT_EQ(get_string_ex(chain, 1070, 42), L"text");
  kvds_point p = {0, 0, 0};
  EXPECT_EQ(get_point_ex(chain, 1070, 43, p), RTNORM);
  EXPECT_EQ(p[1], 2);
  EXPECT_EQ(get_resbuf_ex(chain, 1070, 40, 1)->restype, 1070);
  EXPECT_EQ(get_resbuf_ex(chain, 1070, 40, 0)->restype, 1040);
  wchar_t text[64] = L"old";
  EXPECT_EQ(get_string_ex(chain, 1070, 99, text), RTNORM);
  EXPECT_EQ(text[0], 0);
  // Missing keys, a key at the very end, values of another sort.
  EXPECT_EQ(get_real_ex(chain, 1070, 99), -5001.0);
  EXPECT_EQ(get_int_ex(chain, 1070, 99), -5001);
  EXPECT_EQ(get_int_ex(chain, 1070, 44), -5001);
  EXPECT_EQ(get_real_ex(chain, 1070, 42), -5001.0);
  EXPECT_EQ(get_point_ex(chain, 1070, 40, p), RTERROR);
  EXPECT_EQ(set_real_ex(chain, 1070, 44, 1), RTERROR);
  EXPECT_EQ(set_string_ex(chain, 1070, 40, L"x"), RTERROR);

  EXPECT_EQ(set_real_ex(chain, 1070, 40, 2.5), RTNORM);
  EXPECT_EQ(get_real_ex(chain, 1070, 40), 2.5);
  EXPECT_EQ(set_int_ex(chain, 1070, 41, 7), RTNORM);
  EXPECT_EQ(get_int_ex(chain, 1070, 41), 7);
  EXPECT_EQ(set_point_ex(chain, 1070, 43, c), RTNORM);
  get_point_ex(chain, 1070, 43, p);
  EXPECT_EQ(p[1], 6);
  // A key of 3 that stands twice: the value is one further on.
  EXPECT_EQ(set_int_ex(chain, 1070, 3, 77), RTNORM);
  EXPECT_EQ(get_int_ex(chain, 1070, 3), 3);
  EXPECT_EQ(get_resbuf_ex(chain, 1070, 3, 0)->rbnext->resval.rint, 77);
  // A longer text gets a buffer of its own, an empty one keeps it.
  EXPECT_EQ(set_string_ex(chain, 1070, 42, L"a longer text than before"), RTNORM);
  const wchar_t* buffer = get_resbuf_ex(chain, 1070, 42, 0)->resval.rstring;
  EXPECT_EQ(CString(buffer), L"a longer text than before");
  EXPECT_EQ(set_string_ex(chain, 1070, 42, L""), RTNORM);
  EXPECT_EQ(get_resbuf_ex(chain, 1070, 42, 0)->resval.rstring, buffer);
  EXPECT_EQ(buffer[0], 0);
  kvutRelRb(chain);
}

TEST_F(RecordsTest, DoubledKeyAtTheEndOfItsChain) {
  resbuf* chain = kvutBuildList(1070, 3, 1070, 3, 0);
  EXPECT_EQ(set_int_ex(chain, 1070, 3, 9), RTERROR);
  kvutRelRb(chain);
  chain = kvutBuildList(1070, 4, 1070, 4, 1070, 1, 0);
  EXPECT_EQ(set_int_ex(chain, 1070, 4, 9), RTNORM);  // another key is not doubled
  EXPECT_EQ(chain->rbnext->resval.rint, 9);
  kvutRelRb(chain);
}

TEST_F(RecordsTest, WalkEndsBehindTheLast) {
  md_line(a, b);
  kvds_name name = {0, 0};
  EXPECT_EQ(kvdbEntLast(name), RTNORM);
  const kvds_name same = {name[0], name[1]};
  EXPECT_EQ(next_ent(name), RTERROR);
  EXPECT_TRUE(kvds_equal(name, same));
  EXPECT_EQ(next_ent(nullptr), RTERROR);
}

// --- The block of a dimension's own variables

int lengthOf(const resbuf* chain) {
  int length = 0;
  for (; chain; chain = chain->rbnext) ++length;
  return length;
}

TEST_F(RecordsTest, OverridesAreHungOnTheEnd) {
  resbuf* chain = kvutBuildList(5, L"1A", 0);
  EXPECT_EQ(CreateXdataHead(chain), RTNORM);
  EXPECT_EQ(CreateXdata(chain, 40, 2.5), RTNORM);
  EXPECT_EQ(CreateXdata(chain, 271, 3), RTNORM);
  EXPECT_EQ(CreateXdata(chain, 3, L"<>"), RTNORM);
  EXPECT_EQ(CreateXdata(chain, 4, CString(L"[]")), RTNORM);
  EXPECT_EQ(CreateXdata_handle(chain, 340, L"2B"), RTNORM);
  EXPECT_EQ(CreateXdataTail(chain), RTNORM);
  EXPECT_EQ(CreateXdataHead(chain, L"QX"), RTNORM);
  const int codes[] = {5,    -3,   1001, 1000, 1002, 1070, 1040, 1070, 1070,
                       1070, 1000, 1070, 1000, 1070, 1005, 1002, -3,   1001};
  const resbuf* at = chain;
  for (const int code : codes) {
    ASSERT_NE(at, nullptr);
    EXPECT_EQ(at->restype, code);
    at = at->rbnext;
  }
  EXPECT_EQ(at, nullptr);
  EXPECT_EQ(get_int_ex(chain, 1070, 271), 3);
  kvutRelRb(chain);
}

TEST_F(RecordsTest, OverridesNeedASoundChain) {
  EXPECT_EQ(CreateXdataHead(nullptr), RTERROR);
  EXPECT_EQ(CreateXdataHead(nullptr, L"QX"), RTERROR);
  EXPECT_EQ(CreateXdata(nullptr, 40, 1.0), RTERROR);
  EXPECT_EQ(CreateXdata_handle(nullptr, 40, L"1"), RTERROR);
  EXPECT_EQ(CreateXdataTail(nullptr), RTERROR);
  resbuf* chain = nullptr;
  for (int i = 0; i < 1003; ++i) {
    resbuf* node = kvutBuildList(70, i, 0);
    node->rbnext = chain;
    chain = node;
  }
  EXPECT_EQ(CreateXdata(chain, 40, 1), RTERROR);
  EXPECT_EQ(lengthOf(chain), 1003);
  kvutRelRb(chain);
  chain = kvutBuildList(70, 1, 0);
  chain->rbnext = chain;  // circular
  EXPECT_EQ(CreateXdataTail(chain), RTERROR);
  chain->rbnext = nullptr;
  kvutRelRb(chain);
}

class OverrideTest : public RecordsTest {
 protected:
  OverrideTest()
      : id(add(new KvDbAlignedDimension(KvGePoint3d(0, 0, 0), KvGePoint3d(10, 0, 0), KvGePoint3d(5, 5, 0)))) {
  }
  KvDbObjectId id;
};

TEST_F(OverrideTest, RemovesOneVariable) {
  auto* dim = open<KvDbDimension>(id, KvDb::kForWrite);
  EXPECT_FALSE(IM_RemoveDimVar(dim, 40));  // no data at all
  dim->setDimlfac(3);
  dim->setDimdec(1);
  resbuf* chain = dim->xData(L"ACAD");
  const int length = lengthOf(chain);
  EXPECT_EQ(get_real_ex(chain, 1070, 144), 3);
  kvutRelRb(chain);
  EXPECT_FALSE(IM_RemoveDimVar(dim, 999));
  EXPECT_TRUE(IM_RemoveDimVar(dim, 144));
  chain = dim->xData(L"ACAD");
  EXPECT_EQ(lengthOf(chain), length - 2);
  EXPECT_EQ(get_int_ex(chain, 1070, 271), 1);
  EXPECT_EQ(get_resbuf_ex(chain, 1070, 144, 1), nullptr);
  kvutRelRb(chain);
  EXPECT_NE(dim->dimlfac(), 3);
  EXPECT_EQ(dim->dimdec(), 1);
  EXPECT_TRUE(IM_RemoveDimVar(dim, 271));
  EXPECT_FALSE(IM_RemoveDimVar(dim, 271));
  dim->close();
}

TEST_F(OverrideTest, StaysInsideTheBraces) {
  auto* dim = open<KvDbDimension>(id, KvDb::kForWrite);
  // A value that looks like a number of a variable, and records behind the block.
  resbuf* chain = kvutBuildList(1001, L"ACAD", 1070, 40, 1000, L"DSTYLE", 1002, L"{", 1070, 271, 1070, 40,
                                1002, L"}", 1070, 40, 1070, 7, 0);
  EXPECT_EQ(dim->setXData(chain), Kvad::eOk);
  EXPECT_FALSE(IM_RemoveDimVar(dim, 40));
  resbuf* after = dim->xData(L"ACAD");
  EXPECT_EQ(lengthOf(after), lengthOf(chain));
  kvutRelRb(after);
  kvutRelRb(chain);
  chain = kvutBuildList(1001, L"ACAD", 1070, 40, 1070, 1, 0);  // no brace
  dim->setXData(chain);
  EXPECT_FALSE(IM_RemoveDimVar(dim, 40));
  kvutRelRb(chain);
  dim->close();
  EXPECT_FALSE(IM_RemoveDimVar(nullptr, 40));
  dim = open<KvDbDimension>(id);
  EXPECT_FALSE(IM_RemoveDimVar(dim, 40));
  dim->close();
}

// --- Small measures

TEST_F(RecordsTest, DistancesInThePlane) {
  const double origin[3] = {0, 0, 5}, far[3] = {3, 4, 0};
  EXPECT_DOUBLE_EQ(distance(origin, far), 5.0);
  EXPECT_EQ(distance(nullptr, far), 0);
  EXPECT_EQ(dist(origin, 1, nullptr), 0);
  EXPECT_DOUBLE_EQ(dist(origin, 0.0, far), 4.0);
  EXPECT_DOUBLE_EQ(dist(origin, kQuarter, far), 3.0);
  EXPECT_NEAR(dist(origin, 1.5707963, far), 3.0, 1e-6);  // by its tangent
  EXPECT_NEAR(dist(origin, std::numbers::pi / 4, far), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(dist(far, -0.7, origin), std::fabs(3 * std::sin(-0.7) - 4 * std::cos(-0.7)), 1e-12);
}

TEST_F(RecordsTest, SettingsOfTheDrawing) {
  wchar_t form[16] = L"";
  set(L"LUPREC", 6);
  set(L"AUPREC", 0);
  luprec(form);
  EXPECT_EQ(CString(form), L"%.6f");
  auprec(form);
  EXPECT_EQ(CString(form), L"%.0f");
  luprec(nullptr);
  auprec(nullptr);
  set(L"TEXTSIZE", 4.5);
  EXPECT_EQ(get_cur_text_h(), 4.5);
  auto* style =
      open<KvDbTextStyleTableRecord>(drawing().recordId(KvDbTable::TextStyle, L"Standard"), KvDb::kForWrite);
  style->setTextSize(7);
  style->close();
  EXPECT_EQ(get_cur_text_h(), 7);
  set(L"MEASUREMENT", 0);
  EXPECT_EQ(IM_GetHatchScale(25.4), 25.4);
  set(L"MEASUREMENT", 1);
  EXPECT_DOUBLE_EQ(IM_GetHatchScale(25.4), 1.0);
}

TEST_F(RecordsTest, RefreshedViewsAreDrawn) {
  refreshView(nullptr);
  KvGsView* view = kvgsGetGsView(2, false);
  ASSERT_NE(view, nullptr);
  const int before = view->updateCount();
  refreshView(view);
  EXPECT_EQ(view->updateCount(), before + 1);
  EXPECT_TRUE(view->isValid());
}

}  // namespace
