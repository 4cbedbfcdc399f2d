#pragma once
// Entities as records: chains of group code and value, as function-style callers see them.
//
// Angles in records are in degrees, as in files; points are in the coordinates that the entity's groups have
// in files. Chains belong to the caller. Every call works on the working drawing where a name doesn't say
// more.
#include "host/base/kvds.h"
#include "host/base/resbuf.h"

/// The record of an object: -1 (its name), 0, 5, ..., without extended data. Null for an unknown or erased
/// name.
resbuf* kvdbEntGet(const kvds_name name);

/// The same with the extended data behind -3: of one application, or of all for "*". `applications` is a
/// chain of texts.
resbuf* kvdbEntGetX(const kvds_name name, const resbuf* applications);

/// Writes a record back to the object that its -1 (or 5) names. Groups that the record lacks stay as they
/// are; of groups of one code the record's stand for all of the object's. Extended data are replaced by
/// application. RTNORM, RTERROR (the object as it was) for a record that the class can't read or a name that
/// no table has.
int kvdbEntMod(const resbuf* record);

/// Makes an entity of a record at the end of the current space; a layer that is missing comes into being. A
/// POLYLINE, an INSERT with group 66 and a BLOCK stay open: what follows up to SEQEND or ENDBLK belongs to
/// them, and until then kvdbEntLast doesn't move. A successful ENDBLK answers RTKWORD, and the block's name
/// is what kvedGetInput gives next. RTERROR for a type that isn't an entity's, for a missing group (the
/// points of a line, ...), and for a name that no table has; an open sequence is dropped by it.
int kvdbEntMake(const resbuf* record);

/// The same, but the entity stands in no space yet (it is not drawn) until it is cloned or appended; `name`
/// is its name.
int kvdbEntMakeX(const resbuf* record, kvds_name name);

/// Erases, or takes the erasure back. RTERROR for names that are no entities of a space or block.
int kvdbEntDel(const kvds_name name);

/// The newest entity of model space and layouts that isn't erased. RTERROR when there is none.
int kvdbEntLast(kvds_name name);

/// The entity behind `name`: what it owns (vertices, attributes) first, then the next one of its space or
/// block. With a null pointer the first of the current space. RTERROR behind the last.
int kvdbEntNext(const kvds_name name, kvds_name next);

/// Reports the failure of a function to the command line. Always RTNORM.
int kvdbFail(const wchar_t* text);
