#include "host/io/drawing_file.h"

#include <cerrno>

#include "host/io/internal/dxf_reader.h"
#include "host/io/internal/dxf_writer.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/text/codepage.h"

namespace {

struct VersionRow {
  KvDbFileVersion version;
  const char* code;
  const wchar_t* name;
};

constexpr VersionRow kVersions[] = {
    {KvDbFileVersion::R12, "AC1009", L"R12"},     {KvDbFileVersion::R13, "AC1012", L"R13"},
    {KvDbFileVersion::R14, "AC1014", L"R14"},     {KvDbFileVersion::R2000, "AC1015", L"R2000"},
    {KvDbFileVersion::R2004, "AC1018", L"R2004"}, {KvDbFileVersion::R2007, "AC1021", L"R2007"},
    {KvDbFileVersion::R2010, "AC1024", L"R2010"}, {KvDbFileVersion::R2013, "AC1027", L"R2013"},
    {KvDbFileVersion::R2018, "AC1032", L"R2018"},
};

constexpr std::string_view kTextMark =
    "AC10";  // how foreign binary drawings begin, with two digits behind it

KvIoMessage messageOf(const CString& text) {
  KvIoMessage message;
  message.text = text;
  return message;
}

/// A binary drawing of the foreign kind begins with its version and no line end.
bool isForeignDrawing(std::string_view bytes) {
  return bytes.size() > 12 && bytes.starts_with(kTextMark) &&
         bytes.substr(6, 5).find('\0') != std::string_view::npos;
}

Kvad::ErrorStatus statusOf(const platform::FileStatus& status) {
  if (status) return Kvad::eOk;
  if (status.systemError == ENOSPC || status.systemError == EDQUOT) return Kvad::eDiskFull;
  if (status.systemError == ENOENT && status.step == platform::FileStep::Open) return Kvad::eFileNotFound;
  return status.systemError == EACCES || status.systemError == EPERM || status.systemError == EROFS
             ? Kvad::eFileAccessErr
             : Kvad::eFileSystemErr;
}

KvDbFileVersion savedVersion(const KvDbDatabase& database, const KvIoSaveOptions& options) {
  const KvDbFileVersion wanted =
      options.version == KvDbFileVersion::Unknown ? database.extras().version : options.version;
  return std::max(wanted, KvDbFileVersion::R2000);
}

}  // namespace

CString KvIoMessage::describe() const {
  if (line == 0 && offset == 0 && code < 0) return text;
  CString place;
  if (line > 0)
    place.Format(L"line %d", line);
  else
    place.Format(L"offset %d", offset);
  if (code >= 0) place.AppendFormat(L", group %d", code);
  return place + L": " + text;
}

const char* kvdbVersionCode(KvDbFileVersion version) {
  for (const VersionRow& row : kVersions)
    if (row.version == version) return row.code;
  return "";
}

const wchar_t* kvdbVersionName(KvDbFileVersion version) {
  for (const VersionRow& row : kVersions)
    if (row.version == version) return row.name;
  return L"unknown";
}

KvDbFileVersion kvdbVersionFromCode(std::wstring_view code) {
  for (const VersionRow& row : kVersions)
    if (platform::wideFromUtf8(row.code).view() == code) return row.version;
  // Older than the oldest that is written, yet of the same make.
  if (code.starts_with(L"AC10") && code < L"AC1009") return KvDbFileVersion::R12;
  return KvDbFileVersion::Unknown;
}

Kvad::ErrorStatus kvdbParseDrawing(KvDbDatabase& database, std::string_view bytes, KvIoReport& report,
                                   KvIoMode mode) {
  report = KvIoReport();
  if (isForeignDrawing(bytes)) {
    const std::string code(bytes.substr(0, 6));
    report.error = messageOf(L"a binary drawing of version " + platform::wideFromUtf8(code) +
                             L"; save it as DXF in the program that made it, and open that");
    return Kvad::eUnsupportedFileVersion;
  }
  const auto firstInk = bytes.find_first_not_of(" \t\r\n");
  if (firstInk == std::string_view::npos) {
    report.error = messageOf(L"the file is empty");
    return Kvad::eFileInternalErr;
  }
  return kvio::DxfReader(database, bytes, report, mode).read();
}

Kvad::ErrorStatus kvdbReadDrawing(KvDbDatabase& database, const std::filesystem::path& path,
                                  KvIoReport& report, KvIoMode mode) {
  report = KvIoReport();
  std::string bytes;
  if (const auto status = platform::readFile(path, bytes); !status) {
    report.error = messageOf(platform::wideFromUtf8(status.message()));
    return statusOf(status);
  }
  database.setFolder(std::filesystem::absolute(path).parent_path());
  return kvdbParseDrawing(database, bytes, report, mode);
}

std::string kvdbFormatDrawing(const KvDbDatabase& database, const KvIoSaveOptions& options) {
  const KvDbFileVersion version = savedVersion(database, options);
  kvio::TextEncoding encoding;
  encoding.isUtf8 = version >= KvDbFileVersion::R2007;
  encoding.codePage =
      platform::codePageFromDrawingName(platform::utf8From(database.extras().codePage)).value_or(1252);
  kvio::DxfByteWriter writer(options.form, encoding, version);
  writer.expect(database.objectCount());
  kvio::DxfFileWriter(database, version, writer).write();
  return writer.takeBytes();
}

KvIoSaveOptions kvdbSaveOptionsFor(const std::filesystem::path& path) {
  KvIoSaveOptions options;
  const std::string extension = path.extension().string();
  if (platform::equalNoCase(std::string_view(extension), ".dwg")) options.form = KvIoForm::Binary;
  return options;
}

Kvad::ErrorStatus kvdbSaveDrawing(const KvDbDatabase& database, const std::filesystem::path& path,
                                  KvIoReport& report, const KvIoSaveOptions& options) {
  report = KvIoReport();
  const auto status = platform::writeFile(path, kvdbFormatDrawing(database, options));
  if (!status) report.error = messageOf(platform::wideFromUtf8(status.message()));
  return statusOf(status);
}

KvDbFileVersion kvdbVersionNamed(std::string_view name) {
  const CString wanted(std::wstring(name.begin(), name.end()));
  for (int version = 1; version <= static_cast<int>(KvDbFileVersion::R2018); ++version)
    if (wanted.CompareNoCase(kvdbVersionName(static_cast<KvDbFileVersion>(version))) == 0)
      return static_cast<KvDbFileVersion>(version);
  return KvDbFileVersion::Unknown;
}

Kvad::ErrorStatus KvDbDatabase::readDwgFile(const wchar_t* file, int, bool, const wchar_t*) {
  if (!file || !*file) return Kvad::eFileNotFound;
  KvIoReport report;
  return kvdbReadDrawing(*this, platform::toNative(file), report);
}

Kvad::ErrorStatus KvDbDatabase::saveAs(const wchar_t* file) const {
  if (!file || !*file) return Kvad::eFileAccessErr;
  KvIoReport report;
  const std::filesystem::path path = platform::toNative(file);
  return kvdbSaveDrawing(*this, path, report, kvdbSaveOptionsFor(path));
}
