#pragma once
// Status of the class-style calls: 0 is success, any other number a failure. The numbers are stable.

namespace Kvad {

enum ErrorStatus {
  eOk = 0,
  eNotImplementedYet = 1,
  eNotApplicable = 2,
  eInvalidInput = 3,
  eAmbiguousInput = 4,
  eAmbiguousOutput = 5,
  eOutOfMemory = 6,
  eBufferTooSmall = 7,
  eNothingHappened = 8,  ///< a call that found its work already done
  eNoDatabase = 10,
  eNullObjectId = 11,
  eNullObjectPointer = 12,
  eNullHandle = 13,
  eHandleExists = 14,
  eUnknownHandle = 15,
  eHandleInUse = 16,
  eKeyNotFound = 17,
  eDuplicateKey = 18,
  eNotInDatabase = 19,
  eNullEntityPointer = 20,
  eInvalidKey = 21,
  eDuplicateRecordName = 22,
  eInvalidName = 23,
  eObjectToBeDeleted = 24,
  eWasErased = 30,
  eWasNotErased = 31,
  eWasOpenForRead = 32,
  eWasOpenForWrite = 33,
  eWasOpenForUndo = 34,
  eWasNotOpenForWrite = 35,
  eNotOpenForRead = 36,
  eNotOpenForWrite = 37,
  ePermanentlyErased = 38,
  eNotThatKindOfClass = 39,
  eCannotBeErased = 40,  ///< still in use, or a record that every drawing needs
  eWrongObjectType = 41,
  eWrongDatabase = 42,
  eInvalidOwnerObject = 43,
  eHasOpenReaders = 44,
  eOnLockedLayer = 45,
  eInvalidExtents = 50,
  eInvalidIndex = 51,
  eDegenerateGeometry = 52,
  eNotOnCurve = 53,
  eOutOfRange = 54,
  eCannotExplodeEntity = 55,
  eCannotScaleNonUniformly = 56,
  eNonPlanarEntity = 57,
  eSelfIntersecting = 58,
  eInvalidLoop = 59,
  eNoContent = 60,
  eFileNotFound = 70,
  eFileAccessErr = 71,
  eFileSystemErr = 72,
  eFileInternalErr = 73,  ///< the file's content cannot be read; a message tells where
  eUnsupportedFileVersion = 74,
  eDiskFull = 75,
  eFilerError = 76,
  eNoDocument = 80,
  eLockViolation = 81,
  eLockConflict = 82,
  eNotLocked = 83,
  eNoActiveTransactions = 84,
  eNotTopTransaction = 85,
  eInvalidContext = 86,
  eUserBreak = 90,
  eLinetypeAlreadyPresent = 95,  ///< from kvdbLoadLineTypeFile: the linetype is there already
  eUndefinedLineType = 96,
  eBadLinetypeDefinition = 97,
  eRegappNotFound = 98,
};

/// A few English words for diagnostics, such as "was erased". Never null.
const wchar_t* errorText(ErrorStatus status);

}  // namespace Kvad
