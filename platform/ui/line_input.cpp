#include "platform/ui/line_input.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace platform {
namespace {

void trimEnd(std::string& line) {
  if (line.size() > kLongestLine) line.resize(kLongestLine);
  if (line.ends_with('\r')) line.pop_back();
}

}  // namespace

LineInput::Result StreamInput::next(std::string& line, std::optional<std::chrono::milliseconds>) {
  line.clear();
  for (int c = stream_.get(); c != '\n'; c = stream_.get()) {
    if (c == std::istream::traits_type::eof()) {
      trimEnd(line);
      return line.empty() ? Result::End : Result::Line;
    }
    if (line.size() < kLongestLine) line.push_back(static_cast<char>(c));
  }
  trimEnd(line);
  return Result::Line;
}

LineInput::Result DescriptorInput::next(std::string& line, std::optional<std::chrono::milliseconds> wait) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + wait.value_or(std::chrono::milliseconds(0));
  while (true) {
    if (const std::size_t found = buffer_.find('\n'); found != std::string::npos) {
      line = buffer_.substr(0, found);
      buffer_.erase(0, found + 1);
      trimEnd(line);
      return Result::Line;
    }
    if (ended_) {
      line = std::exchange(buffer_, {});
      trimEnd(line);
      return line.empty() ? Result::End : Result::Line;
    }
    int timeout = -1;
    if (wait) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
      timeout = static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1000 * 1000));
    }
    pollfd waiting{descriptor_, POLLIN, 0};
    const int ready = ::poll(&waiting, 1, timeout);
    if (ready < 0 && errno == EINTR) continue;
    if (ready == 0) return Result::TimedOut;
    std::array<char, 4096> block;
    const ssize_t count = ready < 0 ? -1 : ::read(descriptor_, block.data(), block.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0)
      ended_ = true;
    else if (buffer_.size() < kLongestLine ||
             std::find(block.begin(), block.begin() + count, '\n') != block.begin() + count)
      buffer_.append(block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace platform
