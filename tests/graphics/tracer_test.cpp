// What a tracer makes of entities: looks inside nested blocks, transforms, clips, widths, bad input.
#include "host/database/tracer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "host/database/block.h"
#include "host/database/database.h"

namespace {

/// An entity that draws what it is told to.
class Sketch : public KvDbEntity {
 public:
  using Draw = std::function<void(KvGiWorldDraw&)>;
  explicit Sketch(Draw draw) : draw_(std::move(draw)) {}
  bool subWorldDraw(KvGiWorldDraw* draw) override {
    draw_(*draw);
    return true;
  }

 private:
  Draw draw_;
};

void shortLine(KvGiWorldDraw& draw) {
  const KvGePoint3d ends[] = {{0, 0, 0}, {1, 0, 0}};
  draw.geometry().polyline(2, ends);
}

/// Keeps all strokes and areas.
class Recorder : public KvGiTracer {
 public:
  using KvGiTracer::KvGiTracer;
  struct Stroke {
    std::vector<KvGePoint3d> points;
    KvGiStyle style;
    long marker;
    std::size_t depth;
  };
  std::vector<Stroke> strokes;
  std::vector<std::vector<std::vector<KvGePoint3d>>> areas;
  std::function<void(KvDbObjectId, KvGiLayerLook&)> adjust;

  double strokeLength() const {
    double sum = 0;
    for (const Stroke& s : strokes)
      for (std::size_t i = 1; i < s.points.size(); ++i) sum += s.points[i - 1].distanceTo(s.points[i]);
    return sum;
  }
  /// Signed areas of an even-odd area only add up when its outlines run alike.
  double filledArea() const {
    double sum = 0;
    for (const auto& area : areas)
      for (const auto& outline : area) {
        double twice = 0;
        for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++)
          twice += outline[j].x * outline[i].y - outline[i].x * outline[j].y;
        sum += std::fabs(twice) / 2;
      }
    return sum;
  }

 protected:
  void stroke(const KvGePoint3d* points, int count) override {
    strokes.push_back({{points, points + count}, style(), marker(), drawables().size()});
  }
  void fill(const KvGiArea& area) override {
    auto& kept = areas.emplace_back();
    const KvGePoint3d* at = area.points;
    for (int i = 0; i < area.outlines; ++i) {
      kept.emplace_back(at, at + area.counts[i]);
      at += area.counts[i];
    }
  }
  void adjustLayer(KvDbObjectId layer, KvGiLayerLook& look) const override {
    if (adjust) adjust(layer, look);
  }
};

class TracerTest : public testing::Test {
 protected:
  KvDbObjectId layer(const wchar_t* name, int color, int weight = KvDb::kLnWtByLwDefault) {
    KvDbLayerTable* table = nullptr;
    EXPECT_EQ(kvdbOpenObject(table, drawing.layerTableId(), KvDb::kForWrite), Kvad::eOk);
    auto* record = new KvDbLayerTableRecord;
    record->setName(name);
    record->setColorIndex(color);
    record->setLineWeight(static_cast<KvDb::LineWeight>(weight));
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, record), Kvad::eOk);
    record->close();
    table->close();
    return id;
  }
  void change(KvDbObjectId id, const std::function<void(KvDbLayerTableRecord&)>& how) {
    KvDbLayerTableRecord* record = nullptr;
    ASSERT_EQ(kvdbOpenObject(record, id, KvDb::kForWrite), Kvad::eOk);
    how(*record);
    record->close();
  }
  /// Puts it into model space, so that it has an id.
  Sketch& add(Sketch::Draw draw, KvDbObjectId onLayer, int color = kKvColorByLayer) {
    KvDbBlockTableRecord* space = nullptr;
    EXPECT_EQ(kvdbOpenObject(space, drawing.modelSpaceId(), KvDb::kForWrite), Kvad::eOk);
    auto* sketch = new Sketch(std::move(draw));
    space->appendKvDbEntity(sketch);
    sketch->setLayer(onLayer.isNull() ? drawing.layerZero() : onLayer);
    sketch->setColorIndex(color);
    sketch->close();
    space->close();
    return *sketch;
  }
  void weighByBlock(Sketch& sketch) {
    KvDbEntity* open = nullptr;
    ASSERT_EQ(kvdbOpenObject(open, sketch.objectId(), KvDb::kForWrite), Kvad::eOk);
    open->setLineWeight(static_cast<KvDb::LineWeight>(KvDb::kLnWtByBlock));
    open->close();
  }
  Sketch::Draw referenceTo(KvDbEntity& inner) {
    return [&inner](KvGiWorldDraw& draw) { draw.geometry().draw(&inner); };
  }

  KvDbDatabase drawing;
  Recorder recorder{&drawing};
};

TEST_F(TracerTest, ColoursOfNestedBlocks) {
  const KvDbObjectId red = layer(L"RED", 1, 50), green = layer(L"GREEN", 3);
  struct Case {
    const char* what;
    KvDbObjectId innerLayer;
    int innerColor;
    KvDbObjectId outerLayer;
    int outerColor;
    int expected;
  };
  const Case cases[] = {
      {"layer 0 by layer takes the reference's layer", {}, 256, red, 256, 1},
      {"layer 0 by layer takes the layer's colour, not the reference's", {}, 256, red, 5, 1},
      {"layer 0 by block takes the reference's colour", {}, 0, red, 5, 5},
      {"another layer stays", green, 256, red, 5, 3},
      {"by block on another layer", green, 0, red, 256, 1},
      {"its own colour stays", {}, 6, red, 5, 6},
      {"by block in by block is the colour of nothing", {}, 0, green, 0, 7},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Sketch& inner = add(shortLine, c.innerLayer, c.innerColor);
    Sketch& outer = add(referenceTo(inner), c.outerLayer, c.outerColor);
    recorder.strokes.clear();
    recorder.trace(&outer);
    ASSERT_EQ(recorder.strokes.size(), 1u);
    EXPECT_EQ(recorder.strokes[0].style.color, KvCmEntityColor::ofIndex(c.expected));
    EXPECT_EQ(recorder.strokes[0].depth, 2u);
  }
}

TEST_F(TracerTest, ByBlockGoesThroughTwoLevels) {
  const KvDbObjectId red = layer(L"RED", 1, 70);
  Sketch& inner = add(shortLine, {}, 0);
  weighByBlock(inner);
  Sketch& middle = add(referenceTo(inner), {}, 0);
  weighByBlock(middle);
  Sketch& outer = add(referenceTo(middle), red, 4);
  recorder.trace(&outer);
  ASSERT_EQ(recorder.strokes.size(), 1u);
  EXPECT_EQ(recorder.strokes[0].style.color, KvCmEntityColor::ofIndex(4));
  EXPECT_EQ(recorder.strokes[0].style.layer, red);
  EXPECT_EQ(recorder.strokes[0].style.lineWeight, 70);
}

TEST_F(TracerTest, TraitsComeBackBehindANestedDrawable) {
  const KvDbObjectId red = layer(L"RED", 1);
  Sketch& inner = add(
      [](KvGiWorldDraw& draw) {
        draw.subEntityTraits().setColor(2);
        draw.geometry().pushModelTransform(KvGeMatrix3d::scaling(9));  // never popped
        shortLine(draw);
      },
      {});
  Sketch& outer = add(
      [&](KvGiWorldDraw& draw) {
        draw.subEntityTraits().setSelectionMarker(4);
        draw.geometry().draw(&inner);
        shortLine(draw);
      },
      red);
  recorder.trace(&outer);
  ASSERT_EQ(recorder.strokes.size(), 2u);
  EXPECT_EQ(recorder.strokes[1].style.color, KvCmEntityColor::ofIndex(1));
  EXPECT_EQ(recorder.strokes[1].marker, 4);
  EXPECT_EQ(recorder.strokes[1].points[1].x, 1);
}

TEST_F(TracerTest, OffHidesTheReferenceFrozenItsContentToo) {
  const KvDbObjectId outerLayer = layer(L"OUTER", 1), innerLayer = layer(L"INNER", 2);
  Sketch& onZero = add(shortLine, {});
  Sketch& onInner = add(shortLine, innerLayer);
  Sketch& outer = add(
      [&](KvGiWorldDraw& draw) {
        shortLine(draw);
        draw.geometry().draw(&onZero);
        draw.geometry().draw(&onInner);
      },
      outerLayer);
  const auto count = [&] {
    Recorder fresh(&drawing);
    fresh.trace(&outer);
    return fresh.strokes.size();
  };
  EXPECT_EQ(count(), 3u);
  change(outerLayer, [](auto& record) { record.setIsOff(true); });
  EXPECT_EQ(count(), 1u);
  change(outerLayer, [](auto& record) { record.setIsFrozen(true); });
  EXPECT_EQ(count(), 0u);
  recorder.adjust = [](KvDbObjectId, KvGiLayerLook& look) { look.isFrozen = look.isHidden = false; };
  recorder.trace(&outer);
  EXPECT_EQ(recorder.strokes.size(), 3u) << "a sink may judge layers itself";
}

TEST_F(TracerTest, NestingWithoutEndEnds) {
  KvDbEntity* self = nullptr;
  Sketch& loop = add(
      [&](KvGiWorldDraw& draw) {
        shortLine(draw);
        draw.geometry().draw(self);
      },
      {});
  self = &loop;
  recorder.trace(&loop);
  EXPECT_EQ(recorder.strokes.size(), 1u);
}

TEST_F(TracerTest, DamagedCoordinatesAreLeftOut) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kHuge = 1e300;
  Sketch& bad = add(
      [&](KvGiWorldDraw& draw) {
        const KvGePoint3d ends[] = {{0, 0, 0}, {kNan, 0, 0}}, far[] = {{0, 0, 0}, {kHuge, 0, 0}};
        draw.geometry().polyline(2, ends);
        draw.geometry().polyline(2, far);
        draw.geometry().polyline(-3, ends);
        draw.geometry().polyline(2, nullptr);
        draw.geometry().circle({0, 0, 0}, kNan, KvGeVector3d::kZAxis);
        draw.geometry().circle({0, 0, 0}, {1, 1, 0}, {2, 2, 0});
        draw.geometry().circularArc({0, 0, 0}, 1, KvGeVector3d::kZAxis, {}, 1);
        draw.geometry().draw(nullptr);
        const std::int32_t faces[] = {7, 0, 1, 99};
        draw.geometry().shell(2, ends, 4, faces);
        KvGeMatrix3d broken;
        broken.entry[0][0] = kNan;
        draw.geometry().pushModelTransform(broken);
        draw.geometry().popModelTransform();
        draw.geometry().popModelTransform();
        draw.geometry().popClipBoundary();
        shortLine(draw);
      },
      {});
  recorder.trace(&bad);
  ASSERT_EQ(recorder.strokes.size(), 1u);
  EXPECT_EQ(recorder.strokeLength(), 1);
}

TEST_F(TracerTest, ArcsKeepTheDeviation) {
  for (double radius : {0.001, 1.0, 5000.0})
    for (double deviation : {1e-4, 0.01}) {
      SCOPED_TRACE(testing::Message() << radius << " " << deviation);
      Recorder own(&drawing);
      own.setDeviation(deviation);
      Sketch arc([&](KvGiWorldDraw& draw) {
        draw.geometry().circularArc({3, 4, 0}, radius, KvGeVector3d::kZAxis, KvGeVector3d::kXAxis, 4);
      });
      own.trace(&arc);
      ASSERT_EQ(own.strokes.size(), 1u);
      const auto& points = own.strokes[0].points;
      for (std::size_t i = 1; i < points.size(); ++i) {
        const KvGePoint3d middle = kvge::midpoint(points[i - 1], points[i]);
        EXPECT_LE(radius - middle.distanceTo({3, 4, 0}), deviation * 1.001);
      }
      EXPECT_NEAR(points.back().x, 3 + radius * std::cos(4.0), 1e-9 * radius);
    }
}

TEST_F(TracerTest, ClipsOfAnyShape) {
  // A U-shaped outline: 30 wide, 20 high, the notch from x 10 to 20 above y 10.
  const KvGePoint2d u[] = {{0, 0}, {30, 0}, {30, 20}, {20, 20}, {20, 10}, {10, 10}, {10, 20}, {0, 20}};
  const KvGePoint3d across[] = {{-5, 15, 0}, {35, 15, 0}};
  const KvGePoint3d square[] = {{-10, -10, 0}, {40, -10, 0}, {40, 40, 0}, {-10, 40, 0}};
  for (bool isInverted : {false, true}) {
    Recorder own(&drawing);
    Sketch clipped([&](KvGiWorldDraw& draw) {
      KvGiClipBoundary boundary;
      boundary.points = u;
      boundary.count = 8;
      boundary.isInverted = isInverted;
      draw.geometry().pushClipBoundary(boundary);
      draw.geometry().polyline(2, across);
      draw.subEntityTraits().setFillType(kKvGiFillAlways);
      draw.geometry().polygon(4, square);
      draw.geometry().popClipBoundary();
    });
    own.trace(&clipped);
    EXPECT_EQ(own.strokes.size(), isInverted ? 3u : 2u);
    EXPECT_NEAR(own.strokeLength(), 20, 1e-12);
    // Inverted, the area comes as itself with its inside part taken out by the even-odd rule.
    EXPECT_NEAR(own.filledArea(), isInverted ? 2500 + 500 : 500, 1e-9);
  }
}

TEST_F(TracerTest, WidePathsCoverTheirWidth) {
  Sketch wide([](KvGiWorldDraw& draw) {
    const KvGiPathVertex corners[] = {{{0, 0}, 0, 2, 2}, {{10, 0}, 0, 2, 2}, {{10, 10}, 0, 2, 2}};
    KvGiPath path;
    path.vertices = corners;
    path.count = 3;
    draw.geometry().path(path);
    const KvGiPathVertex ring[] = {{{100, 0}, 1, 1, 1}, {{110, 0}, 1, 1, 1}};
    path.vertices = ring;
    path.count = 2;
    path.isClosed = true;
    draw.geometry().path(path);
  });
  recorder.setDeviation(1e-6);
  recorder.trace(&wide);
  ASSERT_EQ(recorder.areas.size(), 4u);
  // Mitred, the corner is covered once: 11 by 2 and 9 by 2, both cut at 45 degrees; the ring by its mean
  // girth.
  EXPECT_NEAR(recorder.filledArea(), 40 + M_PI * 10, 1e-3);
}

TEST_F(TracerTest, CubicCurvesKeepTheDeviation) {
  // A quarter of a circle of radius 100, and a line.
  constexpr double kHandle = 55.22847498307936;
  const KvGePoint3d poles[] = {{100, 0, 0}, {100, kHandle, 0}, {kHandle, 100, 0}, {0, 100, 0}, {-50, 100, 0}};
  const unsigned char degrees[] = {3, 1};
  Sketch curve([&](KvGiWorldDraw& draw) { draw.geometry().segments(poles, degrees, 2); });
  for (double deviation : {1.0, 0.05}) {
    Recorder own(&drawing);
    own.setDeviation(deviation);
    own.trace(&curve);
    ASSERT_EQ(own.strokes.size(), 1u);
    const auto& points = own.strokes[0].points;
    for (std::size_t i = 1; i + 1 < points.size(); ++i)
      EXPECT_GE(kvge::midpoint(points[i - 1], points[i]).distanceTo({0, 0, 0}), 100 - deviation);
    EXPECT_EQ(points.back(), poles[4]);
    EXPECT_LT(points.size(), 60u) << "and no more chords than that takes";
  }
}

TEST_F(TracerTest, EndlessLinesAreCutAtTheBox) {
  KvGeBox3d box;
  box.add({0, 0, 0});
  box.add({10, 10, 0});
  Sketch lines([](KvGiWorldDraw& draw) {
    draw.geometry().xline({-5, 5, 0}, {-4, 5, 0});
    draw.geometry().ray({5, 5, 0}, {5, 6, 0});
    draw.geometry().ray({5, 25, 0}, {5, 26, 0});
    draw.geometry().xline({3, 3, 0}, {3, 3, 0});
  });
  recorder.trace(&lines);
  EXPECT_TRUE(recorder.strokes.empty()) << "without a box they have no length";
  recorder.setEndlessBox(box);
  recorder.trace(&lines);
  ASSERT_EQ(recorder.strokes.size(), 2u);
  EXPECT_NEAR(recorder.strokeLength(), 15, 1e-12);
}

}  // namespace
