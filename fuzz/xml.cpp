// XML of any bytes: what is read can be walked, saved and read again with the same content.
#include <cstdint>
#include <cstdlib>

#include "platform/xml/dom.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

std::size_t walk(const IXMLDOMNode& node) {
  std::size_t count = 1;
  for (IXMLDOMNode child = node.firstChild(); child; child = child.nextSibling()) {
    require(child.parentNode() == node);
    require(!child.isElement() || !child.nodeName().IsEmpty());
    count += walk(child);
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const platform::XmlLimits limits{.bytes = 1 << 16, .items = 10000, .depth = 100};
  platform::XmlError error;
  const auto document = platform::parseXml({reinterpret_cast<const char*>(data), size}, &error, limits);
  require(static_cast<bool>(document) != static_cast<bool>(error));
  require(document || !error.message().empty());
  if (!document) return 0;
  walk(*document);
  const auto again = platform::parseXml(document->toUtf8(), &error);
  require(again != nullptr);
  require(again->toUtf8() == platform::parseXml(again->toUtf8())->toUtf8());
  require(again->selectNodes(L"//*").length() == document->selectNodes(L"//*").length());
  return 0;
}
