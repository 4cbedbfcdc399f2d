#include "platform/xml/dom.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/text/utf.h"
#include "platform/xml/internal/tree.h"
#include "platform/xml/source.h"

using platform::XmlNodeType;

namespace {

pugi::xml_node nodeOf(pugi::xml_node_struct* node) {
  return pugi::xml_node(node);
}

XmlNodeType typeOf(pugi::xml_node node) {
  static constexpr std::array<XmlNodeType, 9> kTypes = {
      XmlNodeType::None,        XmlNodeType::Document,    XmlNodeType::Element,
      XmlNodeType::Text,        XmlNodeType::CData,       XmlNodeType::Comment,
      XmlNodeType::Instruction, XmlNodeType::Declaration, XmlNodeType::DocType};
  return kTypes[static_cast<std::size_t>(node.type())];
}

bool hasValue(pugi::xml_node node) {
  const XmlNodeType type = typeOf(node);
  return type == XmlNodeType::Text || type == XmlNodeType::CData || type == XmlNodeType::Comment ||
         type == XmlNodeType::Instruction;
}

/// UTF-8 of `text`, with what XML can't hold replaced.
std::string storable(const CString& text) {
  std::wstring clean(text.str());
  for (wchar_t& c : clean)
    if (!platform::isXmlChar(static_cast<unsigned long>(c))) c = L'\xFFFD';
  return platform::toUtf8(clean);
}

/// Text and CDATA at and below `top`, in order.
std::string textBelow(pugi::xml_node top) {
  std::string out;
  pugi::xml_node at = top;
  while (at) {
    if (at.type() == pugi::node_pcdata || at.type() == pugi::node_cdata) out += at.value();
    if (pugi::xml_node child = at.first_child()) {
      at = child;
      continue;
    }
    while (at != top && !at.next_sibling()) at = at.parent();
    if (at == top) break;
    at = at.next_sibling();
  }
  return out;
}

/// The nodes that an expression selects; false when it is wrong.
bool selectInto(pugi::xml_node from, const CString& expression, std::vector<pugi::xml_node_struct*>& nodes) {
  try {
    const pugi::xpath_query query(platform::utf8From(expression).c_str());
    if (query.return_type() != pugi::xpath_type_node_set) return false;
    pugi::xpath_node_set found = query.evaluate_node_set(from);
    found.sort();
    nodes.reserve(found.size());
    for (const pugi::xpath_node& node : found)
      if (node.node()) nodes.push_back(node.node().internal_object());
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool mayTakeElement(pugi::xml_node parent) {
  if (parent.type() == pugi::node_element) return true;
  if (parent.type() != pugi::node_document) return false;
  return std::none_of(parent.begin(), parent.end(),
                      [](pugi::xml_node n) { return n.type() == pugi::node_element; });
}

}  // namespace

namespace platform {

XmlNodeType XmlNodeView::type() const {
  return typeOf(nodeOf(node_));
}
const char* XmlNodeView::name() const {
  return nodeOf(node_).name();
}
const char* XmlNodeView::value() const {
  return nodeOf(node_).value();
}
XmlNodeView XmlNodeView::firstChild() const {
  return XmlNodeView(nodeOf(node_).first_child().internal_object());
}
XmlNodeView XmlNodeView::nextSibling() const {
  return XmlNodeView(nodeOf(node_).next_sibling().internal_object());
}

}  // namespace platform

XmlNodeType IXMLDOMNode::nodeType() const {
  return typeOf(nodeOf(node_));
}

CString IXMLDOMNode::nodeName() const {
  switch (nodeType()) {
    case XmlNodeType::Text:
      return L"#text";
    case XmlNodeType::CData:
      return L"#cdata-section";
    case XmlNodeType::Comment:
      return L"#comment";
    case XmlNodeType::Document:
      return L"#document";
    default:
      return platform::wideFromUtf8(nodeOf(node_).name());
  }
}

CString IXMLDOMNode::baseName() const {
  const CString name = platform::wideFromUtf8(nodeOf(node_).name());
  return name.Mid(name.ReverseFind(L':') + 1);
}

std::optional<CString> IXMLDOMNode::nodeValue() const {
  const pugi::xml_node node = nodeOf(node_);
  if (!hasValue(node)) return std::nullopt;
  return platform::wideFromUtf8(node.value());
}

CString IXMLDOMNode::text() const {
  const pugi::xml_node node = nodeOf(node_);
  return platform::wideFromUtf8(hasValue(node) ? std::string(node.value()) : textBelow(node));
}

bool IXMLDOMNode::setText(const CString& text) {
  pugi::xml_node node = nodeOf(node_);
  const std::string value = storable(text);
  if (hasValue(node)) return node.set_value(value.c_str());
  if (!isElement()) return false;
  node.remove_children();
  return value.empty() || node.append_child(pugi::node_pcdata).set_value(value.c_str());
}

IXMLDOMNode IXMLDOMNode::parentNode() const {
  return other(nodeOf(node_).parent().internal_object());
}
IXMLDOMNode IXMLDOMNode::firstChild() const {
  return other(nodeOf(node_).first_child().internal_object());
}
IXMLDOMNode IXMLDOMNode::lastChild() const {
  return other(nodeOf(node_).last_child().internal_object());
}
IXMLDOMNode IXMLDOMNode::nextSibling() const {
  return other(nodeOf(node_).next_sibling().internal_object());
}
IXMLDOMNode IXMLDOMNode::previousSibling() const {
  return other(nodeOf(node_).previous_sibling().internal_object());
}

IXMLDOMNodeList IXMLDOMNode::childNodes() const {
  IXMLDOMNodeList list;
  if (!node_) return list;
  list.tree_ = tree_;
  for (pugi::xml_node child : nodeOf(node_)) list.nodes_.push_back(child.internal_object());
  return list;
}

IXMLDOMNode IXMLDOMNode::selectSingleNode(const CString& expression) const {
  return selectNodes(expression).item(0);
}

IXMLDOMNodeList IXMLDOMNode::selectNodes(const CString& expression) const {
  IXMLDOMNodeList list;
  if (node_ && selectInto(nodeOf(node_), expression, list.nodes_)) list.tree_ = tree_;
  return list;
}

std::optional<CString> IXMLDOMNode::getAttribute(const CString& name) const {
  if (!isElement()) return std::nullopt;
  const pugi::xml_attribute attribute = nodeOf(node_).attribute(platform::utf8From(name).c_str());
  if (!attribute) return std::nullopt;
  return platform::wideFromUtf8(attribute.value());
}

std::vector<std::pair<CString, CString>> IXMLDOMNode::attributes() const {
  std::vector<std::pair<CString, CString>> out;
  for (pugi::xml_attribute attribute : nodeOf(node_).attributes())
    out.emplace_back(platform::wideFromUtf8(attribute.name()), platform::wideFromUtf8(attribute.value()));
  return out;
}

bool IXMLDOMNode::setAttribute(const CString& name, const CString& value) {
  const std::string narrow = platform::utf8From(name);
  if (!isElement() || !platform::isXmlName(narrow)) return false;
  pugi::xml_node node = nodeOf(node_);
  pugi::xml_attribute attribute = node.attribute(narrow.c_str());
  if (!attribute) attribute = node.append_attribute(narrow.c_str());
  return attribute.set_value(storable(value).c_str());
}

bool IXMLDOMNode::removeAttribute(const CString& name) {
  return isElement() && nodeOf(node_).remove_attribute(platform::utf8From(name).c_str());
}

IXMLDOMElement IXMLDOMNode::appendElement(const CString& name) {
  const std::string narrow = platform::utf8From(name);
  pugi::xml_node node = nodeOf(node_);
  if (!mayTakeElement(node) || !platform::isXmlName(narrow)) return {};
  return other(node.append_child(narrow.c_str()).internal_object());
}

IXMLDOMElement IXMLDOMNode::insertElementBefore(const CString& name, const IXMLDOMNode& next) {
  const std::string narrow = platform::utf8From(name);
  pugi::xml_node node = nodeOf(node_);
  if (!mayTakeElement(node) || !platform::isXmlName(narrow)) return {};
  return other(node.insert_child_before(narrow.c_str(), nodeOf(next.node_)).internal_object());
}

bool IXMLDOMNode::appendComment(const CString& text) {
  pugi::xml_node comment = nodeOf(node_).append_child(pugi::node_comment);
  return comment && comment.set_value(storable(text).c_str());
}

bool IXMLDOMNode::removeChild(const IXMLDOMNode& child) {
  return node_ && child.node_ && nodeOf(node_).remove_child(nodeOf(child.node_));
}

IXMLDOMNode IXMLDOMNodeList::item(int index) const {
  if (index < 0 || index >= length()) return {};
  return {tree_, nodes_[static_cast<std::size_t>(index)]};
}
