#pragma once
// A folder of its own for each test, with an environment whose places all lie in it.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/env/environment.h"

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "korvane-test-XXXXXX").string();
    root_ = ::mkdtemp(name.data());
    environment_.settingsRoot = root_ / "settings";
    environment_.dataRoot = root_ / "data";
    environment_.drivesRoot = root_ / "drives";
    environment_.temporaryFolder = root_ / "tmp";
    for (const auto& folder : {environment_.settingsRoot, environment_.dataRoot, environment_.drivesRoot,
                               environment_.temporaryFolder})
      std::filesystem::create_directories(folder);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path operator/(const char* name) const { return root_ / name; }
  platform::Environment& environment() { return environment_; }

 private:
  std::filesystem::path root_;
  platform::Environment environment_;
  platform::ScopedEnvironment scope_{environment_};
};
