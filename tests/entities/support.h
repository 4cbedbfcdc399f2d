#pragma once
// A drawing to put entities into, and what they draw, counted.
#include <gtest/gtest.h>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/primitives.h"
#include "host/io/drawing_file.h"

class TestDrawing {
 public:
  KvDbDatabase& database() { return *database_; }

  /// A new block of that name, empty.
  KvDbObjectId addBlock(const wchar_t* name) {
    KvDbBlockTable* table = nullptr;
    EXPECT_EQ(database_->getBlockTable(table, KvDb::kForWrite), Kvad::eOk);
    auto* record = new KvDbBlockTableRecord;
    record->setName(name);
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, record), Kvad::eOk);
    record->ensureMarks();
    record->close();
    table->close();
    return id;
  }
  /// Into a block, model space by default; closed afterwards.
  template <class T>
  T* add(T* entity, KvDbObjectId block = {}) {
    KvDbBlockTableRecord* record = nullptr;
    if (block.isNull()) block = database_->modelSpaceId();
    EXPECT_EQ(kvdbOpenObject(record, block, KvDb::kForWrite), Kvad::eOk);
    if (entity->layerId().isNull()) entity->setDatabaseDefaults(database_.get());
    EXPECT_EQ(record->appendKvDbEntity(entity), Kvad::eOk);
    record->close();
    entity->close();
    return entity;
  }
  std::vector<const KvDbEntity*> entities(KvDbObjectId block = {}) const {
    if (block.isNull()) block = database_->modelSpaceId();
    std::vector<const KvDbEntity*> all;
    for (KvDbObjectId id : KvDbBlockTableRecord::cast(block.stub()->object)->entities())
      all.push_back(KvDbEntity::cast(id.stub()->object));
    return all;
  }
  /// The same drawing written to a file and read again.
  void throughFile(KvDbFileVersion version = KvDbFileVersion::R2018) {
    KvIoSaveOptions options;
    options.version = version;
    const std::string bytes = kvdbFormatDrawing(*database_, options);
    auto fresh = std::make_unique<KvDbDatabase>(false);
    KvIoReport report;
    ASSERT_EQ(kvdbParseDrawing(*fresh, bytes, report), Kvad::eOk)
        << platform::utf8From(report.error.describe());
    EXPECT_EQ(kvdbFormatDrawing(*fresh, options), bytes);
    database_ = std::move(fresh);
  }
  void read(const char* path) {
    database_ = std::make_unique<KvDbDatabase>(false);
    KvIoReport report;
    ASSERT_EQ(kvdbReadDrawing(*database_, path, report), Kvad::eOk) << path;
  }

 private:
  std::unique_ptr<KvDbDatabase> database_ = std::make_unique<KvDbDatabase>();
};

/// What something draws, gathered.
class TestSink : public KvDbCurveSink {
 public:
  TestSink() = default;
  explicit TestSink(const KvDbEntity& entity) { draw(const_cast<KvDbEntity*>(&entity)); }
  void takeCurve(Curve curve) override {
    if (std::isfinite(curve->length())) length += curve->length();
    curves.push_back(std::move(curve));
  }
  void takePoint(const KvGePoint3d& point) override { dots.push_back(point); }
  void takeTextBox(const KvGePoint3d (&corners)[4]) override { textBoxes.push_back(corners[0]); }
  bool text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
            const KvGiTextLook& look, const CString& text) override {
    texts.push_back(text);
    return KvDbCurveSink::text(position, normal, direction, look, text);
  }
  bool polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) override {
    filledOutlines += outlines;
    return KvDbCurveSink::polyPolygon(outlines, counts, points);
  }
  bool pushClipBoundary(const KvGiClipBoundary& boundary) override {
    clips.push_back(boundary.toPlane);
    clipCounts.push_back(boundary.count);
    return false;
  }
  std::vector<Curve> curves;
  std::vector<CString> texts;
  std::vector<KvGePoint3d> textBoxes, dots;
  std::vector<KvGeMatrix3d> clips;
  std::vector<int> clipCounts;
  double length = 0;
  int filledOutlines = 0;
};
