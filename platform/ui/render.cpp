#include "platform/ui/render.h"

#include <algorithm>

#include "platform/text/utf.h"
#include "platform/ui/display_width.h"

namespace platform {
namespace {

constexpr int kBarLength = 30;
constexpr std::wstring_view kGap = L"  ";

using Lines = std::vector<std::wstring>;

bool isBlock(const Control& control) {
  return control.kind == ControlKind::List || control.kind == ControlKind::Grid;
}

std::wstring shown(const CString& text) {
  return printable(text.view());
}

/// A label without the sign that marks its mnemonic; `&&` is the sign itself.
std::wstring label(const Control& control) {
  std::wstring result;
  const std::wstring text = shown(control.text);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == L'&' && ++at == text.size()) break;
    result.push_back(text[at]);
  }
  return result;
}

/// "6005" where the control can be asked for by number.
std::wstring number(const Control& control) {
  return control.enabled && control.id >= 0 ? std::to_wstring(control.id) + L" " : L"";
}

std::wstring bar(const Control& control) {
  const int range = std::max(control.maximum - control.minimum, 1);
  const int done = control.position - control.minimum;
  const auto filled = static_cast<std::size_t>(static_cast<long long>(done) * kBarLength / range);
  const long long percent = static_cast<long long>(done) * 100 / range;
  return L"[" + std::wstring(filled, L'#') + std::wstring(kBarLength - filled, L'-') + L"] " +
         std::to_wstring(percent) + L" %";
}

std::wstring rangeText(const Control& spin) {
  return L" (" + std::to_wstring(spin.minimum) + L"-" + std::to_wstring(spin.maximum) + L")";
}

std::wstring editText(const DialogTemplate& dialog, const Control& control) {
  std::wstring text = shown(control.text);
  for (const Control& other : dialog.controls)
    if (other.kind == ControlKind::Spin && other.buddy == control.id && control.id >= 0)
      text += rangeText(other);
  if (!control.enabled) return text;
  const std::wstring place = std::to_wstring(control.id) + (control.readOnly ? L":" : L"=");
  return text.empty() ? place : place + L" " + text;
}

std::wstring comboText(const Control& control) {
  std::wstring text = control.enabled ? std::to_wstring(control.id) + L"= " : L"";
  text += shown(control.text) + L"  {";
  for (std::size_t i = 0; i < control.items.size() && i < kShownRows; ++i)
    text += (i == 0 ? L"" : L" | ") + shown(control.items[i]);
  return text + (control.items.size() > kShownRows ? L" | …}" : L"}");
}

std::wstring buttonText(const Control& control) {
  const std::wstring text = label(control);
  if (!control.enabled) return L"(" + text + L")";
  return number(control) + (control.isDefault ? L"<" + text + L">" : L"[" + text + L"]");
}

void addRow(Lines& lines, const Control& control, std::size_t index, const std::wstring& text) {
  const int row = static_cast<int>(index);
  const bool selected =
      std::find(control.selected.begin(), control.selected.end(), row) != control.selected.end();
  std::wstring place = std::to_wstring(row + 1);
  if (place.size() < 3) place.insert(0, 3 - place.size(), L' ');
  lines.push_back((selected ? L" *" : L"  ") + place + L"  " + text);
}

void addRest(Lines& lines, std::size_t count) {
  if (count > kShownRows) lines.push_back(L"       … +" + std::to_wstring(count - kShownRows));
}

Lines listLines(const Control& control) {
  Lines lines = {std::to_wstring(control.id) + L": " + std::to_wstring(control.items.size())};
  for (std::size_t i = 0; i < control.items.size() && i < kShownRows; ++i)
    addRow(lines, control, i, shown(control.items[i]));
  addRest(lines, control.items.size());
  return lines;
}

Lines gridLines(const Control& control) {
  std::vector<int> widths;
  for (const CString& column : control.columns) widths.push_back(displayWidth(shown(column)));
  const std::size_t count = std::min<std::size_t>(control.rows.size(), kShownRows);
  for (std::size_t row = 0; row < count; ++row)
    for (std::size_t i = 0; i < widths.size() && i < control.rows[row].size(); ++i)
      widths[i] = std::max(widths[i], displayWidth(shown(control.rows[row][i])));
  const auto line = [&](const std::vector<CString>& cells) {
    std::wstring text;
    for (std::size_t i = 0; i < widths.size(); ++i)
      text +=
          (i == 0 ? L"" : L" │ ") + padded(i < cells.size() ? shown(cells[i]) : std::wstring(), widths[i]);
    return text;
  };
  Lines lines = {std::to_wstring(control.id) + L": " + std::to_wstring(control.rows.size())};
  lines.push_back(L"       " + line(control.columns));
  for (std::size_t row = 0; row < count; ++row) addRow(lines, control, row, line(control.rows[row]));
  addRest(lines, control.rows.size());
  return lines;
}

/// What stands in a row for one control; several lines for a block, and for a text of several lines.
Lines cellOf(const DialogTemplate& dialog, const Control& control) {
  switch (control.kind) {
    case ControlKind::Static:
      return wrapped(control.text.view(), kTextBoxWidth);
    case ControlKind::Picture: {
      const std::wstring file = fromUtf8(control.picture.filename().string());
      return {L"{" + shown(control.text) + (file.empty() ? L"" : L": " + printable(file)) + L"}"};
    }
    case ControlKind::Button:
      return {buttonText(control)};
    case ControlKind::Check:
      return {number(control) + (control.checked ? L"[x] " : L"[ ] ") + label(control)};
    case ControlKind::Radio:
      return {number(control) + (control.checked ? L"(o) " : L"( ) ") + label(control)};
    case ControlKind::Edit:
      return {editText(dialog, control)};
    case ControlKind::Combo:
      return {comboText(control)};
    case ControlKind::List:
      return listLines(control);
    case ControlKind::Spin:
      return {number(control) + std::to_wstring(control.position) + rangeText(control)};
    case ControlKind::Progress:
      return {bar(control)};
    case ControlKind::Group:
      return {L"── " + label(control) + L" ──"};
    case ControlKind::Grid:
      return gridLines(control);
  }
  return {};
}

bool sameRow(const Control& first, const Control& next) {
  for (const Control* control : {&first, &next})
    if (isBlock(*control) || control->kind == ControlKind::Group || control->kind == ControlKind::Picture)
      return false;
  if (!first.rect || !next.rect) {
    const bool buttons = first.kind == ControlKind::Button && next.kind == ControlKind::Button;
    const bool labelled = first.kind == ControlKind::Static &&
                          (next.kind == ControlKind::Edit || next.kind == ControlKind::Combo);
    return buttons || labelled;
  }
  const int middle = next.rect->y + next.rect->height / 2;
  return middle >= first.rect->y && middle < first.rect->y + std::max(first.rect->height, 1);
}

/// The controls that are seen, from top to bottom and left to right where they have places, otherwise as they
/// are listed.
std::vector<const Control*> inOrder(const DialogTemplate& dialog) {
  std::vector<const Control*> controls;
  for (const Control& control : dialog.controls) {
    const bool buddySpin = control.kind == ControlKind::Spin && control.buddy != 0;
    const bool emptyPicture =
        control.kind == ControlKind::Picture && control.text.IsEmpty() && control.picture.empty();
    if (control.visible && !buddySpin && !emptyPicture) controls.push_back(&control);
  }
  const bool placed =
      std::all_of(controls.begin(), controls.end(), [](const Control* c) { return c->rect.has_value(); });
  if (placed)
    std::stable_sort(controls.begin(), controls.end(),
                     [](const Control* a, const Control* b) { return a->rect->y < b->rect->y; });
  return controls;
}

}  // namespace

std::wstring renderBox(std::wstring_view title, const std::vector<std::wstring>& lines) {
  const std::wstring heading = title.empty() ? L"" : L" " + printable(title) + L" ";
  int width = displayWidth(heading) + 1;
  for (const std::wstring& line : lines) width = std::max(width, displayWidth(line) + 2);
  const auto rule = [](int count) {
    return std::wstring(static_cast<std::size_t>(std::max(count, 0)), L'─');
  };
  std::wstring result = L"┌─" + heading + rule(width - 1 - displayWidth(heading)) + L"┐\n";
  for (const std::wstring& line : lines) result += L"│ " + padded(line, width - 2) + L" │\n";
  return result + L"└" + rule(width) + L"┘\n";
}

std::wstring renderDialog(const DialogTemplate& dialog) {
  const auto controls = inOrder(dialog);
  Lines lines;
  for (std::size_t at = 0; at < controls.size();) {
    std::vector<const Control*> row = {controls[at++]};
    while (at < controls.size() && sameRow(*row.front(), *controls[at])) row.push_back(controls[at++]);
    if (row.front()->rect)
      std::stable_sort(row.begin(), row.end(), [](const Control* a, const Control* b) {
        return a->rect && b->rect && a->rect->x < b->rect->x;
      });
    if (row.size() == 1) {
      for (std::wstring& line : cellOf(dialog, *row.front())) lines.push_back(std::move(line));
      continue;
    }
    std::wstring text;
    for (const Control* control : row)
      for (const std::wstring& cell : cellOf(dialog, *control)) {
        if (!text.empty() && !cell.empty()) text += kGap;
        text += cell;
      }
    lines.push_back(std::move(text));
  }
  return renderBox(dialog.title.view(), lines);
}

std::wstring renderMenu(const std::vector<MenuItem>& items) {
  Lines lines;
  for (const MenuItem& item : items) {
    if (item.command == 0)
      lines.push_back(L"──");
    else
      lines.push_back(item.enabled ? std::to_wstring(item.command) + L" " + shown(item.text)
                                   : L"(" + shown(item.text) + L")");
  }
  return renderBox({}, lines);
}

std::wstring renderProgress(const DialogTemplate& dialog) {
  for (const Control& control : dialog.controls)
    if (control.kind == ControlKind::Progress && control.visible) return bar(control);
  return {};
}

CString plainLabel(const CString& label) {
  CString result = label;
  result.Remove(L'&');
  result.TrimRight(L".:…： ");
  result.TrimLeft();
  return result;
}

}  // namespace platform
