#include "host/base/kvad.h"

namespace Kvad {
namespace {

struct Row {
  ErrorStatus status;
  const wchar_t* text;
};

constexpr Row kTexts[] = {
    {eOk, L"success"},
    {eNotImplementedYet, L"not available in this build"},
    {eNotApplicable, L"not applicable"},
    {eInvalidInput, L"invalid input"},
    {eAmbiguousInput, L"ambiguous input"},
    {eAmbiguousOutput, L"ambiguous result"},
    {eOutOfMemory, L"out of memory"},
    {eBufferTooSmall, L"buffer too small"},
    {eNothingHappened, L"nothing to do"},
    {eNoDatabase, L"no drawing"},
    {eNullObjectId, L"null object id"},
    {eNullObjectPointer, L"null object"},
    {eNullHandle, L"null handle"},
    {eHandleExists, L"handle exists already"},
    {eUnknownHandle, L"unknown handle"},
    {eHandleInUse, L"handle in use"},
    {eKeyNotFound, L"not found"},
    {eDuplicateKey, L"name exists already"},
    {eNotInDatabase, L"not in a drawing"},
    {eNullEntityPointer, L"null entity"},
    {eInvalidKey, L"invalid key"},
    {eDuplicateRecordName, L"record name exists already"},
    {eInvalidName, L"invalid name"},
    {eObjectToBeDeleted, L"object is being deleted"},
    {eWasErased, L"was erased"},
    {eWasNotErased, L"was not erased"},
    {eWasOpenForRead, L"is open for read"},
    {eWasOpenForWrite, L"is open for write"},
    {eWasOpenForUndo, L"is open for undo"},
    {eWasNotOpenForWrite, L"was not open for write"},
    {eNotOpenForRead, L"is not open for read"},
    {eNotOpenForWrite, L"is not open for write"},
    {ePermanentlyErased, L"was erased for good"},
    {eNotThatKindOfClass, L"is of another class"},
    {eCannotBeErased, L"cannot be erased"},
    {eWrongObjectType, L"wrong object type"},
    {eWrongDatabase, L"belongs to another drawing"},
    {eInvalidOwnerObject, L"invalid owner"},
    {eHasOpenReaders, L"is being read"},
    {eOnLockedLayer, L"is on a locked layer"},
    {eInvalidExtents, L"has no extents"},
    {eInvalidIndex, L"index out of range"},
    {eDegenerateGeometry, L"degenerate geometry"},
    {eNotOnCurve, L"point is not on the curve"},
    {eOutOfRange, L"out of range"},
    {eCannotExplodeEntity, L"cannot be exploded"},
    {eCannotScaleNonUniformly, L"cannot be scaled non-uniformly"},
    {eNonPlanarEntity, L"is not planar"},
    {eSelfIntersecting, L"intersects itself"},
    {eInvalidLoop, L"invalid loop"},
    {eNoContent, L"is empty"},
    {eFileNotFound, L"file not found"},
    {eFileAccessErr, L"file cannot be accessed"},
    {eFileSystemErr, L"file system error"},
    {eFileInternalErr, L"file content cannot be read"},
    {eUnsupportedFileVersion, L"unsupported file version"},
    {eDiskFull, L"disk full"},
    {eFilerError, L"filer error"},
    {eNoDocument, L"no document"},
    {eLockViolation, L"document is not locked for this"},
    {eLockConflict, L"document is locked by another"},
    {eNotLocked, L"document was not locked"},
    {eNoActiveTransactions, L"no active transaction"},
    {eNotTopTransaction, L"not the top transaction"},
    {eInvalidContext, L"not possible now"},
    {eUserBreak, L"cancelled"},
    {eLinetypeAlreadyPresent, L"linetype is there already"},
    {eUndefinedLineType, L"undefined linetype"},
    {eBadLinetypeDefinition, L"bad linetype definition"},
    {eRegappNotFound, L"application is not registered"},
};

}  // namespace

const wchar_t* errorText(ErrorStatus status) {
  for (const Row& row : kTexts)
    if (row.status == status) return row.text;
  return L"unknown failure";
}

}  // namespace Kvad
