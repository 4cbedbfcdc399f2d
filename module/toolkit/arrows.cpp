// Arrow heads: display names to blocks and back, and the product's own dot.
#include <vector>

#include "host/database/block.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "module/toolkit/styles.h"
#include "siblings/resources/mekres.h"

namespace {

struct Arrow {
  unsigned int message;
  const wchar_t* block;
};

/// Several names lead to one block; on the way back the first row counts.
constexpr Arrow kArrows[] = {
    {1153, L"_CLOSED"},      {1154, L"_DOT"},        {1155, L"_DOT"},      {1156, L"SOLID"},
    {1157, L"_CLOSEDBLANK"}, {1158, L"_OBLIQUE"},    {1159, L"_ARCHTICK"}, {1160, L"_OPEN"},
    {1161, L"_ORIGIN"},      {1246, L"_ORIGIN2"},    {1162, L"_OPEN90"},   {1163, L"_OPEN30"},
    {1164, L"_OPEN30"},      {1165, L"_DOTBLANK"},   {1166, L"_DOTSMALL"}, {1167, L"_SMALL"},
    {1168, L"_BOXFILLED"},   {1169, L"_BOXBLANK"},   {1170, L"_BOXBLANK"}, {1171, L"_DATUMFILLED"},
    {1172, L"_DATUMBLANK"},  {1173, L"_DATUMBLANK"}, {1174, L"_INTEGRAL"}, {1175, L"_NONE"},
};
constexpr unsigned int kNoArrowMessage = 1175;
constexpr int kLongestMessage = 256;
constexpr const wchar_t* kGenDot = L"GENDOT";

struct NamedArrow {
  CString display, block;
};

const std::vector<NamedArrow>& arrows() {
  static const std::vector<NamedArrow> table = [] {
    std::vector<NamedArrow> rows;
    for (const Arrow& arrow : kArrows)
      rows.push_back({IM_GetStringFromRc(arrow.message, kLongestMessage), arrow.block});
    return rows;
  }();
  return table;
}

void append(KvDbBlockTableRecord& block, KvDbEntity* entity) {
  if (block.appendKvDbEntity(entity) != Kvad::eOk) {
    delete entity;
    return;
  }
  entity->setLayer(block.database()->layerZero());
  entity->close();
}

void fillGenDot(KvDbBlockTableRecord& block) {
  append(block, new KvDbLine({0, 0, 0}, {-1, 0, 0}));
  // The width is far above the circle's diameter, so the ring has no hole.
  constexpr double kRadius = 0.125, kHalfCircle = 1.0, kWidth = 2.5;
  auto* dot = new KvDbPolyline;
  dot->addVertexAt(0, {-kRadius, 0}, kHalfCircle);
  dot->addVertexAt(1, {kRadius, 0}, kHalfCircle);
  dot->setClosed(true);
  dot->setConstantWidth(kWidth);
  append(block, dot);
}

}  // namespace

CString IM_GetArrowHeadBlockName(CString displayName) {
  for (const NamedArrow& arrow : arrows())
    if (arrow.display.CompareNoCase(displayName) == 0) return arrow.block;
  return {};
}

CString IM_GetArrowNameFromBlock(CString blockName) {
  for (const NamedArrow& arrow : arrows())
    if (arrow.block.CompareNoCase(blockName) == 0) return arrow.display;
  return IM_GetStringFromRc(kNoArrowMessage, kLongestMessage);
}

int IM_EnsureGenDotArrow() {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  KvDbBlockTable* table = nullptr;
  if (!database || kvdbOpenObject(table, database->blockTableId(), KvDb::kForRead) != Kvad::eOk) return 0;
  bool isThere = table->has(kGenDot);
  if (!isThere && table->upgradeOpen() == Kvad::eOk) {
    auto block = std::make_unique<KvDbBlockTableRecord>();
    block->setName(kGenDot);
    isThere = table->add(block.get()) == Kvad::eOk;
    if (isThere) {
      KvDbBlockTableRecord* made = block.release();
      fillGenDot(*made);
      made->close();
    }
  }
  table->close();
  return isThere;
}
