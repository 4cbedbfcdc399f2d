#pragma once
// Linetype files: text in lines. `*NAME,description` begins a linetype; the line behind it holds `A,` and the
// elements, separated by commas: a length above 0 is a dash, below 0 a gap, 0 a dot. An element may carry a
// text or a shape in brackets: `["text",STYLE,S=height,R=turn,X=along,Y=across]`, `[NUMBER or
// NAME,file,...]`; turns are in degrees, `A=` is one against the world, `U=` one that stays upright. A line
// that begins with `;` is a comment, and so is everything before the first `*`. Lengths are drawing units at
// a linetype scale of 1.
#include <filesystem>
#include <string_view>
#include <vector>

#include "host/base/kvad.h"
#include "host/database/tables.h"
#include "host/io/drawing_file.h"

struct KvIoLinetype {
  CString name, description;
  std::vector<KvDbLinetypeDash> dashes;
  std::vector<CString> textStyles;  ///< for each dash: the style of its text, the file of its shape, or empty
  std::vector<CString> shapeNames;  ///< for each dash: the shape's name, where the file doesn't number it
  int line = 0;                     ///< on which it begins
};

/// All linetypes of a file's bytes (UTF-8, UTF-16 with its mark, or the system's code page). False, with line
/// and reason in `error`, at the first definition that can't be read; those before it are there.
bool kvioParseLinetypes(std::string_view bytes, std::vector<KvIoLinetype>& linetypes, KvIoMessage& error);

/// Loads a linetype into a drawing (null: the working one). `name` without regard to case; `*` loads all that
/// are missing. Shape files of its signs come with it as records of the text styles; a sign whose shape isn't
/// found stays a gap. The file is looked for as it is given, then as the host finds its own files. eOk,
/// eLinetypeAlreadyPresent (nothing was changed), eUndefinedLineType, eFileNotFound, eFileAccessErr,
/// eBadLinetypeDefinition.
Kvad::ErrorStatus kvdbLoadLineTypeFile(const wchar_t* name, const wchar_t* file, KvDbDatabase* database);
