#pragma once
// The surroundings in which the platform works: folders, drives, the 8-bit code page, the user interface.
//
// One environment is current at a time. A process starts with one that is built from the user's own
// variables; an embedding host installs its own with ScopedEnvironment, so tests can make as many as they
// like, one after the other. Main thread only, like everything that changes it.
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace platform {

class UserInterface;
class TimerQueue;

/// Places and choices of one running product. Plain data; paths are native.
struct Environment {
  std::filesystem::path settingsRoot;  ///< user's settings: $XDG_CONFIG_HOME/korvane
  std::filesystem::path dataRoot;      ///< user's data: $XDG_DATA_HOME/korvane
  std::filesystem::path
      drivesRoot;  ///< `X:\...` lies under drivesRoot/X; $KORVANE_DRIVES, else dataRoot/drives
  std::filesystem::path sharedDocuments;  ///< documents of all users; empty means the user's data folder
  std::filesystem::path temporaryFolder;  ///< $TMPDIR, else /tmp
  std::vector<std::filesystem::path> modulePath;  ///< folders searched for bare `.kvx` names
  std::map<std::wstring, std::filesystem::path>
      libraryAliases;                      ///< lower-case library names that stand for a file
  std::uint32_t systemCodePage = 936;      ///< what code page 0 stands for
  UserInterface* userInterface = nullptr;  ///< not owned; null: nobody answers, defaults are taken
  TimerQueue* timers = nullptr;            ///< not owned; null: no main-thread timers

  /// Built from $XDG_CONFIG_HOME, $XDG_DATA_HOME, $HOME, $KORVANE_DRIVES, $KORVANE_MODULE_PATH, $TMPDIR,
  /// and $KORVANE_CODEPAGE.
  static Environment fromProcess();

  /// The environment in force. Never fails.
  static Environment& current();
};

/// Makes an environment the current one for its own lifetime; the caller keeps ownership.
class ScopedEnvironment {
 public:
  explicit ScopedEnvironment(Environment& environment);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  Environment* previous_;
};

}  // namespace platform
