#pragma once
// Commands about what a drawing holds.

/// KMXDATA: lists the extended data of a picked entity.
void xdataCommand();
/// KMLAYERS: makes the standard's layers, or lists those that the drawing has.
void layersCommand();
