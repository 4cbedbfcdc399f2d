#pragma once
// The block of a dimension's own variables in its extended data: pairs of a variable's number (its group code
// in the style's record) and value between braces.
//
// The chain must have a record already; what is added goes behind its last one. 5100, or -5001 for null and
// for a chain so long that GetLinkTail takes it for broken.
#include "host/base/resbuf.h"
#include "module/core/export.h"
#include "platform/text/cstring.h"

class KvDbDimension;

/// Opens the block: -3, 1001 "ACAD", 1000 "DSTYLE", 1002 "{".
MEK_API int CreateXdataHead(resbuf* rb);
/// Opens the data of another application: -3, 1001.
MEK_API int CreateXdataHead(resbuf* rb, CString app);
MEK_API int CreateXdata(resbuf* rb, int var, int value);
MEK_API int CreateXdata(resbuf* rb, int var, double value);
MEK_API int CreateXdata(resbuf* rb, int var, const wchar_t* value);
MEK_API int CreateXdata(resbuf* rb, int var, CString value);
/// A variable that names an object.
MEK_API int CreateXdata_handle(resbuf* rb, int var, CString handle);
/// Closes the block: 1002 "}".
MEK_API int CreateXdataTail(resbuf* rb);

/// Takes a variable out of a dimension's own, so that its style decides again. False when it has none, and
/// for null and a dimension that isn't open for write. The picture stays until it is computed anew.
MEK_API bool IM_RemoveDimVar(KvDbDimension* dim, int var);
