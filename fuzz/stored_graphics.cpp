// The picture that a file keeps with an entity, of any bytes: what is drawn of it has finite coordinates.
#include "host/database/storedgraphics.h"

#include <cmath>
#include <cstdlib>

#include "host/database/tracer.h"

namespace {

class Sink : public KvGiTracer {
 protected:
  void stroke(const KvGePoint3d* points, int count) override {
    for (int i = 0; i < count; ++i) check(points[i]);
  }
  void fill(const KvGiArea& area) override {
    for (int i = 0, at = 0; i < area.outlines; ++i)
      for (int k = 0; k < area.counts[i]; ++k) check(area.points[at++]);
  }

 private:
  void check(const KvGePoint3d& p) {
    if (std::isnan(p.x) || std::isnan(p.y) || std::isnan(p.z)) std::abort();
    constexpr int kEnough = 1000000;
    if (++seen_ > kEnough) stop();
  }
  int seen_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Sink sink;
  kvdbDrawStoredGraphics({data, size}, nullptr, sink);
  return 0;
}
