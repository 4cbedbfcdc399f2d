#pragma once
// Dragging: a class of its own samples what the user gives, changes an entity by it and has it shown.
//
// drag() calls sampler(), which acquires a point, an angle, a distance or a text; on kNormal it calls
// update() and shows entity(); it goes on while the source of input tells of a moving cursor, and ends with
// the answer itself: kNormal, the number of a keyword (1, 2, ...), kNull or kCancel. Points are in world
// coordinates.
#include <vector>

#include "host/base/rxclass.h"
#include "host/database/entity.h"
#include "host/editor/input.h"

class KvEdJig : public KvRxObject {
  KVRX_DECLARE(KvEdJig)
 public:
  enum DragStatus {
    kNoChange = -6,
    kCancel = -4,
    kOther = -3,
    kNull = -1,
    kNormal = 0,
    kKW1 = 1,
    kKW2,
    kKW3,
    kKW4,
    kKW5,
    kKW6,
    kKW7,
    kKW8,
    kKW9
  };
  /// Bits of setUserInputControls.
  enum UserInputControls {
    kGovernedByOrthoMode = 1,
    kNullResponseAccepted = 2,
    kDontEchoCancelForCtrlC = 4,
    kDontUpdateLastPoint = 8,
    kNoDwgLimitsChecking = 16,
    kNoZeroResponseAccepted = 32,
    kNoNegativeResponseAccepted = 64,
    kAccept3dCoordinates = 128,
  };

  KvEdJig();
  ~KvEdJig() override;

  /// Without a host kCancel.
  DragStatus drag();
  /// Acquires by the calls below; kNoChange when nothing has to be drawn anew.
  virtual DragStatus sampler();
  /// Changes the entity by what was sampled; false: it isn't shown anew.
  virtual bool update();
  /// What is being dragged; null: nothing. Not owned.
  virtual KvDbEntity* entity() const;
  /// Puts the entity at the end of the current space, which takes it over; null when that fails.
  KvDbObjectId append();

  void setUserInputControls(int controls) { controls_ = controls; }
  int userInputControls() const { return controls_; }
  template <class... Args>
  void setDispPrompt(const wchar_t* format, const Args&... args) {
    prompt_.Format(format, args...);
  }
  void setDispPrompt(const wchar_t* text) { prompt_ = text; }
  const CString& dispPrompt() const { return prompt_; }
  /// Words separated by blanks, capitals as in kvedInitGet.
  void setKeywordList(const wchar_t* keywords) { keywords_ = keywords; }
  const CString& keywordList() const { return keywords_; }

  // Each takes one answer; the value is untouched unless it is kNormal or kNoChange (it is what it was).
  DragStatus acquirePoint(KvGePoint3d& value);
  DragStatus acquirePoint(KvGePoint3d& value, const KvGePoint3d& base);
  /// Radians, counter-clockwise from the X axis of the user system less ANGBASE; a point gives its direction.
  DragStatus acquireAngle(double& value);
  DragStatus acquireAngle(double& value, const KvGePoint3d& base);
  DragStatus acquireDist(double& value);
  DragStatus acquireDist(double& value, const KvGePoint3d& base);
  DragStatus acquireString(CString& value);

 private:
  DragStatus acquirePointFrom(KvGePoint3d& value, const KvGePoint3d* base);
  template <class Convert>
  DragStatus acquire(Convert&& convert);
  DragStatus show();

  int controls_ = 0;
  CString prompt_, keywords_;
  bool isTracking_ = false, hasAcquired_ = false;
};

/// What a drag shows at this moment, for a front end: null when nothing is dragged.
KvDbEntity* kvedDraggedEntity();
