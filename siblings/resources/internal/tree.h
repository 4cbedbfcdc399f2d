#pragma once
// Where the resource module finds the installed tree.
#include <filesystem>

namespace mekres {

/// The tree in which this library lies: two folders above its own file.
std::filesystem::path installedRoot();
/// The folder of the module's data files.
std::filesystem::path dataFolder();
/// The number of the language in which the product starts.
int chosenLanguage();

}  // namespace mekres
