#pragma once
// Points, angles and extents, compared with the product's own tolerances. Points are in world coordinates
// unless it says otherwise, angles in radians. The tolerances and the ten-digit constants are the product's
// contracts.
#include <vector>

#include "host/database/entity.h"
#include "module/core/export.h"

class KvDbCurve;

// --- Coordinates. What can't be converted is copied; null arguments do nothing.

MEK_API void IM_UcsToWcs(double const* in, double* out);
MEK_API void IM_UcsToWcs(double* point);
MEK_API void IM_UcsToWcs(KvGePoint3d const& in, KvGePoint3d& out);
MEK_API void IM_UcsToWcs(KvGePoint3d& point);
MEK_API void IM_UcsToWcs(KvGeVector3d const& in, KvGeVector3d& out);
MEK_API void IM_UcsToWcs(KvGeVector3d& vector);
MEK_API void IM_WcsToUcs(double const* in, double* out);
MEK_API void IM_WcsToUcs(double* point);
MEK_API void IM_WcsToUcs(KvGePoint3d const& in, KvGePoint3d& out);
MEK_API void IM_WcsToUcs(KvGePoint3d& point);
MEK_API void IM_WcsToUcs(KvGeVector3d const& in, KvGeVector3d& out);
MEK_API void IM_WcsToUcs(KvGeVector3d& vector);
MEK_API KvGePoint3d Local_WcsToUcs_RetAcGePoint(KvGePoint3d point);
MEK_API KvGePoint3d Local_UcsToWcs_RetAcGePoint(KvGePoint3d point);

MEK_API void IM_ZCoordinateToZero(double* point);
MEK_API void IM_ZCoordinateToZero(KvGePoint3d& point);
MEK_API void IM_ZCoordinateToZero(KvGePoint3dArray& points);
MEK_API void IM_ZCoordinateToZero(std::vector<KvGePoint3d>& points);

MEK_API void IM_GetMidPoint(KvGePoint3d const& a, KvGePoint3d const& b, KvGePoint3d& middle);
MEK_API KvGePoint3d IM_GetMidPoint(KvGePoint3d const& a, KvGePoint3d const& b);
MEK_API void IM_GetMidPoint(double const* a, double const* b, double* middle);

// --- Comparing

/// |a - b| < 1e-10.
MEK_API bool IM_RealEqual(double a, double b);
/// 1 for equal numbers. With `wrap`, also for numbers a whole turn apart. Without it 1 for every pair of
/// numbers: callers have lived with that; don't use it in new code.
MEK_API int IM_AngleEqual(double a, double b, int wrap);
/// X and Y (and Z unless `ignoreZ`) differ by less than the smaller of 0.01 and VIEWSIZE / 10000. 0 for null.
MEK_API int IM_PointEqual(double const* a, double const* b, int ignoreZ);
MEK_API int IM_PointEqual(KvGePoint3d a, KvGePoint3d b, int ignoreZ);
MEK_API int IM_PointEqual(KvGePoint2d a, KvGePoint2d b);
/// By X and Y alone.
MEK_API int IM_ExtentContains(KvDbExtents const& box, KvGePoint3d const& point, int includeBorder);
MEK_API int IM_ExtentContains(KvDbExtents const& box, KvDbExtents const& inner, int includeBorder);
/// 1 for a rectangle along the axes; a turned one gives 0.
MEK_API int IM_IsPointsBeRect(KvGePoint3d a, KvGePoint3d b, KvGePoint3d c, KvGePoint3d d);

// --- Vectors and angles

/// The user system's Z axis; (0,0,1) for one without length.
MEK_API KvGeVector3d IM_GetNormalVector();
/// An axis of the plane with that normal, from which angles count; as a vector of the user system, turned to
/// the world.
MEK_API KvGeVector3d IM_GetNormalRefVector();
/// Of the user system's X axis from the reference vector, about the normal; 0 to 2 pi.
MEK_API double IM_GetUcsAngle();
/// (1,0,0) turned by `angle` less the user system's, from the user system to the world.
MEK_API KvGeVector3d IM_WcsAngleToVector(double angle);
/// The way back; not brought into one turn.
MEK_API double IM_WcsVectorToAngle(KvGeVector3d vector);

/// Centre and radius of an arc given by two points and a bulge, in the XY plane. The radius has the bulge's
/// sign. 0 for a bulge of 0 or none, and null.
MEK_API int IM_GetAngleFromTd(double* start, double bulge, double* end, double* center, double& radius);
/// The way back: the bulge of the arc that runs counter-clockwise about `center` from start to end. 0, and a
/// bulge of 0, when a point lies on the centre.
MEK_API int IM_GetTdFromAngle(double const* start, double const* center, double const* end, double& bulge);
/// The bulge of the arc from start through `middle` to end. 0, and a bulge of 0, when the three stand in a
/// row.
MEK_API int IM_GetTdFromAngle(KvGePoint3d start, KvGePoint3d middle, KvGePoint3d end, double& bulge);
/// Centre of the circle that touches `tangent` at `on` and passes through `through`, in the XY plane, at the
/// height of `on`. 0 when they lie on one line (sine below 1e-5), or the tangent has no direction there.
MEK_API int IM_GetCenterFromTangentAndPoint(KvGeVector3d tangent, KvGePoint3d on, KvGePoint3d through,
                                            KvGePoint3d& center);

// --- Curves

/// Adds the vertices of a polyline, the ends of a line, arc, spline or part of an ellipse; nothing for a
/// circle or a whole ellipse. 0 for null and for curves without ends.
MEK_API int IM_GetVertexPoints(KvDbCurve const* curve, std::vector<KvGePoint3d>& out);
/// KvGe::PointContainment: 0 inside, 1 outside or undecided or no closed curve, 2 on the curve (nearer than
/// 1e-10).
MEK_API int IM_IsPointInsideCurve(KvDbCurve const* curve, KvGePoint3d point);

// --- Pick box

/// The variable PICKBOX as a length in the world; 1.0 when it is 0 or less.
MEK_API double IM_GetPickBoxSize();
/// The diagonal: the size times 1.414.
MEK_API double IM_GetPickBoxDist();
MEK_API KvGeTol IM_GetPickBoxTol();
