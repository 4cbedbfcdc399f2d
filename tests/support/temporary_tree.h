#pragma once
// A folder for one test, removed at its end, and an environment that lies in it.
#include <filesystem>
#include <memory>
#include <string>

#include "platform/env/environment.h"

namespace test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "korvane-test-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// Settings, data, drives and temporary files below one folder.
inline std::unique_ptr<platform::Environment> environmentIn(const std::filesystem::path& folder) {
  auto environment = std::make_unique<platform::Environment>();
  environment->settingsRoot = folder / "settings";
  environment->dataRoot = folder / "data";
  environment->drivesRoot = folder / "drives";
  environment->sharedDocuments = folder / "shared";
  environment->temporaryFolder = folder / "tmp";
  for (const auto& one : {environment->settingsRoot, environment->dataRoot, environment->drivesRoot,
                          environment->sharedDocuments, environment->temporaryFolder})
    std::filesystem::create_directories(one);
  return environment;
}

}  // namespace test
