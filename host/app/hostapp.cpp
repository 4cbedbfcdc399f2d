#include "host/app/hostapp.h"

#include <dlfcn.h>

#include <cassert>

#include "host/app/internal/module_loader.h"
#include "host/base/context.h"
#include "host/commands/command_table.h"
#include "host/commands/documents.h"
#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/editor/selection.h"
#include "host/entities/leader.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/system/timers.h"

namespace {

class Registry : public KvRxDictionary {};

std::filesystem::path ownTree(std::filesystem::path& ownFile) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&kdsw_kvadMainWnd), &info) == 0 || !info.dli_fname) return {};
  std::error_code error;
  ownFile = std::filesystem::canonical(info.dli_fname, error);
  return error ? std::filesystem::path() : ownFile.parent_path().parent_path();
}

/// What the database asks of its host, answered by the command line.
class Services : public KvDbHostApplicationServices {
 public:
  Services(KvEdEditor& editor, const std::filesystem::path& root) : editor_(editor), root_(root) {}
  CString findFile(const CString& name) override;
  void reportFailure(const CString& text) override { editor_.printLine(text); }
  void setLastInput(const CString& text) override { editor_.lastInput = text; }
  void setHighlighted(KvDbObjectId id, const KvDbFullSubentPath& path, bool isOn) override {
    const KvEdHighlightPath own = KvEdScreen::pathOf(id, path);
    isOn ? editor_.screen().highlight(own) : editor_.screen().unhighlight(own);
  }

 private:
  KvEdEditor& editor_;
  const std::filesystem::path& root_;
};

CString Services::findFile(const CString& name) {
  if (name.IsEmpty()) return {};
  if (platform::isFile(name)) return name;
  const std::filesystem::path bare = platform::toNative(name).filename();
  std::vector<std::filesystem::path> folders;
  if (auto* documents = kvDocManagerPtr(); documents && documents->curDocument())
    folders.push_back(platform::toNative(documents->curDocument()->fileName()).parent_path());
  for (const char* folder : {"linetypes", "templates", "tables", "fonts"})
    folders.push_back(root_ / "share" / "korvane" / folder);
  for (const auto& folder : folders)
    if (!folder.empty() && platform::isFile(folder / bare)) return platform::fromNative(folder / bare);
  return {};
}

KvEdVariable readOnlyVariable(const wchar_t* name, KvEdVarType type, std::function<KvEdVarValue()> read) {
  KvEdVariable variable;
  variable.name = name;
  variable.type = type;
  variable.readOnly = true;
  variable.read = std::move(read);
  return variable;
}

/// Name of the layout that is shown.
CString currentTab() {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || database->tilemode()) return L"Model";
  KvDbBlockTableRecord* space = nullptr;
  KvDbDictionary* dictionary = nullptr;
  KvDbObjectId layout, layouts;
  if (kvdbOpenObject(space, database->paperSpaceId()) == Kvad::eOk) {
    layout = space->layoutId();
    space->close();
  }
  CString name;
  if (database->getNamedObjectsDictionary(dictionary, KvDb::kForRead) != Kvad::eOk) return name;
  dictionary->getAt(L"ACAD_LAYOUT", layouts);
  dictionary->close();
  if (kvdbOpenObject(dictionary, layouts) != Kvad::eOk) return name;
  name = dictionary->nameAt(layout);
  dictionary->close();
  return name;
}

/// The working drawing's file: the folder with its separator, or the name.
CString drawingFile(const KvApDocManager& documents, bool isFolder) {
  const KvApDocument* document = documents.curDocument();
  if (!document) return {};
  const int separator = document->fileName().ReverseFind(L'\\');
  return isFolder ? document->fileName().Left(separator + 1) : document->fileName().Mid(separator + 1);
}

/// What the commands on whole drawings work on.
class CommandDocuments : public KvCmdDocuments {
 public:
  explicit CommandDocuments(KvHostApp& app) : app_(app) {}
  CString makeNew() override {
    return app_.newDocument() ? CString() : CString(L"No drawing could be made.");
  }
  CString open(const CString& file) override;
  CString save(const CString& file, bool rename) override;
  CString close() override;
  std::vector<CString> names(int& current) const override;
  CString activate(int index) override;
  CString currentFile() const override;
  bool hasDrawing() const override { return app_.documents().curDocument() != nullptr; }
  bool hasUnsaved() const override;

 private:
  KvHostApp& app_;
};

CString CommandDocuments::open(const CString& file) {
  CString name = file;
  for (const wchar_t* ending : {L".dxf", L".dwg"})
    if (!platform::isFile(name) && platform::isFile(file + ending)) name = file + ending;
  KvIoReport report;
  const auto path = std::filesystem::absolute(platform::toNative(name));
  if (app_.openDocument(path, report)) return {};
  return L"\"" + file + L"\" can't be opened: " + report.error.describe();
}

CString CommandDocuments::save(const CString& file, bool rename) {
  KvApDocument* document = app_.documents().curDocument();
  if (!document) return L"There is no drawing.";
  KvIoReport report;
  const auto path = std::filesystem::absolute(platform::toNative(file));
  if (kvdbSaveDrawing(*document->database(), path, report, kvdbSaveOptionsFor(path)) != Kvad::eOk)
    return report.error.text;
  document->database()->setModifiedWord(0);
  if (rename) document->setFileName(platform::fromNative(path));
  return {};
}

CString CommandDocuments::close() {
  switch (app_.documents().close(app_.documents().curDocument())) {
    case Kvad::eOk:
      return {};
    case Kvad::eLockConflict:
      return L"The drawing is locked by a program and stays open.";
    default:
      return L"There is no drawing.";
  }
}

std::vector<CString> CommandDocuments::names(int& current) const {
  std::vector<CString> names;
  current = -1;
  for (auto all = app_.documents().newKvApDocumentIterator(); !all->done(); all->step()) {
    if (all->document() == app_.documents().curDocument()) current = static_cast<int>(names.size());
    names.push_back(all->document()->fileName());
  }
  return names;
}

CString CommandDocuments::activate(int index) {
  int at = 0;
  for (auto all = app_.documents().newKvApDocumentIterator(); !all->done(); all->step())
    if (at++ == index && app_.documents().setCurDocument(all->document()) == Kvad::eOk) return {};
  return L"There is no such drawing.";
}

CString CommandDocuments::currentFile() const {
  const KvApDocument* document = app_.documents().curDocument();
  return document && document->fileName().Find(L'\\') >= 0 ? document->fileName() : CString();
}

bool CommandDocuments::hasUnsaved() const {
  for (auto all = app_.documents().newKvApDocumentIterator(); !all->done(); all->step())
    if (all->document()->database()->modifiedWord() != 0) return true;
  return false;
}

}  // namespace

struct KvHostApp::State {
  explicit State(KvHostOptions& options)
      : ownEnvironment(options.environment
                           ? std::move(options.environment)
                           : std::make_unique<platform::Environment>(platform::Environment::fromProcess())),
        scope(*ownEnvironment),
        editor(std::move(options.output)),
        services(editor, root) {
    std::filesystem::path hostFile;
    const auto tree = ownTree(hostFile);
    root = options.root.empty() ? tree : options.root;
    ownEnvironment->modulePath.insert(ownEnvironment->modulePath.begin(), root / "Professional" / "KVX8x64");
    // The host is also known under the name by which modules ask for its library.
    ownEnvironment->libraryAliases[L"kvbr.kdx"] = hostFile;
    if (!ownEnvironment->timers) ownEnvironment->timers = &timers;
  }

  std::unique_ptr<platform::Environment> ownEnvironment;
  platform::ScopedEnvironment scope;
  platform::TimerQueue timers;
  Registry registry;
  KvEdEditor editor;
  Services services;
  KvApDocManager documents;
  kvapp::ModuleLoader modules;
  std::filesystem::path root;
  std::unique_ptr<CommandDocuments> commandDocuments;
  KvApDocument* stepDocument = nullptr;  // of the command that is running
  std::unique_ptr<KvDbLeaderFollower> follower;
  int drawingsMade = 0;
};

KvHostApp::KvHostApp(KvHostOptions options) : state_(std::make_unique<State>(options)) {
  KvHostContext& context = KvHostContext::current();
  assert(!context.editor && "one host at a time");
  state_->commandDocuments = std::make_unique<CommandDocuments>(*this);
  context = {&state_->registry, &state_->services, &state_->editor, &state_->documents,
             state_->commandDocuments.get()};
  state_->registry.atPut(L"DynamicLinker", &state_->modules);
  state_->registry.atPut(L"ACRX_REGISTERED_COMMANDS", &state_->editor.commands());

  kvcmdRegister(state_->editor.commands());
  // What one command changes is one step of undo, in the drawing that was current when it began.
  state_->editor.onCommandStarted = [this] {
    state_->stepDocument = state_->documents.curDocument();
    if (!state_->stepDocument) return;
    state_->documents.closeUndoGroups(state_->stepDocument);
    state_->stepDocument->database()->undoRecorder().beginGroup();
    state_->follower = std::make_unique<KvDbLeaderFollower>(*state_->stepDocument->database());
  };
  state_->editor.onCommandEnded = [this](KvEdOutcome) {
    // The command may have closed the drawing that it began in.
    bool isOpen = false;
    for (auto all = state_->documents.newKvApDocumentIterator(); !all->done(); all->step())
      if (all->document() == state_->stepDocument) {
        isOpen = true;
        state_->documents.closeUndoGroups(state_->stepDocument);
        state_->follower->settle();
        all->document()->database()->undoRecorder().endGroup();
      }
    if (state_->follower && !isOpen) state_->follower->forget();
    state_->follower.reset();
    state_->stepDocument = nullptr;
  };

  KvEdSysVars& variables = state_->editor.variables();
  variables.define(readOnlyVariable(L"ROAMABLEROOTPREFIX", RTSTR, [this] {
    return KvEdVarValue(platform::fromNative(state_->ownEnvironment->settingsRoot) + L"\\");
  }));
  const KvApDocManager& documents = state_->documents;
  variables.define(
      readOnlyVariable(L"DWGNAME", RTSTR, [&documents] { return drawingFile(documents, false); }));
  variables.define(
      readOnlyVariable(L"DWGPREFIX", RTSTR, [&documents] { return drawingFile(documents, true); }));
  variables.define(readOnlyVariable(L"DWGTITLED", RTSHORT,
                                    [&documents] { return drawingFile(documents, true).IsEmpty() ? 0 : 1; }));
  variables.define(readOnlyVariable(L"CTAB", RTSTR, [] { return currentTab(); }));
  variables.loadSettings();
  state_->editor.selections().currentDocument = [&documents] { return documents.curDocument(); };
}

KvHostApp::~KvHostApp() {
  state_->modules.unloadAll();
  state_->editor.variables().saveSettings();
  while (KvApDocument* document = state_->documents.curDocument()) {
    while (document->lockCount() > 0) state_->documents.unlockDocument(document);
    state_->documents.close(document);
  }
  KvHostContext::current() = KvHostContext();
}

platform::Environment& KvHostApp::environment() {
  return *state_->ownEnvironment;
}
KvEdEditor& KvHostApp::editor() {
  return state_->editor;
}
KvApDocManager& KvHostApp::documents() {
  return state_->documents;
}
const std::filesystem::path& KvHostApp::root() const {
  return state_->root;
}

KvApDocument* KvHostApp::newDocument() {
  CString name;
  name.Format(L"Drawing%d.dwg", ++state_->drawingsMade);
  KvApDocument* document = state_->documents.add(std::make_unique<KvDbDatabase>(), name);
  state_->modules.tellDrawingLoaded();
  return document;
}

KvApDocument* KvHostApp::openDocument(const std::filesystem::path& file, KvIoReport& report, KvIoMode mode) {
  auto database = std::make_unique<KvDbDatabase>(false);
  if (kvdbReadDrawing(*database, file, report, mode) != Kvad::eOk) return nullptr;
  KvApDocument* document = state_->documents.add(std::move(database), platform::fromNative(file));
  state_->modules.tellDrawingLoaded();
  return document;
}

bool KvHostApp::loadModule(const CString& name, CString& error) {
  bool isNew = false;
  if (!state_->modules.load(name, isNew, error)) return false;
  if (!isNew) return true;
  KvApDocument* current = state_->documents.curDocument();
  const auto all = state_->documents.newKvApDocumentIterator();
  for (; !all->done(); all->step()) {
    state_->documents.setCurDocument(all->document());
    state_->modules.tellNewestDrawingLoaded();
  }
  if (current) state_->documents.setCurDocument(current);
  return true;
}

bool KvHostApp::unloadModule(const CString& name) {
  return state_->modules.unload(name);
}
std::vector<CString> KvHostApp::loadedModules() const {
  return state_->modules.names();
}

void KvHostApp::run(const std::function<bool(KvEdOutcome)>& stop) {
  KvEdOutcome outcome;
  while (state_->editor.runNext(outcome)) {
    pump();
    if (stop && stop(outcome)) return;
  }
}

void KvHostApp::pump() {
  state_->ownEnvironment->timers->runDue();
}

void* kdsw_kvadMainWnd() {
  return nullptr;
}

int kvrxGetApiVersion() {
  return kKvHostApiVersion;
}
