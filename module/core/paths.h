#pragma once
// Where the product and its settings lie, in the product's path form.
#include "module/core/export.h"
#include "platform/text/cstring.h"

/// The product's root: the module's own file name with three path parts cut off. 0, and `out` empty, when the
/// name can't be read or is longer than 260 characters.
MEK_API int IM_GetSysPath(CString& out);
/// The root + `\MCADSetting`; `D:\Korvane` without a root.
MEK_API CString IM_GetSysSettingPath();
/// `ROAMABLEROOTPREFIX` without one trailing `\`, + `\Korvm\MCADSetting`; below `D:\Korvane` when the
/// variable can't be read.
MEK_API CString IM_GetLocalSettingPath();
/// The folder of documents of all users + a tail by edition; empty for an unknown edition.
MEK_API CString IM_GetPublicDocumentPath();
/// `SOFTWARE\Korvasoft\` + PRODUCT `\` VERSION `\` LANGUAGE of section Config of the start-up file; missing
/// values leave empty parts.
MEK_API CString IM_GetRegSysPath();
/// The start-up file.
MEK_API CString IM_GetSystemSettingXML();

namespace mek {

/// IM_GetLocalSettingPath + `\pro\`.
CString IM_GetProSettingPath();
/// The root + `\Translator\`.
CString IM_GetTranslatorPath();
/// What IM_GetSysPath makes of a module's file name.
CString rootOfModuleFile(CString fileName);
/// Two parts with exactly one `\` between them.
CString joinPath(CString first, CString second);
/// Makes the user's folders and copies the templates that are missing there. Failures pass in silence.
void prepareUserFolder();

}  // namespace mek
