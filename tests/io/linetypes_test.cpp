// Linetype files: what is read, what is refused, what a drawing gets of them.
#include <gtest/gtest.h>

#include "host/base/context.h"
#include "host/io/linetype_file.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "tests/support/print.h"

namespace {

constexpr const char* kOwn = KORVANE_TREE_DIR "/share/korvane/linetypes/";

TEST(Linetypes, TextsAndTurnsOfComplexElements) {
  std::vector<KvIoLinetype> linetypes;
  KvIoMessage error;
  ASSERT_TRUE(
      kvioParseLinetypes("head line\n*G,a, b\n a , .5,-.2,[\"G,[S\",st,S=.1,R=50g,X=-.1],-.25\r\n"
                         "; note\n*P,\nA,1,-1,[131,f.shx,a=90]",
                         linetypes, error));
  ASSERT_EQ(linetypes.size(), 2u);
  EXPECT_EQ(linetypes[0].description, L"a, b");
  ASSERT_EQ(linetypes[0].dashes.size(), 3u);
  const KvDbLinetypeDash& text = linetypes[0].dashes[1];
  EXPECT_EQ(text.text, L"G,[S");
  EXPECT_EQ(text.flags, 2);
  EXPECT_NEAR(text.rotation, kvge::kTwoPi / 8, 1e-12);
  EXPECT_EQ(text.offset.x, -0.1);
  EXPECT_EQ(linetypes[0].textStyles[1], L"st");
  EXPECT_EQ(linetypes[1].dashes[1].shapeNumber, 131);
  EXPECT_EQ(linetypes[1].dashes[1].flags, 5);
}

TEST(Linetypes, WrongOnesAreRefusedWithTheirLine) {
  const struct {
    const char* text;
    std::uint64_t line;
    std::size_t readBefore;
  } cases[] = {
      {"*A,x\nA,1,-1\nfree text\n", 3, 1},
      {"*A,x\n*B,y\nA,1,-1\n", 2, 0},
      {"*A,x\n", 1, 0},
      {"*A,x\nB,1,-1\n", 2, 0},
      {"*A,x\nA,1\n", 2, 0},
      {"*A,x\nA,0,0\n", 2, 0},
      {"*A,x\nA,1,nan\n", 2, 0},
      {"*A,x\nA,1,1e300\n", 2, 0},
      {"*A*,x\nA,1,-1\n", 1, 0},
      {"*A,x\nA,[\"t\",s],1\n", 2, 0},
      {"*A,x\nA,1,[\"t\",s,S],-1\n", 2, 0},
  };
  for (const auto& c : cases) {
    std::vector<KvIoLinetype> linetypes;
    KvIoMessage error;
    EXPECT_FALSE(kvioParseLinetypes(c.text, linetypes, error)) << c.text;
    EXPECT_EQ(error.line, c.line) << c.text;
    EXPECT_EQ(linetypes.size(), c.readBefore) << c.text;
  }
}

TEST(Linetypes, OwnFilesDifferByTheInch) {
  std::vector<KvIoLinetype> inches, metric;
  for (auto& [file, all] : {std::pair{"kvad.lin", &inches}, std::pair{"kvadiso.lin", &metric}}) {
    std::string bytes;
    KvIoMessage error;
    ASSERT_TRUE(platform::readFile(std::filesystem::path(kOwn) / file, bytes));
    ASSERT_TRUE(kvioParseLinetypes(bytes, *all, error)) << platform::utf8From(error.describe());
  }
  ASSERT_EQ(inches.size(), metric.size());
  EXPECT_GE(inches.size(), 38u);
  for (std::size_t i = 0; i < inches.size(); ++i) {
    EXPECT_EQ(inches[i].name, metric[i].name);
    // The ISO figures are millimetres in both.
    const double factor = inches[i].name.view().starts_with(L"ISO") ? 1 : 25.4;
    for (std::size_t k = 0; k < inches[i].dashes.size(); ++k)
      EXPECT_NEAR(inches[i].dashes[k].length * factor, metric[i].dashes[k].length, 1e-6);
  }
}

TEST(Linetypes, LoadingIntoADrawing) {
  KvDbDatabase drawing;
  const CString file = platform::fromNative(std::filesystem::path(kOwn) / "kvadiso.lin");
  EXPECT_EQ(kvdbLoadLineTypeFile(L"Center2", file, &drawing), Kvad::eOk);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"CENTER2", file, &drawing), Kvad::eLinetypeAlreadyPresent);
  EXPECT_EQ(static_cast<int>(Kvad::eLinetypeAlreadyPresent), 95);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"NOSUCH", file, &drawing), Kvad::eUndefinedLineType);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"CENTER", L"nosuch.lin", &drawing), Kvad::eFileNotFound);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"CENTER", L"", &drawing), Kvad::eInvalidInput);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"CENTER", file, nullptr), Kvad::eNoDatabase);
  const auto* record =
      KvDbLinetypeTableRecord::cast(drawing.recordId(KvDbTable::Linetype, L"CENTER2").stub()->object);
  EXPECT_NEAR(record->patternLength(), 25.4, 1e-9);
  EXPECT_EQ(kvdbLoadLineTypeFile(L"*", file, &drawing), Kvad::eOk);
  EXPECT_FALSE(drawing.recordId(KvDbTable::Linetype, L"GAS_LINE").isNull());
  EXPECT_EQ(drawing.openCount(), 0);
}

}  // namespace
