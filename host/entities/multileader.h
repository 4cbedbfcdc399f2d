#pragma once
// Leaders with several lines to one content: a text or a block.
#include "host/entities/keptentity.h"

class KvDbBlockReference;
class KvDbMText;

/// What is seen stands in the entity's own record (its context); the style that it names only served when it
/// was made. World coordinates; lengths of the context are scaled.
class KvDbMLeader : public KvDbPartsEntity {
  KVRX_DECLARE(KvDbMLeader)
 public:
  enum ContentType { kNoneContent = 0, kBlockContent = 1, kMTextContent = 2, kToleranceContent = 3 };
  enum LeaderType { kInvisibleLeader = 0, kStraightLeader = 1, kSplineLeader = 2 };

  struct Line {
    std::vector<KvGePoint3d> vertices;  ///< from the arrow's tip on
    int index = 0;
    std::int32_t color = 0;  ///< as files pack it
    /// Gaps: the segment that they are on, and their ends.
    std::vector<std::pair<int, std::pair<KvGePoint3d, KvGePoint3d>>> breaks;
  };
  /// Lines that meet at one side of the content.
  struct Leader {
    bool isComplete = false, hasDogleg = false;
    bool isVertical = false;  ///< it reaches the content from above or below
    KvGePoint3d end;          ///< where the lines meet
    KvGeVector3d dogleg = KvGeVector3d::kXAxis;
    double doglegLength = 0;
    std::vector<Line> lines;
    KvGePoint3d landing() const { return hasDogleg && !isVertical ? end + dogleg * doglegLength : end; }
  };

  KvDbMLeader() : KvDbPartsEntity(L"MULTILEADER", L"AcDbMLeader") {}
  LeaderType leaderType() const;
  ContentType contentType() const;
  std::vector<Leader> leaders() const;
  /// The text, outside any drawing; null when the content is none.
  std::unique_ptr<KvDbMText> mtext() const;
  /// The reference to the content's block with its attributes, outside any drawing; null likewise.
  std::unique_ptr<KvDbBlockReference> blockReference() const;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  Parts makeParts() const override;

 private:
  struct Record;
  Record record() const;
  void addLeader(Parts& parts, const Record& record, const Leader& leader) const;
  void addLine(Parts& parts, const Record& record, const Leader& leader, const Line& line) const;
  void addFrame(Parts& parts, const Record& record, const KvDbMText& text) const;
};
