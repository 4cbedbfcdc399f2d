// The module as the host loads it, with its commands.
#include "host/app/hostapp.h"
#include "host/base/context.h"
#include "host/base/rxdictionary.h"
#include "host/editor/commandstack.h"
#include "host/editor/prompts.h"
#include "siblings/symbols/exports.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/styles.h"

namespace {

using namespace kmsymb;

constexpr const wchar_t* kGroup = L"KMSYMBB";
constexpr unsigned int kInitMessage = 1, kUnloadMessage = 2;

/// KMSTANDARD: the drawing's standard; its styles become the current ones. Layers that stand in the drawing
/// keep their names and looks.
void standardCommand() {
  KvDbDatabase* drawing = kvdbDatabaseOrWorking(nullptr);
  if (!drawing) return;
  CString keywords, prompt;
  for (Standard one : kStandards) {
    if (!keywords.IsEmpty()) keywords += L" ";
    keywords += rowOf(one).name;
  }
  const Standard old = standardInForce();
  CString choices = keywords;
  choices.Replace(L' ', L'/');
  prompt.Format(L"\nDrafting standard [%s] <%s>: ", choices, rowOf(old).name);
  kvedInitGet(0, keywords);
  CString answer;
  const int status = kvedGetKword(prompt, answer);
  if (status != RTNORM && status != RTNONE) return;
  const Standard chosen = standardNamed(answer.view()).value_or(old);
  if (!setStandard(*drawing, chosen)) {
    KvHostContext::current().editor->fail(L"The standard could not be kept in the drawing.");
    return;
  }
  drawing->setTextstyle(ensureTextStyle(*drawing, chosen));
  drawing->setDimstyle(ensureDimStyle(*drawing, chosen));
  kvutPrintf(L"\nDrafting standard: %s", rowOf(chosen).name);
}

/// A number above 0; the present one for an empty answer.
bool askScale(const wchar_t* what, double& value) {
  CString prompt;
  prompt.Format(L"\n%s <%g>: ", what, value);
  kvedInitGet(KVED_NOZERO | KVED_NONEG, nullptr);
  double answer = 0;
  const int status = kvedGetReal(prompt, &answer);
  if (status == RTNORM) value = answer;
  return status == RTNORM || status == RTNONE;
}

/// KMSCALE: the drawing's scale.
void scaleCommand() {
  KvDbDatabase* drawing = kvdbDatabaseOrWorking(nullptr);
  if (!drawing) return;
  SystemScale scale = systemScaleOf(*drawing);
  if (!askScale(L"Drawing units for one millimetre of paper", scale.paper) ||
      !askScale(L"Factor of measured values", scale.measure))
    return;
  if (!setSystemScale(*drawing, scale))
    KvHostContext::current().editor->fail(L"The scale could not be kept in the drawing.");
}

struct Command {
  const wchar_t* name;
  KvRxFunctionPtr function;
};
constexpr Command kCommands[] = {{L"KMSTANDARD", standardCommand}, {L"KMSCALE", scaleCommand}};

}  // namespace

std::int64_t kvrxEntryPoint(unsigned int message, void* applicationHandle) {
  auto* commands = KvEdCommandStack::cast(kvrxSysRegistry()->at(L"ACRX_REGISTERED_COMMANDS"));
  if (message == kInitMessage && commands) {
    if (auto* linker = KvRxDynamicLinker::cast(kvrxSysRegistry()->at(L"DynamicLinker"))) {
      linker->unlockApplication(applicationHandle);
      linker->registerAppMDIAware(applicationHandle);
    }
    for (const Command& command : kCommands)
      commands->addCommand(kGroup, command.name, command.name, KVRX_CMD_MODAL, command.function);
  }
  if (message == kUnloadMessage && commands) commands->removeGroup(kGroup);
  return 0;
}

int kvrxGetApiVersion() {
  return kKvHostApiVersion;
}
