#pragma once
// The folders that every program knows, as the product spells them, without a separator at the end.
#include "platform/text/cstring.h"

namespace platform {

CString temporaryFolder();     ///< Environment::temporaryFolder
CString sharedDocuments();     ///< Environment::sharedDocuments; the user's data folder where that is empty
CString userDataFolder();      ///< Environment::dataRoot
CString userSettingsFolder();  ///< Environment::settingsRoot

}  // namespace platform
