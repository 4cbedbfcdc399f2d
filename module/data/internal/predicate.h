#pragma once
// The condition between the brackets of a row filter: parsed once, then run by whoever holds the rows.
//
//   condition = conjunction { "or" conjunction }
//   conjunction = term { "and" term }
//   term = "(" condition ")" | operand ( "=" | "!=" | "<" | ">" | "<=" | ">=" ) operand
//   operand = name of a child element | 'text' | "text" | [ "-" ] number | "(" operand ")"
//
// Words and names stand as XPath 1.0 has them: case counts, `and` and `or` are names where an operand is due,
// a name goes on as long as it can (so `d-1` is one name), numbers have digits and a point only. Everything
// else that XPath knows (functions, axes, positions, arithmetic, a bare name, chained comparisons) is
// refused.
//
// Meaning, XPath's own: a name stands for all children of that name, and a comparison holds when it holds for
// one of them, so a missing child makes every comparison false. `=` and `!=` compare as numbers when one side
// is a number literal, as text otherwise; the four orderings compare as numbers. Text that is no number
// equals no number.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mek {

enum class Comparison : std::uint8_t { Equal, Unequal, Less, Greater, LessEqual, GreaterEqual };

struct Operand {
  enum class Kind : std::uint8_t { Child, Text, Number };
  Kind kind = Kind::Text;
  std::string text;   ///< name of the child, or the literal; UTF-8
  double number = 0;  ///< value of a number literal
};

/// A condition in postfix order: each step takes its inputs from a stack of truths and puts one back.
struct PredicateStep {
  enum class Kind : std::uint8_t { Compare, And, Or };
  Kind kind = Kind::Compare;
  Comparison comparison = Comparison::Equal;
  Operand left, right;
};

class Predicate {
 public:
  /// Nothing when the text is no condition of the form above, nests deeper than kMaximumDepth or has more
  /// steps than kMaximumSteps.
  static std::optional<Predicate> parse(std::string_view text);
  const std::vector<PredicateStep>& steps() const { return steps_; }
  /// Truths that are on the stack at once, at most.
  std::size_t stackSize() const;

  static constexpr int kMaximumDepth = 256;
  static constexpr std::size_t kMaximumSteps = 1000;

 private:
  friend class PredicateParser;
  std::vector<PredicateStep> steps_;
};

/// A row filter: the name of the row elements, and a condition in brackets or none.
struct RowFilter {
  std::string name;
  std::optional<Predicate> predicate;
  /// Nothing when the name can't be an element's, or the brackets hold no condition.
  static std::optional<RowFilter> parse(std::string_view text);
};

/// A text as XPath's number(): white space around it, a minus, digits with a point. Anything else is not a
/// number.
double xpathNumber(std::string_view text);

bool compareNumbers(Comparison comparison, double a, double b);

/// The comparison of two texts, as numbers when `numeric` or when the comparison is an ordering.
bool compareTexts(Comparison comparison, std::string_view a, std::string_view b, bool numeric);

/// The comparison that holds when the sides are exchanged.
Comparison mirrored(Comparison comparison);

constexpr bool isOrdering(Comparison comparison) {
  return comparison > Comparison::Unequal;
}

}  // namespace mek
