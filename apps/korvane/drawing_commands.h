#pragma once
// The sub-commands that look at drawing files without a session: info and audit.
#include <string>

namespace korvane {

struct InfoOptions {
  std::string drawing;
  bool json = false;
};
/// Version, extents of each space, counts by type and layer, applications with extended data, types that the
/// host doesn't model.
int runInfo(const InfoOptions& options);

struct AuditOptions {
  std::string drawing;
  std::string output;  ///< where the mended drawing goes; empty: nowhere
  bool fix = false;
  bool json = false;
};
/// Reads as far as anything can be read and lists the faults by code, those that stand apart from those that
/// were mended. 0: sound, or all mended and written; 1: faults stand, or not readable.
int runAudit(const AuditOptions& options);

}  // namespace korvane
