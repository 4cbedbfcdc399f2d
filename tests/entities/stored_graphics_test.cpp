// The pictures that files keep with entities.
#include "host/database/storedgraphics.h"

#include <bit>
#include <random>

#include "host/entities/mtext.h"
#include "host/entities/multileader.h"
#include "host/geometry/arc.h"
#include "host/geometry/curve.h"
#include "tests/entities/support.h"

namespace {

/// Writes a picture primitive by primitive.
class Writer {
 public:
  Writer& whole(std::uint32_t value, int bytes = 4) {
    for (int i = 0; i < bytes; ++i) own_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return *this;
  }
  Writer& reals(std::initializer_list<double> values) {
    for (const double value : values) {
      const auto bits = std::bit_cast<std::uint64_t>(value);
      whole(static_cast<std::uint32_t>(bits)).whole(static_cast<std::uint32_t>(bits >> 32));
    }
    return *this;
  }
  Writer& text(std::string_view value) {
    for (const char c : value) own_.push_back(static_cast<std::uint8_t>(c));
    do own_.push_back(0);
    while (own_.size() % 4 != 0);
    return *this;
  }
  Writer& wide(std::u16string_view value) {
    for (const char16_t c : value) whole(c, 2);
    do whole(0, 2);
    while (own_.size() % 4 != 0);
    return *this;
  }
  /// Ends a primitive of that kind.
  Writer& end(std::uint32_t kind) {
    const std::vector<std::uint8_t> payload = std::move(own_);
    own_ = std::move(all_);
    whole(static_cast<std::uint32_t>(payload.size() + 8)).whole(kind);
    own_.insert(own_.end(), payload.begin(), payload.end());
    all_ = std::move(own_);
    own_.clear();
    ++count_;
    return *this;
  }
  std::vector<std::uint8_t> bytes() const {
    Writer head;
    head.whole(static_cast<std::uint32_t>(all_.size() + 8)).whole(count_);
    std::vector<std::uint8_t> whole = head.own_;
    whole.insert(whole.end(), all_.begin(), all_.end());
    return whole;
  }

 private:
  std::vector<std::uint8_t> own_, all_;
  std::uint32_t count_ = 0;
};

struct Drawn : TestSink {
  explicit Drawn(const Writer& writer, const KvDbDatabase* drawing = nullptr)
      : Drawn(writer.bytes(), drawing) {}
  explicit Drawn(std::span<const std::uint8_t> bytes, const KvDbDatabase* drawing = nullptr) {
    isAny = kvdbDrawStoredGraphics(bytes, drawing, *this);
  }
  bool text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
            const KvGiTextLook& look, const CString& words) override {
    looks.push_back(look);
    return TestSink::text(position, normal, direction, look, words);
  }
  void takeCurve(Curve curve) override {
    colors.push_back(trueColor());
    TestSink::takeCurve(std::move(curve));
  }
  bool isAny = false;
  std::vector<KvGiTextLook> looks;
  std::vector<KvCmEntityColor> colors;
};

TEST(StoredGraphics, CurvesAndFaces) {
  const struct {
    Writer writer;
    std::size_t curves;
    double length;
  } cases[] = {
      {Writer().reals({1, 2, 3, 5, 0, 0, 1}).end(2), 1, 10 * kvge::kPi},
      {Writer().reals({1, 0, 0, 0, 1, 0, -1, 0, 0}).end(3), 1, 2 * kvge::kPi},
      {Writer().reals({0, 0, 0, 2, 0, 0, 1, 1, 0, 0, kvge::kPi / 2}).whole(0).end(4), 1, kvge::kPi},
      {Writer().reals({1, 0, 0, 0, 1, 0, -1, 0, 0}).end(5), 1, kvge::kPi},
      {Writer().whole(3).reals({0, 0, 0, 3, 0, 0, 3, 4, 0}).end(6), 1, 7},
      {Writer().whole(3).reals({0, 0, 0, 3, 0, 0, 3, 4, 0}).end(7), 1, 12},
      {Writer().whole(2).whole(3).reals({0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0}).end(8), 5, 7},
      {Writer()
           .whole(3)
           .reals({0, 0, 0, 3, 0, 0, 3, 4, 0})
           .whole(4)
           .whole(3)
           .whole(0)
           .whole(1)
           .whole(2)
           .end(9),
       1, 12},
      // Told of each edge: the long one can't be seen.
      {Writer()
           .whole(3)
           .reals({0, 0, 0, 3, 0, 0, 3, 4, 0})
           .whole(4)
           .whole(3)
           .whole(0)
           .whole(1)
           .whole(2)
           .whole(0x41)
           .whole(1)
           .whole(1)
           .whole(1)
           .whole(1)
           .whole(1)
           .whole(0)
           .end(9),
       2, 7},
      {Writer().whole(2).reals({0, 0, 0, 3, 0, 0, 0, 0, 1}).end(32), 1, 3},
      {Writer().reals({0, 0, 0, 0, 0, 1, 3, 3, 0, kvge::kPi, 0}).whole(0).end(44), 1, 3 * kvge::kPi},
      // Whatever is drawn under a matrix is moved, by both where two are open.
      {Writer()
           .reals({2, 0, 0, 5, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1})
           .end(29)
           .reals({3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1})
           .end(30)
           .whole(2)
           .reals({0, 0, 0, 1, 0, 0})
           .end(6)
           .end(31)
           .end(31)
           .end(31)
           .whole(2)
           .reals({0, 0, 0, 1, 0, 0})
           .end(6),
       2, 7},
  };
  for (const auto& c : cases) {
    const Drawn drawn(c.writer);
    EXPECT_TRUE(drawn.isAny);
    EXPECT_EQ(drawn.curves.size(), c.curves);
    EXPECT_NEAR(drawn.length, c.length, 1e-3);
  }
  // Endless ones.
  EXPECT_EQ(Drawn(Writer().reals({0, 0, 0, 1, 0, 0}).end(12).reals({0, 0, 0, 1, 0, 0}).end(13)).curves.size(),
            2u);
}

TEST(StoredGraphics, TextsAndLooks) {
  TestDrawing drawing;
  const Drawn drawn(Writer()
                        .whole(3)
                        .end(14)
                        .whole(2)
                        .reals({0, 0, 0, 1, 0, 0})
                        .end(6)
                        .whole(0xC2102030u)
                        .end(22)
                        .whole(2)
                        .reals({0, 0, 0, 1, 0, 0})
                        .end(6)
                        .whole(0xC3000005u)
                        .end(22)
                        .whole(2)
                        .reals({0, 0, 0, 1, 0, 0})
                        .end(6)
                        .reals({1, 2, 0, 0, 0, 1, 1, 0, 0, 2.5, 0.8, 0.2})
                        .text("plain")
                        .end(10)
                        .reals({1, 2, 0, 0, 0, 1, 0, 1, 0})
                        .text("in a font")
                        .whole(2)
                        .whole(0)
                        .reals({3, 1, 0, 1})
                        .whole(0)
                        .whole(1)
                        .whole(0)
                        .whole(1)
                        .whole(0)
                        .text("simplex.shx")
                        .text("")
                        .end(11)
                        .reals({1, 2, 0, 0, 0, 1, 0, 1, 0})
                        .wide(u"\x6587\xD83D\xDE00")
                        .whole(0xFFFFFFFFu)
                        .whole(1)
                        .reals({3, 1, 0, 1})
                        .whole(0)
                        .whole(0)
                        .whole(0)
                        .whole(0)
                        .whole(0)
                        .whole(1)
                        .whole(0)
                        .whole(0)
                        .whole(0)
                        .wide(u"Arial")
                        .wide(u"arial.ttf")
                        .wide(u"")
                        .end(38),
                    &drawing.database());
  EXPECT_EQ(drawn.colors[0], KvCmEntityColor::ofIndex(3));
  EXPECT_EQ(drawn.colors[1], KvCmEntityColor::ofRgb(0x102030));
  EXPECT_EQ(drawn.colors[2], KvCmEntityColor::ofIndex(5));
  EXPECT_EQ(drawn.texts, (std::vector<CString>{L"plain", L"in", L"\x6587\x1F600"}));
  ASSERT_EQ(drawn.looks.size(), 3u);
  EXPECT_EQ(drawn.looks[0].widthFactor, 0.8);
  EXPECT_EQ(drawn.looks[1].fontFile, L"simplex.shx");
  EXPECT_TRUE(drawn.looks[1].isUpsideDown && drawn.looks[1].isUnderlined && !drawn.looks[1].isBackward);
  EXPECT_EQ(drawn.looks[2].typeface, L"Arial");
  EXPECT_TRUE(drawn.looks[2].isBold && drawn.looks[2].isRaw);
}

TEST(StoredGraphics, BytesThatMakeNoSenseAreLeftOut) {
  const double huge = 1e200, none = std::nan("");
  const Writer cases[] = {
      Writer().reals({1, 2, 3, none, 0, 0, 1}).end(2),
      Writer().reals({1, huge, 3, 1, 0, 0, 1}).end(2),
      Writer().reals({1, 2, 3, -1, 0, 0, 1}).end(2),
      Writer().reals({1, 2, 3, 1, 0, 0, 0}).end(2),
      Writer().reals({1, 1, 1, 2, 2, 2, 3, 3, 3}).end(5),
      Writer().whole(0xFFFFFFFFu).reals({0, 0, 0}).end(6),
      Writer().whole(0xFFFFu).whole(0xFFFFu).reals({0, 0, 0}).end(8),
      Writer()
          .whole(3)
          .reals({0, 0, 0, 3, 0, 0, 3, 4, 0})
          .whole(4)
          .whole(3)
          .whole(0)
          .whole(1)
          .whole(7)
          .end(9),
      Writer()
          .whole(3)
          .reals({0, 0, 0, 3, 0, 0, 3, 4, 0})
          .whole(4)
          .whole(9)
          .whole(0)
          .whole(1)
          .whole(2)
          .end(9),
      Writer().whole(0).end(7),
      Writer().reals({1, 2, 0, 0, 0, 1, 1, 0, 0, 2.5, 0.8, 0.2}).whole(0x41414141).end(10),
      Writer().whole(40).whole(0xFFFFFFFFu).end(33),
      Writer().whole(1).end(999),
  };
  for (const Writer& writer : cases) {
    EXPECT_FALSE(Drawn(writer).isAny);
    // What stands behind comes all the same.
    Writer more = writer;
    EXPECT_EQ(Drawn(more.whole(2).reals({0, 0, 0, 1, 0, 0}).end(6)).curves.size(), 1u);
  }
  // Cut anywhere, and with bytes changed.
  const std::vector<std::uint8_t> whole = Writer()
                                              .reals({0, 0, 0, 2, 0, 0, 1, 1, 0, 0, 3})
                                              .whole(0)
                                              .end(4)
                                              .whole(2)
                                              .reals({0, 0, 0, 1, 0, 0})
                                              .end(6)
                                              .bytes();
  for (std::size_t size = 0; size <= whole.size(); ++size)
    EXPECT_EQ(Drawn(std::span(whole).first(size)).curves.size(), size == whole.size() ? 2u
                                                                 : size >= 108        ? 1u
                                                                                      : 0u);
  std::mt19937 random(7);
  for (int i = 0; i < 20000; ++i) {
    std::vector<std::uint8_t> changed = whole;
    for (int k = 0; k < 3; ++k)
      changed[8 + random() % (changed.size() - 8)] = static_cast<std::uint8_t>(random());
    changed[12] = static_cast<std::uint8_t>(random() % 46);
    Drawn drawn(changed);
    EXPECT_TRUE(std::isfinite(drawn.length));
  }
}

TEST(StoredGraphics, ThoseOfRealLeadersShowWhatTheLeadersDraw) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  int seen = 0;
  for (const KvDbEntity* entity : drawing.entities()) {
    const auto* leader = KvDbMLeader::cast(entity);
    const std::vector<std::uint8_t> bytes =
        leader ? kvdbStoredGraphicsOf(*leader) : std::vector<std::uint8_t>();
    if (bytes.empty()) continue;
    const Drawn drawn(bytes, &drawing.database());
    EXPECT_TRUE(drawn.isAny);
    if (leader->contentType() != KvDbMLeader::kMTextContent ||
        leader->leaderType() != KvDbMLeader::kStraightLeader)
      continue;
    // Every vertex of the leader's lines is an end of something in the picture.
    for (const KvDbMLeader::Leader& side : leader->leaders())
      for (const KvDbMLeader::Line& line : side.lines)
        for (const KvGePoint3d& vertex : {line.vertices.front(), side.end}) {
          const bool isThere = std::any_of(drawn.curves.begin(), drawn.curves.end(), [&](const auto& curve) {
            return curve->distanceTo(vertex) < 1e-6;
          });
          EXPECT_TRUE(isThere) << leader->handle().value();
          ++seen;
        }
    // Letter by letter the same words, line by line.
    EXPECT_EQ(drawn.texts.empty() ? CString() : drawn.texts.front().Left(3),
              leader->mtext()->plainText().Left(3));
  }
  EXPECT_GE(seen, 16);
}

}  // namespace
