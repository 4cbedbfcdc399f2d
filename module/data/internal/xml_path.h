#pragma once
// Paths inside an XML document: cutting them into steps, and making the nodes that they name.
#include <vector>

#include "platform/xml/dom.h"

namespace mek {

/// The parts between separators; a separator in quotes or brackets doesn't count, and empty parts are left
/// out.
std::vector<CString> splitXmlPath(const CString& path, wchar_t separator);

/// The node that the steps lead to, each one an expression from the node before. Null when one selects
/// nothing.
IXMLDOMNode walkXmlPath(IXMLDOMNode from, const std::vector<CString>& steps);

/// The same below the root element of `document`, whose own name is left out; missing steps are made when
/// they have the form `name` or `name[@a='v']...`. Null when one has another form; nothing is made then.
IXMLDOMNode makeXmlPath(const IXMLDOMDocument& document, std::vector<CString> steps);

}  // namespace mek
