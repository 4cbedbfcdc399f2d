#pragma once
// Entities made from records, one call each. 5100 or, with a message on the command line, -5001: also for a
// null point or text.
//
// Points are in the coordinates of the record's groups (world coordinates for everything in the world's XY
// plane), angles in degrees as in files. The ..._color forms take the colour number (0 by block, 256 by
// layer) last.
#include "host/base/kvds.h"
#include "module/core/export.h"

MEK_API int md_line(const double p1[3], const double p2[3]);
/// Without subclass markers.
MEK_API int md_line_color(const double p1[3], const double p2[3], int color);
MEK_API int md_circle(const double center[3], double radius);
MEK_API int md_circle_color(const double center[3], double radius, int color);
MEK_API int md_arc(const double center[3], double radius, double startAngle, double endAngle);
MEK_API int md_arc_color(const double center[3], double radius, double startAngle, double endAngle,
                         int color);
MEK_API int md_solid(const double p1[3], const double p2[3], const double p3[3], const double p4[3]);
MEK_API int md_solid_color(const double p1[3], const double p2[3], const double p3[3], const double p4[3],
                           int color);
/// A filled head: `width` across at `base`, pointed at `tip`.
MEK_API int md_arrow(const double tip[3], const double base[3], double width);
/// No head: a line between its two wings.
MEK_API int md_arrow_color(const double tip[3], const double base[3], double width, int color);

/// In the style "STANDARD".
MEK_API int md_text(const double point[3], double height, double rotation, const wchar_t* text);
MEK_API int md_text_color(const double point[3], double height, double rotation, const wchar_t* text,
                          int color);
/// Justified at the point: groups 72 and 73.
MEK_API int md_text_j(const double point[3], double height, double rotation, const wchar_t* text,
                      int horizontal, int vertical);
MEK_API int md_text_j_color(const double point[3], double height, double rotation, const wchar_t* text,
                            int horizontal, int vertical, int color);

/// Begins a block; what is made up to md_block_end belongs to it. A name that begins with "*" makes an
/// anonymous one.
MEK_API int md_block_head(const wchar_t* name, const double basePoint[3]);
MEK_API int md_block_head_color(const wchar_t* name, const double basePoint[3], int color);
MEK_API int md_block_end();
/// `name`, a buffer of 131 characters, gets the name that the block has.
MEK_API int md_block_end(wchar_t* name);
/// With `attributesFollow` 1 the attributes that are made up to md_seqend belong to it.
MEK_API int md_insert(const wchar_t* name, const double point[3], double angle, int attributesFollow);
/// Never turned.
MEK_API int md_insert_color(const wchar_t* name, const double point[3], int attributesFollow, int color);
MEK_API int md_attrib(const double point[3], double height, double rotation, const wchar_t* value,
                      const wchar_t* tag, int flags);
MEK_API int md_attrib_color(const double point[3], double height, double rotation, const wchar_t* value,
                            const wchar_t* tag, int flags, int color);
MEK_API int md_attdef(const double point[3], double height, double rotation, const wchar_t* value,
                      const wchar_t* tag, const wchar_t* prompt, int flags);
MEK_API int md_attdef_color(const double point[3], double height, double rotation, const wchar_t* value,
                            const wchar_t* tag, const wchar_t* prompt, int flags, int color);
MEK_API int md_seqend();

/// A polyline of one width, begun with two vertices: md_vertex_pair adds two more, md_seqend ends it.
MEK_API int md_wide_line(const double p1[3], const double p2[3], double width);
MEK_API int md_wide_line_color(const double p1[3], const double p2[3], double width, int color);
MEK_API int md_vertex_pair(const double p1[3], const double p2[3]);
