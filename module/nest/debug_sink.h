#pragma once
// Where the nester and the packing solver send their diagnostics. Nothing is installed at first: the texts
// are dropped, and those that cost time to write aren't even formatted.
#include <functional>
#include <string_view>

#include "module/core/export.h"

namespace mek {

/// Takes one piece of text, UTF-8, with its own line ends.
using DebugSink = std::function<void(std::string_view)>;

/// Installs a sink for its own lifetime and puts the previous one back. Main thread only, like the solver.
class MEK_API ScopedDebugSink {
 public:
  explicit ScopedDebugSink(DebugSink sink);
  ~ScopedDebugSink();
  ScopedDebugSink(const ScopedDebugSink&) = delete;
  ScopedDebugSink& operator=(const ScopedDebugSink&) = delete;

 private:
  DebugSink sink_;
  const DebugSink* previous_;
};

/// True when somebody listens.
MEK_API bool hasDebugSink();
/// Hands `text` to the sink in force, if there is one.
MEK_API void writeDebug(std::string_view text);

}  // namespace mek
