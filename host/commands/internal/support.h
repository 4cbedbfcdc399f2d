#pragma once
// What commands share: the drawing, the user system, prompts that answer with values, new entities,
// selections.
#include <cmath>
#include <memory>
#include <optional>

#include "host/base/context.h"
#include "host/database/database.h"
#include "host/database/entity.h"
#include "host/editor/editor.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"

namespace kvcmd {

/// Below this a turn, or a length in parts of the whole, is what rounding leaves of 0.
inline constexpr double kSmallestTurn = 1e-12;

/// The working drawing; null when there is none.
inline KvDbDatabase* drawing() {
  return kvdbDatabaseOrWorking(nullptr);
}
inline KvEdEditor* editor() {
  return KvHostContext::current().editor;
}
/// The command could not do its work; the reason is shown.
void fail(const CString& text);
void say(const CString& text);

/// From the user system to the world.
KvGeMatrix3d userToWorld();
KvGePoint3d toWorld(const KvGePoint3d& user);
KvGePoint3d toUser(const KvGePoint3d& world);

/// What a prompt brought.
enum class Got { Value, Keyword, Nothing, Cancelled };

/// One prompt with its keywords and flags; `keyword` is the one that was given, spelt as listed.
class Ask {
 public:
  explicit Ask(CString prompt) : prompt_(std::move(prompt)) {}
  Ask& keywords(const wchar_t* list) { return keywords_ = list, *this; }
  Ask& flags(int flags) { return flags_ = flags, *this; }
  /// Of entities: which ones are wanted, so that others under the pick box are looked past.
  Ask& prefer(bool (*accept)(KvDbObjectId)) { return accept_ = accept, *this; }
  /// Where a rubber line starts, user coordinates.
  Ask& base(const KvGePoint3d& point) { return base_ = point, *this; }

  Got point(KvGePoint3d& value);  ///< user coordinates
  Got corner(const KvGePoint3d& opposite, KvGePoint3d& value);
  Got distance(double& value);
  Got angle(double& value);  ///< radians, from the user's X axis by ANGBASE
  Got real(double& value);
  Got whole(int& value);
  /// To the end of the line with `blanks`, to the next blank without.
  Got text(CString& value, bool blanks = false);
  /// Nothing for an empty reply.
  Got word();
  /// One entity, pointed at; a miss is asked for again. `point`, which may be null, in user coordinates.
  Got entity(KvDbObjectId& id, KvGePoint3d* point = nullptr);
  CString keyword;

 private:
  /// False once the command was broken off: then no prompt asks any more.
  bool begin() const;
  Got outcome(int status);
  CString prompt_;
  const wchar_t* keywords_ = L"";
  int flags_ = 0;
  std::optional<KvGePoint3d> base_;
  bool (*accept_)(KvDbObjectId) = nullptr;
};

/// Yes, no, or Cancelled; an empty reply is the default. The prompt's end is added.
std::optional<bool> askYes(const CString& prompt, bool standard);

/// The user system's Z axis in the world.
KvGeVector3d userNormal();
/// In a plane parallel to the user system's.
double bearing(const KvGePoint3d& from, const KvGePoint3d& to);
double flatDistance(const KvGePoint3d& a, const KvGePoint3d& b);

/// The value of a system variable; the standard one where there is none of that type.
template <class T>
T variable(const wchar_t* name, T standard) {
  KvEdVarValue held;
  if (editor() && editor()->variables().get(name, held) == Kvad::eOk)
    if (const T* found = std::get_if<T>(&held)) return *found;
  return standard;
}
void setVariable(const wchar_t* name, const KvEdVarValue& value);
/// The shortest text that reads back as the same number.
CString numberText(double value);
/// By the variables LUNITS and LUPREC; angles by AUNITS and AUPREC.
CString lengthText(double value);
CString angleText(double radians);
CString pointText(const KvGePoint3d& point);

/// On a layer that is locked.
bool isLocked(KvDbObjectId id);
/// Opens each for writing and moves it by a world transform; says how many could not be moved.
void moveAll(const KvDbObjectIdArray& ids, const KvGeMatrix3d& world);
/// Copies in the same space, as they are; null ids left out.
KvDbObjectIdArray copyAll(const KvDbObjectIdArray& ids);

/// Puts an entity into the current space with the current layer, colour and linetype; null when that fails
/// (the entity is gone then). `keepLook` leaves its own properties.
KvDbObjectId add(std::unique_ptr<KvDbEntity> entity, bool keepLook = false);
/// The same for an entity that was made in user coordinates.
KvDbObjectId addFromUser(std::unique_ptr<KvDbEntity> entity);

/// Asks for objects; ends when the user is done. Entities on locked layers are left out with a word, unless
/// `withLocked`. Empty after a cancel or an empty selection; `isCancelled` tells which.
KvDbObjectIdArray select(const wchar_t* prompt = nullptr, bool withLocked = false,
                         bool* isCancelled = nullptr);

/// For commands whose steps belong together: what changed while this lived is taken back when the user breaks
/// the command off. It ends in the drawing in which it began.
class AllOrNothing {
 public:
  AllOrNothing();
  ~AllOrNothing();
  AllOrNothing(const AllOrNothing&) = delete;
  AllOrNothing& operator=(const AllOrNothing&) = delete;

 private:
  KvDbDatabase* database_;
};

/// Opens for writing, does the work, closes. False when it can't be opened.
template <class T, class Work>
bool change(KvDbObjectId id, const Work& work) {
  T* object = nullptr;
  if (kvdbOpenObject(object, id, KvDb::kForWrite) != Kvad::eOk) return false;
  work(*object);
  object->close();
  return true;
}

/// The object as it can be read; null when it is of another class or erased.
template <class T>
const T* look(KvDbObjectId id) {
  return id.isValid() ? T::cast(const_cast<const KvDbObject*>(id.stub()->object)) : nullptr;
}

void erase(const KvDbObjectIdArray& ids);
/// "3 found" and the like need no plural rules here.
CString countOf(int number, const wchar_t* what);

}  // namespace kvcmd
