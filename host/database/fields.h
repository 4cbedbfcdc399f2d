#pragma once
// Declarative fields: one row for each, from which writing and reading follow, in files, in copies and in
// undo.
#include <cstdint>
#include <span>

#include "host/database/dbobject.h"
#include "host/database/dxffiler.h"
#include "host/database/filer.h"

/// An angle, kept in degrees as files have it, so that nothing is lost on the way there and back.
class KvDbAngle {
 public:
  constexpr KvDbAngle() = default;
  static KvDbAngle ofRadians(double radians) {
    KvDbAngle angle;
    angle.degrees_ = kvdxfDegrees(radians);
    return angle;
  }
  double radians() const { return kvdxfRadians(degrees_); }
  double degrees() const { return degrees_; }
  void setDegrees(double degrees) { degrees_ = degrees; }

 private:
  double degrees_ = 0;
};

/// One field of a class, or a subclass marker between fields. A marker may come twice: its groups may then
/// stand in either place.
struct KvDbField {
  enum class Type : std::uint8_t {
    Marker,
    Section,
    Real,
    Angle,  ///< a KvDbAngle
    Int16,
    Int32,
    UInt8,
    Bool,
    Point,
    Vector,
    Text,
    SoftPointer,
    HardPointer,
    SoftOwner,
    HardOwner,
    LayerName,
    LinetypeName,
    TextStyleName,
    DimStyleName,
    BlockName,  ///< a record that files name
  };
  /// When the field is written to a file.
  enum class Write : std::uint8_t { Always, UnlessDefault };

  Type type;
  Write write;
  std::int16_t code;
  double standard;  ///< the default of numbers; of vectors: 1 stands for the Z axis, 0 for the zero vector
  const wchar_t* marker;
  void* (*member)(KvDbObject&);
  double lowest, highest;  ///< numbers only; what lies outside counts as the default. Equal: no limits
};

constexpr KvDbField kvdbMarker(const wchar_t* name) {
  return {KvDbField::Type::Marker, KvDbField::Write::Always, 100, 0, name, nullptr, 0, 0};
}

/// The rows behind it stand in a section whose marker the base class has written.
constexpr KvDbField kvdbSection(const wchar_t* name) {
  return {KvDbField::Type::Section, KvDbField::Write::Always, 100, 0, name, nullptr, 0, 0};
}

template <class T>
struct KvDbMemberOf;
template <class C, class M>
struct KvDbMemberOf<M C::*> {
  using Class = C;
};

/// A row for a data member. `standard` is its default. `Class` is named where the member is a base's.
template <auto Member, class Class = typename KvDbMemberOf<decltype(Member)>::Class>
constexpr KvDbField kvdbField(KvDbField::Type type, int code,
                              KvDbField::Write write = KvDbField::Write::Always, double standard = 0,
                              double lowest = 0, double highest = 0) {
  return {
      type,     write,   static_cast<std::int16_t>(code),
      standard, nullptr, [](KvDbObject& object) -> void* { return &(static_cast<Class&>(object).*Member); },
      lowest,   highest};
}

using KvDbFields = std::span<const KvDbField>;

void kvdbDwgOut(const KvDbObject& object, KvDbFields fields, KvDbDwgFiler& filer);
void kvdbDwgIn(KvDbObject& object, KvDbFields fields, KvDbDwgFiler& filer);
void kvdbDxfOut(const KvDbObject& object, KvDbFields fields, KvDxfWriter& writer);
/// Whether a row names the marker.
bool kvdbHasMarker(KvDbFields fields, std::wstring_view marker);
/// Takes one group into the field of its code; false when no row has the code behind that marker (behind any,
/// when it is empty).
bool kvdbDxfIn(KvDbObject& object, KvDbFields fields, const KvDxfGroup& group, std::wstring_view marker,
               KvDxfResolver& resolver);
