#pragma once
// The host's prompts, whose points are in user coordinates, for callers that have points of the world.
//
// Each has the arguments and statuses of the host's function (kved... for IM_ADS_...); a cancel comes back
// as RTCAN for the caller to end its command. Results are changed after RTNORM only. A null pointer is handed
// to the host as it is.
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "module/core/export.h"
#include "module/toolkit/inputs.h"

/// The result is a point of the world; here alone `base` (which may be null) is in user coordinates.
MEK_API int IM_ADS_GETPOINT(const double base[3], LPCWSTR prompt, double out[3]);
MEK_API int IM_ADS_GETCORNER(const double base[3], LPCWSTR prompt, double out[3]);
/// The same with a base in the world.
MEK_API int IM_ADS_GETPOINT_WCS(const double base[3], LPCWSTR prompt, double out[3]);
MEK_API int IM_ADS_GETCORNER_WCS(const double base[3], LPCWSTR prompt, double out[3]);
/// Counted from the reference axis of IM_GetUcsAngle; one turn is taken off when the sum is above one.
MEK_API int IM_ADS_GETANGLE(const double base[3], LPCWSTR prompt, double* angle);
MEK_API int IM_ADS_GETDIST(const double base[3], LPCWSTR prompt, double* dist);

/// `point` goes in and comes out as one of the world; after any status but RTNORM it is left in user
/// coordinates.
MEK_API int IM_ADS_ENTSEL(LPCWSTR prompt, long long name[2], double point[3]);
MEK_API int IM_ADS_NENTSEL(LPCWSTR prompt, long long name[2], double point[3], double matrix[4][3],
                           resbuf** containers);
/// Here it comes back as one of the world whatever the status.
MEK_API int IM_ADS_NENTSELP(LPCWSTR prompt, long long name[2], double point[3], int pickFlag,
                            double matrix[4][4], resbuf** containers);

/// A temporary line between points of the world.
MEK_API int IM_ADS_GRDRAW(const double from[3], const double to[3], int colour, int highlight);
/// Points of picks and of the moving cursor come as points of the world.
MEK_API int IM_ADS_GRREAD(int track, int* type, resbuf* result);
