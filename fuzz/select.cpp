// Scripts of any bytes against prompts for points, angles, distances, selections, picks and drags.
#include <cstdint>
#include <string_view>

#include "host/app/hostapp.h"
#include "host/database/block.h"
#include "host/editor/jig.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "platform/text/utf.h"

namespace {

class AnyJig : public KvEdJig {
 public:
  DragStatus sampler() override {
    setUserInputControls(130);
    setKeywordList(L"A Z");
    const DragStatus status = acquirePoint(point_);
    return status == kNormal ? acquireAngle(angle_, point_) : status;
  }

 private:
  KvGePoint3d point_;
  double angle_ = 0;
};

void select(const wchar_t* mode) {
  kvds_name set;
  resbuf* chain = nullptr;
  if (kvedSSGet(mode, nullptr, nullptr, nullptr, set) != RTNORM) return;
  kvedSSNameX(&chain, set, -1);
  kvutRelRb(chain);
  kvedSSFree(set);
}

void ask() {
  kvds_point point = {0, 0, 0};
  kvds_name name;
  double value = 0, matrix[4][3];
  resbuf* containers = nullptr;
  kvedGetPoint(nullptr, L"Point: ", point);
  kvedGetCorner(point, L"Corner: ", point);
  kvedGetAngle(nullptr, L"Angle: ", &value);
  kvedGetDist(point, L"Distance: ", &value);
  select(nullptr);
  select(L":S:N");
  kvedEntSel(nullptr, name, point);
  kvedNEntSel(nullptr, name, point, matrix, &containers);
  kvutRelRb(containers);
  AnyJig().drag();
}

void fillDrawing(KvDbDatabase& database) {
  KvDbBlockTableRecord* space = nullptr;
  if (kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForWrite) != Kvad::eOk) return;
  for (KvDbEntity* entity : std::initializer_list<KvDbEntity*>{
           new KvDbLine({0, 0, 0}, {10, 0, 0}), new KvDbCircle({5, 5, 0}, KvGeVector3d::kZAxis, 3),
           new KvDbBlockReference({0, 0, 0}, database.modelSpaceId())}) {
    entity->setLayer(database.layerZero());
    space->appendKvDbEntity(entity);
    entity->close();
  }
  space->close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KvHostApp app({});
  app.editor().commands().addCommand(L"F", L"ASK", L"ASK", 0, ask);
  fillDrawing(*app.newDocument()->database());
  app.editor().pushSource(std::make_unique<KvEdScriptSource>(
      CString(platform::fromUtf8({reinterpret_cast<const char*>(data), size}))));
  app.run();
  return 0;
}
