#pragma once
// Groups into the bytes of a drawing file, and a drawing into groups.
#include <string>

#include "host/io/drawing_file.h"
#include "host/io/internal/dxf_text.h"

namespace kvio {

/// Groups as text or binary bytes, appended to a buffer.
class DxfByteWriter : public KvDxfWriter {
 public:
  DxfByteWriter(KvIoForm form, TextEncoding encoding, KvDbFileVersion version);
  /// Makes room for the bytes of so many objects, as they are on the average.
  void expect(std::size_t objects) { bytes_.reserve(bytes_.size() + objects * kBytesOfObject); }
  std::string takeBytes() { return std::move(bytes_); }

  void text(int code, std::wstring_view value) override;
  void real(int code, double value) override;
  void integer(int code, std::int64_t value) override;
  void handleValue(int code, std::uint64_t handle) override;
  void point(int code, const KvGePoint3d& value) override;
  void point2d(int code, const KvGePoint2d& value) override;
  void binary(int code, std::span<const std::uint8_t> bytes) override;
  bool hasModelerText() const override { return version_ < KvDbFileVersion::R2013; }

 private:
  static constexpr std::size_t kBytesOfObject = 256;
  void putCode(int code);
  void putLine(std::string_view value);
  template <class T>
  void put(T value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }

  KvIoForm form_;
  TextEncoding encoding_;
  KvDbFileVersion version_;
  std::string bytes_;
};

/// All sections of a drawing.
class DxfFileWriter {
 public:
  DxfFileWriter(const KvDbDatabase& database, KvDbFileVersion version, KvDxfWriter& writer)
      : database_(database), version_(version), writer_(writer) {}
  void write();

 private:
  void beginSection(const wchar_t* name);
  void endSection() { writer_.text(0, L"ENDSEC"); }
  void writeMissingClasses();
  void writeHeader();
  void writeVariable(const wchar_t* name, const std::vector<KvDbStoredGroup>& groups);
  void writeTables();
  void writeBlocks();
  void writeEntities();
  void writeObjects();
  void writeEntity(KvDbObjectId id);
  void writeRow(KvDbObjectId blockId);

  const KvDbDatabase& database_;
  KvDbFileVersion version_;
  KvDxfWriter& writer_;
};

}  // namespace kvio
