#pragma once
// MekRes, the resource module beside the product: numbered messages, the table of command names, the
// languages of dialogs and menus, and the two globals that tell edition and language.
//
// Everything it says is data, read once from the folder share/korvane/resources of the installed tree:
// `messages.xml`, `commands.xml`, `ImLanguage.xml`. A missing or malformed file leaves its table empty. Main
// thread only.
#include <map>
#include <memory>
#include <vector>

#include "platform/text/cstring.h"
#include "platform/xml/dom.h"

#define RES_API __attribute__((visibility("default")))

namespace platform {
class Dialog;
struct DialogTemplate;
struct MenuItem;
}  // namespace platform

/// Edition brands. 0 is this product.
enum IM_PDTID : int {
  IM_PDT_KORVANE = 0,
  IM_PDT_OEM1 = 1,
  IM_PDT_OEM2 = 2,
  IM_PDT_OEM3 = 3,
  IM_PDT_OEM4 = 4,
  IM_PDT_OEM5 = 5,
};

RES_API extern IM_PDTID g_eProductType;

/// Language of the product, 1 to 8: CHS, CHT, ENU, JPN, DEU, KOR, PLK, CSY. Set when the module is loaded:
/// the code behind `LANGUAGE` in section `Config` of StartupConfig.xml, else the user's locale (LC_ALL,
/// LC_MESSAGES, LANG), else English. May be set at any time; texts follow at once.
RES_API extern int g_eSoftLanguage;

/// Ordered key text; keys that differ only in case are equal.
class RES_API ImMapKeyString {
 public:
  ImMapKeyString() = default;
  ImMapKeyString(const wchar_t* text) : text_(text) {}
  ImMapKeyString(const CString& text) : text_(text) {}
  const CString& GetString() const { return text_; }
  friend bool operator<(const ImMapKeyString& a, const ImMapKeyString& b) {
    return a.text_.CompareNoCase(b.text_) < 0;
  }
  friend bool operator==(const ImMapKeyString& a, const ImMapKeyString& b) {
    return a.text_.CompareNoCase(b.text_) == 0;
  }

 private:
  CString text_;
};

/// The two names of a command. The primary one may begin with the transparent prefix.
struct ImCommandRecord {
  CString m_strPrimary;
  CString m_strSecondary;
};

/// Command key to record. Looking a key up with [] makes a null entry, which means "not available".
using ImCommandTable = std::map<ImMapKeyString, ImCommandRecord*>;

/// The texts of one module: catalog name (upper case) to the text in the first language to the texts of all.
struct ImLangModule {
  using Texts = std::vector<CString>;  // by language number minus 1; missing ones are empty
  std::map<CString, std::map<CString, Texts>> m_mapCatalogs;
  /// The text in the language of the product; the key itself when there is none.
  CString Find(const wchar_t* catalog, const CString& key) const;
};

class RES_API ImLangSwitchManager {
 public:
  ImLangSwitchManager();
  ~ImLangSwitchManager();
  ImLangSwitchManager(const ImLangSwitchManager&) = delete;
  ImLangSwitchManager& operator=(const ImLangSwitchManager&) = delete;

  /// Group name to the group's table. Looking a group up with [] makes a null entry. Owned by the manager.
  std::map<ImMapKeyString, ImCommandTable*> m_mapGroups;

  /// Maps a coded text by the catalog CODING of the current module, else of any module; itself when it isn't
  /// there.
  CString ImLangCoding(CString text);
  /// Replaces the title and the texts of the dialog's numbered controls by the catalog DIALOG.
  void ImLangDialog(platform::Dialog* dialog);
  /// The same for a template, controls without number included, before a dialog is made of it.
  void ImLangDialog(platform::DialogTemplate* dialog);
  /// Replaces the labels of a menu by the catalog MENU.
  void ImLangMenu(std::vector<platform::MenuItem>* menu);
  /// A numbered message in the language of the product, in English where that is missing; empty when unknown.
  CString ImLangString(unsigned int id);
  /// The texts of a module by name, without regard to case; null when there are none. Owned by the manager.
  ImLangModule* FindModule(CString name);

  /// Reads a language file; texts of a module that is there already are added to it. False when it can't be
  /// read.
  bool LoadLanguageFile(const IXMLDOMDocument& document);

 private:
  CString translate(const wchar_t* catalog, const CString& text);
  void loadCommands(const IXMLDOMDocument& document);

  std::map<unsigned int, ImLangModule::Texts> m_mapMessages;
  std::map<ImMapKeyString, std::unique_ptr<ImLangModule>> m_mapModules;
};

/// Null when the module could not make its tables.
RES_API extern ImLangSwitchManager* g_pIAecLangSwitch;
/// The texts of the module whose resources are selected now; may be null.
RES_API extern ImLangModule* g_pCurModuleLang;

/// A numbered message, cut to `maximumLength` - 1 characters; empty when unknown.
RES_API CString IM_GetStringFromRc(unsigned int id, int maximumLength);

/// A file in the product's path form. Null when it can't be read or isn't well-formed.
RES_API std::shared_ptr<IXMLDOMDocument> IM_LoadXmlFromFile(CString path);

/// `CHS` 1, `CHT` 2, `ENU` 3, `JPN` 4, `DEU` 5, `KOR` 6, `PLK` 7, `CSY` 8; 0 for anything else. Upper case
/// only.
RES_API int IM_ResLanguageNumber(const CString& code);
/// `zh-cn`, `zh-tw`, `en-us`, `ja-jp`, `de-de`, `ko-kr`, `pl-pl`, `cs-cz` for 1 to 8; empty otherwise.
RES_API const wchar_t* IM_ResLanguageKey(int number);
/// The language of a locale name such as `de_DE.UTF-8`; 0 when it is none of the eight.
RES_API int IM_ResLanguageOfLocale(std::string_view locale);
