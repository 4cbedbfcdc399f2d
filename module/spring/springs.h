#pragma once
// Cylindrical helical springs, drawn into the current drawing on the standard's layers by host commands.
//
// `point` is three doubles in the current user system, read only but for the standard forms; all other
// arguments are drawing units. `d` is the wire's diameter, `D` the coil's (to the wire's centre in the views,
// the outside diameter in the standard forms), `H0` the overall length, `n` the number of active coils: whole
// ones are drawn, the fraction counts in the pitch. The axis lies along the user system's X. Results: 5100;
// -5001 for too few coils, numbers that are not finite, or more than 100,000 coils, with nothing drawn, and
// when an entity that was drawn can't be found (it is reported; what was drawn stays). Afterwards the layer
// of kind THICK is current.
#include "module/core/export.h"

// --- Compression springs, closed and ground ends. The point is the middle of the left end. At least 3 coils.

MEK_API int DrawCompSpring1(double* const point, double d, double D, double H0, double n);  ///< full view
MEK_API int DrawCompSpring2(double* const point, double d, double D, double H0, double n);  ///< as the first
MEK_API int DrawCompSpring3(double* const point, double d, double D, double H0,
                            double n);  ///< section, hatched
MEK_API int DrawCompSpring4(double* const point, double d, double D, double H0, double n);  ///< as the third
MEK_API int DrawCompSpring5(double* const point, double d, double D, double H0, double n);  ///< simplified

// --- Extension springs with half hooks. The point is the middle of the left hook's end (its wire's centre);
// H0 is the distance of the hooks' ends. At least 3 coils.

MEK_API int DrawExteSpring1(double* const point, double d, double D, double H0, double n);  ///< full view
MEK_API int DrawExteSpring2(double* const point, double d, double D, double H0, double n);  ///< as the first
MEK_API int DrawExteSpring3(double* const point, double d, double D, double H0,
                            double n);  ///< section, hatched
MEK_API int DrawExteSpring4(double* const point, double d, double D, double H0, double n);  ///< as the third
MEK_API int DrawExteSpring5(double* const point, double d, double D, double H0, double n);  ///< simplified

// --- Torsion springs. The point is the middle of the body's left end; H0 carries the centre lines only,
// since the pitch is d + 0.5. At least 2 coils, the fourth 3.

MEK_API int DrawTorSpring1(double* const point, double d, double D, double H0,
                           double n);  ///< full view with arms
/// The same with the wire's section, hatched, beyond the end of each arm.
MEK_API int DrawTorSpring2(double* const point, double d, double D, double H0, double n);
MEK_API int DrawTorSpring3(double* const point, double d, double D, double H0,
                           double n);  ///< section, hatched
MEK_API int DrawTorSpring4(double* const point, double d, double D, double H0, double n);  ///< as the third
MEK_API int DrawTorSpring5(double* const point, double d, double D, double H0, double n);  ///< simplified
/// End view of a torsion spring about its centre: mean diameter, wire, angle of the arms (radians), their
/// lengths. Nothing is tested; always 5100.
MEK_API int DrawLeftTorSpring(double* const point, double Dm, double d, double a, double L1, double L2);

// --- Standard forms of compression springs (GB/T 1239): the longitudinal half-section with the middle left
// out (_1) and the end view (_2). Each becomes the block SpringBlockName, which the user then places and
// turns. For the block's base `point` is brought from the world to the user system, and so it comes back.
// -5001 also when the user gives no place or turn. YI: cold-coiled, closed and ground; YII: closed, not
// ground; YIII: open; RYI, RYII: hot-coiled.

MEK_API int GB1239_YI_1(double* const point, double d, double D, double H0);
MEK_API int GB1239_YI_2(double* const point, double d, double D, double H0);
MEK_API int GB1239_YII_1(double* const point, double d, double D, double H0);
MEK_API int GB1239_YII_2(double* const point, double d, double D, double H0);
MEK_API int GB1239_YIII_1(double* const point, double d, double D, double H0);
MEK_API int GB1239_YIII_2(double* const point, double d, double D, double H0);
MEK_API int GB1239_RYI_1(double* const point, double d, double D, double H0);
MEK_API int GB1239_RYI_2(double* const point, double d, double D, double H0);
MEK_API int GB1239_RYII_1(double* const point, double d, double D, double H0);
MEK_API int GB1239_RYII_2(double* const point, double d, double D, double H0);

/// The name of the standard forms' block, at first "KM_SPRING". A caller sets it before the call; a name that
/// no block can have gives -5001 before anything is drawn.
inline constexpr int kSpringBlockNameSize = 256;
extern MEK_API wchar_t SpringBlockName[kSpringBlockNameSize];
