// Prints the public instances with this system's own answers, one JSON object a line, for compare.mjs.
//   emit rectangles
//   emit boxes SECONDS NUMBERS N...    each class, `NUMBERS` instances of each n, general and robot
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "bench/nest/instances.h"
#include "module/nest/nester_frame.h"

namespace {

double millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void emitRectangles() {
  for (int setClass = 1; setClass <= 10; ++setClass) {
    for (int n = 20; n <= 100; n += 20) {
      for (int number = 0; number < 10; ++number) {
        const nestbench::RectangleSet set = nestbench::rectangleSet(setClass, n, number);
        const auto start = std::chrono::steady_clock::now();
        std::vector<NestItem> items;
        for (const auto& [w, h] : set.sizes)
          items.push_back({0, 0, static_cast<double>(w), static_cast<double>(h), 0, 0, nullptr});
        const double side = set.side;
        const NestParams params = {side, side, 0, 0, 0, 0};
        int sheets = 0;
        NesterFrame(items.data(), n, &params, &sheets);
        std::cout << "{\"class\":" << setClass << ",\"side\":" << set.side << ",\"sheets\":" << sheets
                  << ",\"ms\":" << millisecondsSince(start) << ",\"sizes\":[";
        for (std::size_t i = 0; i < set.sizes.size(); ++i)
          std::cout << (i ? "," : "") << "[" << set.sizes[i][0] << "," << set.sizes[i][1] << "]";
        std::cout << "]}\n";
      }
    }
  }
}

void emitBoxes(int seconds, int numbers, int n) {
  for (int boxClass = 1; boxClass <= 9; ++boxClass) {
    for (int number = 0; number < numbers; ++number) {
      const mek::PackInstance set = nestbench::boxSet(boxClass, n, number);
      std::cout << "{\"class\":" << boxClass << ",\"n\":" << n << ",\"number\":" << number
                << ",\"side\":" << set.W << ",\"start\":" << mek::solvePackInstance(set, {1, 1, 0}, 0).ub;
      for (const int robot : {0, 1}) {
        const auto start = std::chrono::steady_clock::now();
        const mek::PackResult result = mek::solvePackInstance(set, {0, 0, seconds}, robot);
        std::cout << ",\"" << (robot ? "robot" : "general") << "\":{\"lb\":" << result.lb
                  << ",\"ub\":" << result.ub << ",\"ms\":" << millisecondsSince(start)
                  << ",\"nodes\":" << result.nodes << "}";
      }
      std::cout << ",\"boxes\":[";
      for (std::size_t i = 0; i < set.w.size(); ++i)
        std::cout << (i ? "," : "") << "[" << set.w[i] << "," << set.h[i] << "," << set.d[i] << "]";
      std::cout << "]}" << std::endl;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "rectangles") {
    emitRectangles();
    return 0;
  }
  if (argc < 5 || std::string_view(argv[1]) != "boxes") return 2;
  for (int i = 4; i < argc; ++i) emitBoxes(std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[i]));
}
