// Extended data and records of dictionaries: what is added, changed, written, read back, and never lost.
#include "module/entity/xdata.h"

#include <limits>
#include <string>

#include "host/database/dictionary.h"
#include "host/io/drawing_file.h"
#include "module/toolkit/rbchains.h"
#include "siblings/tools/xdata_listing.h"
#include "tests/toolkit/support.h"

namespace {

constexpr IM_APPLICATION kApp = 1, kOtherApp = 2, kThirdApp = 3;

/// Lets tests see what derived classes see.
class Open : public ImEntityXData {
 public:
  using ImEntityXData::CheckReadable;
  using ImEntityXData::CheckWriteable;
  using ImEntityXData::ImEntityXData;
  const resbuf* head() const { return m_head; }
};

/// A chain as text: code=value, separated by blanks.
std::string textOf(const resbuf* chain) {
  std::string text;
  for (; chain; chain = chain->rbnext) {
    if (!text.empty()) text += ' ';
    text += std::to_string(chain->restype);
    CString value;
    switch (kvutRbKind(chain->restype)) {
      case KvRbKind::Text:
        value = chain->resval.rstring;
        break;
      case KvRbKind::Real:
        value.Format(L"%g", chain->resval.rreal);
        break;
      case KvRbKind::Short:
        value.Format(L"%d", static_cast<int>(chain->resval.rint));
        break;
      case KvRbKind::Long:
        value.Format(L"%d", chain->resval.rlong);
        break;
      case KvRbKind::Point:
        value.Format(L"%g,%g,%g", chain->resval.rpoint[0], chain->resval.rpoint[1], chain->resval.rpoint[2]);
        break;
      case KvRbKind::Binary:
        for (std::size_t i = 0; i < chain->resval.rbinary.size(); ++i)
          value.AppendFormat(L"%02x",
                             static_cast<int>(static_cast<unsigned char>(chain->resval.rbinary.buf[i])));
        break;
      default:
        continue;
    }
    text += '=';
    for (int i = 0; i < value.GetLength(); ++i) text += static_cast<char>(value[i]);
  }
  return text;
}

class XDataTest : public test::ToolkitTest {
 protected:
  XDataTest() : line(add(new KvDbLine({0, 0, 0}, {1, 0, 0}))) { kvdbGetKvdsName(name, line); }

  /// The data of one application (0: of all) on an entity.
  std::string dataOf(IM_APPLICATION app, KvDbObjectId id) {
    auto* object = open<KvDbObject>(id);
    resbuf* chain = app ? object->xData(IM_GetAppName(app, kAppNameUnregistered)) : object->xData(nullptr);
    object->close();
    const std::string text = textOf(chain);
    kvutRelRb(chain);
    return text;
  }
  std::string data(IM_APPLICATION app = 0) { return dataOf(app, line); }
  void attach(IM_APPLICATION app, const wchar_t* text) {
    ImEntityXData own(name, app, IM_XDATA_WRITE);
    EXPECT_EQ(own.AppendXData(CString(text), 1000), 1);
    EXPECT_EQ(own.AttachToEntity(), 1);
  }
  std::string nameOf(IM_APPLICATION app) {
    resbuf* one = kvutBuildList(1001, IM_GetAppName(app, kAppNameUnregistered), 0);
    const std::string text = textOf(one);
    kvutRelRb(one);
    return text;
  }

  KvDbObjectId line;
  kvds_name name = {0, 0};
};

TEST_F(XDataTest, NamesOfApplications) {
  EXPECT_TRUE(IM_GetAppName(0, 0).IsEmpty());
  EXPECT_TRUE(IM_GetAppName(51, 0).IsEmpty());
  EXPECT_EQ(RegisterApp(L"MY_OWN"), 1);
  EXPECT_TRUE(drawing().isApplicationKnown(L"MY_OWN"));
  EXPECT_EQ(RegisterApp(L"MY_OWN"), 1);
  EXPECT_TRUE(shown.IsEmpty());
  EXPECT_EQ(RegisterApp(L""), 0);
  EXPECT_FALSE(shown.IsEmpty());
}

TEST_F(XDataTest, ChangesTheFirstRecordOrAddsOne) {
  Open own(name, kApp, IM_XDATA_WRITE);
  const std::string begin = "-3 " + nameOf(kApp);
  EXPECT_EQ(textOf(own.head()), begin);
  EXPECT_EQ(own.AppendXData(7, 1070), 1);
  EXPECT_EQ(own.AppendXData(5, 1070), 1);
  EXPECT_EQ(own.AppendXData(100000, 1071), 1);
  EXPECT_EQ(own.AppendXData(-70000, 1071), 1);
  EXPECT_EQ(own.AppendXData(2.5, 1040), 1);
  EXPECT_EQ(own.AppendXData(3, 1040), 1);
  EXPECT_EQ(own.AppendXData(CString(L"a"), 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"b"), 1000), 1);
  EXPECT_EQ(textOf(own.head()).substr(begin.size()), " 1070=5 1071=-70000 1040=3 1000=b");
  // What a code can't hold changes nothing.
  const std::string before = textOf(own.head());
  EXPECT_EQ(own.AppendXData(5, 1000), 0);
  EXPECT_EQ(own.AppendXData(2.5, 1070), 0);
  EXPECT_EQ(own.AppendXData(CString(L"x"), 1040), 0);
  EXPECT_EQ(own.AppendXData(1, 1010), 0);
  EXPECT_EQ(own.AppendXData(1, 12345), 0);
  EXPECT_EQ(own.AppendXData(CString(L"x"), 0), 0);
  EXPECT_EQ(textOf(own.head()), before);
}

TEST_F(XDataTest, KeysFindTheirValues) {
  Open own(name, kApp, IM_XDATA_WRITE);
  const std::string begin = textOf(own.head());
  EXPECT_EQ(own.AppendXData(40, 1.5), 1);
  EXPECT_EQ(own.AppendXData(41, 6, 1070), 1);
  EXPECT_EQ(own.AppendXData(42, CString(L"t"), 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"K"), 7, 1071, 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"R"), 8.5, 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"S"), CString(L"s"), 1000, 1000), 1);
  const std::string first = textOf(own.head());
  EXPECT_EQ(first, begin +
                       " 1070=40 1040=1.5 1070=41 1070=6 1070=42 1000=t 1000=K 1071=7 1000=R 1040=8.5 "
                       "1000=S 1000=s");
  EXPECT_EQ(own.AppendXData(40, 2.5), 1);
  EXPECT_EQ(own.AppendXData(41, 60, 1070), 1);
  EXPECT_EQ(own.AppendXData(42, CString(L"longer"), 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"K"), 700000, 1071, 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"R"), 9.5, 1000), 1);
  EXPECT_EQ(own.AppendXData(CString(L"S"), CString(L""), 1000, 1000), 1);
  EXPECT_EQ(textOf(own.head()), begin +
                                    " 1070=40 1040=2.5 1070=41 1070=60 1070=42 1000=longer 1000=K "
                                    "1071=700000 1000=R 1040=9.5 1000=S 1000=");
  EXPECT_EQ(own.AppendXData(CString(L"K"), 1, 1071, 1070), 0);  // a text is no key of that code
}

TEST_F(XDataTest, RefusesWithoutEntityOrRight) {
  Open nobody(nullptr, kApp, IM_XDATA_WRITE);
  const kvds_name none = {0, 0}, strange = {0x7FFFFFFF, 1};
  Open null(none, kApp, IM_XDATA_WRITE), unknown(name, 0, IM_XDATA_WRITE),
      missing(strange, kApp, IM_XDATA_WRITE);
  Open reader(name, kApp, IM_XDATA_READ);
  char byte = 1;
  for (Open* one : {&nobody, &null, &unknown, &missing, &reader}) {
    EXPECT_FALSE(one->CheckWriteable());
    EXPECT_EQ(one->AppendXData(1, 1070), 0);
    EXPECT_EQ(one->AppendXData(1, 2.0), 0);
    EXPECT_EQ(one->AppendXData(CString(L"k"), CString(L"v"), 1000, 1000), 0);
    EXPECT_EQ(one->AppendXData(&byte, 1u), 0);
    EXPECT_EQ(one->AttachToEntity(), 0);
  }
  EXPECT_TRUE(reader.CheckReadable());  // nothing there yet
  attach(kApp, L"x");
  EXPECT_FALSE(Open(name, kApp, IM_XDATA_READ).CheckReadable());  // a tail is there
  EXPECT_FALSE(Open(name, kOtherApp, IM_XDATA_WRITE).CheckReadable());
  EXPECT_EQ(data(), nameOf(kApp) + " 1000=x");
}

TEST_F(XDataTest, InvalidForEver) {
  attach(kApp, L"x");
  ImXDataItemPtrArray items;
  Open own(name, kApp, IM_XDATA_READWRITE);
  EXPECT_EQ(own.AppendXData(3, 1070), 1);
  own.MakeInvalidate();
  own.MakeInvalidate();
  EXPECT_TRUE(own.GetObjectId().isNull());
  EXPECT_EQ(own.AppendXData(3, 1070), 0);
  EXPECT_EQ(own.AttachToEntity(), 0);
  EXPECT_EQ(own.ReadXData(items, 0, 0), 0);
  Open single(name, kOtherApp, IM_XDATA_READWRITE);
  EXPECT_EQ(single.AppendXData(1, 1070), 1);  // head and tail are one record
  single.MakeInvalidate();
  EXPECT_EQ(single.head(), nullptr);
}

TEST_F(XDataTest, AttachingReplacesOnlyItsApplication) {
  // The application stands first, in the middle and last among the others.
  for (const IM_APPLICATION app : {kApp, kOtherApp, kThirdApp}) {
    SCOPED_TRACE(app);
    line = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
    kvdbGetKvdsName(name, line);
    attach(kApp, L"one");
    attach(kOtherApp, L"two");
    attach(kThirdApp, L"three");
    ImEntityXData own(name, app, IM_XDATA_READWRITE);
    EXPECT_EQ(own.AppendXData(4, 1070), 1);
    EXPECT_EQ(own.AttachToEntity(), 1);
    const wchar_t* const texts[] = {L"one", L"two", L"three"};
    for (const IM_APPLICATION one : {kApp, kOtherApp, kThirdApp}) {
      resbuf* wanted = kvutBuildList(1001, IM_GetAppName(one, kAppNameUnregistered), 1000, texts[one - 1], 0);
      EXPECT_EQ(data(one), textOf(wanted) + (one == app ? " 1070=4" : ""));
      kvutRelRb(wanted);
    }
    // Spent: what is added now goes nowhere, and does no harm.
    EXPECT_EQ(own.AppendXData(5, 1071), 1);
    EXPECT_EQ(own.AttachToEntity(), 1);
    EXPECT_EQ(data(app).find("1071"), std::string::npos);
  }
}

TEST_F(XDataTest, OthersDataAreNotTakenForOwn) {
  attach(kOtherApp, L"two");
  ImEntityXData own(name, kApp, IM_XDATA_READWRITE);  // has nothing yet, so its chain has no name
  EXPECT_EQ(own.AppendXData(9, 1070), 1);
  EXPECT_EQ(own.AttachToEntity(), 1);
  EXPECT_EQ(data(kOtherApp), nameOf(kOtherApp) + " 1000=two");
  EXPECT_EQ(data(kApp), nameOf(kApp) + " 1070=9");
}

TEST_F(XDataTest, ReadsSinglesAndPairs) {
  ImEntityXData own(name, kApp, IM_XDATA_WRITE);
  own.AppendXData(11, 1.5);
  own.AppendXData(CString(L"K"), CString(L"v"), 1000, 1000);
  own.AppendXData(100000, 1071);
  ASSERT_EQ(own.AttachToEntity(), 1);
  ImEntityXData reader(name, kApp, IM_XDATA_READ);
  ImXDataItemPtrArray items;
  EXPECT_EQ(reader.ReadXData(items, 1, 0), 1);
  ASSERT_EQ(items.GetSize(), 2);  // the fifth has no partner
  EXPECT_EQ(items[0]->getFirstInt(), 11);
  EXPECT_EQ(items[0]->getSecondDouble(), 1.5);
  EXPECT_EQ(items[1]->getFirstString(), L"K");
  EXPECT_EQ(items[1]->getSecondString(), L"v");
  EXPECT_EQ(reader.ReadXData(items, 0, 2), 1);  // nothing is skipped on an entity
  ASSERT_EQ(items.GetSize(), 5);
  EXPECT_EQ(items[4]->getFirstLong(), 100000);
  EXPECT_EQ(items[4]->getSecondLong(), 0);
  // Of another sort than asked: neutral, never wild.
  EXPECT_TRUE(items[0]->getFirstString().IsEmpty());
  EXPECT_EQ(items[2]->getFirstDouble(), 0);
  ImEntityXData other(name, kOtherApp, IM_XDATA_READ);
  EXPECT_EQ(other.ReadXData(items, 0, 0), 0);
  EXPECT_EQ(items.GetSize(), 0);
}

TEST(XDataItem, NeutralWithoutRecord) {
  const ImXDataItem item(nullptr);
  kvds_name name = {5, 5};
  EXPECT_EQ(item.getFirstDouble(), 0);
  EXPECT_EQ(item.getSecondInt(), 0);
  EXPECT_EQ(item.getFirstLong(), 0);
  EXPECT_TRUE(item.getFirstString().IsEmpty());
  item.getFirstName(nullptr);
  item.getSecondName(name);
  EXPECT_TRUE(kvds_isNull(name));
}

TEST(XDataItem, TheArrayOwnsItsElements) {
  static int living = 0;
  struct Counted {
    Counted() { ++living; }
    ~Counted() { --living; }
  };
  {
    ImPtrArray<Counted> array;
    array.Add(new Counted);
    array.Add(new Counted);
    array.RemoveAll();
    EXPECT_EQ(living, 0);
    array.Add(new Counted);
  }
  EXPECT_EQ(living, 0);
}

TEST_F(XDataTest, ChunksHaveALengthOf16Bits) {
  const struct {
    unsigned int size, kept;
  } cases[] = {{0, 0},         {1, 1},         {127, 127}, {32767, 32767},
               {32768, 32768}, {65535, 65535}, {65536, 0}, {65546, 10}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.size);
    std::string bytes(one.size + 1, '\x5A');
    Open own(name, kApp, IM_XDATA_WRITE);
    EXPECT_EQ(own.AppendXData(bytes.data(), one.size), 1);
    const resbuf* chunk = IM_GetSubResbuf(const_cast<resbuf*>(own.head()), 1004, 1);
    ASSERT_NE(chunk, nullptr);
    EXPECT_EQ(chunk->resval.rbinary.size(), one.kept);
    for (unsigned int i = 0; i < one.size; ++i) ASSERT_EQ(chunk->resval.rbinary.buf[i], '\x5A');
    EXPECT_EQ(own.AttachToEntity(), 1);
    const std::string stored = data(kApp);
    EXPECT_EQ(stored.size() - nameOf(kApp).size(), std::string(" 1004=").size() + 2 * one.kept);
  }
  Open own(name, kApp, IM_XDATA_WRITE);
  char bytes[] = "ab";
  EXPECT_EQ(own.AppendXData(bytes, 2u), 1);
  EXPECT_EQ(own.AppendXData(bytes, 2u), 1);  // never in place of another
  EXPECT_EQ(own.AppendXData(static_cast<char*>(nullptr), 4u), 0);
  EXPECT_EQ(textOf(own.head()), "-3 " + nameOf(kApp) + " 1004=6162 1004=6162");
}

/// Extended data of every code, with values at the ends of their ranges.
resbuf* everyCode(const CString& app, const CString& handle) {
  const double point[3] = {1.5, -2.5, 1e10}, tiny[3] = {1e-300, 0, -0.1};
  char bytes[] = {0, 1, '\x7F', '\xFF'};
  const KvBinary chunk{4, bytes};
  return kvutBuildList(1001, app, 1000, L"text \u4E2D\u6587 ^ \\", 1000, L"", 1002, L"{", 1003, L"0", 1004,
                       chunk, 1005, handle, 1010, point, 1011, tiny, 1012, point, 1013, tiny, 1040, 0.1, 1041,
                       -1e300, 1042, 1e-300, 1070, -32768, 1070, 32767, 1071, -2147483647 - 1, 1071,
                       2147483647, 1002, L"}", 0);
}

TEST_F(XDataTest, EveryCodeSurvivesAFile) {
  attach(kOtherApp, L"two");
  auto* object = open<KvDbObject>(line, KvDb::kForWrite);
  resbuf* all = everyCode(IM_GetAppName(kApp, 0), object->handle().toText());
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(object->setXData(all), Kvad::eOk);
  kvutRelRb(all);
  object->close();
  // Through the class once more, with a record added.
  ImEntityXData own(name, kApp, IM_XDATA_READWRITE);
  EXPECT_EQ(own.AppendXData(CString(L"KEY"), 4.25, 1000), 1);
  EXPECT_EQ(own.AttachToEntity(), 1);
  const std::string before = data();
  EXPECT_NE(before.find("1042"), std::string::npos);
  EXPECT_NE(before.find("1000=KEY 1040=4.25"), std::string::npos);
  for (const KvIoForm form : {KvIoForm::Text, KvIoForm::Binary}) {
    const auto file = folder.path() / "xdata.dxf";
    KvIoReport report;
    KvIoSaveOptions options;
    options.form = form;
    ASSERT_EQ(kvdbSaveDrawing(drawing(), file, report, options), Kvad::eOk);
    KvDbDatabase copy(false);
    ASSERT_EQ(kvdbReadDrawing(copy, file, report), Kvad::eOk);
    EXPECT_EQ(dataOf(0, copy.idFromHandle(line.handle())), before);
  }
}

TEST_F(XDataTest, NumbersThatAreNoneNeverReachAFile) {
  for (const double wrong :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    Open own(name, kApp, IM_XDATA_WRITE);
    EXPECT_EQ(own.AppendXData(1.5, 1040), 1);
    EXPECT_EQ(own.AppendXData(wrong, 1040), 0);
    EXPECT_EQ(own.AppendXData(wrong, 1041), 0);
    EXPECT_EQ(own.AppendXData(40, wrong), 0);
    EXPECT_EQ(own.AppendXData(CString(L"K"), wrong, 1000), 0);
    EXPECT_EQ(own.AttachToEntity(), 1);
  }
  EXPECT_EQ(data(kApp), nameOf(kApp) + " 1040=1.5");
}

TEST_F(XDataTest, DeletingOneApplicationKeepsTheOthers) {
  attach(kApp, L"one");
  attach(kOtherApp, L"two");
  const std::string both = data();
  EXPECT_EQ(IM_DeleteXData(line, L"NOT_THERE"), 1);
  EXPECT_EQ(data(), both);
  CString lower = IM_GetAppName(kApp, 0);
  lower.MakeLower();
  EXPECT_EQ(IM_DeleteXData(line, lower), 1);
  EXPECT_EQ(data(), nameOf(kOtherApp) + " 1000=two");
  EXPECT_EQ(IM_DeleteAllXDatas(line), 1);
  EXPECT_EQ(data(), "");
  EXPECT_EQ(IM_DeleteAllXDatas(line), 1);
  EXPECT_EQ(IM_DeleteXData(KvDbObjectId(), L"X"), 0);
  auto* held = open<KvDbObject>(line);
  EXPECT_EQ(IM_DeleteAllXDatas(line), 0);
  held->close();
}

TEST(XDataListing, IndentsInsideBraces) {
  const double point[3] = {1, 2.5, -3};
  std::string bytes(40, '\x0A');
  const KvBinary chunk{static_cast<std::int16_t>(bytes.size()), bytes.data()};
  resbuf* chain =
      kvutBuildList(1001, L"ONE", 1002, L"}", 1000, L"t", 1002, L"{", 1070, -5, 1002, L"{", 1040, 0.1, 1002,
                    L"}", 1071, 70000, 1001, L"TWO", 1005, L"2B", 1011, point, 1004, chunk, 0);
  EXPECT_EQ(formatXData(chain),
            L"ONE\n"
            L"  1002  brace         }\n"
            L"  1000  text          t\n"
            L"  1002  brace         {\n"
            L"  1070  integer         -5\n"
            L"  1002  brace           {\n"
            L"  1040  real              0.1\n"
            L"  1002  brace           }\n"
            L"  1071  long integer    70000\n"
            L"TWO\n"
            L"  1005  handle        2B\n"
            L"  1011  world point   1, 2.5, -3\n"
            L"  1004  bytes         "
            L"0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A... (40 bytes)\n");
  kvutRelRb(chain);
  EXPECT_TRUE(formatXData(nullptr).IsEmpty());
}

// --- Dictionaries

class DictionaryTest : public XDataTest {
 protected:
  int find(const wchar_t* path, bool create, bool isXrecord) {
    return IM_GetDictEntFromName(path, entry, create, owner, nullptr, isXrecord);
  }
  KvDbObjectId idOf(const kvds_name one) {
    KvDbObjectId id;
    kvdbGetObjectId(id, one);
    return id;
  }
  kvds_name entry = {9, 9}, owner = {9, 9};
};

TEST_F(DictionaryTest, FindsAndMakesByPath) {
  EXPECT_EQ(find(L"A\\B\\", false, false), 0);
  EXPECT_TRUE(kvds_isNull(entry));
  EXPECT_TRUE(kvds_isNull(owner));
  EXPECT_EQ(find(L"A\\B\\", true, false), 1);
  const KvDbObjectId made = idOf(entry);
  EXPECT_EQ(made.objectClass(), KvDbDictionary::desc());
  EXPECT_EQ(find(L"a\\b", false, false), 1);
  EXPECT_EQ(idOf(entry), made);
  EXPECT_EQ(find(L"A", false, false), 1);
  const KvDbObjectId outer = idOf(entry);
  EXPECT_EQ(idOf(owner), drawing().namedObjectsDictionaryId());
  EXPECT_EQ(find(L"A\\B\\R", true, true), 1);
  EXPECT_EQ(idOf(entry).objectClass(), KvDbXrecord::desc());
  EXPECT_EQ(idOf(owner), made);
  EXPECT_EQ(open<KvDbObject>(outer)->close(), Kvad::eOk);
  for (const wchar_t* path : {L"", L"\\", L"\\\\\\", L"A\\\\B", L"\\A"}) {
    EXPECT_EQ(find(path, true, false), 0);
    EXPECT_TRUE(kvds_isNull(entry));
  }
  EXPECT_EQ(IM_GetDictEntFromName(L"A", nullptr, 1, nullptr, nullptr, 0), 0);
  EXPECT_EQ(IM_GetDictEntFromName(L"A", entry, 1, nullptr, nullptr, 0), 1);
}

TEST_F(DictionaryTest, NeverReplacesWhatIsThere) {
  ASSERT_EQ(find(L"A\\R", true, true), 1);
  const KvDbObjectId record = idOf(entry);
  EXPECT_EQ(find(L"A\\R", true, false), 0);    // a record, not a dictionary
  EXPECT_EQ(find(L"A\\R\\X", true, true), 0);  // nor one on the way
  EXPECT_EQ(find(L"A", true, true), 0);        // a dictionary, not a record
  auto* held = open<KvDbObject>(record, KvDb::kForWrite);
  EXPECT_EQ(find(L"A\\R", true, true), 0);  // held by somebody
  held->close();
  EXPECT_TRUE(record.isValid());
  EXPECT_EQ(find(L"A\\R", false, true), 1);
  EXPECT_EQ(idOf(entry), record);
}

TEST_F(DictionaryTest, RecordsKeepTheirValues) {
  {
    ImXRecord own(L"KORVANE\\SETTINGS", 1, nullptr);
    EXPECT_EQ(own.Modify(), 0);  // nothing to keep yet
    EXPECT_EQ(own.AppendXData(3, 70), 1);
    EXPECT_EQ(own.AppendXData(2.5, 40), 1);
    EXPECT_EQ(own.AppendXData(CString(L"t"), 300), 1);
    EXPECT_EQ(own.AppendXData(70000, 90), 1);
    EXPECT_EQ(own.Modify(), 1);
    EXPECT_EQ(own.AppendXData(4, 70), 1);  // in place, after writing as well
    EXPECT_EQ(own.Modify(), 1);
  }
  const auto file = folder.path() / "record.dxf";
  KvIoReport report;
  for (const KvIoForm form : {KvIoForm::Text, KvIoForm::Binary}) {
    KvIoSaveOptions options;
    options.form = form;
    ASSERT_EQ(kvdbSaveDrawing(drawing(), file, report, options), Kvad::eOk);
    KvDbDatabase copy(false);
    ASSERT_EQ(kvdbReadDrawing(copy, file, report), Kvad::eOk);
    ImXRecord own(L"korvane\\settings", 0, &copy);
    ImXDataItemPtrArray items;
    ASSERT_EQ(own.ReadXData(items, 0, 2), 1);
    ASSERT_EQ(items.GetSize(), 2);
    EXPECT_EQ(items[0]->getFirstString(), L"t");
    EXPECT_EQ(items[1]->getFirstLong(), 70000);
    ASSERT_EQ(own.ReadXData(items, 1, 0), 1);
    ASSERT_EQ(items.GetSize(), 2);
    EXPECT_EQ(items[0]->getFirstInt(), 4);
    EXPECT_EQ(items[0]->getSecondDouble(), 2.5);
    EXPECT_EQ(own.ReadXData(items, 0, 4), 0);
  }
}

TEST_F(DictionaryTest, RecordsThatAreNotThere) {
  ImXDataItemPtrArray items;
  for (const wchar_t* path : {L"", L"NO", L"NO\\RECORD"}) {
    ImXRecord none(path, 0, nullptr);
    EXPECT_EQ(none.AppendXData(1, 70), 0);
    EXPECT_EQ(none.ReadXData(items, 0, 0), 0);
    EXPECT_EQ(none.Modify(), 0);
    EXPECT_EQ(none.Delete(), 0);
  }
  ImXRecord own(L"A\\R", 1, nullptr);
  EXPECT_EQ(own.AppendXData(1, 70), 1);
  EXPECT_EQ(own.Modify(), 1);
  EXPECT_EQ(own.Delete(), 1);
  EXPECT_EQ(own.Delete(), 0);
  EXPECT_EQ(find(L"A\\R", false, true), 0);
  ImXRecord again(L"A\\R", 1, nullptr);
  EXPECT_EQ(again.ReadXData(items, 0, 0), 0);
}

TEST_F(DictionaryTest, CollectedInTheOrderOfHandles) {
  ImXRecord(L"D\\Z", 1, nullptr);
  ImXRecord(L"D\\A", 1, nullptr);
  ImXRecord(L"D\\M", 1, nullptr);
  ASSERT_EQ(find(L"D", false, false), 1);
  auto* dictionary = open<KvDbDictionary>(idOf(entry));
  const auto all = dictionary->newIterator();
  dictionary->close();
  KvArray<KvDbObjectId> ids;
  ids.append(line);
  EXPECT_EQ(IM_DictIteratorCollected(all.get(), ids), 1);
  ASSERT_EQ(ids.length(), 3);
  for (int i = 1; i < 3; ++i) EXPECT_LT(ids[i - 1].handle(), ids[i].handle());
  EXPECT_EQ(IM_DictIteratorCollected(nullptr, ids), 0);
  EXPECT_TRUE(ids.isEmpty());
}

TEST_F(DictionaryTest, ReactorsOfAnObject) {
  ASSERT_EQ(find(L"A\\R", true, true), 1);
  KvArray<KvDbObjectId> ids;
  auto* record = open<KvDbObject>(idOf(entry));
  IM_GetPersistentReactors(record, ids);
  record->close();
  ASSERT_EQ(ids.length(), 1);  // its dictionary
  EXPECT_EQ(ids[0], idOf(owner));
  IM_GetPersistentReactors(nullptr, ids);
  EXPECT_TRUE(ids.isEmpty());
}

}  // namespace
