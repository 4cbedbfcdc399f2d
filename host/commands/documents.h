#pragma once
// What commands on whole drawings (NEW, OPEN, SAVE, CLOSE, ...) ask of whoever holds the drawings.
#include <vector>

#include "platform/text/cstring.h"

class KvCmdDocuments {
 public:
  virtual ~KvCmdDocuments() = default;
  // Each answers an empty text, or in words why it could not be done; nothing has changed then. Paths are in
  // the product's form.

  /// A new drawing, which becomes the current one.
  virtual CString makeNew() = 0;
  virtual CString open(const CString& file) = 0;
  /// The current drawing under a name, which with `rename` becomes its own.
  virtual CString save(const CString& file, bool rename) = 0;
  /// Without saving.
  virtual CString close() = 0;

  /// The open drawings' names, in the order of their opening, and which of them is the current one (-1:
  /// none).
  virtual std::vector<CString> names(int& current) const = 0;
  /// Goes to another one, by its place in that row.
  virtual CString activate(int index) = 0;

  /// The current drawing's file; empty when it was never saved, or when there is none.
  virtual CString currentFile() const = 0;
  virtual bool hasDrawing() const = 0;
  /// Whether a drawing that is open holds changes that no file has.
  virtual bool hasUnsaved() const = 0;
};
