// HELP, SETVAR, SCRIPT, DELAY, REGEN, REDRAW, AUDIT.
#include <chrono>
#include <thread>
#include <utility>

#include "host/base/wcmatch.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/io/drawing_file.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/text/codepage.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"

namespace kvcmd {
namespace {

void runHelp() {
  if (!editor()) return;
  CString name;
  const Got got = Ask(L"\nEnter command name <all>: ").text(name);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) {
    const KvCommandRow* row = kvcmdFind(name);
    if (row)
      say(kvcmdHelp(*row));
    else if (editor()->variables().find(name))
      say(name.MakeUpper() + L" is a variable: SETVAR, or its name as a command, changes it.");
    else
      fail(L"There is no command \"" + name + L"\".");
    return;
  }
  for (const KvCommandRow* row : kvcmdRows()) say(CString(row->name) + L": " + row->purpose);
}

CString shown(const KvEdVarValue& value) {
  if (const int* whole = std::get_if<int>(&value)) {
    CString text;
    text.Format(L"%d", *whole);
    return text;
  }
  if (const double* real = std::get_if<double>(&value)) return numberText(*real);
  if (const CString* text = std::get_if<CString>(&value)) return L"\"" + *text + L"\"";
  const KvEdVarPoint& p = std::get<KvEdVarPoint>(value);
  return numberText(p.x) + L"," + numberText(p.y) + L"," + numberText(p.z);
}

void listVariables() {
  CString pattern = L"*";
  if (Ask(L"\nEnter variable(s) to list <*>: ").text(pattern) == Got::Cancelled) return;
  for (const KvEdVariable* one : editor()->variables().all()) {
    KvEdVarValue value;
    if (kvutWcMatch(one->name, pattern.MakeUpper()) == RTNORM &&
        editor()->variables().get(one->name, value) == Kvad::eOk)
      say(one->name + L" = " + shown(value) + (one->readOnly ? L" (read only)" : L""));
  }
}

/// The new value by the variable's type; none when the command ends.
std::optional<KvEdVarValue> askValue(const KvEdVariable& variable, const KvEdVarValue& old) {
  const CString prompt = L"\nEnter new value for " + variable.name + L" <" + shown(old) + L">: ";
  if (std::holds_alternative<int>(old)) {
    int value = 0;
    // On and off are 1 and 0.
    Ask ask(prompt);
    const Got got = ask.keywords(L"ON OFF").whole(value);
    if (got == Got::Keyword) return KvEdVarValue(ask.keyword == L"ON" ? 1 : 0);
    return got == Got::Value ? std::optional<KvEdVarValue>(value) : std::nullopt;
  }
  if (std::holds_alternative<double>(old)) {
    double value = 0;
    if (Ask(prompt).real(value) != Got::Value) return std::nullopt;
    return value;
  }
  if (std::holds_alternative<CString>(old)) {
    CString value;
    if (Ask(prompt).text(value, true) != Got::Value) return std::nullopt;
    // A single point is what empties a text.
    return value == L"." ? CString() : value;
  }
  KvGePoint3d value;
  if (Ask(prompt).point(value) != Got::Value) return std::nullopt;
  return KvEdVarPoint{value.x, value.y, value.z};
}

void runSetvar() {
  if (!editor()) return;
  CString name = std::exchange(editor()->typedVariable, CString());
  if (name.IsEmpty()) {
    if (Ask(L"\nEnter variable name or [?]: ").text(name) != Got::Value) return;
    if (name == L"?") return listVariables();
  }
  KvEdSysVars& variables = editor()->variables();
  const KvEdVariable* variable = variables.find(name);
  KvEdVarValue old;
  if (!variable || variables.get(name, old) != Kvad::eOk)
    return fail(L"There is no variable \"" + name + L"\". Type SETVAR ? for a list.");
  if (variable->readOnly) return say(variable->name + L" = " + shown(old) + L" (read only)");
  const auto value = askValue(*variable, old);
  if (!value) return;
  switch (variables.set(name, *value)) {
    case Kvad::eOk:
      return;
    case Kvad::eOutOfRange: {
      CString limits;
      limits.Format(L"A value from %s to %s expected.", numberText(variable->lowest),
                    numberText(variable->highest));
      return fail(variable->lowest == variable->highest ? CString(L"The value is out of range.") : limits);
    }
    default:
      return fail(L"The variable can't be set to that value.");
  }
}

/// A script's text: UTF-16 or UTF-8 by its mark, UTF-8 where it is valid, else the system's 8-bit code page.
CString decoded(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return platform::fromUtf16Bytes(bytes.substr(2));
  if (bytes.starts_with("\xEF\xBB\xBF")) return platform::fromUtf8(bytes.substr(3));
  return platform::isUtf8(bytes) ? platform::fromUtf8(bytes)
                                 : platform::fromCodePage(bytes, platform::kSystemCodePage);
}

void runScript() {
  constexpr int kDeepest = 32;
  CString name;
  if (!editor() || Ask(L"\nEnter script file name: ").text(name, true) != Got::Value) return;
  if (editor()->sourceCount() >= kDeepest) return fail(L"Scripts are nested too deeply.");
  if (!platform::isFile(name) && platform::isFile(name + L".scr")) name += L".scr";
  std::string bytes;
  if (const auto status = platform::readFile(platform::toNative(name), bytes); !status)
    return fail(platform::wideFromUtf8(status.message()));
  editor()->pushSource(std::make_unique<KvEdScriptSource>(decoded(bytes)));
}

void runDelay() {
  constexpr int kLongest = 32767;
  int milliseconds = 0;
  if (Ask(L"\nEnter delay time in milliseconds: ").flags(KVED_NONEG).whole(milliseconds) != Got::Value)
    return;
  if (milliseconds > kLongest) return fail(L"A time of at most 32767 milliseconds expected.");
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void runRegen() {
  kvedUpdateDisplay();
}
void runRedraw() {
  kvedRedraw(nullptr, 0);
}

/// Looks at the drawing itself and mends it, as one step.
void mendDrawing() {
  KvDbAudit audit(*drawing(), true);
  audit.run();
  CString text;
  for (const KvDbFinding& finding : audit.findings()) {
    text.Format(L"%d ", static_cast<int>(finding.fault));
    say(text + finding.text);
  }
  text.Format(L"%d faults found, %d of them mended", static_cast<int>(audit.errorCount() + audit.fixCount()),
              static_cast<int>(audit.fixCount()));
  say(text);
}

void runAudit() {
  if (!drawing()) return;
  const auto mends = askYes(L"\nFix any errors detected?", false);
  if (!mends) return;
  if (*mends) return mendDrawing();
  KvDbDatabase copy(false, true);
  KvIoReport report;
  const std::string bytes = kvdbFormatDrawing(*drawing());
  if (kvdbParseDrawing(copy, bytes, report, KvIoMode::Recover) != Kvad::eOk)
    return fail(report.error.describe());
  KvDbAudit audit(copy, false);
  for (const KvIoMessage& repair : report.repairs) audit.add(repair.fault, repair.text, false);
  audit.run();
  CString text;
  for (const KvDbFinding& finding : audit.findings()) {
    text.Format(L"%d ", static_cast<int>(finding.fault));
    say(text + finding.text);
  }
  const std::uint64_t total = audit.errorCount() + report.repairsLeftOut;
  text.Format(total == 1 ? L"%d fault found" : L"%d faults found", static_cast<int>(total));
  say(text);
  if (total > 0)
    say(L"AUDIT Yes mends what it can in the drawing, \"korvane audit --fix\" in the saved file.");
}

constexpr KvCommandRow kRows[] = {
    {L"AUDIT", L"", KVRX_CMD_MODAL, runAudit,
     L"Looks for faults that a saved file would have, and mends those of the drawing.",
     L"Fix any errors detected? [Yes/No] <No>:"},
    {L"DELAY", L"", KVRX_CMD_MODAL, runDelay, L"Waits; for scripts.", L"Enter delay time in milliseconds:"},
    {L"HELP", L"?", KVRX_CMD_TRANSPARENT, runHelp, L"Tells of all commands, or the prompts of one.",
     L"Enter command name <all>:"},
    {L"REDRAW", L"R REDRAWALL", KVRX_CMD_TRANSPARENT, runRedraw, L"Takes temporary lines from the screen.",
     L""},
    {L"REGEN", L"RE REGENALL", KVRX_CMD_MODAL, runRegen, L"Shows the drawing anew.", L""},
    {L"SCRIPT", L"SCR", KVRX_CMD_MODAL, runScript, L"Runs a script file.", L"Enter script file name:"},
    {L"SETVAR", L"SET", KVRX_CMD_TRANSPARENT, runSetvar,
     L"Shows and changes system variables; a variable's name typed as a command does so too.",
     L"Enter variable name or [?]:\nEnter new value for NAME <>: (empty: stays; a point empties a text)"},
};

}  // namespace

std::span<const KvCommandRow> sessionRows() {
  return kRows;
}

}  // namespace kvcmd
