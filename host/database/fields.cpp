#include "host/database/fields.h"

#include <algorithm>
#include <cmath>

namespace {

using Type = KvDbField::Type;

template <class T>
T& at(const KvDbField& field, KvDbObject& object) {
  return *static_cast<T*>(field.member(object));
}

/// Writing looks only; the rows share one accessor for both directions.
KvDbObject& unconst(const KvDbObject& object) {
  return const_cast<KvDbObject&>(object);
}

bool isInRange(const KvDbField& field, double value) {
  return std::isfinite(value) &&
         (field.lowest >= field.highest || (value >= field.lowest && value <= field.highest));
}

KvDbReference referenceOf(Type type) {
  switch (type) {
    case Type::SoftPointer:
      return KvDbReference::SoftPointer;
    case Type::SoftOwner:
      return KvDbReference::SoftOwnership;
    case Type::HardOwner:
      return KvDbReference::HardOwnership;
    default:
      return KvDbReference::HardPointer;
  }
}

bool isDefault(const KvDbField& field, KvDbObject& object) {
  switch (field.type) {
    case Type::Real:
      return at<double>(field, object) == field.standard;
    case Type::Angle:
      return at<KvDbAngle>(field, object).degrees() == field.standard;
    case Type::Int16:
      return at<std::int16_t>(field, object) == static_cast<std::int16_t>(field.standard);
    case Type::Int32:
      return at<std::int32_t>(field, object) == static_cast<std::int32_t>(field.standard);
    case Type::UInt8:
      return at<std::uint8_t>(field, object) == static_cast<std::uint8_t>(field.standard);
    case Type::Bool:
      return at<bool>(field, object) == (field.standard != 0);
    case Type::Point:
      return at<KvGePoint3d>(field, object) == KvGePoint3d::kOrigin;
    case Type::Vector:
      return at<KvGeVector3d>(field, object) ==
             (field.standard != 0 ? KvGeVector3d::kZAxis : KvGeVector3d::kIdentity);
    case Type::Text:
      return at<CString>(field, object).IsEmpty();
    case Type::Marker:
    case Type::Section:
      return false;
    default:
      return at<KvDbObjectId>(field, object).isNull();
  }
}

KvDbObjectId byName(Type type, std::wstring_view name, KvDxfResolver& resolver) {
  switch (type) {
    case Type::LayerName:
      return resolver.layer(name);
    case Type::LinetypeName:
      return resolver.linetype(name);
    case Type::TextStyleName:
      return resolver.textStyle(name);
    case Type::DimStyleName:
      return resolver.dimStyle(name);
    default:
      return resolver.block(name);
  }
}

}  // namespace

void kvdbDwgOut(const KvDbObject& constObject, KvDbFields fields, KvDbDwgFiler& filer) {
  KvDbObject& object = unconst(constObject);
  for (const KvDbField& field : fields) {
    switch (field.type) {
      case Type::Marker:
      case Type::Section:
        break;
      case Type::Real:
        filer.writeDouble(at<double>(field, object));
        break;
      case Type::Angle:
        filer.writeDouble(at<KvDbAngle>(field, object).degrees());
        break;
      case Type::Int16:
        filer.writeInt16(at<std::int16_t>(field, object));
        break;
      case Type::Int32:
        filer.writeInt32(at<std::int32_t>(field, object));
        break;
      case Type::UInt8:
        filer.writeUInt8(at<std::uint8_t>(field, object));
        break;
      case Type::Bool:
        filer.writeBool(at<bool>(field, object));
        break;
      case Type::Point:
        filer.writePoint3d(at<KvGePoint3d>(field, object));
        break;
      case Type::Vector:
        filer.writeVector3d(at<KvGeVector3d>(field, object));
        break;
      case Type::Text:
        filer.writeString(at<CString>(field, object));
        break;
      default:
        filer.writeId(at<KvDbObjectId>(field, object), referenceOf(field.type));
        break;
    }
  }
}

void kvdbDwgIn(KvDbObject& object, KvDbFields fields, KvDbDwgFiler& filer) {
  for (const KvDbField& field : fields) {
    switch (field.type) {
      case Type::Marker:
      case Type::Section:
        break;
      case Type::Real:
        at<double>(field, object) = filer.readDouble();
        break;
      case Type::Angle:
        at<KvDbAngle>(field, object).setDegrees(filer.readDouble());
        break;
      case Type::Int16:
        at<std::int16_t>(field, object) = filer.readInt16();
        break;
      case Type::Int32:
        at<std::int32_t>(field, object) = filer.readInt32();
        break;
      case Type::UInt8:
        at<std::uint8_t>(field, object) = filer.readUInt8();
        break;
      case Type::Bool:
        at<bool>(field, object) = filer.readBool();
        break;
      case Type::Point:
        at<KvGePoint3d>(field, object) = filer.readPoint3d();
        break;
      case Type::Vector:
        at<KvGeVector3d>(field, object) = filer.readVector3d();
        break;
      case Type::Text:
        at<CString>(field, object) = filer.readString();
        break;
      default:
        at<KvDbObjectId>(field, object) = filer.readId(referenceOf(field.type));
        break;
    }
  }
}

void kvdbDxfOut(const KvDbObject& constObject, KvDbFields fields, KvDxfWriter& writer) {
  KvDbObject& object = unconst(constObject);
  std::wstring_view section;
  const auto endSection = [&](KvDbFields rest) {
    // What a class doesn't know of a section stands behind what it knows; a marker that comes again ends with
    // its last part.
    const bool comesAgain = std::any_of(rest.begin(), rest.end(),
                                        [&](const KvDbField& f) { return f.marker && section == f.marker; });
    if (!section.empty() && !comesAgain && writer.hasMarkers()) object.writeUnknown(writer, section);
  };
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const KvDbField& field = fields[i];
    if (field.marker) {
      endSection(fields.subspan(i));
      section = field.marker;
    }
    if (field.write == KvDbField::Write::UnlessDefault && isDefault(field, object)) continue;
    switch (field.type) {
      case Type::Section:
        break;
      case Type::Marker:
        writer.marker(field.marker);
        break;
      case Type::Real:
        writer.real(field.code, at<double>(field, object));
        break;
      case Type::Angle:
        writer.real(field.code, at<KvDbAngle>(field, object).degrees());
        break;
      case Type::Int16:
        writer.integer(field.code, at<std::int16_t>(field, object));
        break;
      case Type::Int32:
        writer.integer(field.code, at<std::int32_t>(field, object));
        break;
      case Type::UInt8:
        writer.integer(field.code, at<std::uint8_t>(field, object));
        break;
      case Type::Bool:
        writer.integer(field.code, at<bool>(field, object));
        break;
      case Type::Point:
        writer.point(field.code, at<KvGePoint3d>(field, object));
        break;
      case Type::Vector:
        writer.vector(field.code, at<KvGeVector3d>(field, object));
        break;
      case Type::Text:
        writer.text(field.code, at<CString>(field, object).view());
        break;
      case Type::LayerName:
      case Type::LinetypeName:
      case Type::TextStyleName:
      case Type::DimStyleName:
      case Type::BlockName:
        writer.text(field.code, kvdbRecordNameView(at<KvDbObjectId>(field, object)));
        break;
      default:
        writer.handle(field.code, at<KvDbObjectId>(field, object));
        break;
    }
  }
  endSection({});
}

bool kvdbHasMarker(KvDbFields fields, std::wstring_view marker) {
  return std::any_of(fields.begin(), fields.end(),
                     [&](const KvDbField& field) { return field.marker && marker == field.marker; });
}

bool kvdbDxfIn(KvDbObject& object, KvDbFields fields, const KvDxfGroup& group, std::wstring_view marker,
               KvDxfResolver& resolver) {
  bool isInSection = marker.empty();
  for (const KvDbField& field : fields) {
    if (field.marker) isInSection = marker.empty() || marker == field.marker;
    if (!isInSection || field.code != group.code || field.marker) continue;
    const double number = group.kind == KvDxfKind::Real ? group.real() : static_cast<double>(group.integer);
    const double value = isInRange(field, number) ? number : field.standard;
    switch (field.type) {
      case Type::Real:
        at<double>(field, object) = value;
        break;
      case Type::Angle:
        at<KvDbAngle>(field, object).setDegrees(value);
        break;
      case Type::Int16:
        at<std::int16_t>(field, object) = static_cast<std::int16_t>(value);
        break;
      case Type::Int32:
        at<std::int32_t>(field, object) = static_cast<std::int32_t>(value);
        break;
      case Type::UInt8:
        at<std::uint8_t>(field, object) = static_cast<std::uint8_t>(value);
        break;
      case Type::Bool:
        at<bool>(field, object) = value != 0;
        break;
      case Type::Point:
        at<KvGePoint3d>(field, object) = group.point;
        break;
      case Type::Vector:
        at<KvGeVector3d>(field, object) = group.point.asVector();
        break;
      case Type::Text:
        at<CString>(field, object) = CString(group.text);
        break;
      case Type::SoftPointer:
      case Type::HardPointer:
      case Type::SoftOwner:
      case Type::HardOwner:
        at<KvDbObjectId>(field, object) = resolver.object(group.integer);
        break;
      default:
        at<KvDbObjectId>(field, object) = byName(field.type, group.text, resolver);
        break;
    }
    return true;
  }
  return false;
}
