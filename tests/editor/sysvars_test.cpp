// Variables: their types, limits, where they live; views and the screen.
#include <cmath>

#include "host/database/tables.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "platform/files/files.h"
#include "tests/editor/editor_host.h"

namespace {

class Variables : public test::EditorHost {};

TEST_F(Variables, EachHasItsFixedType) {
  struct Row {
    const wchar_t* name;
    int type;
  };
  for (const Row& row : {Row{L"CMDNAMES", RTSTR},     Row{L"EXPERT", RTSHORT},
                         Row{L"DBMOD", RTSHORT},      Row{L"ROAMABLEROOTPREFIX", RTSTR},
                         Row{L"VIEWSIZE", RTREAL},    Row{L"PICKBOX", RTSHORT},
                         Row{L"UCSXDIR", RT3DPOINT},  Row{L"MEASUREMENT", RTSHORT},
                         Row{L"CMDECHO", RTSHORT},    Row{L"DIMSTYLE", RTSTR},
                         Row{L"REFEDITNAME", RTSTR},  Row{L"TEXTSTYLE", RTSTR},
                         Row{L"TEXTSIZE", RTREAL},    Row{L"LUPREC", RTSHORT},
                         Row{L"AUPREC", RTSHORT},     Row{L"MIRRTEXT", RTSHORT},
                         Row{L"ERRNO", RTSHORT},      Row{L"PICKSTYLE", RTSHORT},
                         Row{L"SCREENSIZE", RTPOINT}, Row{L"CVPORT", RTSHORT},
                         Row{L"VIEWDIR", RT3DPOINT},  Row{L"VIEWCTR", RT3DPOINT},
                         Row{L"VIEWTWIST", RTREAL},   Row{L"LIMMAX", RTPOINT},
                         Row{L"CECOLOR", RTSTR},      Row{L"DIMASZ", RTREAL},
                         Row{L"HPNAME", RTSTR},       Row{L"LASTPOINT", RT3DPOINT},
                         Row{L"userr5", RTREAL},      Row{L"DWGNAME", RTSTR},
                         Row{L"CTAB", RTSTR},         Row{L"DIMDSEP", RTSTR}}) {
    resbuf value{};
    ASSERT_EQ(kvedGetVar(row.name, &value), RTNORM) << platform::utf8From(CString(row.name));
    EXPECT_EQ(value.restype, row.type) << platform::utf8From(CString(row.name));
    // What is read can be written back, unless the host alone writes it; another type never.
    resbuf other{};
    other.restype = row.type == RTSTR ? RTREAL : RTSTR;
    wchar_t text[] = L"1";
    if (other.restype == RTSTR) other.resval.rstring = text;
    EXPECT_EQ(kvedSetVar(row.name, &other), RTERROR) << platform::utf8From(CString(row.name));
    if (row.type == RTSTR) std::free(value.resval.rstring);
  }
}

TEST_F(Variables, AllCanBeReadWithAndWithoutADrawing) {
  int written = 0;
  for (int round = 0; round < 2; ++round) {
    for (const KvEdVariable* variable : editor().variables().all()) {
      KvEdVarValue value;
      ASSERT_EQ(editor().variables().get(variable->name, value), Kvad::eOk);
      if (round == 0 && !variable->readOnly) {
        EXPECT_EQ(editor().variables().set(variable->name, value), Kvad::eOk)
            << platform::utf8From(variable->name);
        ++written;
      } else if (round == 1 && variable->scope == KvEdVarScope::Drawing) {
        EXPECT_NE(editor().variables().set(variable->name, value), Kvad::eOk);
      }
    }
    KvDbDatabase* working = &database();
    kvdbHostApplicationServices()->setWorkingDatabase(round == 0 ? nullptr : working);
  }
  kvdbHostApplicationServices()->setWorkingDatabase(&database());
  EXPECT_GT(written, 150);
}

TEST_F(Variables, LimitsAndRecords) {
  struct Row {
    const wchar_t* name;
    KvEdVarValue value;
    int status;
  };
  layer(L"Outline");
  for (const Row& row :
       {Row{L"LTSCALE", 0.0, RTERROR}, Row{L"LTSCALE", 2.0, RTNORM}, Row{L"LTSCALE", 3, RTNORM},
        Row{L"LTSCALE", std::nan(""), RTERROR}, Row{L"LUPREC", 9, RTERROR}, Row{L"LUPREC", 8, RTNORM},
        Row{L"CLAYER", CString(L"nowhere"), RTERROR}, Row{L"CLAYER", CString(L"OUTLINE"), RTNORM},
        Row{L"DIMSTYLE", CString(L"x"), RTERROR}, Row{L"CECOLOR", CString(L"red"), RTNORM},
        Row{L"CECOLOR", CString(L"257"), RTERROR}, Row{L"CECOLOR", CString(L"-1"), RTERROR},
        Row{L"DIMDSEP", CString(L".."), RTERROR}, Row{L"DIMDSEP", CString(L"."), RTNORM},
        Row{L"EXTMIN", KvEdVarPoint{}, RTERROR}, Row{L"PICKBOX", 51, RTERROR},
        Row{L"CMDNAMES", CString(L""), RTERROR}, Row{L"NOSUCH", 1, RTERROR}})
    EXPECT_EQ(setVariable(row.name, row.value), row.status) << platform::utf8From(CString(row.name));
  EXPECT_EQ(kvdbRecordName(database().clayer()), L"Outline");  // as the table spells it
  EXPECT_EQ(database().cecolor().colorIndex(), 1);
}

TEST_F(Variables, OfADrawingAreUndoneWithTheCommand) {
  during(L"", [&] { setVariable(L"TEXTSIZE", 7.0); });
  EXPECT_EQ(database().textsize(), 7);
  ASSERT_TRUE(database().undoRecorder().undo());
  EXPECT_EQ(database().textsize(), 2.5);
  KvApDocument* first = app.documents().curDocument();
  setVariable(L"ELEVATION", 5.0);
  app.newDocument();
  EXPECT_EQ(database().elevation(), 0);  // each drawing has its own
  app.documents().setCurDocument(first);
  EXPECT_EQ(database().elevation(), 5);
}

TEST(UserVariables, OutliveTheHostAndAreChecked) {
  test::TemporaryFolder folder;
  const auto session = [&](const std::function<void(KvEdSysVars&)>& work) {
    KvHostOptions options;
    options.environment = test::environmentIn(folder.path());
    KvHostApp app(std::move(options));
    work(app.editor().variables());
  };
  const auto box = [](KvEdSysVars& variables) {
    KvEdVarValue value;
    variables.get(L"PICKBOX", value);
    return std::get<int>(value);
  };
  session([&](KvEdSysVars& variables) {
    variables.set(L"PICKBOX", 7);
    variables.set(L"CMDECHO", 0);
  });
  session([&](KvEdSysVars& variables) {
    EXPECT_EQ(box(variables), 7);
    KvEdVarValue echo;
    variables.get(L"CMDECHO", echo);
    EXPECT_EQ(std::get<int>(echo), 1);  // of the session only
  });
  // A person has mended the file badly.
  std::string content;
  const auto file = folder.path() / "settings" / "registry.txt";
  ASSERT_TRUE(platform::readFile(file, content));
  const auto at = content.find("\"7\"");
  ASSERT_NE(at, std::string::npos);
  content.replace(at, 3, "\"99\"");
  ASSERT_TRUE(platform::writeFile(file, content));
  session([&](KvEdSysVars& variables) { EXPECT_EQ(box(variables), 3); });
}

TEST_F(Variables, ViewsFollowTheActiveViewport) {
  KvEdView view;
  view.center = {100, 50};
  view.height = 108;
  ASSERT_EQ(kvedSetViewOf(database(), view), Kvad::eOk);
  resbuf value{};
  kvedGetVar(L"VIEWSIZE", &value);
  EXPECT_EQ(value.resval.rreal, 108);
  KvGePoint3d corner;
  ASSERT_TRUE(kvedCoordFromPixelToWorld({0, 0}, corner));
  EXPECT_NEAR(corner.x, 100 - 96, 1e-9);
  EXPECT_NEAR(corner.y, 50 - 54, 1e-9);
  KvGsPixel pixel;
  const kvds_point middle = {100, 50, 0}, far = {1e200, 0, 0};
  ASSERT_TRUE(kvedCoordFromWorldToPixel(middle, pixel));
  EXPECT_EQ(pixel.x, 960);
  EXPECT_EQ(pixel.y, 540);
  EXPECT_FALSE(kvedCoordFromWorldToPixel(far, pixel));

  // A tiny view far from the origin still tells its pixels apart.
  view.height = 1e-7;
  ASSERT_EQ(kvedSetViewOf(database(), view), Kvad::eOk);
  KvGePoint3d next;
  kvedCoordFromPixelToWorld({0, 0}, corner);
  kvedCoordFromPixelToWorld({1000, 0}, next);
  EXPECT_NEAR(next.x - corner.x, 1e-7 / 1.08, 1e-12);

  for (const double height : {0.0, -1.0, HUGE_VAL, std::nan("")}) {
    view.height = height;
    EXPECT_EQ(kvedSetViewOf(database(), view), Kvad::eInvalidInput);
  }
  view = KvEdView();
  view.direction = {};
  EXPECT_EQ(kvedSetViewOf(database(), view), Kvad::eInvalidInput);
}

TEST_F(Variables, CentreIsToldInTheUserSystemAndMatricesAgree) {
  KvEdView view;
  view.center = {10, 20};
  view.height = 100;
  view.twist = 0.3;
  view.target = {5, 6, 7};
  view.direction = {1, 1, 1};
  ASSERT_EQ(kvedSetViewOf(database(), view), Kvad::eOk);
  kvedSetCurrentUCS(KvGeMatrix3d::translation({1, 2, 3}) * KvGeMatrix3d::rotation(1, KvGeVector3d::kZAxis));
  resbuf value{};
  ASSERT_EQ(kvedGetVar(L"VIEWCTR", &value), RTNORM);
  kvds_point world;
  kvdbUcs2Wcs(value.resval.rpoint, world, false);
  KvGsView* gsView = kvgsGetGsView(kvedCurrentViewport(database()), false);
  ASSERT_NE(gsView, nullptr);
  KvGePoint2d low, high;
  gsView->getViewport(low, high);
  const KvGePoint3d device = gsView->worldToDeviceMatrix() * KvGePoint3d(world[0], world[1], world[2]);
  EXPECT_NEAR(device.x, high.x / 2, 1e-9);
  EXPECT_NEAR(device.y, high.y / 2, 1e-9);
  EXPECT_EQ(kvgsGetGsView(99, false), nullptr);
  EXPECT_NE(kvgsGetGsView(99, true), nullptr);
  EXPECT_EQ(kvgsGetGsView(0, true), nullptr);
  gsView->invalidate();
  EXPECT_FALSE(gsView->isValid());
  kvedUpdateDisplay();
  EXPECT_TRUE(gsView->isValid());
}

TEST_F(Variables, ScreenShowsLinesAndHighlights) {
  const KvDbObjectId a = line(0, 0, 1, 0);
  const kvds_point p = {0, 0, 0}, q = {1, 1, 0}, bad = {NAN, 0, 0};
  EXPECT_EQ(kvedGrDraw(p, q, 1, 0), RTNORM);
  EXPECT_EQ(kvedGrDraw(p, bad, 1, 0), RTERROR);
  EXPECT_EQ(editor().screen().lines.size(), 1u);
  kvds_name name;
  kvdbGetKvdsName(name, a);
  EXPECT_EQ(kvedRedraw(name, 3), RTNORM);
  EXPECT_EQ(kvedRedraw(name, 3), RTNORM);
  EXPECT_TRUE(editor().screen().isHighlighted(a));
  EXPECT_EQ(kvedRedraw(name, 4), RTNORM);
  EXPECT_FALSE(editor().screen().isHighlighted(a));
  // By path the calls count, and a part is not the whole.
  change(a, [&](KvDbEntity& e) {
    const KvDbFullSubentPath edge(a, KvDb::kEdgeSubentType, 2);
    e.highlight(edge);
    e.highlight(edge);
    e.unhighlight();
    EXPECT_TRUE(editor().screen().isHighlighted(a));
    e.unhighlight(edge);
    EXPECT_TRUE(editor().screen().isHighlighted(a));
    e.unhighlight(edge);
    EXPECT_FALSE(editor().screen().isHighlighted(a));
  });
  EXPECT_EQ(kvedRedraw(name, 9), RTERROR);
  EXPECT_EQ(kvedRedraw(nullptr, 1), RTNORM);
  EXPECT_TRUE(editor().screen().lines.empty());
}

}  // namespace
