#include "module/data/internal/xml_path.h"

#include <optional>
#include <utility>

#include "platform/xml/source.h"

namespace mek {
namespace {

struct NewElement {
  CString name;
  std::vector<std::pair<CString, CString>> attributes;
};

/// One condition `[@name='value']` at the start of `text`, which is taken off; false when there is none.
bool takeCondition(CString& text, NewElement& element) {
  if (text.Left(2) != L"[@") return false;
  const int equals = text.Find(L'=');
  if (equals < 0) return false;
  CString name = text.Mid(2, equals - 2);
  name.Trim();
  CString rest = text.Mid(equals + 1);
  rest.TrimLeft();
  const wchar_t quote = rest[0];
  if (quote != L'\'' && quote != L'"') return false;
  const int close = rest.Find(quote, 1);
  if (close < 0 || !platform::isXmlName(platform::utf8From(name))) return false;
  element.attributes.emplace_back(name, rest.Mid(1, close - 1));
  rest = rest.Mid(close + 1);
  rest.TrimLeft();
  if (rest[0] != L']') return false;
  text = rest.Mid(1);
  return true;
}

std::optional<NewElement> elementFor(const CString& step) {
  NewElement element;
  const int bracket = step.Find(L'[');
  element.name = bracket < 0 ? step : step.Left(bracket);
  element.name.Trim();
  if (!platform::isXmlName(platform::utf8From(element.name))) return std::nullopt;
  CString conditions = bracket < 0 ? CString() : step.Mid(bracket);
  while (!conditions.IsEmpty())
    if (!takeCondition(conditions, element)) return std::nullopt;
  return element;
}

}  // namespace

std::vector<CString> splitXmlPath(const CString& path, wchar_t separator) {
  std::vector<CString> steps;
  CString step;
  wchar_t quote = 0;
  int brackets = 0;
  const auto finish = [&] {
    step.Trim();
    if (!step.IsEmpty()) steps.push_back(step);
    step.Empty();
  };
  for (wchar_t c : path.view()) {
    if (c == quote)
      quote = 0;
    else if (!quote && (c == L'\'' || c == L'"'))
      quote = c;
    else if (!quote && c == L'[')
      ++brackets;
    else if (!quote && c == L']')
      --brackets;
    if (c == separator && !quote && brackets <= 0)
      finish();
    else
      step += c;
  }
  finish();
  return steps;
}

IXMLDOMNode walkXmlPath(IXMLDOMNode from, const std::vector<CString>& steps) {
  for (const CString& step : steps) from = from.selectSingleNode(step);
  return steps.empty() ? IXMLDOMNode() : from;
}

IXMLDOMNode makeXmlPath(const IXMLDOMDocument& document, std::vector<CString> steps) {
  if (steps.empty()) return {};
  IXMLDOMNode at = document.documentElement();
  if (document.selectSingleNode(steps.front()) == at) steps.erase(steps.begin());
  std::vector<NewElement> missing;
  for (const CString& step : steps) {
    const IXMLDOMNode next = missing.empty() ? at.selectSingleNode(step) : IXMLDOMNode();
    if (next) {
      at = next;
      continue;
    }
    const std::optional<NewElement> element = elementFor(step);
    if (!element) return {};
    missing.push_back(*element);
  }
  for (const NewElement& element : missing) {
    at = at.appendElement(element.name);
    for (const auto& [name, value] : element.attributes) at.setAttribute(name, value);
  }
  return at;
}

}  // namespace mek
