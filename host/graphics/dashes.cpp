#include "host/graphics/dashes.h"

#include <algorithm>
#include <cmath>

namespace {

/// More patterns than this along one polyline are finer than anything shows; it is drawn through.
constexpr double kMostPatterns = 100'000;

class Dasher {
 public:
  Dasher(const KvGrDashes& dashes, const std::function<void(const KvGePoint2d*, int)>& stroke,
         const std::function<void(const KvGrDashPlace&)>& place)
      : dashes_(dashes), stroke_(stroke), place_(place), total_(dashes.total()) {}

  void run(std::span<const KvGePoint2d> points) {
    double length = 0;
    for (std::size_t i = 1; i < points.size(); ++i) length += points[i - 1].distanceTo(points[i]);
    if (!(length > total_) || length > total_ * kMostPatterns) {
      stroke_(points.data(), static_cast<int>(points.size()));
      return;
    }
    start(length);
    for (std::size_t i = 1; i < points.size(); ++i) walk(points[i - 1], points[i]);
    if (isDown_) finish();
  }

 private:
  /// So that the same part of the first dash stands at both ends.
  void start(double length) {
    const double rest = length - std::floor(length / total_) * total_;
    const double first = dashes_.lengths[0];
    element_ = 0;
    isDown_ = first > 0;
    left_ = isDown_ ? (first + rest) / 2 : std::fabs(first);
  }

  void walk(KvGePoint2d from, KvGePoint2d to) {
    const double length = from.distanceTo(to);
    if (!(length > 0)) return;
    const KvGeVector2d way = (to - from) / length;
    if (isDown_ && current_.empty()) current_.push_back(from);
    double done = 0;
    while (length - done > left_) {
      done += left_;
      const KvGePoint2d here = from + way * done;
      if (isDown_) {
        current_.push_back(here);
        finish();
      }
      next(here, way);
    }
    left_ -= length - done;
    if (isDown_) current_.push_back(to);
  }

  void next(KvGePoint2d here, KvGeVector2d way) {
    // Dots take no length; a row of them alone has been refused before.
    do {
      element_ = (element_ + 1) % dashes_.lengths.size();
      if (place_) place_({static_cast<int>(element_), here, way});
      if (dashes_.lengths[element_] == 0) stroke_(&here, 1);
    } while (dashes_.lengths[element_] == 0);
    left_ = std::fabs(dashes_.lengths[element_]);
    isDown_ = dashes_.lengths[element_] > 0;
    if (isDown_) current_.push_back(here);
  }

  void finish() {
    if (current_.size() > 1) stroke_(current_.data(), static_cast<int>(current_.size()));
    current_.clear();
  }

  const KvGrDashes& dashes_;
  const std::function<void(const KvGePoint2d*, int)>& stroke_;
  const std::function<void(const KvGrDashPlace&)>& place_;
  double total_;
  std::size_t element_ = 0;
  double left_ = 0;
  bool isDown_ = false;
  std::vector<KvGePoint2d> current_;
};

}  // namespace

double KvGrDashes::total() const {
  double sum = 0;
  for (double length : lengths) sum += std::fabs(length);
  return sum;
}

bool KvGrDashes::isSound(bool hasSigns) const {
  const double sum = total();
  return sum > 0 && std::isfinite(sum) &&
         (hasSigns || std::any_of(lengths.begin(), lengths.end(), [](double v) { return v < 0; }));
}

void kvgrDash(std::span<const KvGePoint2d> points, const KvGrDashes& dashes, bool isContinuous,
              const std::function<void(const KvGePoint2d*, int)>& stroke,
              const std::function<void(const KvGrDashPlace&)>& place) {
  if (points.empty()) return;
  if (points.size() == 1 || !dashes.isSound(place != nullptr)) {
    stroke(points.data(), static_cast<int>(points.size()));
    return;
  }
  Dasher dasher(dashes, stroke, place);
  if (isContinuous) {
    dasher.run(points);
    return;
  }
  for (std::size_t i = 1; i < points.size(); ++i) dasher.run(points.subspan(i - 1, 2));
}
