#pragma once
// Where a front end's answers come from, line by line.
#include <chrono>
#include <istream>
#include <optional>
#include <string>

namespace platform {

class LineInput {
 public:
  enum class Result { Line, TimedOut, End };
  virtual ~LineInput() = default;
  /// The next line without its end, UTF-8. `wait` empty: waits as long as it takes.
  virtual Result next(std::string& line, std::optional<std::chrono::milliseconds> wait) = 0;
  /// True when a person sits at the other end, so that waiting for a line may time out.
  virtual bool isLive() const { return false; }
};

/// Lines of a stream, which are there at once or never.
class StreamInput : public LineInput {
 public:
  explicit StreamInput(std::istream& stream) : stream_(stream) {}
  Result next(std::string& line, std::optional<std::chrono::milliseconds> wait) override;

 private:
  std::istream& stream_;
};

/// Lines of an open file descriptor, which stays open; nobody else should read from it meanwhile.
class DescriptorInput : public LineInput {
 public:
  explicit DescriptorInput(int descriptor) : descriptor_(descriptor) {}
  Result next(std::string& line, std::optional<std::chrono::milliseconds> wait) override;
  bool isLive() const override { return true; }

 private:
  int descriptor_;
  std::string buffer_;
  bool ended_ = false;
};

inline constexpr std::size_t kLongestLine = 1 << 20;  ///< bytes; the rest of a longer line is dropped

}  // namespace platform
