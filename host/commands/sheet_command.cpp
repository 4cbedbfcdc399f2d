// PLOT, MVIEW, TOLERANCE.
#include <algorithm>

#include "host/commands/documents.h"
#include "host/commands/internal/dimstyle.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/database/layout.h"
#include "host/entities/tolerance.h"
#include "host/entities/viewport.h"
#include "host/graphics/plot.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/text/utf.h"

namespace kvcmd {
namespace {

// ---- PLOT

/// Asks until the text makes sense; false when the command ends. An empty reply leaves the value.
template <class Take>
bool askText(const CString& prompt, const wchar_t* refusal, const Take& take) {
  for (;;) {
    CString reply;
    const Got got = Ask(prompt).text(reply);
    if (got == Got::Cancelled) return false;
    if (got == Got::Nothing || take(platform::utf8From(reply))) return true;
    say(refusal);
  }
}

/// What part of model space is plotted; false when the command ends.
bool askPlotArea(KvPlotOptions& options) {
  Ask ask(L"\nEnter what to plot [Extents/Limits/View/Window] <Extents>: ");
  const Got got = ask.keywords(L"Extents Limits View Window").word();
  if (got == Got::Cancelled) return false;
  if (got == Got::Nothing || ask.keyword == L"Extents") return true;
  KvPlotOptions::Window window;
  if (ask.keyword == L"Limits") {
    const auto low = variable(L"LIMMIN", KvEdVarPoint{}),
               high = variable(L"LIMMAX", KvEdVarPoint{420, 297, 0});
    window = {{low.x, low.y}, {high.x, high.y}};
  } else if (ask.keyword == L"View") {
    const KvEdView view = kvedViewOf(*drawing());
    const auto& size = editor()->screen().size;
    const KvGePoint3d center = view.viewToWorld() * KvGePoint3d(view.center.x, view.center.y, 0);
    const double halfHeight = view.height / 2, halfWidth = halfHeight * size.width / size.height;
    window = {{center.x - halfWidth, center.y - halfHeight}, {center.x + halfWidth, center.y + halfHeight}};
  } else {
    KvGePoint3d first, second;
    if (Ask(L"\nSpecify first corner: ").point(first) != Got::Value) return false;
    if (Ask(L"\nSpecify opposite corner: ").corner(first, second) != Got::Value) return false;
    const KvGePoint3d a = toWorld(first), b = toWorld(second);
    window = {{std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}};
  }
  options.window = window;
  return true;
}

/// The drawing's own name with the ending of a plot.
CString standardOutput() {
  const KvCmdDocuments* documents = KvHostContext::current().commandDocuments;
  const CString own = documents ? documents->currentFile() : CString();
  if (own.IsEmpty()) return L"drawing.pdf";
  return own.Left(own.ReverseFind(L'.') < 0 ? own.GetLength() : own.ReverseFind(L'.')) + L".pdf";
}

void runPlot() {
  if (!drawing()) return;
  KvPlotOptions options;
  KvDbLayoutManager& layouts = drawing()->layoutManager();
  CString layout = layouts.currentLayoutName();
  for (;;) {
    const Got got = Ask(L"\nEnter a layout name or [?] <" + layout + L">: ").text(layout, true);
    if (got == Got::Cancelled) return;
    if (layout == L"?")
      for (const CString& name : kvgrLayoutNames(*drawing())) say(name);
    else if (!layouts.layoutId(layout).isNull())
      break;
    else
      say(L"There is no layout \"" + layout + L"\".");
    layout = layouts.currentLayoutName();
  }
  const auto* sheet = look<KvDbLayout>(layouts.layoutId(layout));
  const bool isModel = sheet && sheet->isModelLayout();
  if (!isModel) options.layout = layout;
  const CString paper = isModel ? L"A4" : L"the layout's";
  if (!askText(L"\nEnter paper size (A5 to A0, or WIDTHxHEIGHT in mm) <" + paper + L">: ",
               L"That is no paper.", [&](const std::string& text) {
                 options.paper = kvgrPaperNamed(text);
                 return options.paper.has_value();
               }))
    return;
  Ask turn(L"\nEnter drawing orientation [Auto/Portrait/Landscape] <Auto>: ");
  const Got turned = turn.keywords(L"Auto Portrait Landscape").word();
  if (turned == Got::Cancelled) return;
  if (turned == Got::Keyword && turn.keyword != L"Auto")
    options.turn =
        turn.keyword == L"Portrait" ? KvPlotOptions::Turn::Portrait : KvPlotOptions::Turn::Landscape;
  if (isModel && !askPlotArea(options)) return;
  if (!askText(isModel ? L"\nEnter plot scale (1:5, 2:1) or Fit <Fit>: "
                       : L"\nEnter plot scale (1:5, 2:1) <the layout's>: ",
               L"That is no scale.", [&](const std::string& text) {
                 if (text == "Fit" || text == "fit" || text == "F" || text == "f") return true;
                 const auto scale = kvgrScaleNamed(text);
                 options.scale = scale.value_or(0);
                 return scale.has_value();
               }))
    return;
  const auto isBlack = askYes(L"\nPlot in black only?", false);
  if (!isBlack) return;
  options.isMonochrome = *isBlack;
  CString file = standardOutput();
  if (Ask(L"\nEnter file name (.pdf, .svg, .png) <" + file + L">: ").text(file, true) == Got::Cancelled)
    return;
  if (file.ReverseFind(L'.') <= std::max(file.ReverseFind(L'/'), file.ReverseFind(L'\\'))) file += L".pdf";
  if (platform::isFile(file) &&
      !askYes(L"\n\"" + file + L"\" already exists. Replace it?", true).value_or(false))
    return;
  std::string error;
  if (kvgrPlotToFile(*drawing(), options, platform::toNative(file), error))
    say(L"Plotted to " + file);
  else
    fail(platform::wideFromUtf8(error));
}

// ---- MVIEW

void switchViewports(bool isOn) {
  for (KvDbObjectId id : select())
    change<KvDbViewport>(id, [&](KvDbViewport& viewport) { viewport.setOn(isOn); });
}

/// The middle and the height of what model space holds, for a window of that shape.
void showModel(KvDbViewport& viewport) {
  KvDbExtents all;
  if (const auto* space = look<KvDbBlockTableRecord>(drawing()->modelSpaceId()))
    for (KvDbObjectId id : space->entities()) {
      KvDbExtents own;
      const auto* entity = look<KvDbEntity>(id);
      if (entity && entity->getGeomExtents(own) == Kvad::eOk) all.addExt(own);
    }
  if (all.isEmpty()) return;
  constexpr double kRoom = 1.02;
  const KvGePoint3d low = all.minPoint(), high = all.maxPoint();
  const double height =
      std::max(high.y - low.y, (high.x - low.x) * viewport.height() / viewport.width()) * kRoom;
  viewport.setViewCenter({(low.x + high.x) / 2, (low.y + high.y) / 2});
  if (height > 0) viewport.setViewHeight(height);
}

void runMview() {
  if (!drawing()) return;
  if (drawing()->tilemode()) return fail(L"Viewports stand on sheets: LAYOUT Set goes to one.");
  KvGePoint3d first, second;
  Ask ask(L"\nSpecify corner of viewport or [ON/OFF/Fit] <Fit>: ");
  const Got got = ask.keywords(L"ON OFF Fit").point(first);
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword && ask.keyword != L"Fit") return switchViewports(ask.keyword == L"ON");
  if (got == Got::Value) {
    if (Ask(L"\nSpecify opposite corner: ").corner(first, second) != Got::Value) return;
  } else {
    const auto* sheet = look<KvDbLayout>(drawing()->layoutManager().currentLayoutId());
    if (!sheet) return fail(L"The sheet has no size.");
    double width = sheet->paperWidth(), height = sheet->paperHeight();
    if (sheet->rotation() % 2 == 1) std::swap(width, height);
    first = toUser(KvGePoint3d::kOrigin);
    second = toUser(
        {width - sheet->margin(0) - sheet->margin(2), height - sheet->margin(1) - sheet->margin(3), 0});
  }
  const KvGePoint3d a = toWorld(first), b = toWorld(second);
  const double width = std::fabs(b.x - a.x), height = std::fabs(b.y - a.y);
  if (!(width > 0 && height > 0)) return fail(L"Two different corners expected.");
  auto viewport = std::make_unique<KvDbViewport>(kvge::midpoint(a, b), width, height);
  showModel(*viewport);
  double scale = 0;
  if (!askText(L"\nEnter scale of what is shown (1:5, 2:1) or Fit <Fit>: ", L"That is no scale.",
               [&](const std::string& text) {
                 if (text == "Fit" || text == "fit" || text == "F" || text == "f") return true;
                 scale = kvgrScaleNamed(text).value_or(0);
                 return scale > 0;
               }))
    return;
  if (scale > 0) viewport->setViewHeight(height / scale);
  if (add(std::move(viewport)).isNull()) fail(L"The viewport could not be made.");
}

// ---- TOLERANCE

struct Symbol {
  const wchar_t* keyword;
  wchar_t letter;  // of the lettering for tolerances
};
constexpr Symbol kSymbols[] = {{L"Position", L'j'},     {L"Concentricity", L'r'},    {L"Symmetry", L'i'},
                               {L"PARallelism", L'f'},  {L"PERpendicularity", L'b'}, {L"Angularity", L'a'},
                               {L"CYlindricity", L'g'}, {L"FLatness", L'c'},         {L"CIrcularity", L'e'},
                               {L"STraightness", L'u'}, {L"SUrface", L'd'},          {L"LIne", L'k'},
                               {L"RUnout", L'h'},       {L"TOtalrunout", L't'}};

CString symbolText(wchar_t letter) {
  return L"{\\Fgdt;" + CString(std::wstring(1, letter).c_str()) + L"}";
}

void runTolerance() {
  if (!drawing()) return;
  CString words;
  for (const Symbol& one : kSymbols) words += (words.IsEmpty() ? L"" : L" ") + CString(one.keyword);
  CString shown = words;
  shown.Replace(L" ", L"/");
  Ask ask(L"\nEnter geometric characteristic symbol [" + shown + L"] <none>: ");
  const Got got = ask.keywords(words).word();
  if (got == Got::Cancelled) return;
  CString text;
  for (const Symbol& one : kSymbols)
    if (got == Got::Keyword && ask.keyword == one.keyword) text = symbolText(one.letter);
  constexpr const wchar_t* kPrompts[] = {
      L"\nEnter tolerance (%%c before it for a diameter) <none>: ", L"\nEnter second tolerance <none>: ",
      L"\nEnter first datum <none>: ", L"\nEnter second datum <none>: ", L"\nEnter third datum <none>: "};
  constexpr int kFirstDatum = 2;
  bool isEmpty = text.IsEmpty();
  for (int i = 0; i < static_cast<int>(std::size(kPrompts)); ++i) {
    CString value;
    const Got cell = Ask(kPrompts[i]).text(value, true);
    if (cell == Got::Cancelled) return;
    if (i < kFirstDatum && value.Left(3).CompareNoCase(L"%%c") == 0) value = symbolText(L'n') + value.Mid(3);
    isEmpty = isEmpty && value.IsEmpty();
    text += L"%%v" + value;
  }
  if (isEmpty) return;
  KvGePoint3d at;
  if (Ask(L"\nEnter tolerance location: ").point(at) != Got::Value) return;
  auto frame = std::make_unique<KvDbFcf>(text, at);
  frame->setDimensionStyle(drawing()->dimstyle());
  const KvDbObjectId id = addFromUser(std::move(frame));
  if (id.isNull()) return fail(L"The frame could not be placed.");
  change<KvDbFcf>(id, [](KvDbFcf& made) {
    presentDimVars().writeOverrides(made, KvDbDimVars::ofStyle(drawing()->dimstyle()));
  });
}

constexpr KvCommandRow kRows[] = {
    {L"MVIEW", L"MV -VPORTS", KVRX_CMD_MODAL, runMview, L"Makes viewports of a sheet onto model space.",
     L"Specify corner of viewport or [ON/OFF/Fit] <Fit>:\nSpecify opposite corner:\nEnter scale of what is "
     L"shown "
     L"(1:5, 2:1) or Fit <Fit>:"},
    {L"PLOT", L"PRINT -PLOT", KVRX_CMD_MODAL, runPlot,
     L"Plots model space or a sheet to a PDF, SVG or PNG file.",
     L"Enter a layout name or [?] <Model>:\nEnter paper size (A5 to A0, or WIDTHxHEIGHT in mm) <A4>:\nEnter "
     L"drawing "
     L"orientation [Auto/Portrait/Landscape] <Auto>:\nEnter what to plot [Extents/Limits/View/Window] "
     L"<Extents>: (of "
     L"model space)\nEnter plot scale (1:5, 2:1) or Fit <Fit>:\nPlot in black only? [Yes/No] <No>:\nEnter "
     L"file name "
     L"(.pdf, .svg, .png) <>:"},
    {L"TOLERANCE", L"TOL -TOLERANCE", KVRX_CMD_MODAL, runTolerance,
     L"Places the frame of a geometric tolerance.",
     L"Enter geometric characteristic symbol "
     L"[Position/Concentricity/Symmetry/PARallelism/PERpendicularity/Angularity/CYlindricity/FLatness/"
     L"CIrcularity/"
     L"STraightness/SUrface/LIne/RUnout/TOtalrunout] <none>:\nEnter tolerance (%%c before it for a diameter) "
     L"<none>:\nEnter second tolerance <none>:\nEnter first datum <none>:\nEnter second datum <none>:\nEnter "
     L"third "
     L"datum <none>:\nEnter tolerance location:"},
};

}  // namespace

std::span<const KvCommandRow> sheetRows() {
  return kRows;
}

}  // namespace kvcmd
