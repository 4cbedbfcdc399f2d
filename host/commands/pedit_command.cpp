// PEDIT.
#include <algorithm>

#include "host/commands/internal/polybuild.h"
#include "host/commands/internal/polychain.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/trimming.h"
#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"

namespace kvcmd {
namespace {

/// A light polyline in the place of a line, an arc or a polyline of the old kind; null, with a word, when
/// there is none or it isn't wanted.
KvDbObjectId asPolyline(KvDbObjectId id) {
  if (look<KvDbPolyline>(id)) return id;
  if (look<KvDb2dPolyline>(id)) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) return {};
    auto made = std::make_unique<KvDbPolyline>();
    if (made->convertFrom(entity, true) != Kvad::eOk) {
      entity->close();
      return fail(L"A splined polyline can't be edited here."), KvDbObjectId();
    }
    const KvDbObjectId now = entity->objectId();
    made.release();  // `entity` is it now
    entity->close();
    return now;
  }
  std::vector<PolyChainVertex> chain = chainOf(id);
  if (chain.size() < 2) return fail(L"A polyline, a line or an arc expected."), KvDbObjectId();
  if (variable(L"PEDITACCEPT", 0) == 0) {
    say(L"Object selected is not a polyline.");
    if (!askYes(L"\nDo you want to turn it into one?", true).value_or(false)) return {};
  }
  KvGePoint3d start;
  look<KvDbCurve>(id)->getStartPoint(start);
  auto made = std::make_unique<KvDbPolyline>();
  setVertices(*made, chain);
  made->setElevation(toUser(start).z);
  made->transformBy(userToWorld());
  const KvDbObjectId now = addBeside(id, std::move(made));
  change<KvDbEntity>(id, [](KvDbEntity& entity) { entity.erase(); });
  return now;
}

/// One polyline that is being edited, with what was before each step.
class Pedit {
 public:
  explicit Pedit(KvDbObjectId id) : id_(id) {}
  void run();

 private:
  struct State {
    std::vector<PolyChainVertex> vertices;
    bool isClosed = false, hasPlinegen = false;
  };
  const KvDbPolyline& polyline() const { return *look<KvDbPolyline>(id_); }
  State state() const { return {verticesOf(polyline()), polyline().isClosed(), polyline().hasPlinegen()}; }
  void put(const State& state);
  /// Keeps the present state for Undo and puts another one.
  void step(const State& next) {
    past_.push_back(state());
    put(next);
  }
  void undo();
  void close();
  void open();
  void join();
  void width();
  void straighten();
  void plinegen();
  void turn();
  void editVertices();
  void moveVertex(std::size_t at);
  void insertVertex(std::size_t at);
  void widthAt(std::size_t at);
  void removeVertex(std::size_t& at);
  KvGePoint3d userPoint(std::size_t at) const;
  KvGePoint2d inPlane(const KvGePoint3d& user) const;

  KvDbObjectId id_;
  std::vector<State> past_;
};

void Pedit::put(const State& wanted) {
  change<KvDbPolyline>(id_, [&](KvDbPolyline& made) {
    setVertices(made, wanted.vertices);
    made.setClosed(wanted.isClosed);
    made.setPlinegen(wanted.hasPlinegen);
  });
}

void Pedit::undo() {
  if (past_.empty()) return say(L"Nothing to undo.");
  put(past_.back());
  past_.pop_back();
}

void Pedit::close() {
  State next = state();
  // An end that lies on the start goes; its segment closes.
  constexpr double kTouch = 1e-9;
  if (next.vertices.size() > 2 && next.vertices.front().point.distanceTo(next.vertices.back().point) < kTouch)
    next.vertices.pop_back();
  next.isClosed = true;
  step(next);
}

void Pedit::open() {
  State next = state();
  next.isClosed = false;
  step(next);
}

void Pedit::width() {
  double value = 0;
  if (Ask(L"\nSpecify new width for all segments: ").flags(KVED_NONEG).distance(value) != Got::Value) return;
  State next = state();
  for (PolyChainVertex& vertex : next.vertices) vertex.startWidth = vertex.endWidth = value;
  step(next);
}

void Pedit::straighten() {
  State next = state();
  for (PolyChainVertex& vertex : next.vertices) vertex.bulge = 0;
  step(next);
}

void Pedit::plinegen() {
  State next = state();
  Ask ask(L"\nEnter polyline linetype generation option [ON/OFF] <" +
          CString(next.hasPlinegen ? L"ON" : L"OFF") + L">: ");
  if (ask.keywords(L"ON OFF").word() != Got::Keyword) return;
  next.hasPlinegen = ask.keyword == L"ON";
  step(next);
}

void Pedit::turn() {
  past_.push_back(state());
  change<KvDbPolyline>(id_, [](KvDbPolyline& made) { made.reverseCurve(); });
}

void Pedit::join() {
  if (polyline().isClosed()) return say(L"A closed polyline can't be joined to others.");
  const KvDbObjectIdArray others = select();
  if (others.isEmpty()) return;
  std::vector<PolyChainVertex> chain = chainOf(id_);
  if (chain.empty()) return say(L"The polyline doesn't lie in the user system's plane.");
  const std::size_t before = chain.size();
  KvDbObjectIdArray used;
  constexpr double kTouch = 1e-6;
  for (bool grows = true; grows;) {
    grows = false;
    for (KvDbObjectId id : others) {
      if (id == id_ || used.contains(id)) continue;
      const std::vector<PolyChainVertex> more = chainOf(id);
      if (more.size() < 2 || !attach(chain, more, kTouch)) continue;
      used.append(id);
      grows = true;
    }
  }
  if (used.isEmpty()) return say(L"0 segments added to polyline");
  State next = state();
  next.isClosed = chain.front().point.distanceTo(chain.back().point) < kTouch;
  if (next.isClosed) chain.pop_back();
  // From the user system's plane into the polyline's own.
  const KvGeMatrix3d toOwn = KvGeMatrix3d::worldToPlane(polyline().normal()) * userToWorld();
  const double height =
      toUser(KvGeMatrix3d::planeToWorld(polyline().normal()) * KvGePoint3d(0, 0, polyline().elevation())).z;
  const bool isTurned = polyline().normal().dotProduct(userNormal()) < 0;
  for (PolyChainVertex& vertex : chain) {
    vertex.point = kvge::planar(toOwn * KvGePoint3d(vertex.point.x, vertex.point.y, height));
    if (isTurned) vertex.bulge = -vertex.bulge;
  }
  next.vertices = chain;
  // What was joined is gone for good: the steps before end here.
  put(next);
  past_.clear();
  erase(used);
  say(countOf(static_cast<int>(chain.size() - before + (next.isClosed ? 1 : 0)),
              L"segments added to polyline"));
}

KvGePoint3d Pedit::userPoint(std::size_t at) const {
  KvGePoint3d world;
  polyline().getPointAt(static_cast<int>(at), world);
  return toUser(world);
}

KvGePoint2d Pedit::inPlane(const KvGePoint3d& user) const {
  return kvge::planar(KvGeMatrix3d::worldToPlane(polyline().normal()) * toWorld(user));
}

void Pedit::moveVertex(std::size_t at) {
  KvGePoint3d to;
  if (Ask(L"\nSpecify new location for marked vertex: ").base(userPoint(at)).point(to) != Got::Value) return;
  State next = state();
  next.vertices[at].point = inPlane(to);
  step(next);
}

void Pedit::insertVertex(std::size_t at) {
  KvGePoint3d to;
  if (Ask(L"\nSpecify location for new vertex: ").base(userPoint(at)).point(to) != Got::Value) return;
  State next = state();
  PolyChainVertex made = next.vertices[at];
  made.point = inPlane(to);
  made.bulge = 0;
  made.startWidth = made.endWidth;
  next.vertices[at].bulge = 0;
  next.vertices.insert(next.vertices.begin() + static_cast<std::ptrdiff_t>(at) + 1, made);
  step(next);
}

void Pedit::removeVertex(std::size_t& at) {
  State next = state();
  if (next.vertices.size() <= 2) return say(L"A polyline has at least two vertices.");
  if (at > 0) next.vertices[at - 1].bulge = 0;
  next.vertices.erase(next.vertices.begin() + static_cast<std::ptrdiff_t>(at));
  step(next);
  at = std::min(at, next.vertices.size() - 1);
}

void Pedit::widthAt(std::size_t at) {
  State next = state();
  PolyChainVertex& vertex = next.vertices[at];
  if (Ask(L"\nSpecify starting width for next segment <" + numberText(vertex.startWidth) + L">: ")
          .flags(KVED_NONEG)
          .distance(vertex.startWidth) == Got::Cancelled)
    return;
  vertex.endWidth = vertex.startWidth;
  if (Ask(L"\nSpecify ending width for next segment <" + numberText(vertex.startWidth) + L">: ")
          .flags(KVED_NONEG)
          .distance(vertex.endWidth) != Got::Cancelled)
    step(next);
}

void Pedit::editVertices() {
  std::size_t at = 0;
  bool isForward = true;
  for (;;) {
    const std::size_t count = verticesOf(polyline()).size();
    say(L"Vertex at " + pointText(userPoint(at)));
    Ask ask(L"\nEnter a vertex editing option [Next/Previous/Insert/Move/Delete/Width/eXit] <" +
            CString(isForward ? L"N" : L"P") + L">: ");
    const Got got = ask.keywords(L"Next Previous Insert Move Delete Width eXit").word();
    if (got == Got::Cancelled || (got == Got::Keyword && ask.keyword == L"eXit")) return;
    if (got == Got::Keyword && (ask.keyword == L"Next" || ask.keyword == L"Previous"))
      isForward = ask.keyword == L"Next";
    if (got == Got::Keyword && ask.keyword == L"Insert")
      insertVertex(at);
    else if (got == Got::Keyword && ask.keyword == L"Move")
      moveVertex(at);
    else if (got == Got::Keyword && ask.keyword == L"Delete")
      removeVertex(at);
    else if (got == Got::Keyword && ask.keyword == L"Width")
      widthAt(at);
    else
      at = (at + (isForward ? 1 : count - 1)) % count;
  }
}

void Pedit::run() {
  struct Option {
    const wchar_t* keyword;
    void (Pedit::*run)();
  };
  constexpr Option kOptions[] = {
      {L"Close", &Pedit::close},    {L"Open", &Pedit::open},         {L"Join", &Pedit::join},
      {L"Width", &Pedit::width},    {L"Edit", &Pedit::editVertices}, {L"Decurve", &Pedit::straighten},
      {L"Ltype", &Pedit::plinegen}, {L"Reverse", &Pedit::turn},      {L"Undo", &Pedit::undo}};
  for (;;) {
    const bool isClosed = polyline().isClosed();
    Ask ask(isClosed ? L"\nEnter an option [Open/Join/Width/Edit vertex/Decurve/Ltype gen/Reverse/Undo]: "
                     : L"\nEnter an option [Close/Join/Width/Edit vertex/Decurve/Ltype gen/Reverse/Undo]: ");
    ask.keywords(isClosed ? L"Open Join Width Edit Decurve Ltype Reverse Undo"
                          : L"Close Join Width Edit Decurve Ltype Reverse Undo");
    if (ask.word() != Got::Keyword) return;
    for (const Option& option : kOptions)
      if (ask.keyword == option.keyword) (this->*option.run)();
  }
}

void runPedit() {
  if (!drawing()) return;
  KvDbObjectId id;
  if (Ask(L"\nSelect polyline: ").entity(id) != Got::Value) return;
  if (isLocked(id)) return fail(L"The object is on a locked layer.");
  id = asPolyline(id);
  if (!id.isNull()) Pedit(id).run();
}

constexpr KvCommandRow kRows[] = {
    {L"PEDIT", L"PE", KVRX_CMD_MODAL, runPedit, L"Changes polylines, and makes them of lines and arcs.",
     L"Select polyline:\nDo you want to turn it into one? [Yes/No] <Yes>: (of a line or an arc)\nEnter an "
     L"option [Close/Join/Width/Edit vertex/Decurve/Ltype gen/Reverse/Undo]: (Open instead of Close; empty: "
     L"ends)\nSpecify new width for all segments: (after Width)\nEnter a vertex editing option "
     L"[Next/Previous/Insert/Move/Delete/Width/eXit] <N>: (after Edit vertex)"},
};

}  // namespace

std::span<const KvCommandRow> peditRows() {
  return kRows;
}

}  // namespace kvcmd
