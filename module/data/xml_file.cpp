#include "module/data/xml_file.h"

#include "module/data/internal/xml_path.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr const char* kPlainFile = "<?xml version=\"1.0\" encoding=\"GB2312\"?><root/>";
constexpr const wchar_t* kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>";
constexpr const wchar_t* kRootTemplate = L"<%s />";

std::shared_ptr<IXMLDOMDocument> writeAndLoad(const CString& path, std::string_view content) {
  return platform::writeFile(path, content) ? IM_LoadXmlFromFile(path) : nullptr;
}

/// A null node for a null document.
IXMLDOMNode selectOne(const std::shared_ptr<IXMLDOMDocument>& document, const CString& expression) {
  return document ? document->selectSingleNode(expression) : IXMLDOMNode();
}

}  // namespace

std::shared_ptr<IXMLDOMDocument> IM_CreateXmlFile(CString path) {
  return writeAndLoad(path, kPlainFile);
}

int IM_SaveXmlToFile(std::shared_ptr<IXMLDOMDocument> document, CString path) {
  return document && document->save(platform::toNative(path)) ? 1 : 0;
}

CString IM_GetXmlValue(CString file, CString node, CString attribute, CString condition) {
  if (!condition.IsEmpty()) node += L"[@" + condition + L"]";
  return selectOne(IM_LoadXmlFromFile(file), node).getAttribute(attribute).value_or(CString());
}

int IM_GetXmlArray(CString file, CString node, CString attribute, CStringArray& values) {
  const auto document = IM_LoadXmlFromFile(file);
  const IXMLDOMNodeList nodes = document ? document->selectNodes(node) : IXMLDOMNodeList();
  if (!nodes) return 0;
  for (int i = 0; i < nodes.length(); ++i)
    if (const auto value = nodes.item(i).getAttribute(attribute)) values.Add(*value);
  return 1;
}

int IM_GetXmlSegs(CString file, CString node, CStringArray& names) {
  return IM_GetXmlSegs(IM_LoadXmlFromFile(file), node, names);
}

int IM_GetXmlSegs(std::shared_ptr<IXMLDOMDocument> document, CString node, CStringArray& names) {
  const IXMLDOMNode found = selectOne(document, node);
  if (!found.isElement()) return 0;
  for (const auto& [name, value] : found.attributes()) names.Add(name);
  return 1;
}

int IM_GetXmlMatrix(std::shared_ptr<IXMLDOMDocument> document, CString node, const CStringArray& names,
                    std::vector<CStringArray>& rows) {
  const IXMLDOMNodeList nodes = document ? document->selectNodes(node) : IXMLDOMNodeList();
  if (!nodes) return 0;
  for (int i = 0; i < nodes.length(); ++i) {
    CStringArray& row = rows.emplace_back();
    for (const CString& name : names) row.Add(nodes.item(i).getAttribute(name).value_or(CString()));
  }
  return 1;
}

int IM_SetXmlValue(std::shared_ptr<IXMLDOMDocument> document, CString node, CString attribute,
                   CString value) {
  IXMLDOMNode found = selectOne(document, node);
  if (document && !found) found = mek::makeXmlPath(*document, mek::splitXmlPath(node, L'/'));
  return found.setAttribute(attribute, value) ? 1 : 0;
}

int IM_SetXmlValue(CString file, CString node, CString attribute, CString value) {
  const auto document = IM_LoadXmlFromFile(file);
  if (!document || !IM_SetXmlValue(document, node, attribute, value)) return 0;
  return IM_SaveXmlToFile(document, file);
}

CReadAndWriteXMLFile::CReadAndWriteXMLFile(CString rootName) : rootName_(std::move(rootName)) {}

int CReadAndWriteXMLFile::OpenXMLFile(CString path) {
  if (!platform::exists(path)) return CreateXMLFile(path);
  path_ = path;
  document_ = IM_LoadXmlFromFile(path);
  return document_ ? 1 : 0;
}

int CReadAndWriteXMLFile::CreateXMLFile(CString path) {
  CString content(kDeclaration);
  content.AppendFormat(kRootTemplate, rootName_);
  path_ = path;
  document_ = nullptr;
  if (platform::parseXml(platform::utf8From(content)))
    document_ = writeAndLoad(path, platform::utf8From(content));
  return document_ ? 1 : 0;
}

int CReadAndWriteXMLFile::SaveXMLFile() {
  return IM_SaveXmlToFile(document_, path_);
}

IXMLDOMElement CReadAndWriteXMLFile::GetRootNode() const {
  return document_ ? document_->documentElement() : IXMLDOMElement();
}

IXMLDOMNode CReadAndWriteXMLFile::FindNode(CString path) const {
  if (!document_) return {};
  const std::vector<CString> steps = mek::splitXmlPath(path, L'\\');
  const IXMLDOMNode found = mek::walkXmlPath(*document_, steps);
  return found ? found : mek::walkXmlPath(GetRootNode(), steps);
}

IXMLDOMNode CReadAndWriteXMLFile::OpenNode(CString path) {
  const IXMLDOMNode found = FindNode(path);
  return found || !document_ ? found : mek::makeXmlPath(*document_, mek::splitXmlPath(path, L'\\'));
}

CString CReadAndWriteXMLFile::GetNodeValue(CString path) const {
  return FindNode(path).text();
}

IXMLDOMElement CReadAndWriteXMLFile::AddNode(CString parentPath, CString name, CString value) {
  return AppendNode(parentPath.IsEmpty() ? GetRootNode() : FindNode(parentPath), name, value);
}

IXMLDOMElement CReadAndWriteXMLFile::AppendNode(const IXMLDOMNode& parent, CString name, CString value) {
  IXMLDOMNode at = parent;
  IXMLDOMElement element = at.isElement() ? at.appendElement(name) : IXMLDOMElement();
  if (!value.IsEmpty()) element.setText(value);
  return element;
}

IXMLDOMElement CReadAndWriteXMLFile::CreateNode(CString parentPath, CString name, CString value) {
  return AppendNode(parentPath.IsEmpty() ? GetRootNode() : OpenNode(parentPath), name, value);
}
