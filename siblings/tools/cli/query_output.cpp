#include "siblings/tools/cli/query_output.h"

#include <algorithm>
#include <ostream>

#include "platform/text/number.h"
#include "platform/ui/display_width.h"

namespace tools {
namespace {

constexpr const wchar_t* kNull = L"\u00B7";
constexpr const wchar_t* kGap = L"  ";

/// A number as JSON writes it, which leaves no room for blanks, a leading zero or a lone point.
bool isJsonNumber(std::wstring_view text) {
  const auto isDigit = [&](std::size_t i) { return i < text.size() && text[i] >= L'0' && text[i] <= L'9'; };
  std::size_t at = text.starts_with(L'-') ? 1 : 0;
  if (!isDigit(at)) return false;
  if (text[at] == L'0' && isDigit(at + 1)) return false;
  while (isDigit(at)) ++at;
  if (at < text.size() && text[at] == L'.') {
    if (!isDigit(++at)) return false;
    while (isDigit(at)) ++at;
  }
  if (at < text.size() && (text[at] == L'e' || text[at] == L'E')) {
    ++at;
    if (at < text.size() && (text[at] == L'+' || text[at] == L'-')) ++at;
    if (!isDigit(at)) return false;
    while (isDigit(at)) ++at;
  }
  return at == text.size();
}

bool isNumberColumn(const Grid& grid, std::size_t column) {
  bool any = false;
  for (const auto& row : grid.rows) {
    const CString text = row[column].text();
    double unused = 0;
    if (!text.IsEmpty() && !platform::parseWhole(text.view(), unused)) return false;
    any = any || !text.IsEmpty();
  }
  return any;
}

std::wstring cellText(const _variant_t& value) {
  return value.vt == VT_NULL ? kNull : platform::printable(value.text().view());
}

void appendCell(std::wstring& line, const std::wstring& text, int width, bool right) {
  const std::wstring blanks(static_cast<std::size_t>(std::max(0, width - platform::displayWidth(text))),
                            L' ');
  line += right ? blanks + text : text + blanks;
  line += kGap;
}

void finishLine(CString& out, std::wstring& line) {
  line.erase(line.find_last_not_of(L' ') + 1);
  out += CString(line) + L"\n";
  line.clear();
}

std::string csvField(const _variant_t& value) {
  if (value.vt == VT_NULL) return {};
  const std::string text = platform::utf8From(value.text());
  const bool isPlain = !text.empty() && text.find_first_of(",\"\r\n") == std::string::npos &&
                       text.front() != ' ' && text.back() != ' ';
  if (isPlain) return text;
  std::string out = "\"";
  for (char c : text) out.append(c == '"' ? 2 : 1, c);
  return out + "\"";
}

std::string jsonString(const CString& text) {
  std::string out = "\"";
  for (char c : platform::utf8From(text)) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      static constexpr char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string jsonValue(const _variant_t& value, bool isNumber) {
  if (value.vt == VT_NULL) return "null";
  const CString text = value.text();
  return isNumber && isJsonNumber(text.view()) ? platform::utf8From(text) : jsonString(text);
}

}  // namespace

Grid gridOf(const std::shared_ptr<_Recordset>& answer) {
  Grid grid;
  std::vector<_adoFields> names;
  answer->GetadoFields(names);
  for (const _adoFields& name : names) grid.columns.push_back({name.name.text(), false});
  for (answer->MoveFirst(); answer->GetadoEOF() == VARIANT_FALSE; answer->MoveNext()) {
    auto& row = grid.rows.emplace_back();
    for (const _adoFields& name : names) {
      const _variant_t value = answer->GetCollect(_variant_t(name.name));
      row.push_back(value.vt == VT_EMPTY ? _variant_t::null() : value);
    }
  }
  answer->MoveFirst();
  for (std::size_t i = 0; i < grid.columns.size(); ++i) grid.columns[i].isNumber = isNumberColumn(grid, i);
  return grid;
}

CString tableOf(const Grid& grid) {
  std::vector<int> widths;
  for (std::size_t i = 0; i < grid.columns.size(); ++i) {
    int width = platform::displayWidth(grid.columns[i].name.view());
    for (const auto& row : grid.rows) width = std::max(width, platform::displayWidth(cellText(row[i])));
    widths.push_back(width);
  }
  CString out;
  std::wstring line;
  for (std::size_t i = 0; i < widths.size(); ++i)
    appendCell(line, platform::printable(grid.columns[i].name.view()), widths[i], grid.columns[i].isNumber);
  if (!widths.empty()) finishLine(out, line);
  for (int width : widths) line += std::wstring(static_cast<std::size_t>(width), L'-') + kGap;
  if (!widths.empty()) finishLine(out, line);
  for (const auto& row : grid.rows) {
    for (std::size_t i = 0; i < widths.size(); ++i)
      appendCell(line, cellText(row[i]), widths[i], grid.columns[i].isNumber);
    finishLine(out, line);
  }
  out.AppendFormat(grid.rows.size() == 1 ? L"(%d row)\n" : L"(%d rows)\n",
                   static_cast<int>(grid.rows.size()));
  return out;
}

void writeCsv(std::ostream& out, const Grid& grid) {
  for (std::size_t i = 0; i < grid.columns.size(); ++i)
    out << (i ? "," : "") << csvField(_variant_t(grid.columns[i].name));
  if (!grid.columns.empty()) out << '\n';
  for (const auto& row : grid.rows) {
    for (std::size_t i = 0; i < row.size(); ++i) out << (i ? "," : "") << csvField(row[i]);
    out << '\n';
  }
}

void writeJson(std::ostream& out, const Grid& grid) {
  out << '[';
  const char* before = "\n";
  for (const auto& row : grid.rows) {
    out << before << "  {";
    for (std::size_t i = 0; i < row.size(); ++i)
      out << (i ? ", " : "") << jsonString(grid.columns[i].name) << ": "
          << jsonValue(row[i], grid.columns[i].isNumber);
    out << '}';
    before = ",\n";
  }
  out << (grid.rows.empty() ? "]\n" : "\n]\n");
}

}  // namespace tools
