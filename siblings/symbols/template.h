#pragma once
// The template drawings: one for each standard, with its layers, text style and dimension style. They are
// written from the tables and stand in the installed tree.
#include <memory>
#include <string>

#include "host/database/database.h"
#include "siblings/symbols/standards.h"

namespace kmsymb {

/// Below the product's root, with a `\` in front.
CString templatePlace(Standard standard);
/// Needs a host, which finds the linetype files. The settings in force decide the layers.
std::unique_ptr<KvDbDatabase> makeTemplate(Standard standard);
/// The bytes of its file.
std::string formatTemplate(Standard standard);

}  // namespace kmsymb
