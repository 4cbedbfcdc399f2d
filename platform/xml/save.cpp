// Writing documents: indented UTF-8, replaced whole.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

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

/// The file's declaration with its encoding made UTF-8, which stands behind the version.
std::string declaration(pugi::xml_node node) {
  if (node.type() != pugi::node_declaration) return std::string(kPlainDeclaration);
  std::string out = "<?xml version=\"";
  const pugi::xml_attribute version = node.attribute("version");
  out += version ? version.value() : "1.0";
  out += "\" encoding=\"UTF-8\"";
  if (const pugi::xml_attribute standalone = node.attribute("standalone"))
    out.append(" standalone=\"").append(standalone.value()).append("\"");
  return out + "?>\n";
}

/// A file beside the target that takes its place when all is written, and vanishes otherwise.
class Replacement {
 public:
  explicit Replacement(const std::filesystem::path& target)
      : target_(target), temporary_(target.string() + ".XXXXXX") {
    handle_ = ::mkostemp(temporary_.data(), O_CLOEXEC);
  }
  ~Replacement() {
    if (handle_ < 0) return;
    ::close(handle_);
    ::unlink(temporary_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// False with `errno` set when a step failed; the target is then as it was.
  bool commit(std::string_view bytes) {
    if (handle_ < 0 || !write(bytes)) return false;
    struct stat old;
    const ::mode_t mode = ::stat(target_.c_str(), &old) == 0 ? old.st_mode & 07777 : 0644;
    if (::fchmod(handle_, mode) != 0 || ::fsync(handle_) != 0) return false;
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) return false;
    ::close(handle_);
    handle_ = -1;
    return true;
  }

 private:
  bool write(std::string_view bytes) {
    while (!bytes.empty()) {
      const ::ssize_t count = ::write(handle_, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  const std::filesystem::path& target_;
  std::string temporary_;
  int handle_ = -1;
};

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
  if (Replacement(path).commit(toUtf8())) return true;
  if (error) {
    *error = {};
    error->path = path;
    error->what = std::string("can't be written: ") + std::strerror(errno);
  }
  return false;
}
