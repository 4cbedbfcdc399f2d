// Drawing files: where faults are reported, encodings and escapes, versions, whole saves.
#include "host/io/drawing_file.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/database/block.h"
#include "host/database/tables.h"
#include "platform/files/files.h"
#include "tests/support/print.h"
#include "tests/support/temporary_tree.h"

namespace {

std::string lines(std::initializer_list<const char*> all) {
  std::string text;
  for (const char* line : all) text += std::string(line) + "\n";
  return text;
}

std::string header(const char* version, const char* page = "ANSI_936") {
  return lines({"0", "SECTION", "2", "HEADER", "9", "$ACADVER", "1", version, "9", "$DWGCODEPAGE", "3", page,
                "0", "ENDSEC"});
}

std::string entities(const std::string& groups) {
  return lines({"0", "SECTION", "2", "ENTITIES"}) + groups + lines({"0", "ENDSEC", "0", "EOF"});
}

struct Parsed {
  explicit Parsed(const std::string& bytes, KvIoMode mode = KvIoMode::Strict)
      : status(kvdbParseDrawing(drawing, bytes, report, mode)) {}
  /// Layers of the entities in model space, in order.
  CString layers() const {
    CString text;
    const auto* space = KvDbBlockTableRecord::cast(drawing.modelSpaceId().stub()->object);
    for (KvDbObjectId id : space->entities()) text += KvDbEntity::cast(id.stub()->object)->layer() + L";";
    return text;
  }
  KvDbDatabase drawing{false};
  KvIoReport report;
  Kvad::ErrorStatus status;
};

TEST(DrawingFile, FaultsAreReportedWhereTheyStand) {
  struct Case {
    std::string bytes;
    std::uint64_t line;
    int code;
    const wchar_t* text;
  };
  const Case cases[] = {
      {entities("0\nLINE\n40\nabc\n"), 7, 40, L"a real number expected, \"abc\" found"},
      {entities("0\nLINE\n62\n1.5\n"), 7, 62, L"a whole number expected"},
      {entities("0\nLINE\nxx\n5\n"), 7, -1, L"a group code expected, \"xx\" found"},
      {entities("0\nLINE\n330\nXYZ\n"), 7, 330, L"a handle expected"},
      {entities("0\nLINE\n5\n1A\n0\nCIRCLE\n5\n1A\n"), 9, 0, L"handle 1A is used twice"},
      {entities("0\nSEQEND\n"), 5, 0, L"an end mark without a beginning"},
      {lines({"0", "SECTION", "2", "ENTITIES", "0", "LINE"}), 7, -1, L"end"},
      {lines({"0", "SECTION", "2", "TABLES", "0", "TABLE", "2", "WRONG", "0", "ENDTAB", "0", "ENDSEC", "0",
              "EOF"}),
       5, 0, L"\"WRONG\" is not known"},
      {entities("0\nLINE\n40\n1e999\n"), 7, 40, L"a real number"},
  };
  for (const Case& c : cases) {
    Parsed strict(c.bytes);
    EXPECT_EQ(strict.status, Kvad::eFileInternalErr) << c.bytes;
    EXPECT_EQ(strict.report.error.line, c.line) << platform::utf8From(strict.report.error.describe());
    EXPECT_EQ(strict.report.error.code, c.code);
    EXPECT_GE(strict.report.error.text.Find(c.text), 0) << platform::utf8From(strict.report.error.describe());
    Parsed tolerant(c.bytes, KvIoMode::Recover);
    EXPECT_EQ(tolerant.status, Kvad::eOk) << c.bytes;
    EXPECT_FALSE(tolerant.report.repairs.empty()) << c.bytes;
  }
}

TEST(DrawingFile, WhatIsNoDrawingIsRefusedInWords) {
  Parsed empty(" \n");
  EXPECT_EQ(empty.status, Kvad::eFileInternalErr);
  Parsed foreign(std::string("AC1032\0\0\0\0\0\x03 binary", 19));
  EXPECT_EQ(foreign.status, Kvad::eUnsupportedFileVersion);
  EXPECT_GE(foreign.report.error.text.Find(L"AC1032"), 0);
  EXPECT_EQ(Parsed(header("AC9999")).status, Kvad::eUnsupportedFileVersion);
  KvDbDatabase drawing(false);
  KvIoReport report;
  EXPECT_EQ(kvdbReadDrawing(drawing, "/nowhere/a.dxf", report), Kvad::eFileNotFound);
}

TEST(DrawingFile, TextsFollowVersionAndCodePage) {
  struct Case {
    const char *version, *page, *bytes;
    const wchar_t* layer;
  };
  const Case cases[] = {
      {"AC1015", "ANSI_936", "\xD6\xD0", L"中"},         {"AC1015", "ANSI_932", "\x93\xFA", L"日"},
      {"AC1027", "ANSI_936", "\xE4\xB8\xAD", L"中"},  // the version, not the page, says what it is
      {"AC1027", "ANSI_936", "\xD6\xD0", L"中"},      // a header that lies
      {"AC1015", "ANSI_1252", "\\U+4E2D\xE9", L"中é"},   {"AC1015", "ANSI_1252", "\\M+5D6D0", L"中"},
      {"AC1015", "ANSI_1252", "\\U+D834\\U+DD1E", L"𝄞"}, {"AC1015", "ANSI_1252", "\\U+12", L"\\U+12"},
  };
  for (const Case& c : cases) {
    Parsed parsed(header(c.version, c.page) + entities(std::string("0\nLINE\n8\n") + c.bytes + "\n"));
    ASSERT_EQ(parsed.status, Kvad::eOk);
    EXPECT_EQ(parsed.layers(), CString(c.layer) + L";");
    Parsed again(kvdbFormatDrawing(parsed.drawing));
    ASSERT_EQ(again.status, Kvad::eOk) << platform::utf8From(again.report.error.describe());
    EXPECT_EQ(again.layers(), CString(c.layer) + L";");
    EXPECT_EQ(kvdbFormatDrawing(again.drawing), kvdbFormatDrawing(parsed.drawing));
  }
}

TEST(DrawingFile, VersionIsKeptAndRaisedWhereItMust) {
  for (const char* version : {"AC1009", "AC1014", "AC1015", "AC1021", "AC1032"}) {
    Parsed parsed(header(version) + entities("0\nLINE\n8\n0\n"));
    const std::string saved = kvdbFormatDrawing(parsed.drawing);
    const std::string expected = std::string(version) < "AC1015" ? "AC1015" : version;
    EXPECT_NE(saved.find("$ACADVER\r\n  1\r\n" + expected), std::string::npos) << version;
  }
}

TEST(DrawingFile, RecordsThatNoTableHasTakeNoHandleOfTheFile) {
  // The layer comes into being between two entities that bear the next handles.
  Parsed parsed(header("AC1015") +
                entities("0\nLINE\n5\n50\n8\nNEW\n0\nLINE\n5\n51\n8\nNEWER\n0\nLINE\n5\n52\n8\n0\n"));
  ASSERT_EQ(parsed.status, Kvad::eOk) << platform::utf8From(parsed.report.error.describe());
  EXPECT_EQ(parsed.layers(), L"NEW;NEWER;0;");
  EXPECT_GT(parsed.drawing.recordId(KvDbTable::Layer, L"NEWER").handle().value(), 0x52u);
  EXPECT_EQ(Parsed(kvdbFormatDrawing(parsed.drawing)).status, Kvad::eOk);
}

TEST(DrawingFile, UnknownThingsStay) {
  const std::string odd =
      header("AC1015") +
      lines({"0",   "SECTION",   "2",   "ENTITIES",  "0",   "GIZMO",   "5",   "AB",         "102", "{MYAPP",
             "90",  "7",         "102", "}",         "330", "1F",      "100", "AcDbEntity", "8",   "L1",
             "999", "a comment", "100", "AcDbGizmo", "40",  "1.25",    "100", "AcDbGizmo",  "310", "00FF10",
             "0",   "ENDSEC",    "0",   "SECTION",   "2",   "STRANGE", "0",   "THING",      "1",   "x",
             "0",   "ENDSEC",    "0",   "EOF"});
  Parsed parsed(odd);
  ASSERT_EQ(parsed.status, Kvad::eOk) << platform::utf8From(parsed.report.error.describe());
  for (KvIoForm form : {KvIoForm::Text, KvIoForm::Binary}) {
    KvIoSaveOptions options;
    options.form = form;
    Parsed again(kvdbFormatDrawing(parsed.drawing, options));
    ASSERT_EQ(again.status, Kvad::eOk);
    const std::string text = kvdbFormatDrawing(again.drawing);
    for (const char* part : {"GIZMO\r\n  5\r\nAB\r\n102\r\n{MYAPP\r\n 90\r\n        7\r\n102\r\n}\r\n",
                             "100\r\nAcDbEntity\r\n  8\r\nL1\r\n",
                             "100\r\nAcDbGizmo\r\n 40\r\n1.25\r\n100\r\nAcDbGizmo\r\n310\r\n00FF10\r\n",
                             "STRANGE\r\n  0\r\nTHING\r\n  1\r\nx\r\n"})
      EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
}

TEST(DrawingFile, AFailedSaveLeavesTheOldFileWhole) {
  test::TemporaryFolder folder;
  const auto file = folder.path() / "a.dxf";
  KvDbDatabase drawing;
  KvIoReport report;
  ASSERT_EQ(kvdbSaveDrawing(drawing, file, report), Kvad::eOk);
  std::string before, after;
  platform::readFile(file, before);
  // A device that is always full stands in for a full disk; the folder that can't be written for lost rights.
  EXPECT_EQ(kvdbSaveDrawing(drawing, "/dev/full", report), Kvad::eDiskFull);
  EXPECT_FALSE(report.error.text.IsEmpty());
  EXPECT_NE(kvdbSaveDrawing(drawing, folder.path() / "no" / "such" / "b.dxf", report), Kvad::eOk);
  platform::readFile(file, after);
  EXPECT_EQ(before, after);
  KvDbDatabase again(false);
  EXPECT_EQ(kvdbReadDrawing(again, file, report), Kvad::eOk);
  EXPECT_EQ(kvdbFormatDrawing(again), before);
}

}  // namespace
