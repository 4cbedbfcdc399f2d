#pragma once
// Chains of `resbuf` nodes: how drawing data, XData, filters and variables pass between host and modules.
//
// A chain belongs to whoever holds its head and is freed as a whole with kvutRelRb. Texts are allocated with
// malloc and belong to their node; so do the buffers of binary chunks.
#include <cstdint>
#include <initializer_list>
#include <type_traits>

#include "platform/text/cstring.h"

/// Status numbers of the function-style calls.
inline constexpr int RTNORM = 5100;
inline constexpr int RTERROR = -5001;
inline constexpr int RTCAN = -5002;
inline constexpr int RTREJ = -5003;
inline constexpr int RTFAIL = -5004;
inline constexpr int RTKWORD = -5005;

/// Value types of a node.
inline constexpr int RTNONE = 5000;
inline constexpr int RTREAL = 5001;
inline constexpr int RTPOINT = 5002;
inline constexpr int RTSHORT = 5003;
inline constexpr int RTANG = 5004;
inline constexpr int RTSTR = 5005;
inline constexpr int RTENAME = 5006;
inline constexpr int RTPICKS = 5007;
inline constexpr int RTORINT = 5008;
inline constexpr int RT3DPOINT = 5009;
inline constexpr int RTLONG = 5010;
inline constexpr int RTVOID = 5014;
inline constexpr int RTLB = 5016;
inline constexpr int RTLE = 5017;
inline constexpr int RTDOTE = 5018;
inline constexpr int RTNIL = 5019;
inline constexpr int RTDXF0 =
    5020;  ///< in kvutBuildList: makes a record of group 0, where 0 itself ends the list
inline constexpr int RTT = 5021;
inline constexpr int RTBINARY = 5022;
inline constexpr int RTRESBUF = 5023;
inline constexpr int RTMODELESS = 5027;

/// A counted buffer of bytes (group codes 310 to 319 and 1004). The length is a number of 16 bits without a
/// sign.
struct KvBinary {
  std::int16_t clen;
  char* buf;
  std::size_t size() const { return buf ? static_cast<std::uint16_t>(clen) : 0; }
};

union KvUnionValue {
  double rreal;
  double rpoint[3];
  std::int16_t rint;
  std::int32_t rlong;
  wchar_t* rstring;
  long long rlname[2];
  long long mnLongPtr;
  long long words[3];
  KvBinary rbinary;
};

struct resbuf {
  resbuf* rbnext;
  std::int16_t restype;
  KvUnionValue resval;
};

/// How the value of a node is held; follows from its type alone.
enum class KvRbKind : std::uint8_t { None, Real, Point, Short, Long, Int64, Text, Name, Binary };

/// Host value types and group codes of drawing files alike; None for codes that nothing uses.
KvRbKind kvutRbKind(int restype);

/// A node with zeroed value, or null for a code without a kind.
resbuf* kvutNewRb(int restype);

/// Frees a whole chain with its texts and buffers. Null is allowed. Always RTNORM.
int kvutRelRb(resbuf* head);

/// A copy of a whole chain, owned by the caller; null for null.
resbuf* kvutCopyRb(const resbuf* head);

/// Gives the node a malloc copy of the text and frees what it held. The node must be of a text kind.
void kvutSetText(resbuf* node, const wchar_t* text);

/// One value for kvutBuildList: numbers, texts, points (pointer to doubles), names (pointer to two words).
class KvRbArg {
 public:
  enum class Kind : std::uint8_t { Integer, Real, Text, Doubles, Words, Binary };
  template <class T>
  requires(std::is_integral_v<T> || std::is_enum_v<T>) KvRbArg(T value)
      : kind_(Kind::Integer), integer_(static_cast<std::int64_t>(value)) {}
  KvRbArg(double value) : kind_(Kind::Real), real_(value) {}
  KvRbArg(const wchar_t* text) : kind_(Kind::Text), text_(text) {}
  KvRbArg(const CString& text) : kind_(Kind::Text), text_(text.GetString()) {}
  KvRbArg(const double* point) : kind_(Kind::Doubles), doubles_(point) {}
  KvRbArg(const long long* name) : kind_(Kind::Words), words_(name) {}
  KvRbArg(const KvBinary& chunk) : kind_(Kind::Binary), binary_(&chunk) {}

  Kind kind() const { return kind_; }
  std::int64_t integer() const {
    return kind_ == Kind::Real ? static_cast<std::int64_t>(real_) : kind_ == Kind::Integer ? integer_ : 0;
  }
  double real() const { return kind_ == Kind::Real ? real_ : static_cast<double>(integer()); }
  const wchar_t* text() const { return kind_ == Kind::Text ? text_ : nullptr; }
  const double* doubles() const { return kind_ == Kind::Doubles ? doubles_ : nullptr; }
  const long long* words() const { return kind_ == Kind::Words ? words_ : nullptr; }
  const KvBinary* binary() const { return kind_ == Kind::Binary ? binary_ : nullptr; }

 private:
  Kind kind_;
  std::int64_t integer_ = 0;
  double real_ = 0;
  const wchar_t* text_ = nullptr;
  const double* doubles_ = nullptr;
  const long long* words_ = nullptr;
  const KvBinary* binary_ = nullptr;
};

/// The list form of kvutBuildList: codes and values by turns; a code without a value (RTNONE, RTLB, RTLE,
/// RTDOTE, RTNIL, RTT) is followed by the next code at once; 0 or the end of the list ends it. A value of the
/// wrong kind counts as zero or empty. Null when a code has no kind.
resbuf* kvutBuildListOf(std::initializer_list<KvRbArg> codesAndValues);

/// A chain of code and value pairs, ended by 0. The chain belongs to the caller.
template <class... Args>
resbuf* kvutBuildList(int code, const Args&... rest) {
  return kvutBuildListOf({KvRbArg(code), KvRbArg(rest)...});
}
