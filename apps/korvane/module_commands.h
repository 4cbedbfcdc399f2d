#pragma once
// Sub-commands that the product's tools module runs. The program reaches them only by loading it, so that a
// missing module is told in words.
#include <string_view>

namespace korvane {

bool isModuleCommand(std::string_view name);
/// `argv[0]` is the sub-command's name. Its exit code; 1 when the module can't be loaded.
int runModuleCommand(int argc, const char* const* argv);

}  // namespace korvane
