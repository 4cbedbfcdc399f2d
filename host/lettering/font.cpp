#include "host/lettering/font.h"

#include <dlfcn.h>
#include <ft2build.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_BBOX_H

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kEarlyCharacters = 0x400;
/// ISO 3098-1: letters stand two tenths of their height apart, so each keeps one tenth clear at its left.
constexpr double kSideBearing = 0.1;
constexpr double kBoxWidth = 0.6, kBoxAdvance = 0.8, kBlankAdvance = 0.6;

struct FaceFile {
  const char* file;
  const char* folder;  // where Debian keeps it below a font folder
};
constexpr FaceFile kFiles[] = {{"osifont.ttf", "truetype/osifont"}, {"wqy-microhei.ttc", "truetype/wqy"}};

fs::path ownFontFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&kvltFontFolders), &info) == 0 || !info.dli_fname) return {};
  // Libraries lie in <root>/lib.
  return fs::path(info.dli_fname).parent_path().parent_path() / "share/korvane/fonts";
}

void addFolders(const char* list, const char* below, std::vector<std::string>& folders) {
  std::string_view rest = list;
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    if (colon > 0) folders.push_back((fs::path(rest.substr(0, colon)) / below).string());
    rest.remove_prefix(std::min(colon + 1, rest.size()));
  }
}

fs::path findFile(const FaceFile& wanted) {
  std::error_code error;
  for (const std::string& folder : kvltFontFolders()) {
    for (const fs::path& direct :
         {fs::path(folder) / wanted.file, fs::path(folder) / wanted.folder / wanted.file})
      if (fs::is_regular_file(direct, error)) return direct;
    for (fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error),
         end;
         !error && at != end; at.increment(error))
      if (at->path().filename() == wanted.file) return at->path();
  }
  return {};
}

std::string& pendingWarning() {
  static std::string text;
  return text;
}

/// Gathers FreeType's walk along an outline.
struct OutlineWalk {
  std::vector<KvLtSegment>& outline;
  double scale, shift;
  KvGePoint2d at(const FT_Vector* v) const {
    return {static_cast<double>(v->x) * scale + shift, static_cast<double>(v->y) * scale};
  }
  static int add(void* user, KvLtSegment::Kind kind, const FT_Vector* a, const FT_Vector* b = nullptr,
                 const FT_Vector* c = nullptr) {
    auto& walk = *static_cast<OutlineWalk*>(user);
    KvLtSegment segment{kind, {walk.at(a), {}, {}}};
    if (b) segment.points[1] = walk.at(b);
    if (c) segment.points[2] = walk.at(c);
    walk.outline.push_back(segment);
    return 0;
  }
};

constexpr FT_Outline_Funcs kWalkFunctions = {
    [](const FT_Vector* to, void* user) { return OutlineWalk::add(user, KvLtSegment::kMove, to); },
    [](const FT_Vector* to, void* user) { return OutlineWalk::add(user, KvLtSegment::kLine, to); },
    [](const FT_Vector* control, const FT_Vector* to, void* user) {
      return OutlineWalk::add(user, KvLtSegment::kQuadratic, control, to);
    },
    [](const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* user) {
      return OutlineWalk::add(user, KvLtSegment::kCubic, first, second, to);
    },
    0,
    0};

void makeBox(KvLtGlyph& glyph) {
  constexpr double kWall = 0.08;
  const auto rectangle = [&](double inset, bool isHole) {
    const double l = 0.1 + inset, r = 0.1 + kBoxWidth - inset, b = inset, t = 1 - inset;
    KvGePoint2d corners[] = {{l, b}, {l, t}, {r, t}, {r, b}};
    if (isHole) std::reverse(std::begin(corners), std::end(corners));
    glyph.outline.push_back({KvLtSegment::kMove, {corners[0], {}, {}}});
    for (int i = 1; i < 4; ++i) glyph.outline.push_back({KvLtSegment::kLine, {corners[i], {}, {}}});
  };
  rectangle(0, false);
  rectangle(kWall, true);
  glyph.advance = kBoxAdvance;
  glyph.low = {0.1, 0};
  glyph.high = {0.1 + kBoxWidth, 1};
}

std::uint32_t nextSerial() {
  static std::uint32_t serial = 0;
  return ++serial;
}

}  // namespace

struct KvLtFace::Library {
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  ~Library() {
    if (face) FT_Done_Face(face);
    if (library) FT_Done_FreeType(library);
  }
};

std::vector<std::string> kvltOwnFontFolders() {
  std::vector<std::string> folders;
  if (const char* own = std::getenv("KORVANE_FONT_PATH")) addFolders(own, "", folders);
  if (const fs::path tree = ownFontFolder(); !tree.empty()) folders.push_back(tree.string());
  return folders;
}

std::vector<std::string> kvltFontFolders() {
  std::vector<std::string> folders = kvltOwnFontFolders();
  if (const char* home = std::getenv("XDG_DATA_HOME"); home && *home) addFolders(home, "fonts", folders);
  const char* system = std::getenv("XDG_DATA_DIRS");
  addFolders(system && *system ? system : "/usr/local/share:/usr/share", "fonts", folders);
  return folders;
}

KvLtFace& KvLtFace::of(KvLtFaceKind kind) {
  static KvLtFace technical(KvLtFaceKind::Technical);
  if (kind == KvLtFaceKind::Technical) return technical;
  static KvLtFace sans(KvLtFaceKind::Sans);
  return sans;
}

std::string KvLtFace::takeWarning() {
  return std::exchange(pendingWarning(), {});
}

KvLtFace::KvLtFace(KvLtFaceKind kind) : kind_(kind), early_(kEarlyCharacters, nullptr) {
  const FaceFile& file = kFiles[static_cast<std::size_t>(kind)];
  const fs::path path = findFile(file);
  auto library = std::make_unique<Library>();
  const bool isRead = !path.empty() && FT_Init_FreeType(&library->library) == 0 &&
                      FT_New_Face(library->library, path.c_str(), 0, &library->face) == 0 &&
                      FT_IS_SCALABLE(library->face);
  if (!isRead) {
    pendingWarning() += std::string(pendingWarning().empty() ? "" : "\n") + "the font " + file.file +
                        " was not found, or can't be read: its letters are shown as boxes (KORVANE_FONT_PATH "
                        "names folders with fonts)";
    return;
  }
  library_ = std::move(library);
  FT_BBox box{};
  const FT_UInt capital = FT_Get_Char_Index(library_->face, 'H');
  if (capital != 0 && FT_Load_Glyph(library_->face, capital, FT_LOAD_NO_SCALE) == 0)
    FT_Outline_Get_BBox(&library_->face->glyph->outline, &box);
  capital_ = box.yMax > 0 ? static_cast<double>(box.yMax) : static_cast<double>(library_->face->units_per_EM);
}

KvLtFace::~KvLtFace() = default;

bool KvLtFace::has(char32_t character) {
  return library_ && FT_Get_Char_Index(library_->face, character) != 0;
}

const KvLtGlyph& KvLtFace::glyph(char32_t character) {
  if (character < kEarlyCharacters && early_[character]) return *early_[character];
  auto& place = glyphs_[character];
  if (!place) {
    place = std::make_unique<KvLtGlyph>();
    place->serial = nextSerial();
    readGlyph(character, *place);
  }
  if (character < kEarlyCharacters) early_[character] = place.get();
  return *place;
}

void KvLtFace::readGlyph(char32_t character, KvLtGlyph& glyph) {
  const bool isBlank = character == ' ' || character == 0xA0 || character == 0x3000;
  const FT_UInt index = library_ ? FT_Get_Char_Index(library_->face, character) : 0;
  if (index == 0 || FT_Load_Glyph(library_->face, index, FT_LOAD_NO_SCALE) != 0) {
    if (isBlank)
      glyph.advance = character == 0x3000 ? 1 : kBlankAdvance;
    else
      makeBox(glyph);
    return;
  }
  FT_GlyphSlot slot = library_->face->glyph;
  const double scale = 1 / capital_;
  glyph.advance = static_cast<double>(slot->metrics.horiAdvance) * scale;
  if (slot->format != FT_GLYPH_FORMAT_OUTLINE || slot->outline.n_points == 0) return;
  FT_BBox box{};
  FT_Outline_Get_BBox(&slot->outline, &box);
  // The technical face has its letters far from their origin; they are brought to the standard's distance.
  const double left = static_cast<double>(box.xMin) * scale;
  const double shift = kind_ == KvLtFaceKind::Technical && left > kSideBearing ? kSideBearing - left : 0;
  OutlineWalk walk{glyph.outline, scale, shift};
  if (FT_Outline_Decompose(&slot->outline, &kWalkFunctions, &walk) != 0) glyph.outline.clear();
  glyph.advance += shift;
  glyph.low = {left + shift, static_cast<double>(box.yMin) * scale};
  glyph.high = {static_cast<double>(box.xMax) * scale + shift, static_cast<double>(box.yMax) * scale};
}
