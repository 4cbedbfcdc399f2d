// Conditions over columns: block by block, one byte of truth for each row, so that a block's columns stay in
// the cache.
#include <algorithm>
#include <array>

#include "module/data/internal/row_set.h"

namespace mek {
namespace {

constexpr std::size_t kBlock = 1024;
using Truths = std::array<std::uint8_t, kBlock>;

/// One comparison, made ready for the rows of one set.
struct Test {
  enum class Kind { Constant, Number, Numbers, Text, Texts };
  Kind kind = Kind::Constant;
  Comparison comparison = Comparison::Equal;
  bool constant = false;
  const Column* left = nullptr;
  const Column* right = nullptr;
  const double* leftNumbers = nullptr;
  const double* rightNumbers = nullptr;
  const std::uint64_t* leftKeys = nullptr;
  double number = 0;
  std::string_view text;
  std::uint64_t key = 0;
};

double literalNumber(const Operand& operand) {
  return operand.kind == Operand::Kind::Number ? operand.number : xpathNumber(operand.text);
}

Test constantTest(const PredicateStep& step, bool numeric) {
  Test test;
  test.constant = numeric
                      ? compareNumbers(step.comparison, literalNumber(step.left), literalNumber(step.right))
                      : compareTexts(step.comparison, step.left.text, step.right.text, false);
  return test;
}

/// A comparison whose left side is a column.
Test columnTest(RowSet& rows, Column& column, const PredicateStep& step, const Operand& other,
                Comparison comparison, bool numeric, const char* base) {
  Test test;
  test.comparison = comparison;
  test.left = &column;
  if (numeric) test.leftNumbers = column.numbers(base).data();
  if (other.kind != Operand::Kind::Child) {
    test.kind = numeric ? Test::Kind::Number : Test::Kind::Text;
    test.number = literalNumber(other);
    test.text = other.text;
    test.key = keyOf(other.text);
    if (!numeric) test.leftKeys = column.keys(base).data();
    return test;
  }
  Column* right = rows.find(step.right.text);
  if (!right) return {};
  test.kind = numeric ? Test::Kind::Numbers : Test::Kind::Texts;
  test.right = right;
  if (numeric) test.rightNumbers = right->numbers(base).data();
  return test;
}

Test prepare(RowSet& rows, const PredicateStep& step, const char* base) {
  const bool numeric = isOrdering(step.comparison) || step.left.kind == Operand::Kind::Number ||
                       step.right.kind == Operand::Kind::Number;
  const bool leftIsChild = step.left.kind == Operand::Kind::Child;
  if (!leftIsChild && step.right.kind != Operand::Kind::Child) return constantTest(step, numeric);
  Column* column = rows.find(leftIsChild ? step.left.text : step.right.text);
  if (!column) return {};
  if (leftIsChild) return columnTest(rows, *column, step, step.right, step.comparison, numeric, base);
  return columnTest(rows, *column, step, step.left, mirrored(step.comparison), numeric, base);
}

template <class Compare>
void fillNumber(const double* numbers, double number, std::size_t count, std::uint8_t* out, Compare compare) {
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<std::uint8_t>(compare(numbers[i], number));
}

void runNumber(const Test& test, std::size_t first, std::size_t count, std::uint8_t* out) {
  const double* numbers = test.leftNumbers + first;
  const double k = test.number;
  switch (test.comparison) {
    case Comparison::Equal:
      return fillNumber(numbers, k, count, out, [](double a, double b) { return a == b; });
    case Comparison::Less:
      return fillNumber(numbers, k, count, out, [](double a, double b) { return a < b; });
    case Comparison::Greater:
      return fillNumber(numbers, k, count, out, [](double a, double b) { return a > b; });
    case Comparison::LessEqual:
      return fillNumber(numbers, k, count, out, [](double a, double b) { return a <= b; });
    case Comparison::GreaterEqual:
      return fillNumber(numbers, k, count, out, [](double a, double b) { return a >= b; });
    case Comparison::Unequal:
      break;
  }
  // A text that is no number differs from every number, a missing child does not.
  const Cell* cells = test.left->cells.data() + first;
  for (std::size_t i = 0; i < count; ++i)
    out[i] = static_cast<std::uint8_t>((numbers[i] != k) & !cells[i].isMissing());
}

void runNumbers(const Test& test, std::size_t first, std::size_t count, std::uint8_t* out) {
  // Orderings only, so a missing child, which is not a number, makes them false.
  for (std::size_t i = 0; i < count; ++i)
    out[i] = compareNumbers(test.comparison, test.leftNumbers[first + i], test.rightNumbers[first + i]);
}

void runText(const Test& test, std::size_t first, std::size_t count, std::uint8_t* out, const char* base) {
  const Cell* cells = test.left->cells.data() + first;
  const std::uint64_t* keys = test.leftKeys + first;
  for (std::size_t i = 0; i < count; ++i) out[i] = keys[i] == test.key;
  const bool wanted = test.comparison == Comparison::Equal;
  for (std::size_t i = 0; i < count; ++i) {
    if (out[i]) out[i] = !cells[i].isMissing() && Column::text(cells[i], base) == test.text;
    if (!wanted) out[i] = !cells[i].isMissing() && !out[i];
  }
}

void runTexts(const Test& test, std::size_t first, std::size_t count, std::uint8_t* out, const char* base) {
  const Cell* left = test.left->cells.data() + first;
  const Cell* right = test.right->cells.data() + first;
  const bool wanted = test.comparison == Comparison::Equal;
  for (std::size_t i = 0; i < count; ++i)
    out[i] = !left[i].isMissing() && !right[i].isMissing() &&
             (Column::text(left[i], base) == Column::text(right[i], base)) == wanted;
}

void run(const Test& test, std::size_t first, std::size_t count, std::uint8_t* out, const char* base) {
  switch (test.kind) {
    case Test::Kind::Constant:
      std::fill_n(out, count, static_cast<std::uint8_t>(test.constant));
      break;
    case Test::Kind::Number:
      runNumber(test, first, count, out);
      break;
    case Test::Kind::Numbers:
      runNumbers(test, first, count, out);
      break;
    case Test::Kind::Text:
      runText(test, first, count, out, base);
      break;
    case Test::Kind::Texts:
      runTexts(test, first, count, out, base);
      break;
  }
}

void combine(PredicateStep::Kind kind, const Truths& from, Truths& into) {
  if (kind == PredicateStep::Kind::And)
    for (std::size_t i = 0; i < kBlock; ++i) into[i] = into[i] & from[i];
  else
    for (std::size_t i = 0; i < kBlock; ++i) into[i] = into[i] | from[i];
}

/// Writes every index and steps over the ones that hold: no branch to mispredict.
std::size_t gather(const Truths& truths, std::size_t first, std::size_t count, std::uint32_t* out) {
  std::size_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    out[found] = static_cast<std::uint32_t>(first + i);
    found += truths[i];
  }
  return found;
}

}  // namespace

std::vector<std::uint32_t> scanColumns(RowSet& rows, const Predicate& predicate, const char* base) {
  std::vector<Test> tests;
  for (const PredicateStep& step : predicate.steps())
    if (step.kind == PredicateStep::Kind::Compare) tests.push_back(prepare(rows, step, base));

  std::vector<Truths> stack(predicate.stackSize());
  std::array<std::uint32_t, kBlock> found;
  std::vector<std::uint32_t> selected;
  for (std::size_t first = 0; first < rows.rowCount; first += kBlock) {
    const std::size_t count = std::min<std::size_t>(kBlock, rows.rowCount - first);
    std::size_t top = 0, test = 0;
    for (const PredicateStep& step : predicate.steps()) {
      if (step.kind == PredicateStep::Kind::Compare) {
        run(tests[test++], first, count, stack[top++].data(), base);
        continue;
      }
      --top;
      combine(step.kind, stack[top], stack[top - 1]);
    }
    const std::size_t hits = gather(stack[0], first, count, found.data());
    selected.insert(selected.end(), found.data(), found.data() + hits);
  }
  return selected;
}

}  // namespace mek
