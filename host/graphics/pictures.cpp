#include "host/graphics/internal/pictures.h"

#include "platform/files/paths.h"
#include "platform/text/cstring.h"

namespace kvgr {
namespace {

std::filesystem::path locate(const std::filesystem::path& folder, const CString& name) {
  std::error_code ignored;
  const std::filesystem::path said = platform::toNative(name);
  const bool isWhole = said.is_absolute();
  if (isWhole && std::filesystem::is_regular_file(said, ignored)) return said;
  if (folder.empty()) return {};
  const CString beside = platform::fromNative(folder) + CString(L"\\");
  const std::wstring_view view = name.view();
  const std::size_t slash = view.find_last_of(L"\\/");
  const CString last(slash == view.npos ? view : view.substr(slash + 1));
  for (const CString& candidate : {isWhole ? last : name, last}) {
    const std::filesystem::path path = platform::toNative(beside + candidate);
    if (std::filesystem::is_regular_file(path, ignored)) return path;
  }
  return {};
}

}  // namespace

std::shared_ptr<const KvGrPicture> Pictures::find(const CString& name) {
  const auto [place, isNew] = known_.try_emplace(std::wstring(name.view()));
  if (!isNew) return place->second;
  const std::filesystem::path file = name.IsEmpty() ? std::filesystem::path() : locate(folder_, name);
  std::string error = "the file was not found";
  if (!file.empty()) place->second = kvgrReadPicture(file, error);
  if (!place->second)
    warnings_.push_back("the picture \"" + platform::utf8From(name) + "\" is shown as a frame: " + error);
  return place->second;
}

}  // namespace kvgr
