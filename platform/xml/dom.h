#pragma once
// A tree of XML, seen through light handles.
//
// A handle (IXMLDOMNode, IXMLDOMElement, IXMLDOMNodeList) is a value; it keeps the whole document alive, may
// be null, and every question to a null handle has an empty answer. Removing a node ends the handles to it
// and to what stands below it. Names are compared as they are written, prefix included. Text between tags
// that is white space alone isn't part of the tree. One thread per document.
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/text/cstring.h"
#include "platform/xml/error.h"
#include "platform/xml/source.h"

namespace pugi {
struct xml_node_struct;
}

namespace platform {
class XmlTree;

enum class XmlNodeType { None, Document, Element, Text, CData, Comment, Instruction, Declaration, DocType };

/// A node without ownership, for walks over many nodes: valid while its document lives and is not changed.
/// Texts are UTF-8, end in a zero byte and belong to the document.
class XmlNodeView {
 public:
  XmlNodeView() = default;
  explicit XmlNodeView(pugi::xml_node_struct* node) : node_(node) {}
  explicit operator bool() const { return node_ != nullptr; }
  XmlNodeType type() const;
  const char* name() const;   ///< "" when the node has none
  const char* value() const;  ///< "" when the node has none
  XmlNodeView firstChild() const;
  XmlNodeView nextSibling() const;
  pugi::xml_node_struct* raw() const { return node_; }
  friend bool operator==(XmlNodeView, XmlNodeView) = default;

 private:
  pugi::xml_node_struct* node_ = nullptr;
};
}  // namespace platform

class IXMLDOMNodeList;
class IXMLDOMElement;

class IXMLDOMNode {
 public:
  IXMLDOMNode() = default;
  explicit operator bool() const { return node_ != nullptr; }
  /// The same node of the same document. Two null handles are equal.
  friend bool operator==(const IXMLDOMNode& a, const IXMLDOMNode& b) { return a.node_ == b.node_; }

  platform::XmlNodeType nodeType() const;
  bool isElement() const { return nodeType() == platform::XmlNodeType::Element; }
  /// As written, prefix included; `#text`, `#cdata-section`, `#comment`, `#document` for those kinds.
  CString nodeName() const;
  /// The name without its prefix.
  CString baseName() const;
  /// Text, CDATA, comment and instruction have a value; elements and documents have none.
  std::optional<CString> nodeValue() const;
  /// All text and CDATA at and below the node, in order.
  CString text() const;
  /// Puts one text in the place of all children of an element (or in the place of the value of a text, CDATA
  /// or comment). Characters that XML can't hold become U+FFFD. False when the node is of another kind.
  bool setText(const CString& text);

  IXMLDOMNode parentNode() const;
  IXMLDOMNode firstChild() const;
  IXMLDOMNode lastChild() const;
  IXMLDOMNode nextSibling() const;
  IXMLDOMNode previousSibling() const;
  IXMLDOMNodeList childNodes() const;

  /// XPath 1.0 from this node. Null when nothing is selected or the expression is wrong. Only nodes of the
  /// tree are selected, attributes are not.
  IXMLDOMNode selectSingleNode(const CString& expression) const;
  /// The same for all, in document order. A wrong expression gives a null list, as does a null node.
  IXMLDOMNodeList selectNodes(const CString& expression) const;

  /// Nothing when the node isn't an element or lacks the attribute, which is named as written, prefix
  /// included.
  std::optional<CString> getAttribute(const CString& name) const;
  /// Names and values in the order of the file.
  std::vector<std::pair<CString, CString>> attributes() const;
  /// False when the node isn't an element or `name` can't be a name. Characters that XML can't hold become
  /// U+FFFD.
  bool setAttribute(const CString& name, const CString& value);
  bool removeAttribute(const CString& name);

  /// A new last child; null when this is neither an element nor a document, when `name` can't be a name, or
  /// when a document has its one element already.
  IXMLDOMElement appendElement(const CString& name);
  /// A new element before `next`, which must be a child of this node.
  IXMLDOMElement insertElementBefore(const CString& name, const IXMLDOMNode& next);
  bool appendComment(const CString& text);
  /// Takes `child` and what is below it out of the tree. False when it isn't a child of this node.
  bool removeChild(const IXMLDOMNode& child);

  platform::XmlNodeView view() const { return platform::XmlNodeView(node_); }

 protected:
  friend class IXMLDOMNodeList;
  IXMLDOMNode(std::shared_ptr<platform::XmlTree> tree, pugi::xml_node_struct* node)
      : tree_(node ? std::move(tree) : nullptr), node_(node) {}
  IXMLDOMNode other(pugi::xml_node_struct* node) const { return {tree_, node}; }

  std::shared_ptr<platform::XmlTree> tree_;
  pugi::xml_node_struct* node_ = nullptr;
};

/// A node that is an element; null when made from another kind.
class IXMLDOMElement : public IXMLDOMNode {
 public:
  IXMLDOMElement() = default;
  IXMLDOMElement(const IXMLDOMNode& node) : IXMLDOMNode(node.isElement() ? node : IXMLDOMNode()) {}
  CString tagName() const { return nodeName(); }
};

/// The nodes as they were when the list was made. Null (false) when it couldn't be made.
class IXMLDOMNodeList {
 public:
  IXMLDOMNodeList() = default;
  explicit operator bool() const { return tree_ != nullptr; }
  int length() const { return static_cast<int>(nodes_.size()); }
  /// Null when `index` lies outside.
  IXMLDOMNode item(int index) const;
  const std::vector<pugi::xml_node_struct*>& raw() const { return nodes_; }

 private:
  friend class IXMLDOMNode;
  std::shared_ptr<platform::XmlTree> tree_;
  std::vector<pugi::xml_node_struct*> nodes_;
};

/// A document: a node whose children are the declaration, comments and one element.
class IXMLDOMDocument : public IXMLDOMNode {
 public:
  /// Empty, without an element.
  IXMLDOMDocument();
  explicit IXMLDOMDocument(std::shared_ptr<platform::XmlTree> tree);

  /// Null when the document has none.
  IXMLDOMElement documentElement() const;
  /// Indented UTF-8 with a declaration that says so; the declaration's other words and all comments are kept.
  std::string toUtf8() const;
  /// toUtf8 into a file that is replaced whole or left as it was. On failure false, and `error` says what.
  bool save(const std::filesystem::path& path, platform::XmlError* error = nullptr) const;
};

namespace platform {

/// Reads a file. The encoding is that of the byte-order mark, else the declared one, else UTF-8; UTF-8,
/// UTF-16, GB2312 (as GBK), GBK, GB18030, Big5, Shift_JIS, EUC-JP, EUC-KR, ISO-8859-x, windows-125x, KOI8-R
/// are known. Comments and CDATA are kept. Only the five predefined entities and character references are
/// resolved: a reference to any other is an error, and nothing outside the file is ever read. Null on
/// failure; `error` then says what and where.
std::shared_ptr<IXMLDOMDocument> loadXml(const std::filesystem::path& path, XmlError* error = nullptr,
                                         const XmlLimits& limits = {});

/// The same from bytes in memory.
std::shared_ptr<IXMLDOMDocument> parseXml(std::string_view bytes, XmlError* error = nullptr,
                                          const XmlLimits& limits = {});

/// The same from a text that was decoded already.
std::shared_ptr<IXMLDOMDocument> parseXmlSource(XmlSource source, XmlError* error = nullptr,
                                                const XmlLimits& limits = {});

}  // namespace platform
