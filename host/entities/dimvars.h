#pragma once
// The dimension variables as one set: how dimensions and leaders look.
#include <array>
#include <span>

#include "host/database/entity.h"

/// Each variable by name; the order is that of the table (kvdbDimVarTable).
enum class KvDbDimVar : std::uint8_t {
  Post,
  APost,
  Scale,
  Asz,
  Exo,
  Dli,
  Exe,
  Rnd,
  Dle,
  Tp,
  Tm,
  Fxl,
  JogAng,
  Tfill,
  TfillClr,
  Txt,
  Cen,
  Tsz,
  AltF,
  Lfac,
  Tvp,
  Tfac,
  Gap,
  AltRnd,
  Tol,
  Lim,
  Tih,
  Toh,
  Se1,
  Se2,
  Tad,
  Zin,
  Azin,
  ArcSym,
  Alt,
  AltD,
  Tofl,
  Sah,
  Tix,
  Soxd,
  ClrD,
  ClrE,
  ClrT,
  Adec,
  Dec,
  Tdec,
  AltU,
  AltTd,
  Aunit,
  Frac,
  Lunit,
  Dsep,
  Tmove,
  Just,
  Sd1,
  Sd2,
  TolJ,
  Tzin,
  AltZ,
  AltTz,
  Upt,
  Atfit,
  FxlOn,
  TxtDirection,
  TxSty,
  LdrBlk,
  Blk,
  Blk1,
  Blk2,
  Ltype,
  LtEx1,
  LtEx2,
  Lwd,
  Lwe
};

struct KvDbDimVarRow {
  enum Kind : std::uint8_t { Real, Int, Text, Reference };
  KvDbDimVar variable;
  const wchar_t* name;  ///< "DIMTXT"
  std::int16_t code;    ///< in style records and in overrides
  Kind kind;
  double metric, imperial;  ///< defaults
};
std::span<const KvDbDimVarRow> kvdbDimVarTable();
/// Without regard to case; null for a name that is none.
const KvDbDimVarRow* kvdbDimVarNamed(std::wstring_view name);

class KvDbDimStyleTableRecord;

class KvDbDimVars {
 public:
  static constexpr int kCount = static_cast<int>(KvDbDimVar::Lwe) + 1;
  /// The defaults.
  explicit KvDbDimVars(bool isMetric = true);
  /// Those of a style's record; what it doesn't tell has its default, by the drawing's system of measurement.
  /// A null id gives the defaults.
  static KvDbDimVars ofStyle(KvDbObjectId style);
  /// The style's, with the overrides in the entity's extended data (ACAD, DSTYLE) upon them.
  static KvDbDimVars ofEntity(const KvDbEntity& entity, KvDbObjectId style);

  double real(KvDbDimVar variable) const { return numbers_[at(variable)]; }
  int whole(KvDbDimVar variable) const { return static_cast<int>(numbers_[at(variable)]); }
  bool on(KvDbDimVar variable) const { return numbers_[at(variable)] != 0; }
  const CString& text(KvDbDimVar variable) const { return texts_[variable == KvDbDimVar::APost ? 1 : 0]; }
  KvDbObjectId id(KvDbDimVar variable) const { return ids_[at(variable) - at(KvDbDimVar::TxSty)]; }
  /// eInvalidInput for a value of another kind, or one that isn't finite.
  Kvad::ErrorStatus set(KvDbDimVar variable, double value);
  Kvad::ErrorStatus set(KvDbDimVar variable, const wchar_t* value);
  Kvad::ErrorStatus set(KvDbDimVar variable, KvDbObjectId value);

  /// Takes over what the overrides of an entity say.
  void applyOverrides(const KvDbEntity& entity);
  /// Writes the difference from `style` as the entity's overrides; none where there is no difference.
  Kvad::ErrorStatus writeOverrides(KvDbEntity& entity, const KvDbDimVars& style) const;
  /// Makes the record say this set, all of it. The record must be open for write.
  void writeTo(KvDbDimStyleTableRecord& record) const;

  friend bool operator==(const KvDbDimVars&, const KvDbDimVars&) = default;

 private:
  static constexpr std::size_t at(KvDbDimVar variable) { return static_cast<std::size_t>(variable); }
  static constexpr std::size_t kReferences = 8;
  void take(int code, const KvDxfGroup& group, const KvDbDatabase* database);

  std::array<double, kCount> numbers_{};
  std::array<CString, 2> texts_;
  std::array<KvDbObjectId, kReferences> ids_;
};
