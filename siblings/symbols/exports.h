#pragma once
// What the toolkit calls by name, loading and freeing this module around each call. A null drawing is the
// working one. Texts are wide, allocated with array new; the caller deletes them before it frees the library.
// Nothing throws, nothing stays open.
#include "host/base/resbuf.h"
#include "host/database/entity.h"

class KvDbDimension;

#define KMSYMB_API extern "C" __attribute__((visibility("default")))
#ifdef __clang__
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

/// "GB", "ISO", "DIN", "ANSI", "JIS" or "CSN": the working drawing's, else that of the settings.
KMSYMB_API wchar_t* getStandardName();
/// "AM_GB".
KMSYMB_API wchar_t* getCurrentDimStyleName();
/// "ACGBTS".
KMSYMB_API wchar_t* getCurrentTextStyleName();
/// The drawing that holds the standard's layers and styles; null when it isn't installed.
KMSYMB_API wchar_t* getTemplateFileName();

/// The layer of a kind, by the standard in force. The flag, by which older data tells two rows of indices
/// apart, changes nothing: both name one layer, so that what a conversion renames is known again. Null for a
/// kind that is none.
KMSYMB_API wchar_t* kvmExGetLayerName(int kind, int flag);
/// The same layer in a drawing, made with its linetype when missing; one that is there stays as it is.
KMSYMB_API KvDbObjectId kvmExGetLayerId(int kind, KvDbDatabase* database, int flag);
/// Layer of the kind; colour, linetype and width by layer. 1, or 0 when the entity isn't open for write or
/// the kind is none.
KMSYMB_API int setPropertyFromConfig(KvDbEntity* entity, int kind);

/// Layer, style and scale of a dimension that is open for write; values of angles stand upright. 1 or 0.
KMSYMB_API int setDimensionProperty(KvDbDimension* dimension);
/// The standard's dimension style, made when missing. Null for a class that is neither null nor one of
/// dimensions or leaders.
KMSYMB_API KvDbObjectId getDimensionStyle(KvRxClass* type, KvDbDatabase* database);
/// A variable ("DIMTXT", without regard to case) of that style as RTREAL, RTSHORT or RTSTR (allocated with
/// malloc, the caller's). 1 or 0, with `value` untouched.
KMSYMB_API int getDimensionStyleVariable(const wchar_t* name, resbuf* value, KvRxClass* type,
                                         KvDbDatabase* database);

/// Enters a symbol point into the record that its drawing keeps, and takes it out.
KMSYMB_API void kvmRecordGeniusPoint(KvDbObjectId id);
KMSYMB_API void kvmUnrecordGeniusPoint(KvDbObjectId id);
/// Entities of model space that carry a scale area (extended data of GENIUS_GENSCREG_15), open curves left
/// out; without `mode` only block references that belong to a symbol point. The array is replaced; answers
/// its length.
KMSYMB_API int kvmGetScalingList(KvArray<KvDbObjectId>& list, int mode, KvDbDatabase* database);
/// How far a centre line of an outline of that size reaches beyond it, in drawing units: 2 to 5 mm of paper
/// (GB/T 4457.4), a quarter of the size between. `scale` is drawing units for a millimetre of paper. 0 for
/// numbers that aren't finite or a scale that isn't above 0.
KMSYMB_API double I_Centerline_GetCenterExt(double size, double scale);
/// The drawing's scale: drawing units for a millimetre of paper, and the factor of measured values; 1 for
/// what it doesn't say. RTNORM, or RTERROR without a drawing.
KMSYMB_API int getSystemScale(double& paper, double& measure, KvDbDatabase* database);

/// The host's entry: commands KMSTANDARD (GB, ISO, DIN, ANSI, JIS, CSN) and KMSCALE.
KMSYMB_API std::int64_t kvrxEntryPoint(unsigned int message, void* applicationHandle);
KMSYMB_API int kvrxGetApiVersion();
