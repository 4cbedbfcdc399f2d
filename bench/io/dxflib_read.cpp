// Reads a file with dxflib into callbacks that count; prints the seconds it took.
#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>

#include <chrono>
#include <cstdio>

namespace {

class Counter : public DL_CreationAdapter {
 public:
  void addLine(const DL_LineData&) override { ++count; }
  void addArc(const DL_ArcData&) override { ++count; }
  void addCircle(const DL_CircleData&) override { ++count; }
  void addPolyline(const DL_PolylineData&) override { ++count; }
  void addText(const DL_TextData&) override { ++count; }
  void addInsert(const DL_InsertData&) override { ++count; }
  void addSpline(const DL_SplineData&) override { ++count; }
  long count = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const auto start = std::chrono::steady_clock::now();
  Counter counter;
  DL_Dxf reader;
  if (!reader.in(argv[1], &counter) || counter.count == 0) return 1;
  std::printf("%.4f\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}
