#include "platform/env/environment.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace platform {
namespace {

Environment*& installed() {
  static Environment* pointer = nullptr;
  return pointer;
}

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string_view(value) : std::string_view();
}

std::filesystem::path folderFrom(const char* xdgName, const char* belowHome) {
  if (auto value = variable(xdgName); !value.empty() && value.front() == '/')
    return std::filesystem::path(value);
  auto home = variable("HOME");
  return std::filesystem::path(home.empty() ? std::string_view("/") : home) / belowHome;
}

}  // namespace

Environment Environment::fromProcess() {
  Environment result;
  result.settingsRoot = folderFrom("XDG_CONFIG_HOME", ".config") / "korvane";
  result.dataRoot = folderFrom("XDG_DATA_HOME", ".local/share") / "korvane";
  auto drives = variable("KORVANE_DRIVES");
  result.drivesRoot = drives.empty() ? result.dataRoot / "drives" : std::filesystem::path(drives);
  auto temporary = variable("TMPDIR");
  result.temporaryFolder = temporary.empty() ? "/tmp" : std::filesystem::path(temporary);

  auto modules = variable("KORVANE_MODULE_PATH");
  while (!modules.empty()) {
    auto colon = modules.find(':');
    auto part = modules.substr(0, colon);
    // A relative entry would let the current folder decide what is loaded.
    if (!part.empty() && part.front() == '/') result.modulePath.emplace_back(part);
    modules = colon == std::string_view::npos ? std::string_view() : modules.substr(colon + 1);
  }

  auto codePage = variable("KORVANE_CODEPAGE");
  std::uint32_t number = 0;
  auto [end, error] = std::from_chars(codePage.data(), codePage.data() + codePage.size(), number);
  if (error == std::errc() && end == codePage.data() + codePage.size() && number != 0)
    result.systemCodePage = number;
  return result;
}

Environment& Environment::current() {
  if (Environment* environment = installed()) return *environment;
  static Environment ownProcess = fromProcess();
  return ownProcess;
}

ScopedEnvironment::ScopedEnvironment(Environment& environment) : previous_(installed()) {
  installed() = &environment;
}

ScopedEnvironment::~ScopedEnvironment() {
  installed() = previous_;
}

}  // namespace platform
