#pragma once
// Layouts: the sheets of a drawing with their plot settings, and the manager that makes them and switches
// between them.
//
// A layout's groups are kept as files have them; the calls below read and set single ones. Lengths of the
// sheet are millimetres unless the paper unit says otherwise; 1 drawing unit of a layout's block is one paper
// unit.
#include "host/database/block.h"
#include "host/database/dictionary.h"

class KvDbLayout : public KvDbProxyObject {
  KVRX_DECLARE(KvDbLayout)
 public:
  enum PlotType { kDisplay = 0, kExtents = 1, kLimits = 2, kView = 3, kWindow = 4, kLayout = 5 };
  enum PaperUnits { kInches = 0, kMillimeters = 1, kPixels = 2 };

  KvDbLayout() : KvDbProxyObject(CString(L"LAYOUT")) {}
  /// With the settings of a fresh A3 sheet, landscape, in millimetres.
  static std::unique_ptr<KvDbLayout> make(const CString& name, int tabOrder);

  CString getLayoutName() const { return text(kLayoutMarker, 1); }
  void setLayoutName(const CString& name) { setText(kLayoutMarker, 1, name); }
  int tabOrder() const { return whole(kLayoutMarker, 71); }
  KvDbObjectId blockTableRecordId() const;
  void setBlockTableRecordId(KvDbObjectId id);
  bool isModelLayout() const { return (whole(kPlotMarker, 70) & kModelType) != 0; }

  CString paperName() const { return text(kPlotMarker, 4); }
  CString plotViewName() const { return text(kPlotMarker, 6); }
  double paperWidth() const { return real(kPlotMarker, 44); }  ///< before rotation
  double paperHeight() const { return real(kPlotMarker, 45); }
  /// Left, bottom, right, top.
  double margin(int side) const { return real(kPlotMarker, 40 + side); }
  KvGePoint2d plotOrigin() const { return {real(kPlotMarker, 46), real(kPlotMarker, 47)}; }
  KvGePoint2d windowMin() const { return {real(kPlotMarker, 48), real(kPlotMarker, 49)}; }
  KvGePoint2d windowMax() const { return {real(kPlotMarker, 140), real(kPlotMarker, 141)}; }
  PlotType plotType() const { return static_cast<PlotType>(whole(kPlotMarker, 74)); }
  PaperUnits paperUnits() const { return static_cast<PaperUnits>(whole(kPlotMarker, 72)); }
  /// Quarter turns counter-clockwise, 0 to 3.
  int rotation() const { return whole(kPlotMarker, 73) & 3; }
  /// Paper units for each drawing unit; 0: fit to the paper.
  double scale() const;
  bool isCentered() const { return (whole(kPlotMarker, 70) & kCentered) != 0; }
  bool plotsLineweights() const { return (whole(kPlotMarker, 70) & kLineweights) != 0; }

  double real(std::wstring_view marker, int code) const;
  int whole(std::wstring_view marker, int code) const;
  CString text(std::wstring_view marker, int code) const;
  void setReal(std::wstring_view marker, int code, double value);
  void setWhole(std::wstring_view marker, int code, int value);
  void setText(std::wstring_view marker, int code, const CString& value);

  static constexpr std::wstring_view kPlotMarker = L"AcDbPlotSettings", kLayoutMarker = L"AcDbLayout";

 private:
  static constexpr int kCentered = 4, kLineweights = 128, kModelType = 1024;
  std::optional<KvDbStoredGroup> find(std::wstring_view marker, int code) const;
  void put(std::wstring_view marker, const KvDbStoredGroup& group);
};

class KvDbLayoutManager {
 public:
  explicit KvDbLayoutManager(KvDbDatabase& database) : database_(database) {}

  /// "Model" while model space is shown.
  CString currentLayoutName() const;
  KvDbObjectId currentLayoutId() const;
  /// Null when the drawing has none.
  KvDbObjectId modelLayoutId() const;
  /// Without regard to case; null when there is none.
  KvDbObjectId layoutId(const wchar_t* name) const;
  /// All of them by their place in the row of tabs, the model's first.
  std::vector<KvDbObjectId> layouts() const;

  /// A new sheet with its block. eInvalidName, eDuplicateKey.
  Kvad::ErrorStatus createLayout(const wchar_t* name, KvDbObjectId& layout);
  /// A new sheet, the last in the row of tabs, with the plot settings of another one and copies of all that
  /// is on it, drawn in the same order. eKeyNotFound, eInvalidName, eDuplicateKey, eNotApplicable for the
  /// model's.
  Kvad::ErrorStatus copyLayout(const wchar_t* name, const wchar_t* newName, KvDbObjectId& layout);
  /// New entities go to it from now on. eKeyNotFound.
  Kvad::ErrorStatus setCurrentLayout(const wchar_t* name);
  Kvad::ErrorStatus setCurrentLayoutId(KvDbObjectId layout);
  /// eKeyNotFound, eInvalidName, eDuplicateKey, eNotApplicable for the model's.
  Kvad::ErrorStatus renameLayout(const wchar_t* oldName, const wchar_t* newName);
  /// With its block's entities; the model's and the last sheet stay: eNotApplicable. eKeyNotFound.
  Kvad::ErrorStatus deleteLayout(const wchar_t* name);

  /// Gives the drawing the layouts of its spaces where it has none.
  void ensureLayouts();

 private:
  KvDbObjectId dictionaryId() const;
  KvDbObjectId makeFor(const wchar_t* name, int tabOrder, KvDbObjectId block);
  KvDbBlockTableRecord* blockOf(KvDbObjectId layout) const;

  KvDbDatabase& database_;
};

/// The working drawing's; null without one.
KvDbLayoutManager* kvdbLayoutManagerPtr();
