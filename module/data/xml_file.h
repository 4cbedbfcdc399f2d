#pragma once
// Settings files in XML: one value by file and path, and a class that keeps one document open.
//
// Free functions take XPath from the document ("root/item[@name='a']"). The class takes paths of its own:
// names with `\` between them, each a step of XPath, so that `Module[@name='A']\Catalog` and `CUI//Item` both
// work; a `\` inside quotes belongs to the step. Nothing here shows a message: failure is an empty text, 0 or
// a null node. Every save writes indented UTF-8 and replaces the file whole.
#include <memory>
#include <vector>

#include "module/core/export.h"
#include "platform/text/containers.h"
#include "platform/text/cstring.h"
#include "platform/xml/dom.h"

/// Writes a new file with an empty element `root`, and loads it. Null when that fails.
MEK_API std::shared_ptr<IXMLDOMDocument> IM_CreateXmlFile(CString path);
/// 1 when the file was written.
MEK_API int IM_SaveXmlToFile(std::shared_ptr<IXMLDOMDocument> document, CString path);

/// The attribute of the first node that the expression selects; with a condition, of the first for which
/// `[@condition]` holds as well. Empty when any of it is missing.
MEK_API CString IM_GetXmlValue(CString file, CString node, CString attribute, CString condition);
/// Appends the attribute of every selected node that has it. 0 when the file or the expression is bad.
MEK_API int IM_GetXmlArray(CString file, CString node, CString attribute, CStringArray& values);
/// Appends the names of the first selected node's attributes, in order. 0 when there is no such node.
MEK_API int IM_GetXmlSegs(CString file, CString node, CStringArray& names);
MEK_API int IM_GetXmlSegs(std::shared_ptr<IXMLDOMDocument> document, CString node, CStringArray& names);
/// Appends a row for every selected node: the values of the named attributes, in the order of the names; the
/// empty text where one is missing. 0 when the document is null or the expression is bad.
MEK_API int IM_GetXmlMatrix(std::shared_ptr<IXMLDOMDocument> document, CString node,
                            const CStringArray& names, std::vector<CStringArray>& rows);

/// Sets an attribute of the first selected node. A missing node is made: the path is walked from the root
/// element, its own name left out, and each missing step added with the attributes of its conditions
/// (`item[@name='a']`). Steps of any other form can't be made: 0.
MEK_API int IM_SetXmlValue(std::shared_ptr<IXMLDOMDocument> document, CString node, CString attribute,
                           CString value);
/// The same in a file, which is then saved; 0 also when the file can't be loaded or saved.
MEK_API int IM_SetXmlValue(CString file, CString node, CString attribute, CString value);

class MEK_API CReadAndWriteXMLFile {
 public:
  explicit CReadAndWriteXMLFile(CString rootName = L"root");

  /// Opens a file; makes it when there is none. 0 when it can't be made, or is there and isn't XML (it then
  /// stays).
  int OpenXMLFile(CString path);
  /// Writes a new file with an empty root element in the place of whatever was there, and opens it.
  int CreateXMLFile(CString path);
  /// Saves to the path that was opened.
  int SaveXMLFile();

  /// Null when no file is open.
  IXMLDOMElement GetRootNode() const;
  /// The node at a path that starts at the document; failing that, at the root element. Null when a step
  /// selects nothing.
  IXMLDOMNode FindNode(CString path) const;
  /// FindNode, with the missing steps made as IM_SetXmlValue makes them.
  IXMLDOMNode OpenNode(CString path);
  /// The text of the node at a path; empty when there is none.
  CString GetNodeValue(CString path) const;
  /// A new element as last child of the node at `parentPath` (empty: the root element), which must exist.
  IXMLDOMElement AddNode(CString parentPath, CString name, CString value = CString());
  /// A new element as last child of `parent`.
  IXMLDOMElement AppendNode(const IXMLDOMNode& parent, CString name, CString value = CString());
  /// AddNode below a path whose missing steps are made.
  IXMLDOMElement CreateNode(CString parentPath, CString name, CString value = CString());

 private:
  CString rootName_;
  CString path_;
  std::shared_ptr<IXMLDOMDocument> document_;
};
