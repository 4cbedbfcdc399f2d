// Reading documents: bytes, encoding, references, tree, and the faults that the parser itself lets pass.
#include <algorithm>
#include <cstring>

#include "platform/xml/dom.h"
#include "platform/xml/internal/tree.h"
#include "platform/xml/source.h"

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

/// Behind the tag that starts at `at`; a `>` in quotes doesn't end it.
std::size_t endOfTag(std::string_view text, std::size_t at) {
  char quote = 0;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == quote)
      quote = 0;
    else if (quote == 0 && (c == '"' || c == '\''))
      quote = c;
    else if (quote == 0 && c == '>')
      return at + 1;
  }
  return text.size();
}

/// The first `&` that starts no resolvable reference, outside comments, CDATA and instructions; npos when
/// there is none. A text without such a `&` anywhere, the usual case, costs one search.
std::size_t findUnknownReference(std::string_view text) {
  std::size_t verbatimEnd = 0, scanned = 0;
  unsigned long code = 0;
  for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at)) {
    const std::size_t length = at < verbatimEnd ? 1 : readXmlReference(text.substr(at), code);
    if (length > 0) {
      at += length;
      continue;
    }
    while (scanned < at) {
      const std::size_t open = text.find('<', scanned);
      if (open >= at) break;
      const std::size_t end = endOfVerbatim(text, open);
      scanned = end == std::string_view::npos ? endOfTag(text, open) : end;
      if (end != std::string_view::npos) verbatimEnd = end;
    }
    if (at >= verbatimEnd) return at;
    ++at;
  }
  return std::string_view::npos;
}

/// The first `<` inside the quotes of a tag; npos when there is none. A text with a document type isn't
/// looked at.
std::size_t findLessInTag(std::string_view text) {
  if (text.find("<!DOCTYPE") != std::string_view::npos) return std::string_view::npos;
  for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
    const std::size_t verbatim = endOfVerbatim(text, at);
    const std::size_t end = verbatim == std::string_view::npos ? endOfTag(text, at) : verbatim;
    const std::size_t less = text.substr(0, end).find('<', at + 1);
    if (verbatim == std::string_view::npos && less != std::string_view::npos) return less;
    at = end;
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

/// What the parser lets pass in a tree: depth, attributes that stand twice, characters that XML can't hold.
class TreeCheck {
 public:
  TreeCheck(std::size_t maximumDepth, bool hasNumbers)
      : maximumDepth_(maximumDepth), hasNumbers_(hasNumbers) {}

  /// The first fault, null when there is none; `at` gets its node.
  const char* run(pugi::xml_node root, pugi::xml_node& at) {
    std::size_t depth = 0;
    at = root;
    while (at) {
      if (const char* fault = nodeFault(at)) return fault;
      if (pugi::xml_node child = at.first_child()) {
        if (++depth > maximumDepth_) return "elements stand too deep inside one another";
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

  /// A `<` was in an attribute's value, which may have been written as it must be or not.
  bool holdsLess() const { return holdsLess_; }

 private:
  const char* nodeFault(pugi::xml_node node) {
    if (hasNumbers_ && isBad(node.value())) return kBadCharacter;
    std::size_t count = 0;
    for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
      if (++count > kMostAttributes) return "too many attributes on one element";
      if (hasTwin(attribute)) return "an attribute stands twice on one element";
      if (hasNumbers_ && isBad(attribute.value())) return kBadCharacter;
      holdsLess_ = holdsLess_ || std::strchr(attribute.value(), '<');
    }
    return nullptr;
  }

  /// The text was checked as it stood; what its numbered characters became was not.
  static bool isBad(const char* value) { return findBadXmlText(value) != std::string_view::npos; }

  static constexpr const char* kBadCharacter = "a character by number that XML can't hold";
  std::size_t maximumDepth_;
  bool hasNumbers_;
  bool holdsLess_ = false;
};

/// True when the text begins with a declaration that another tag breaks into, or that never ends.
bool isDeclarationBroken(std::string_view text) {
  if (!text.starts_with("<?xml")) return false;
  const std::size_t end = text.find("?>");
  return end == std::string_view::npos || text.substr(1, end).find_first_of("<>") < end;
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

/// Fewer bytes than these for each allowed item can't exceed the limit: `<a/>` and ` a=""` are the shortest.
constexpr std::size_t kShortestItem = 4;

/// From a decoded text to a checked tree.
class Reader {
 public:
  Reader(XmlSource source, const XmlLimits& limits, XmlError& error)
      : source_(std::move(source)), limits_(limits), error_(error) {}

  std::shared_ptr<IXMLDOMDocument> read() {
    const std::string_view text = source_.text();
    if (text.size() / kShortestItem > limits_.items && countItems(text) > limits_.items)
      return fail(0, "more than " + std::to_string(limits_.items) + " nodes and attributes");
    if (isDeclarationBroken(text)) return fail(0, "the XML declaration isn't closed");
    std::size_t bad = findBadXmlText(text);
    if (bad != std::string_view::npos) return fail(bad, "a byte that isn't valid UTF-8 text of an XML file");
    bad = findUnknownReference(text);
    if (bad != std::string_view::npos)
      return fail(bad, "a reference other than the five predefined ones and characters by number");
    return parse();
  }

 private:
  std::shared_ptr<IXMLDOMDocument> parse() {
    auto tree = std::make_shared<XmlTree>();
    const std::string_view text = source_.text();
    // Not in place: a failure's line is counted in the text as it was.
    const pugi::xml_parse_result result =
        tree->document.load_buffer(text.data(), text.size(), kParseFlags, pugi::encoding_utf8);
    if (!result) return fail(static_cast<std::size_t>(result.offset), result.description());
    pugi::xml_node at;
    const char* fault = topLevelFault(tree->document, at);
    TreeCheck check(limits_.depth, text.find("&#") != std::string_view::npos);
    if (!fault) fault = check.run(tree->document, at);
    const std::size_t less = check.holdsLess() ? findLessInTag(text) : std::string_view::npos;
    if (less != std::string_view::npos) return fail(less, "a < inside an attribute's value");
    if (!fault) return std::make_shared<IXMLDOMDocument>(std::move(tree));
    return fail(at ? static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, at.offset_debug())) : 0, fault);
  }

  std::shared_ptr<IXMLDOMDocument> fail(std::size_t offset, std::string what) {
    const std::string_view before = source_.text().substr(0, offset);
    error_.decoded = source_.converted;
    error_.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    error_.offset = offset + source_.skip;
    error_.what = std::move(what);
    return nullptr;
  }

  XmlSource source_;
  const XmlLimits& limits_;
  XmlError& error_;
};

}  // namespace

std::string XmlError::message() const {
  std::string out = path.empty() ? "text" : path.string();
  if (line > 0) {
    out += ":" + std::to_string(line) + " (byte " + std::to_string(offset);
    out += decoded ? " of the text as UTF-8)" : ")";
  }
  return out + ": " + what;
}

std::shared_ptr<IXMLDOMDocument> parseXmlSource(XmlSource source, XmlError* error, const XmlLimits& limits) {
  XmlError own;
  XmlError& out = error ? *error : own;
  out = {};
  return Reader(std::move(source), limits, out).read();
}

std::shared_ptr<IXMLDOMDocument> parseXml(std::string_view bytes, XmlError* error, const XmlLimits& limits) {
  XmlError own;
  XmlError& out = error ? *error : own;
  out = {};
  XmlSource source;
  if (bytes.size() > limits.bytes) {
    out.what = "the text is larger than " + std::to_string(limits.bytes) + " bytes";
    return nullptr;
  }
  if (!decodeXmlSource(std::string(bytes), source, out)) return nullptr;
  return parseXmlSource(std::move(source), &out, limits);
}

std::shared_ptr<IXMLDOMDocument> loadXml(const std::filesystem::path& path, XmlError* error,
                                         const XmlLimits& limits) {
  XmlError own;
  XmlError& out = error ? *error : own;
  XmlSource source;
  if (!readXmlSource(path, limits, source, out)) return nullptr;
  auto document = parseXmlSource(std::move(source), &out, limits);
  if (!document) out.path = path;
  return document;
}

}  // namespace platform
