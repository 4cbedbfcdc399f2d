#pragma once
// The embedding interface: one object is one running host. A program (a test, the command-line program, a
// window) makes it, opens drawings, loads modules, feeds input, reads what is printed, and lets timers fire.
// One at a time in a process, as many as wanted one after the other; main thread only.
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "host/app/document.h"
#include "host/editor/editor.h"
#include "host/io/drawing_file.h"
#include "platform/env/environment.h"

/// The version of this interface; modules are asked for theirs.
inline constexpr int kKvHostApiVersion = 1;

struct KvHostOptions {
  /// The installed tree: modules are searched in its Professional/KVX8x64. Empty: the tree in which this
  /// library lies.
  std::filesystem::path root;
  /// Gets everything that the command line shows.
  KvEdEditor::Output output;
  /// Places and user interface; the process's own when absent.
  std::unique_ptr<platform::Environment> environment;
};

class KvHostApp {
 public:
  explicit KvHostApp(KvHostOptions options);
  /// Unloads the modules (message 2), then closes the drawings.
  ~KvHostApp();
  KvHostApp(const KvHostApp&) = delete;
  KvHostApp& operator=(const KvHostApp&) = delete;

  platform::Environment& environment();
  KvEdEditor& editor();
  KvApDocManager& documents();
  /// The tree that modules come from.
  const std::filesystem::path& root() const;

  /// A new drawing, made the current and working one; the modules are told (message 3).
  KvApDocument* newDocument();

  /// Opens a drawing file and makes it the current one; the modules are told (message 3). Null on failure:
  /// the report says why.
  KvApDocument* openDocument(const std::filesystem::path& file, KvIoReport& report,
                             KvIoMode mode = KvIoMode::Strict);

  /// Loads a module by bare name or full path, tells it (message 1), then tells it of each open drawing
  /// (message 3). On failure false, and `error` says which file and why. A module that is loaded already is a
  /// success.
  bool loadModule(const CString& name, CString& error);
  /// Tells the module (message 2) and lets go of it. False when it isn't loaded.
  bool unloadModule(const CString& name);
  /// Base names of the loaded modules in the order of their loading.
  std::vector<CString> loadedModules() const;

  /// Runs commands until the input is used up or `stop` answers true after one.
  void run(const std::function<bool(KvEdOutcome)>& stop = {});
  /// Fires the timers that are due. Called between commands, and by sources while they wait.
  void pump();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Main window of the host, owner of dialogs and message boxes: null in a host without windows.
void* kdsw_kvadMainWnd();

/// The host's interface version; also what "kvbr.kdx" answers by that name.
extern "C" int kvrxGetApiVersion();
