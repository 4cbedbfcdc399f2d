// Plots of all springs, each in two sizes, as they were looked at and accepted.
#include "host/graphics/plot.h"
#include "tests/spring/support.h"
#include "tests/support/picture.h"

namespace {

using namespace test;

class SpringPictures : public SpringHost {
 protected:
  SpringPictures() { use(Module::Real); }

  /// The smaller one above the larger one, on a sheet of its own.
  template <class Draw>
  void compare(const char* name, Draw draw) {
    host->newDocument();
    double above[3] = {0, 0, 0}, below[3] = {0, -60, 0};
    answer(L"0,0\n0\n");
    ASSERT_EQ(draw(above, kSizes[0]), 5100) << name;
    std::wcscpy(SpringBlockName, L"LARGER");
    answer(L"0,-60\n0\n");
    ASSERT_EQ(draw(below, kSizes[1]), 5100) << name;
    std::wcscpy(SpringBlockName, L"KM_SPRING");
    const std::filesystem::path pictures = std::filesystem::path(KORVANE_TOOLKIT_TREE) / "pictures";
    std::filesystem::create_directories(pictures);
    const std::filesystem::path png = pictures / (std::string(name) + ".png");
    std::string error;
    ASSERT_TRUE(kvgrPlotToFile(drawing(), {}, png, error)) << name << ": " << error;
    EXPECT_TRUE(comparePicture(
        png, std::filesystem::path(KORVANE_TEST_DATA) / "pictures" / (std::string(name) + ".txt")));
  }
};

TEST_F(SpringPictures, AreThoseThatWereAccepted) {
  for (const NamedView& view : kViews)
    compare(view.name, [&](double* at, const Sizes& s) { return view.draw(at, s.d, s.D, s.H0, s.n); });
  for (const NamedForm& form : kForms)
    compare(form.name, [&](double* at, const Sizes& s) { return form.draw(at, s.d, s.D, s.H0); });
  compare("DrawLeftTorSpring",
          [](double* at, const Sizes& s) { return DrawLeftTorSpring(at, s.D, s.d, 1.2, s.H0 / 2, 25); });
}

}  // namespace
