#pragma once
// The pictures that one plot shows, each read once.
#include <map>

#include "host/graphics/picture.h"
#include "platform/text/cstring.h"

namespace kvgr {

class Pictures {
 public:
  /// `folder`: the drawing's.
  explicit Pictures(std::filesystem::path folder) : folder_(std::move(folder)) {}
  /// A picture under the name that the drawing gives: where that says, else below the drawing's folder, else
  /// in it. Null when it isn't there or can't be shown; a warning tells of it once.
  std::shared_ptr<const KvGrPicture> find(const CString& name);
  std::vector<std::string> takeWarnings() { return std::move(warnings_); }

 private:
  std::filesystem::path folder_;
  std::map<std::wstring, std::shared_ptr<const KvGrPicture>> known_;
  std::vector<std::string> warnings_;
};

}  // namespace kvgr
