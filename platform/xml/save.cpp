// Writing documents: indented UTF-8, replaced whole.
#include "platform/files/files.h"
#include "platform/xml/dom.h"
#include "platform/xml/internal/tree.h"

namespace {

struct StringWriter : pugi::xml_writer {
  std::string out;
  void write(const void* data, std::size_t size) override {
    out.append(static_cast<const char*>(data), size);
  }
};

constexpr std::string_view kPlainDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

bool isVersion(std::string_view text) {
  return text.starts_with("1.") && text.size() > 2 &&
         text.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

/// The file's declaration with its encoding made UTF-8, which stands behind the version. Words that XML
/// doesn't allow there are left out, so that what is written can be read again.
std::string declaration(pugi::xml_node node) {
  if (node.type() != pugi::node_declaration) return std::string(kPlainDeclaration);
  const std::string_view version = node.attribute("version").value();
  std::string out = "<?xml version=\"";
  out += isVersion(version) ? version : "1.0";
  out += "\" encoding=\"UTF-8\"";
  const std::string_view standalone = node.attribute("standalone").value();
  if (standalone == "yes" || standalone == "no") out.append(" standalone=\"").append(standalone).append("\"");
  return out + "?>\n";
}

}  // namespace

IXMLDOMDocument::IXMLDOMDocument() : IXMLDOMDocument(std::make_shared<platform::XmlTree>()) {}

IXMLDOMDocument::IXMLDOMDocument(std::shared_ptr<platform::XmlTree> tree)
    : IXMLDOMNode(tree, tree->document.internal_object()) {}

IXMLDOMElement IXMLDOMDocument::documentElement() const {
  return other(tree_->document.document_element().internal_object());
}

std::string IXMLDOMDocument::toUtf8() const {
  StringWriter writer;
  writer.out = declaration(tree_->document.first_child());
  for (pugi::xml_node child : tree_->document)
    if (child.type() != pugi::node_declaration)
      child.print(writer, "\t", pugi::format_indent, pugi::encoding_utf8);
  return std::move(writer.out);
}

bool IXMLDOMDocument::save(const std::filesystem::path& path, platform::XmlError* error) const {
  const platform::FileStatus status = platform::writeFile(path, toUtf8());
  if (!status && error) {
    *error = {};
    error->path = path;
    error->what = status.message();
  }
  return static_cast<bool>(status);
}
