#pragma once
#include <pugixml.hpp>

namespace platform {

/// What the handles of one document share.
class XmlTree {
 public:
  pugi::xml_document document;
};

}  // namespace platform
