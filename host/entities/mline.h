#pragma once
// Multilines: rows of parallel lines, with caps and fills, as a style of the drawing tells.
#include "host/entities/keptentity.h"

/// What a multiline style says. Offsets are in units of the multiline's scale, angles in radians.
struct KvDbMlineStyle {
  enum Flag : std::uint16_t {
    kFill = 1,
    kJoints = 2,
    kStartSquare = 16,
    kStartInnerArcs = 32,
    kStartRound = 64,
    kEndSquare = 256,
    kEndInnerArcs = 512,
    kEndRound = 1024
  };
  struct Element {
    double offset = 0;
    int color = kKvColorByLayer;
    std::int32_t rgb = -1;  ///< 0xRRGGBB; -1: none
    CString linetype;
  };
  int flags = 0;
  int fillColor = kKvColorByLayer;
  std::int32_t fillRgb = -1;
  std::vector<Element> elements;

  /// Of a style's object; nothing for any other id.
  static std::optional<KvDbMlineStyle> of(KvDbObjectId style);
  /// The elements' numbers from the lowest offset to the highest.
  std::vector<std::size_t> byOffset() const;
};

/// The vertices carry for each element where it crosses their joint, and where its line and its fill are
/// broken on the way to the next vertex. World coordinates.
class KvDbMline : public KvDbPartsEntity {
  KVRX_DECLARE(KvDbMline)
 public:
  enum Flag : std::uint8_t { kHasVertices = 1, kClosed = 2, kNoStartCaps = 4, kNoEndCaps = 8 };
  /// Distances along the segment from its joint: begin, then by turns end and begin of what is drawn; the
  /// last stretch runs to the next joint.
  struct Breaks {
    double offset = 0;  ///< from the vertex along the joint
    std::vector<double> places;
  };
  struct Vertex {
    KvGePoint3d at;
    KvGeVector3d along, joint;
    std::vector<Breaks> lines;
    std::vector<std::vector<double>> fills;
  };

  KvDbMline() : KvDbPartsEntity(L"MLINE", L"AcDbMline") {}
  enum class Justification { Top, Zero, Bottom };
  /// Through points in the XY plane of their first one, seen along positive Z: with Top the lines lie on the
  /// right of the way, the first of them on it, with Bottom on the left, with Zero as the style has them.
  /// Points that repeat the one before are passed over. The style is one of `database`. Null for fewer than
  /// two points (three of a closed one), or when the style has no elements.
  static std::unique_ptr<KvDbMline> make(const std::vector<KvGePoint3d>& points, bool isClosed,
                                         KvDbObjectId style, Justification justification, double scale);
  std::vector<Vertex> vertices() const;
  bool isClosed() const { return (whole(71) & kClosed) != 0; }
  double scale() const { return real(40, 1); }
  KvGeVector3d normal() const { return point(210, {0, 0, 1}).asVector(); }
  KvDbObjectId styleId() const;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  Parts makeParts() const override;
};

/// A multiline style of a drawing by its name, without regard to case; null when there is none. STANDARD, two
/// lines at a distance of 1, comes into being when it is asked for.
KvDbObjectId kvdbMlineStyleNamed(KvDbDatabase& database, const CString& name);
/// The name that a style bears itself; empty for any other id.
CString kvdbMlineStyleName(KvDbObjectId style);
/// The names of the styles, in the order of their adding.
std::vector<CString> kvdbMlineStyleNames(const KvDbDatabase& database);
