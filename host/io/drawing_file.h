#pragma once
// Drawing files: reading and saving. The form is DXF, as text or binary; what a file is called doesn't
// matter.
//
// Everything that stands in a file is kept: what the host doesn't model stays as it is and is written back.
// Reading comes in two kinds: the strict one ends at the first fault and says where it is; the recovering one
// mends what it can and reports each repair.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/base/kvad.h"
#include "host/database/audit.h"

/// A fault in a file, or a repair of one.
struct KvIoMessage {
  std::uint64_t line = 0;    ///< counted from 1; 0 in binary files
  std::uint64_t offset = 0;  ///< bytes from the file's beginning
  int code = -1;             ///< the group at fault; -1 when it is none
  CString text;              ///< what was found and what was expected
  KvDbFault fault = KvDbFault::FileStructure;
  /// "line 12, group 40: ..." or "offset 120: ..."; the bare text of what was found in no one place.
  CString describe() const;
};

struct KvIoReport {
  KvIoMessage error;                 ///< of a call that failed
  std::vector<KvIoMessage> repairs;  ///< what the recovering reader mended, in order
  std::uint64_t repairsLeftOut = 0;  ///< beyond the first thousand
};

enum class KvIoMode { Strict, Recover };
enum class KvIoForm { Text, Binary };

/// Reads a file into a drawing that was made without default content. eFileNotFound, eFileAccessErr,
/// eFileInternalErr (the report says where), eUnsupportedFileVersion (a foreign binary drawing, or an unknown
/// version). After a failure the drawing holds what was read so far and is good for nothing but being
/// deleted.
Kvad::ErrorStatus kvdbReadDrawing(KvDbDatabase& database, const std::filesystem::path& path,
                                  KvIoReport& report, KvIoMode mode = KvIoMode::Strict);
/// The same from bytes in memory.
Kvad::ErrorStatus kvdbParseDrawing(KvDbDatabase& database, std::string_view bytes, KvIoReport& report,
                                   KvIoMode mode = KvIoMode::Strict);

struct KvIoSaveOptions {
  KvIoForm form = KvIoForm::Text;
  /// Unknown: the drawing's own, R2000 where that is older.
  KvDbFileVersion version = KvDbFileVersion::Unknown;
};

/// The form that goes with a file's name: binary for `.dwg`, text for all else.
KvIoSaveOptions kvdbSaveOptionsFor(const std::filesystem::path& path);

/// Writes the drawing whole, or leaves the old file as it was. eFileAccessErr, eDiskFull, eFileSystemErr; the
/// report says what.
Kvad::ErrorStatus kvdbSaveDrawing(const KvDbDatabase& database, const std::filesystem::path& path,
                                  KvIoReport& report, const KvIoSaveOptions& options = {});
/// The same into memory.
std::string kvdbFormatDrawing(const KvDbDatabase& database, const KvIoSaveOptions& options = {});

/// "AC1015" for R2000; empty for Unknown.
const char* kvdbVersionCode(KvDbFileVersion version);
/// "R2000"; "unknown".
const wchar_t* kvdbVersionName(KvDbFileVersion version);
KvDbFileVersion kvdbVersionFromCode(std::wstring_view code);
/// Of a name ("R2000"), without regard to case; Unknown for any other text.
KvDbFileVersion kvdbVersionNamed(std::string_view name);
