#pragma once
// Reading and changing the records of entities in the host's own style: 5100 or -5001 unless it says
// otherwise. A record of another sort than asked counts as absent, and so does a null `out`. The Use_...
// accessors, which leave the entity alone, stand in rbchains.h.
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "module/core/export.h"
#include "platform/text/cstring.h"

// --- The first record of a code

/// Null when there is none.
MEK_API resbuf* get_resbuf(resbuf* rb, int code);
/// The type. Into a buffer that must be long enough.
MEK_API int get_etype(resbuf* rb, wchar_t* out);
MEK_API int get_int(resbuf* rb, int* out, int code);
MEK_API int get_real(resbuf* rb, double* out, int code);
/// Into a buffer that must be long enough.
MEK_API int get_string(resbuf* rb, wchar_t* out, int code);
MEK_API int get_point(resbuf* rb, double out[3], int code);

// These write the whole record back with kvdbEntMod. 5100 whatever that gave...
MEK_API int set_int(resbuf* rb, int value, int code);
MEK_API int set_real(resbuf* rb, double value, int code);
MEK_API int set_point(resbuf* rb, const double p[3], int code);
/// ... but here its status. A missing text is added.
MEK_API int set_string(resbuf* rb, const wchar_t* value, int code);

// --- Behind a key: the first record of `code` whose whole number, as one of 16 bits, is `key`

/// The key's record with `self`, else the one behind it. Null when there is none.
MEK_API resbuf* get_resbuf_ex(resbuf* rb, int code, int key, int self);
/// -5001 when absent.
MEK_API int get_int_ex(resbuf* rb, int code, int key);
/// -5001.0 when absent.
MEK_API double get_real_ex(resbuf* rb, int code, int key);
/// Empty when absent.
MEK_API CString get_string_ex(resbuf* rb, int code, int key);
/// The same into a buffer that must be long enough. Always 5100.
MEK_API int get_string_ex(resbuf* rb, int code, int key, wchar_t* out);
MEK_API int get_point_ex(resbuf* rb, int code, int key, double out[3]);

// These change the chain alone.
/// Where key 3 has another key 3 behind it, the record behind that one is changed.
MEK_API int set_int_ex(resbuf* rb, int code, int key, int value);
MEK_API int set_real_ex(resbuf* rb, int code, int key, double value);
MEK_API int set_string_ex(resbuf* rb, int code, int key, CString value);
MEK_API int set_point_ex(resbuf* rb, int code, int key, const double p[3]);

/// The entity behind the one of that name; the name becomes its.
MEK_API int next_ent(long long name[2]);
