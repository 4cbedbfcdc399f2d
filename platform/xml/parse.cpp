// Reading documents: bytes, encoding, references, tree, and the faults that the parser itself lets pass.
#include <algorithm>
#include <fstream>

#include "platform/xml/dom.h"
#include "platform/xml/internal/decode.h"
#include "platform/xml/internal/tree.h"

namespace platform {
namespace {

constexpr unsigned kParseFlags = pugi::parse_cdata | pugi::parse_comments | pugi::parse_pi |
                                 pugi::parse_declaration | pugi::parse_doctype | pugi::parse_escapes |
                                 pugi::parse_eol | pugi::parse_wconv_attribute |
                                 pugi::parse_fragment;  // so that text outside the element shows

/// Where a text stands that the parser doesn't look into: comment, CDATA, instruction. Npos when `at` isn't
/// there.
std::size_t endOfVerbatim(std::string_view text, std::size_t at) {
  struct Form {
    std::string_view open, close;
  };
  static constexpr Form kForms[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const Form& form : kForms) {
    if (!text.substr(at).starts_with(form.open)) continue;
    const std::size_t end = text.find(form.close, at + form.open.size());
    return end == std::string_view::npos ? text.size() : end + form.close.size();
  }
  return std::string_view::npos;
}

/// Length of a reference that is resolved (`&lt;`, `&#10;`, ...), 0 when what stands at `at` is another.
std::size_t knownReference(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at, 16);
  for (std::string_view known : {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"})
    if (rest.starts_with(known)) return known.size();
  if (!rest.starts_with("&#")) return 0;
  const bool isHex = rest.size() > 2 && rest[2] == 'x';
  unsigned long code = 0;
  std::size_t i = isHex ? 3 : 2;
  const std::size_t firstDigit = i;
  for (; i < rest.size() && rest[i] != ';'; ++i) {
    const char c = rest[i];
    const bool isDigit = c >= '0' && c <= '9';
    const bool isLetter = isHex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'));
    if (!isDigit && !isLetter) return 0;
    code = code * (isHex ? 16 : 10) + static_cast<unsigned long>(isDigit ? c - '0' : (c | 0x20) - 'a' + 10);
  }
  return i < rest.size() && i > firstDigit && isXmlChar(code) ? i + 1 : 0;
}

/// The first `&` that starts no resolvable reference, outside comments, CDATA and instructions; npos when
/// there is none. A text without such a `&` anywhere, the usual case, costs one search.
std::size_t findUnknownReference(std::string_view text) {
  std::size_t verbatimEnd = 0, scanned = 0;
  for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at)) {
    const std::size_t length = at < verbatimEnd ? 1 : knownReference(text, at);
    if (length > 0) {
      at += length;
      continue;
    }
    while (scanned < at) {
      const std::size_t open = text.find('<', scanned);
      if (open >= at) break;
      const std::size_t end = endOfVerbatim(text, open);
      scanned = end == std::string_view::npos ? open + 1 : end;
      if (end != std::string_view::npos) verbatimEnd = end;
    }
    if (at >= verbatimEnd) return at;
    ++at;
  }
  return std::string_view::npos;
}

std::size_t countItems(std::string_view text) {
  std::size_t count = 0;
  for (char c : text) count += static_cast<std::size_t>((c == '<') | (c == '='));
  return count;
}

bool hasTwin(pugi::xml_attribute attribute) {
  const std::string_view name = attribute.name();
  for (pugi::xml_attribute next = attribute.next_attribute(); next; next = next.next_attribute())
    if (name == next.name()) return true;
  return false;
}

/// Attributes of one element beyond which twins are not looked for one against one.
constexpr std::size_t kMostAttributes = 1000;

/// What is wrong with the start tag of `node`, null when nothing is.
const char* attributeFault(pugi::xml_node node) {
  std::size_t count = 0;
  for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
       attribute = attribute.next_attribute()) {
    if (++count > kMostAttributes) return "too many attributes on one element";
    if (hasTwin(attribute)) return "an attribute stands twice on one element";
  }
  return nullptr;
}

/// What the parser lets pass: depth, and attributes that stand twice. `at` gets the node.
const char* treeFault(pugi::xml_node root, std::size_t maximumDepth, pugi::xml_node& at) {
  std::size_t depth = 0;
  at = root;
  while (at) {
    if (at.first_attribute())
      if (const char* fault = attributeFault(at)) return fault;
    if (pugi::xml_node child = at.first_child()) {
      if (++depth > maximumDepth) return "elements stand too deep inside one another";
      at = child;
      continue;
    }
    while (at != root && !at.next_sibling()) {
      at = at.parent();
      --depth;
    }
    if (at == root) return nullptr;
    at = at.next_sibling();
  }
  return nullptr;
}

/// A document has exactly one element, and no text beside it.
const char* topLevelFault(const pugi::xml_document& document, pugi::xml_node& at) {
  pugi::xml_node element;
  for (at = document.first_child(); at; at = at.next_sibling()) {
    if (at.type() == pugi::node_pcdata || at.type() == pugi::node_cdata)
      return "text outside the document's element";
    if (at.type() != pugi::node_element) continue;
    if (element) return "a second element beside the document's element";
    element = at;
  }
  return element ? nullptr : "no element";
}

class Reader {
 public:
  Reader(std::string_view bytes, const XmlLimits& limits, XmlError& error)
      : bytes_(bytes), limits_(limits), error_(error) {}

  std::shared_ptr<IXMLDOMDocument> read() {
    if (bytes_.size() > limits_.bytes)
      return fail(0, "the file is larger than " + std::to_string(limits_.bytes) + " bytes");
    XmlText decoded;
    if (!decodeXml(bytes_, decoded, error_)) return locate(bytes_);
    text_ = decoded.isConverted ? std::string_view(decoded.converted) : bytes_;
    error_.decoded = decoded.isConverted;
    skip_ = decoded.skip;
    text_.remove_prefix(skip_);
    if (countItems(text_) > limits_.items)
      return fail(0, "more than " + std::to_string(limits_.items) + " nodes and attributes");
    std::size_t bad = findBadUtf8(text_);
    if (bad != std::string_view::npos) return fail(bad, "a byte that isn't valid UTF-8 text of an XML file");
    bad = findUnknownReference(text_);
    if (bad != std::string_view::npos)
      return fail(bad, "a reference other than the five predefined ones and characters by number");
    return parse();
  }

 private:
  std::shared_ptr<IXMLDOMDocument> parse() {
    auto tree = std::make_shared<XmlTree>();
    const pugi::xml_parse_result result =
        tree->document.load_buffer(text_.data(), text_.size(), kParseFlags, pugi::encoding_utf8);
    if (!result) return fail(static_cast<std::size_t>(result.offset), result.description());
    pugi::xml_node at;
    const char* fault = topLevelFault(tree->document, at);
    if (!fault) fault = treeFault(tree->document, limits_.depth, at);
    if (fault)
      return fail(at ? static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, at.offset_debug())) : 0, fault);
    return std::make_shared<IXMLDOMDocument>(std::move(tree));
  }

  std::shared_ptr<IXMLDOMDocument> fail(std::size_t offset, std::string what) {
    error_.offset = offset;
    error_.what = std::move(what);
    return locate(text_);
  }

  std::shared_ptr<IXMLDOMDocument> locate(std::string_view text) {
    const std::string_view before = text.substr(0, error_.offset);
    error_.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    error_.offset += skip_;
    return nullptr;
  }

  std::string_view bytes_, text_;
  std::size_t skip_ = 0;
  const XmlLimits& limits_;
  XmlError& error_;
};

bool readFile(const std::filesystem::path& path, std::size_t limit, std::string& bytes, XmlError& error) {
  std::error_code status;
  if (!std::filesystem::is_regular_file(path, status)) {
    error.what = status ? status.message() : "not a file";
    return false;
  }
  const std::uintmax_t size = std::filesystem::file_size(path, status);
  if (status || size > limit) {
    error.what = status ? status.message() : "the file is larger than " + std::to_string(limit) + " bytes";
    return false;
  }
  std::ifstream stream(path, std::ios::binary);
  bytes.resize(static_cast<std::size_t>(size));
  stream.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!stream.bad() && stream.gcount() == static_cast<std::streamsize>(size)) return true;
  error.what = "the file can't be read";
  return false;
}

}  // namespace

std::string XmlError::message() const {
  std::string out = path.empty() ? "text" : path.string();
  if (line > 0) {
    out += ":" + std::to_string(line) + " (byte " + std::to_string(offset);
    out += decoded ? " of the text as UTF-8)" : ")";
  }
  return out + ": " + what;
}

std::shared_ptr<IXMLDOMDocument> parseXml(std::string_view bytes, XmlError* error, const XmlLimits& limits) {
  XmlError own;
  XmlError& out = error ? *error : own;
  out = {};
  return Reader(bytes, limits, out).read();
}

std::shared_ptr<IXMLDOMDocument> loadXml(const std::filesystem::path& path, XmlError* error,
                                         const XmlLimits& limits) {
  XmlError own;
  XmlError& out = error ? *error : own;
  out = {};
  std::string bytes;
  std::shared_ptr<IXMLDOMDocument> document;
  if (readFile(path, limits.bytes, bytes, out)) document = Reader(bytes, limits, out).read();
  if (!document) out.path = path;
  return document;
}

}  // namespace platform
