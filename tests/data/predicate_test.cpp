// Random conditions on random tables: columns, tree and XPath engine must agree.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "module/data/internal/table_store.h"
#include "tests/data/table_files.h"

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  std::size_t below(std::size_t n) { return engine_() % n; }
  template <std::size_t N>
  std::string pick(const char* const (&list)[N]) {
    return list[below(N)];
  }

 private:
  std::mt19937 engine_;
};

constexpr const char* kNames[] = {"a", "b", "d-1", "and", "or", "e.2", "missing"};
constexpr const char* kValues[] = {"1",   "2", "10",  "1.0",  "-1",       "x",         "y",
                                   " 1 ", "",  "1e1", "8.25", "abcdefgh", "abcdefghi", "中文"};
constexpr const char* kNumbers[] = {"1", "2", "10", "1.0", "-1", ".5", "8.25", "0", "- 1"};
constexpr const char* kTexts[] = {"'1'",        "\"x\"",       "''",     "'1.0'",
                                  "'abcdefgh'", "'abcdefghi'", "'中文'", "' 1 '"};
constexpr const char* kOperators[] = {"=", "!=", "<", ">", "<=", ">="};
/// Cells that make a row irregular, for the tree.
constexpr const char* kOddCells[] = {"<a>1</a><a>2</a>", "<b>1<i>0</i></b>", "<b><!--2-->1</b>",
                                     "<a><![CDATA[x]]></a>", "t"};

std::string randomTable(Random& random, bool irregular, std::size_t rows) {
  std::string out = "<dataroot>";
  for (std::size_t i = 0; i < rows; ++i) {
    out += "<T><id>" + std::to_string(i) + "</id>";
    for (const char* name : kNames)
      if (std::string(name) != "missing" && random.below(4) > 0)
        out += std::string("<") + name + ">" + random.pick(kValues) + "</" + name + ">";
    if (irregular && random.below(5) == 0) out += random.pick(kOddCells);
    out += "</T>";
  }
  return out + "</dataroot>";
}

std::string randomOperand(Random& random) {
  const std::size_t kind = random.below(6);
  const std::string operand = kind < 3   ? random.pick(kNames)
                              : kind < 5 ? random.pick(kNumbers)
                                         : random.pick(kTexts);
  return random.below(12) == 0 ? "(" + operand + ")" : operand;
}

std::string randomCondition(Random& random, int depth) {
  if (depth == 0 || random.below(3) == 0)
    return randomOperand(random) + " " + random.pick(kOperators) + " " + randomOperand(random);
  const std::string left = randomCondition(random, depth - 1), right = randomCondition(random, depth - 1);
  const std::string joined = left + (random.below(2) ? " and " : " or ") + right;
  return random.below(2) ? "(" + joined + ")" : joined;
}

std::string ids(mek::TableStore& store, const mek::RowFilter& filter) {
  mek::RowSet* rows = store.rows("T");
  const mek::RowSet::FieldReader id(*rows, _bstr_t(L"id"), store.base());
  std::string out;
  for (std::uint32_t row : rows->select(&*filter.predicate, store.base()))
    out += platform::utf8From(id.value(row).text()) + " ";
  return out;
}

TEST(Predicate, AgreesWithTheXPathEngine) {
  Random random(20260101);
  int nonEmpty = 0;
  for (int table = 0; table < 60; ++table) {
    const bool irregular = table % 2 == 1;
    const std::string text = randomTable(random, irregular, 1 + random.below(irregular ? 40 : 2500));
    const auto plain = mek::TableStore::parse(text), tree = mek::TableStore::parse(text, nullptr, true);
    ASSERT_TRUE(plain && tree);
    EXPECT_TRUE(irregular || plain->isReadFromText());
    for (int i = 0; i < 40; ++i) {
      const std::string condition = randomCondition(random, 3);
      const auto filter = mek::RowFilter::parse("T[" + condition + "]");
      ASSERT_TRUE(filter) << condition;
      const auto nodes =
          tree->document()->selectNodes(platform::wideFromUtf8("dataroot/T[" + condition + "]"));
      ASSERT_TRUE(nodes) << condition;
      std::string wanted;
      for (int n = 0; n < nodes.length(); ++n)
        wanted += platform::utf8From(nodes.item(n).selectSingleNode(L"id").text()) + " ";
      EXPECT_EQ(ids(*plain, *filter), wanted) << condition << "\n" << (text.size() < 4000 ? text : "");
      EXPECT_EQ(ids(*tree, *filter), wanted) << condition << " (tree)";
      nonEmpty += !wanted.empty();
    }
  }
  EXPECT_GT(nonEmpty, 800) << "most conditions should select something";
}

TEST(Predicate, NumbersAreXPaths) {
  struct Case {
    const char* text;
    double value;
  };
  const double nan = std::nan("");
  const Case cases[] = {
      {"8", 8},
      {" 8\t\r\n", 8},
      {"-8", -8},
      {"- 8", nan},
      {"+8", nan},
      {"8.", 8},
      {".5", 0.5},
      {".", nan},
      {"-", nan},
      {"", nan},
      {" ", nan},
      {"1e3", nan},
      {"0x10", nan},
      {"1 2", nan},
      {"1.2.3", nan},
      {"--1", nan},
      {"\xC2\xA0"
       "1",
       nan},
      {"0.1", 0.1},
      {"123456789012345", 123456789012345.0},
      {"1234567890123456789", 1234567890123456789.0},
      {"0.30000000000000004", 0.30000000000000004},
      {"000000000000000000008.5", 8.5},
      {"9007199254740993", 9007199254740992.0},
      {"0.000000000000000000000000000001", 1e-30},
      {"179769313486231570000", 179769313486231570000.0},
  };
  for (const Case& item : cases) {
    const double value = mek::xpathNumber(item.text);
    EXPECT_TRUE(value == item.value || (std::isnan(value) && std::isnan(item.value)))
        << item.text << " gives " << value;
  }
  EXPECT_EQ(mek::xpathNumber(std::string(400, '9')), std::numeric_limits<double>::infinity());
  EXPECT_EQ(mek::xpathNumber("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_TRUE(std::signbit(mek::xpathNumber("-0")));
}

TEST(Predicate, NestsAsDeepAsItSays) {
  const auto nested = [](int depth) {
    return mek::Predicate::parse(std::string(static_cast<std::size_t>(depth), '(') + "a=1" +
                                 std::string(static_cast<std::size_t>(depth), ')'));
  };
  EXPECT_TRUE(nested(mek::Predicate::kMaximumDepth));
  EXPECT_FALSE(nested(mek::Predicate::kMaximumDepth + 1));
  EXPECT_FALSE(nested(1000000));
}

TEST(Store, ManyNamesStayBounded) {
  // A thousand rows with names of their own: columns would hold a million empty cells each.
  std::string text = "<dataroot>";
  for (int i = 0; i < 3000; ++i)
    text += "<T><f" + std::to_string(i) + ">" + std::to_string(i) + "</f" + std::to_string(i) + "></T>";
  const auto store = mek::TableStore::parse(text + "</dataroot>");
  ASSERT_TRUE(store);
  mek::RowSet* rows = store->rows("T");
  EXPECT_TRUE(rows->sparse);
  const auto filter = mek::RowFilter::parse("T[f2999>2998 or f0=0]");
  EXPECT_EQ(rows->select(&*filter->predicate, store->base()), (std::vector<std::uint32_t>{0, 2999}));
  EXPECT_EQ(mek::RowSet::FieldReader(*rows, L"F2999", store->base()).value(2999).text(), CString(L"2999"));
  EXPECT_EQ(mek::RowSet::FieldReader(*rows, L"F2999", store->base()).value(0).text(), CString());
}

}  // namespace
