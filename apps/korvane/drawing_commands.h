#pragma once
// The sub-commands that look at drawing files without a session: info and audit.
#include <string>

namespace korvane {

struct InfoOptions {
  std::string drawing;
  bool json = false;
};
/// Version, counts by type and layer, applications with extended data, types that the host doesn't model.
int runInfo(const InfoOptions& options);

struct AuditOptions {
  std::string drawing;
  std::string output;  ///< where the mended drawing goes; empty: nowhere
  bool fix = false;
};
/// Reads as far as anything can be read and lists what had to be mended. 0: sound, or mended and written; 1:
/// faults, or not readable.
int runAudit(const AuditOptions& options);

}  // namespace korvane
