#include "platform/system/services.h"

#include <cstdio>
#include <cstdlib>

#include "platform/system/debug_output.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

const SystemServices*& installed() {
  static const SystemServices* pointer = nullptr;
  return pointer;
}

}  // namespace

const SystemServices& systemServices() {
  static const SystemServices own;
  return installed() ? *installed() : own;
}

ScopedSystemServices::ScopedSystemServices(const SystemServices& services) : previous_(installed()) {
  installed() = &services;
}

ScopedSystemServices::~ScopedSystemServices() {
  installed() = previous_;
}

void debugOutput(std::wstring_view text) {
  if (const auto& sink = systemServices().debugOutput) return sink(text);
  static const bool wanted = std::getenv("KORVANE_DEBUG") != nullptr;
  if (!wanted) return;
  const std::string line = toUtf8(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace platform
