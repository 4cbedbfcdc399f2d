// The header variables of drawing files and the values of a new drawing: group codes by the published
// reference of the drawing exchange format; values for millimetres, dimensions by ISO 129.
#include <algorithm>

#include "host/database/header.h"

namespace {

constexpr KvDbHeaderVariable number(const wchar_t* name, std::int16_t code, double value = 0) {
  return {name, code, 0, value, 0, 0, L""};
}
constexpr KvDbHeaderVariable text(const wchar_t* name, std::int16_t code, const wchar_t* value = L"") {
  return {name, code, 0, 0, 0, 0, value};
}
constexpr KvDbHeaderVariable point2(const wchar_t* name, double x = 0, double y = 0) {
  return {name, 10, 2, x, y, 0, L""};
}
constexpr KvDbHeaderVariable point3(const wchar_t* name, double x = 0, double y = 0, double z = 0) {
  return {name, 10, 3, x, y, z, L""};
}

/// Extents of a drawing without anything in it.
constexpr double kNothing = 1e20;

// clang-format off
constexpr KvDbHeaderVariable kVariables[] = {
    point3(L"$INSBASE"), point3(L"$EXTMIN", kNothing, kNothing, kNothing),
    point3(L"$EXTMAX", -kNothing, -kNothing, -kNothing), point2(L"$LIMMIN"), point2(L"$LIMMAX", 420, 297),
    number(L"$ORTHOMODE", 70), number(L"$REGENMODE", 70, 1), number(L"$FILLMODE", 70, 1),
    number(L"$QTEXTMODE", 70), number(L"$MIRRTEXT", 70), number(L"$LTSCALE", 40, 1), number(L"$ATTMODE", 70, 1),
    number(L"$TEXTSIZE", 40, 2.5), number(L"$TRACEWID", 40, 1), text(L"$TEXTSTYLE", 7, L"Standard"),
    text(L"$CLAYER", 8, L"0"), text(L"$CELTYPE", 6, L"ByLayer"), number(L"$CECOLOR", 62, 256),
    number(L"$CELTSCALE", 40, 1), number(L"$DISPSILH", 70), number(L"$CELWEIGHT", 370, -1),
    number(L"$DIMSCALE", 40, 1), number(L"$DIMASZ", 40, 2.5), number(L"$DIMEXO", 40, 0.625),
    number(L"$DIMDLI", 40, 3.75), number(L"$DIMRND", 40), number(L"$DIMDLE", 40), number(L"$DIMEXE", 40, 1.25),
    number(L"$DIMTP", 40), number(L"$DIMTM", 40), number(L"$DIMTXT", 40, 2.5), number(L"$DIMCEN", 40, 2.5),
    number(L"$DIMTSZ", 40), number(L"$DIMTOL", 70), number(L"$DIMLIM", 70), number(L"$DIMTIH", 70),
    number(L"$DIMTOH", 70), number(L"$DIMSE1", 70), number(L"$DIMSE2", 70), number(L"$DIMTAD", 70, 1),
    number(L"$DIMZIN", 70, 8), text(L"$DIMBLK", 1), number(L"$DIMASO", 70, 1), number(L"$DIMSHO", 70, 1),
    text(L"$DIMPOST", 1), text(L"$DIMAPOST", 1), number(L"$DIMALT", 70), number(L"$DIMALTD", 70, 3),
    number(L"$DIMALTF", 40, 0.03937007874), number(L"$DIMLFAC", 40, 1), number(L"$DIMTOFL", 70, 1),
    number(L"$DIMTVP", 40), number(L"$DIMTIX", 70), number(L"$DIMSOXD", 70), number(L"$DIMSAH", 70),
    text(L"$DIMBLK1", 1), text(L"$DIMBLK2", 1), text(L"$DIMSTYLE", 2, L"Standard"), number(L"$DIMCLRD", 70),
    number(L"$DIMCLRE", 70), number(L"$DIMCLRT", 70), number(L"$DIMTFAC", 40, 1), number(L"$DIMGAP", 40, 0.625),
    number(L"$DIMJUST", 70), number(L"$DIMSD1", 70), number(L"$DIMSD2", 70), number(L"$DIMTOLJ", 70),
    number(L"$DIMTZIN", 70, 8), number(L"$DIMALTZ", 70), number(L"$DIMALTTZ", 70), number(L"$DIMUPT", 70),
    number(L"$DIMDEC", 70, 2), number(L"$DIMTDEC", 70, 2), number(L"$DIMALTU", 70, 2),
    number(L"$DIMALTTD", 70, 3), text(L"$DIMTXSTY", 7, L"Standard"), number(L"$DIMAUNIT", 70),
    number(L"$DIMADEC", 70), number(L"$DIMALTRND", 40), number(L"$DIMAZIN", 70), number(L"$DIMDSEP", 70, 44),
    number(L"$DIMATFIT", 70, 3), number(L"$DIMFRAC", 70), text(L"$DIMLDRBLK", 1), number(L"$DIMLUNIT", 70, 2),
    number(L"$DIMLWD", 70, -2), number(L"$DIMLWE", 70, -2), number(L"$DIMTMOVE", 70),
    number(L"$DIMFXL", 40, 1), number(L"$DIMFXLON", 70), number(L"$DIMJOGANG", 40, 0.785398163397448),
    number(L"$DIMTFILL", 70), number(L"$DIMTFILLCLR", 70), number(L"$DIMARCSYM", 70), text(L"$DIMLTYPE", 6),
    text(L"$DIMLTEX1", 6), text(L"$DIMLTEX2", 6), number(L"$DIMTXTDIRECTION", 70),
    number(L"$LUNITS", 70, 2), number(L"$LUPREC", 70, 4), number(L"$SKETCHINC", 40, 1),
    number(L"$FILLETRAD", 40), number(L"$AUNITS", 70), number(L"$AUPREC", 70), text(L"$MENU", 1, L"."),
    number(L"$ELEVATION", 40), number(L"$PELEVATION", 40), number(L"$THICKNESS", 40), number(L"$LIMCHECK", 70),
    number(L"$CHAMFERA", 40), number(L"$CHAMFERB", 40), number(L"$CHAMFERC", 40), number(L"$CHAMFERD", 40),
    number(L"$SKPOLY", 70), number(L"$TDCREATE", 40), number(L"$TDUCREATE", 40), number(L"$TDUPDATE", 40),
    number(L"$TDUUPDATE", 40), number(L"$TDINDWG", 40), number(L"$TDUSRTIMER", 40), number(L"$USRTIMER", 70, 1),
    number(L"$ANGBASE", 50), number(L"$ANGDIR", 70), number(L"$PDMODE", 70), number(L"$PDSIZE", 40),
    number(L"$PLINEWID", 40), number(L"$SPLFRAME", 70), number(L"$SPLINETYPE", 70, 6),
    number(L"$SPLINESEGS", 70, 8), number(L"$SURFTAB1", 70, 6), number(L"$SURFTAB2", 70, 6),
    number(L"$SURFTYPE", 70, 6), number(L"$SURFU", 70, 6), number(L"$SURFV", 70, 6), text(L"$UCSBASE", 2),
    text(L"$UCSNAME", 2), point3(L"$UCSORG"), point3(L"$UCSXDIR", 1), point3(L"$UCSYDIR", 0, 1),
    text(L"$PUCSNAME", 2), point3(L"$PUCSORG"), point3(L"$PUCSXDIR", 1), point3(L"$PUCSYDIR", 0, 1),
    number(L"$USERI1", 70), number(L"$USERI2", 70), number(L"$USERI3", 70), number(L"$USERI4", 70),
    number(L"$USERI5", 70), number(L"$USERR1", 40), number(L"$USERR2", 40), number(L"$USERR3", 40),
    number(L"$USERR4", 40), number(L"$USERR5", 40), number(L"$WORLDVIEW", 70, 1), number(L"$SHADEDGE", 70, 3),
    number(L"$SHADEDIF", 70, 70), number(L"$TILEMODE", 70, 1), number(L"$MAXACTVP", 70, 64),
    point3(L"$PINSBASE"), number(L"$PLIMCHECK", 70), point3(L"$PEXTMIN", kNothing, kNothing, kNothing),
    point3(L"$PEXTMAX", -kNothing, -kNothing, -kNothing), point2(L"$PLIMMIN"), point2(L"$PLIMMAX", 420, 297),
    number(L"$UNITMODE", 70), number(L"$VISRETAIN", 70, 1), number(L"$PLINEGEN", 70), number(L"$PSLTSCALE", 70, 1),
    number(L"$TREEDEPTH", 70, 3020), text(L"$CMLSTYLE", 2, L"Standard"), number(L"$CMLJUST", 70),
    number(L"$CMLSCALE", 40, 20), number(L"$PROXYGRAPHICS", 70, 1), number(L"$MEASUREMENT", 70, 1),
    number(L"$ENDCAPS", 280), number(L"$JOINSTYLE", 280), number(L"$LWDISPLAY", 290),
    number(L"$INSUNITS", 70, 4), text(L"$HYPERLINKBASE", 1), text(L"$STYLESHEET", 1), number(L"$XEDIT", 290, 1),
    number(L"$EXTNAMES", 290, 1), number(L"$PSVPSCALE", 40), number(L"$SORTENTS", 280, 127),
    number(L"$INDEXCTL", 280), number(L"$HIDETEXT", 280, 1), number(L"$XCLIPFRAME", 280), number(L"$HALOGAP", 280),
};
// clang-format on

}  // namespace

std::span<const KvDbHeaderVariable> kvdbHeaderVariables() {
  return kVariables;
}

const KvDbHeaderVariable* kvdbHeaderVariable(std::wstring_view name) {
  static const auto byName = [] {
    std::map<std::wstring_view, const KvDbHeaderVariable*> map;
    for (const KvDbHeaderVariable& row : kVariables) map.emplace(row.name, &row);
    return map;
  }();
  const auto found = byName.find(name);
  return found == byName.end() ? nullptr : found->second;
}
