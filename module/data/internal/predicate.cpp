#include "module/data/internal/predicate.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "module/data/internal/decimal.h"
#include "platform/xml/source.h"

namespace mek {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool isNameStart(char c) {
  return c != ':' && platform::isXmlNameByte(c, true);
}
bool isNamePart(char c) {
  return c != ':' && platform::isXmlNameByte(c, false);
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

struct ComparisonWord {
  std::string_view text;
  Comparison comparison;
};
/// The longer ones first.
constexpr ComparisonWord kComparisons[] = {
    {"<=", Comparison::LessEqual}, {">=", Comparison::GreaterEqual}, {"!=", Comparison::Unequal},
    {"=", Comparison::Equal},      {"<", Comparison::Less},          {">", Comparison::Greater},
};

/// The value of digits with at most one point; not a number when anything else stands there or no digit does.
double unsignedNumber(std::string_view text) {
  double value = 0;
  if (exactDecimal(text, value)) return value;
  const bool isNumber = text.find_first_not_of("0123456789.") == std::string_view::npos &&
                        std::count(text.begin(), text.end(), '.') < 2 &&
                        text.find_first_not_of('.') != std::string_view::npos;
  if (!isNumber) return std::numeric_limits<double>::quiet_NaN();
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error != std::errc::result_out_of_range) return value;
  return text[text.find_first_not_of('0')] == '.' ? 0.0 : std::numeric_limits<double>::infinity();
}

}  // namespace

double xpathNumber(std::string_view text) {
  while (!text.empty() && kBlanks.find(text.front()) != std::string_view::npos) text.remove_prefix(1);
  while (!text.empty() && kBlanks.find(text.back()) != std::string_view::npos) text.remove_suffix(1);
  if (!text.empty() && text.front() == '-') return -unsignedNumber(text.substr(1));
  return unsignedNumber(text);
}

bool compareNumbers(Comparison comparison, double a, double b) {
  switch (comparison) {
    case Comparison::Equal:
      return a == b;
    case Comparison::Unequal:
      return a != b;
    case Comparison::Less:
      return a < b;
    case Comparison::Greater:
      return a > b;
    case Comparison::LessEqual:
      return a <= b;
    case Comparison::GreaterEqual:
      return a >= b;
  }
  return false;
}

bool compareTexts(Comparison comparison, std::string_view a, std::string_view b, bool numeric) {
  if (numeric || isOrdering(comparison)) return compareNumbers(comparison, xpathNumber(a), xpathNumber(b));
  return (a == b) == (comparison == Comparison::Equal);
}

Comparison mirrored(Comparison comparison) {
  switch (comparison) {
    case Comparison::Less:
      return Comparison::Greater;
    case Comparison::Greater:
      return Comparison::Less;
    case Comparison::LessEqual:
      return Comparison::GreaterEqual;
    case Comparison::GreaterEqual:
      return Comparison::LessEqual;
    default:
      return comparison;
  }
}

/// Recursive descent over the text; steps come out in postfix order.
class PredicateParser {
 public:
  explicit PredicateParser(std::string_view text) : rest_(text) {}

  bool parse(std::vector<PredicateStep>& steps) {
    steps_ = &steps;
    const Found found = disjunction();
    skipBlanks();
    return found == Found::Truth && rest_.empty();
  }

 private:
  /// What a part of the text turned out to be. An operand is left in `operand_`.
  enum class Found { Nothing, Operand, Truth };

  void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size())); }

  bool takeSign(char sign) {
    skipBlanks();
    if (rest_.empty() || rest_.front() != sign) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view nextName() const {
    if (rest_.empty() || !isNameStart(rest_.front())) return {};
    std::size_t length = 1;
    while (length < rest_.size() && isNamePart(rest_[length])) ++length;
    return rest_.substr(0, length);
  }

  bool takeWord(std::string_view word) {
    skipBlanks();
    if (nextName() != word) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  /// Parts joined by `word`; each must be a truth when there are several.
  template <class Part>
  Found joined(std::string_view word, PredicateStep::Kind kind, Part part) {
    Found found = (this->*part)();
    while (found != Found::Nothing && takeWord(word)) {
      if (found != Found::Truth || (this->*part)() != Found::Truth) return Found::Nothing;
      steps_->emplace_back().kind = kind;
    }
    return found;
  }

  Found disjunction() { return joined("or", PredicateStep::Kind::Or, &PredicateParser::conjunction); }
  Found conjunction() { return joined("and", PredicateStep::Kind::And, &PredicateParser::comparison); }

  Found comparison() {
    const Found found = primary();
    if (found == Found::Nothing) return found;
    skipBlanks();
    for (const ComparisonWord& word : kComparisons) {
      if (!rest_.starts_with(word.text)) continue;
      rest_.remove_prefix(word.text.size());
      if (found != Found::Operand || steps_->size() > Predicate::kMaximumSteps) return Found::Nothing;
      PredicateStep step;
      step.comparison = word.comparison;
      step.left = std::move(operand_);
      if (primary() != Found::Operand) return Found::Nothing;
      step.right = std::move(operand_);
      steps_->push_back(std::move(step));
      return Found::Truth;
    }
    return found;
  }

  Found primary() {
    if (takeSign('(')) {
      if (++depth_ > Predicate::kMaximumDepth) return Found::Nothing;
      const Found found = disjunction();
      --depth_;
      return takeSign(')') ? found : Found::Nothing;
    }
    const bool negative = takeSign('-');
    skipBlanks();
    if (rest_.empty()) return Found::Nothing;
    const char first = rest_.front();
    if (isDigit(first) || first == '.') return number(negative);
    if (negative) return Found::Nothing;
    return first == '\'' || first == '"' ? literal(first) : child();
  }

  Found number(bool negative) {
    std::size_t length = 0;
    bool point = false;
    for (; length < rest_.size() && (isDigit(rest_[length]) || (rest_[length] == '.' && !point)); ++length)
      point = point || rest_[length] == '.';
    const double value = unsignedNumber(rest_.substr(0, length));
    if (value != value) return Found::Nothing;
    operand_ = {Operand::Kind::Number, {}, negative ? -value : value};
    rest_.remove_prefix(length);
    return Found::Operand;
  }

  Found literal(char quote) {
    const std::size_t end = rest_.find(quote, 1);
    if (end == std::string_view::npos) return Found::Nothing;
    operand_ = {Operand::Kind::Text, std::string(rest_.substr(1, end - 1)), 0};
    rest_.remove_prefix(end + 1);
    return Found::Operand;
  }

  Found child() {
    const std::string_view name = nextName();
    if (name.empty()) return Found::Nothing;
    operand_ = {Operand::Kind::Child, std::string(name), 0};
    rest_.remove_prefix(name.size());
    skipBlanks();
    // A function, an axis or a prefix.
    return rest_.starts_with('(') || rest_.starts_with(':') ? Found::Nothing : Found::Operand;
  }

  std::string_view rest_;
  std::vector<PredicateStep>* steps_ = nullptr;
  Operand operand_;
  int depth_ = 0;
};

std::optional<Predicate> Predicate::parse(std::string_view text) {
  Predicate predicate;
  if (!PredicateParser(text).parse(predicate.steps_)) return std::nullopt;
  return predicate;
}

std::size_t Predicate::stackSize() const {
  std::size_t now = 0, most = 0;
  for (const PredicateStep& step : steps_) {
    if (step.kind == PredicateStep::Kind::Compare)
      most = std::max(most, ++now);
    else
      --now;
  }
  return most;
}

std::optional<RowFilter> RowFilter::parse(std::string_view text) {
  RowFilter filter;
  const std::size_t bracket = text.find('[');
  filter.name = text.substr(0, bracket);
  if (filter.name.empty() || !isNameStart(filter.name.front()) ||
      !std::all_of(filter.name.begin(), filter.name.end(), isNamePart))
    return std::nullopt;
  if (bracket == std::string_view::npos) return filter;
  if (text.back() != ']') return std::nullopt;
  filter.predicate = Predicate::parse(text.substr(bracket + 1, text.size() - bracket - 2));
  if (!filter.predicate) return std::nullopt;
  return filter;
}

}  // namespace mek
