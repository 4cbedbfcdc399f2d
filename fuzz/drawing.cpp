// Drawing files, text and binary: read strictly and tolerantly, save both ways, read again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/io/drawing_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  KvIoReport report;
  {
    KvDbDatabase strict(false);
    kvdbParseDrawing(strict, bytes, report, KvIoMode::Strict);
  }
  KvDbDatabase drawing(false);
  if (kvdbParseDrawing(drawing, bytes, report, KvIoMode::Recover) != Kvad::eOk) return 0;
  for (KvIoForm form : {KvIoForm::Text, KvIoForm::Binary}) {
    KvIoSaveOptions options;
    options.form = form;
    const std::string saved = kvdbFormatDrawing(drawing, options);
    // What the host writes itself must read without a fault.
    KvDbDatabase again(false);
    if (kvdbParseDrawing(again, saved, report, KvIoMode::Strict) != Kvad::eOk) std::abort();
  }
  return 0;
}
