// Any lines as answers to a dialog, message boxes and menus: all of them come to an end.
#include <cstdint>
#include <sstream>

#include "platform/env/environment.h"
#include "platform/ui/terminal_ui.h"

namespace {

using Kind = platform::ControlKind;

class Asking : public platform::Dialog {
 public:
  using Dialog::Dialog;

 protected:
  void onCommand(int id) override {
    if (id == 20) platform::userInterface().messageBox(nullptr, getItemText(10), L"?", MB_YESNOCANCEL);
    if (id == 21) platform::userInterface().popupMenu({{5, L"five"}, {}, {6, L"six", false}}, this, id);
    Dialog::onCommand(id);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  std::ostringstream out;
  platform::StreamInput input(in);
  platform::TerminalUi ui(input, out);
  platform::Environment environment;
  environment.userInterface = &ui;
  const platform::ScopedEnvironment scope(environment);
  Asking dialog({1,
                 L"t",
                 {{.kind = Kind::Edit, .id = 10},
                  {.kind = Kind::Spin, .id = 11, .buddy = 10, .minimum = -5, .maximum = 2147483647},
                  {.kind = Kind::List, .id = 12, .multiple = true, .items = {L"a", L"b"}},
                  {.kind = Kind::Combo, .id = 13, .freeText = true, .items = {L"a"}},
                  {.kind = Kind::Grid, .id = 14, .columns = {L"k", L"v"}, .rows = {{L"a", L"b"}}},
                  {.kind = Kind::Check, .id = 15, .text = L"check"},
                  {.kind = Kind::Radio, .id = 16, .text = L"one"},
                  {.kind = Kind::Radio, .id = 17, .text = L"one"},
                  {.kind = Kind::Button, .id = 20, .text = L"&ask..."},
                  {.kind = Kind::Button, .id = 21, .text = L"menu", .isDefault = true}}});
  ui.runModal(dialog);
  return 0;
}
