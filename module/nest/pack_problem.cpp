#include "module/nest/pack_problem.h"

#include <charconv>

#include "module/nest/pack_boxes.h"

namespace mek {
namespace {

/// Whole numbers one after the other, with the line each stands on.
class NumberReader {
 public:
  explicit NumberReader(std::string_view text) : text_(text) {}

  bool next(int& value, const std::string& expected, std::string& error) {
    skipBlank();
    std::size_t end = at_;
    while (end < text_.size() && !isBlank(text_[end])) ++end;
    const std::string_view word = text_.substr(at_, end - at_);
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (!word.empty() && result.ec == std::errc() && result.ptr == word.data() + word.size()) {
      at_ = end;
      return true;
    }
    error = "line " + std::to_string(line_) + ": expected " + expected + ", found ";
    error += word.empty() ? "the end of the file" : "\"" + std::string(word.substr(0, kShown)) + "\"";
    return false;
  }

  int line() const { return line_; }

 private:
  static constexpr std::size_t kShown = 40;
  static bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
  void skipBlank() {
    for (; at_ < text_.size() && isBlank(text_[at_]); ++at_)
      if (text_[at_] == '\n') ++line_;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
};

}  // namespace

PackResult solvePackInstance(const PackInstance& instance, const PackLimits& limits, int packingType) {
  PackResult result;
  if (instance.n() <= kPackMaxBoxes)
    for (auto* values : {&result.x, &result.y, &result.z, &result.bno}) values->assign(instance.w.size(), 0);
  PackBoxes3D(instance.n(), instance.W, instance.H, instance.D, instance.w.data(), instance.h.data(),
              instance.d.data(), result.x.data(), result.y.data(), result.z.data(), result.bno.data(),
              &result.lb, &result.ub, limits.nodes, limits.iterations, limits.seconds, &result.nodes,
              &result.iterations, &result.milliseconds, packingType);
  return result;
}

bool readPackProblem(std::string_view text, PackInstance& instance, std::string& error) {
  NumberReader reader(text);
  PackInstance read;
  int n = 0;
  if (!reader.next(n, "the number of boxes", error)) return false;
  if (n < 0 || n > kPackMaxBoxes) {
    error = "line " + std::to_string(reader.line()) + ": too big instance: expected 0 to " +
            std::to_string(kPackMaxBoxes) + " boxes, found " + std::to_string(n);
    return false;
  }
  if (!reader.next(read.W, "the width of the bin", error) ||
      !reader.next(read.H, "the height of the bin", error) ||
      !reader.next(read.D, "the depth of the bin", error))
    return false;
  struct Side {
    const char* name;
    std::vector<int>* values;
  };
  const Side sides[] = {{"width", &read.w}, {"height", &read.h}, {"depth", &read.d}};
  for (int i = 1; i <= n; ++i) {
    for (const auto& [name, values] : sides) {
      int value = 0;
      if (!reader.next(value, std::string("the ") + name + " of box " + std::to_string(i), error))
        return false;
      values->push_back(value);
    }
  }
  instance = std::move(read);
  return true;
}

}  // namespace mek
