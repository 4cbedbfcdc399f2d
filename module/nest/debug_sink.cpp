#include "module/nest/debug_sink.h"

#include <utility>

namespace mek {
namespace {

// Part of the solver's process-wide state.
const DebugSink* currentSink = nullptr;

}  // namespace

ScopedDebugSink::ScopedDebugSink(DebugSink sink) : sink_(std::move(sink)), previous_(currentSink) {
  currentSink = &sink_;
}

ScopedDebugSink::~ScopedDebugSink() {
  currentSink = previous_;
}

bool hasDebugSink() {
  return currentSink && *currentSink;
}

void writeDebug(std::string_view text) {
  if (hasDebugSink()) (*currentSink)(text);
}

}  // namespace mek
