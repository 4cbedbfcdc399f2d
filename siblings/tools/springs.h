#pragma once
// Springs for people: what they may ask for, why it is refused, and drawing it whole or not at all.
#include "platform/text/cstring.h"

enum class SpringFamily { Compression, Extension, Torsion, TorsionEnd, Standard };

struct SpringRequest {
  SpringFamily family = SpringFamily::Compression;
  int form = 1;  ///< 1 to 5 of the first three families; 1 half-section, 2 end view of the standard forms
  CString standard = L"YI";  ///< YI, YII, YIII, RYI, RYII
  double d = 2;              ///< wire, drawing units
  double D = 20;             ///< coil: to the wire's centre; of the standard forms outside
  double H0 = 50;            ///< overall length; of a torsion spring's end view the first arm
  double n = 5;              ///< active coils; of a torsion spring's end view the second arm
  double angle = 90;         ///< degrees, between the arms of an end view
};

/// Why such a spring can't be made, in words; empty when it can.
CString whyNoSpring(const SpringRequest& request);

/// Draws it at a point of the user system: all of it, or nothing stays. Standard forms ask for their place
/// and turn. Empty, or what went wrong.
CString drawSpring(const SpringRequest& request, const double* point);

/// The family of a word ("compression", "ext", ...), without regard to case; false for an unknown one.
bool springFamilyOf(CString word, SpringFamily& family);

/// KMSPRING: asks for all of it, with defaults, and draws.
void springCommand();
