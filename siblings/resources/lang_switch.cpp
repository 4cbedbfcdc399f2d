// The tables of messages, command names and translated texts.
#include <algorithm>

#include "platform/text/number.h"
#include "platform/ui/user_interface.h"
#include "siblings/resources/internal/tree.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kFirstLanguage = 1;
constexpr int kLastLanguage = 8;
constexpr int kEnglish = 3;

CString attribute(const IXMLDOMNode& node, const wchar_t* name) {
  return node.getAttribute(name).value_or(CString());
}

/// The texts of an element that carries them under the language keys.
ImLangModule::Texts textsOf(const IXMLDOMNode& item) {
  ImLangModule::Texts texts;
  for (int number = kFirstLanguage; number <= kLastLanguage; ++number)
    texts.push_back(attribute(item, IM_ResLanguageKey(number)));
  return texts;
}

CString inLanguage(const ImLangModule::Texts& texts, int number) {
  return number >= kFirstLanguage && number <= static_cast<int>(texts.size())
             ? texts[static_cast<std::size_t>(number - 1)]
             : CString();
}

/// The file's escape for a line feed.
CString unescaped(CString text) {
  text.Replace(L"\\n", L"\n");
  return text;
}

template <class Visit>
void forEachElement(const IXMLDOMNode& parent, const wchar_t* name, Visit visit) {
  for (IXMLDOMNode child = parent.firstChild(); child; child = child.nextSibling())
    if (child.isElement() && child.nodeName() == name) visit(child);
}

}  // namespace

CString ImLangModule::Find(const wchar_t* catalog, const CString& key) const {
  auto foundCatalog = m_mapCatalogs.find(CString(catalog).MakeUpper());
  if (foundCatalog == m_mapCatalogs.end()) return key;
  auto found = foundCatalog->second.find(key);
  if (found == foundCatalog->second.end()) return key;
  const CString text = inLanguage(found->second, g_eSoftLanguage);
  return text.IsEmpty() ? key : text;
}

ImLangSwitchManager::ImLangSwitchManager() {
  const auto folder = mekres::dataFolder();
  if (const auto messages = platform::loadXml(folder / "messages.xml")) {
    forEachElement(messages->documentElement(), L"Item", [&](const IXMLDOMNode& item) {
      auto texts = textsOf(item);
      std::transform(texts.begin(), texts.end(), texts.begin(), unescaped);
      m_mapMessages[static_cast<unsigned int>(_wtoi(attribute(item, L"id")))] = std::move(texts);
    });
  }
  if (const auto commands = platform::loadXml(folder / "commands.xml")) loadCommands(*commands);
  if (const auto texts = platform::loadXml(folder / "ImLanguage.xml")) LoadLanguageFile(*texts);
}

ImLangSwitchManager::~ImLangSwitchManager() {
  for (auto& [name, group] : m_mapGroups) {
    if (!group) continue;
    for (auto& [key, record] : *group) delete record;
    delete group;
  }
}

void ImLangSwitchManager::loadCommands(const IXMLDOMDocument& document) {
  forEachElement(document.documentElement(), L"Group", [&](const IXMLDOMNode& group) {
    ImCommandTable*& table = m_mapGroups[attribute(group, L"name")];
    if (!table) table = new ImCommandTable;
    forEachElement(group, L"Command", [&](const IXMLDOMNode& command) {
      CString secondary = attribute(command, IM_ResLanguageKey(g_eSoftLanguage));
      if (secondary.IsEmpty()) secondary = attribute(command, IM_ResLanguageKey(kEnglish));
      ImCommandRecord*& record = (*table)[attribute(command, L"key")];
      delete record;
      record = new ImCommandRecord{attribute(command, L"primary"), secondary};
    });
  });
}

bool ImLangSwitchManager::LoadLanguageFile(const IXMLDOMDocument& document) {
  const IXMLDOMElement root = document.documentElement();
  if (!root || root.tagName() != L"IM_LanguageSwitch") return false;
  forEachElement(root, L"Module", [&](const IXMLDOMNode& module) {
    auto& texts = m_mapModules[attribute(module, L"name")];
    if (!texts) texts = std::make_unique<ImLangModule>();
    forEachElement(module, L"Catalog", [&](const IXMLDOMNode& catalog) {
      auto& entries = texts->m_mapCatalogs[attribute(catalog, L"name").MakeUpper()];
      forEachElement(catalog, L"Item", [&](const IXMLDOMNode& item) {
        auto row = textsOf(item);
        const CString key = row.front();
        if (!key.IsEmpty()) entries.emplace(key, std::move(row));
      });
    });
  });
  return true;
}

CString ImLangSwitchManager::translate(const wchar_t* catalog, const CString& text) {
  if (text.IsEmpty()) return text;
  if (g_pCurModuleLang) {
    const CString found = g_pCurModuleLang->Find(catalog, text);
    if (found != text) return found;
  }
  for (const auto& [name, module] : m_mapModules) {
    const CString found = module->Find(catalog, text);
    if (found != text) return found;
  }
  return text;
}

CString ImLangSwitchManager::ImLangCoding(CString text) {
  return translate(L"CODING", text);
}

void ImLangSwitchManager::ImLangDialog(platform::Dialog* dialog) {
  if (!dialog) return;
  dialog->setTitle(translate(L"DIALOG", dialog->title()));
  for (const platform::Control& control : dialog->state().controls)
    if (control.id >= 0) dialog->setItemText(control.id, translate(L"DIALOG", control.text));
}

void ImLangSwitchManager::ImLangDialog(platform::DialogTemplate* dialog) {
  if (!dialog) return;
  dialog->title = translate(L"DIALOG", dialog->title);
  for (platform::Control& control : dialog->controls) control.text = translate(L"DIALOG", control.text);
}

void ImLangSwitchManager::ImLangMenu(std::vector<platform::MenuItem>* menu) {
  if (!menu) return;
  for (platform::MenuItem& item : *menu) item.text = translate(L"MENU", item.text);
}

CString ImLangSwitchManager::ImLangString(unsigned int id) {
  auto found = m_mapMessages.find(id);
  if (found == m_mapMessages.end()) return CString();
  const CString text = inLanguage(found->second, g_eSoftLanguage);
  return text.IsEmpty() ? inLanguage(found->second, kEnglish) : text;
}

ImLangModule* ImLangSwitchManager::FindModule(CString name) {
  auto found = m_mapModules.find(name);
  return found == m_mapModules.end() ? nullptr : found->second.get();
}
