// Measures the reduction of a picture of 24 megapixels to a thumbnail, side by side with Qt's
// smooth scaling of the same pixels. Usage: reductions_bench [NEW_WIDTH]

#include "streams/CMemStream.h"
#include "streams/CReductionStream.h"

#include <QImage>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

namespace searchsystem {

namespace {

constexpr int width = 6000, height = 4000, rounds = 11;

struct Row {
  const char *label;
  std::function<bool()> reduce;
  std::vector<double> times;
};

QImage randomPicture() {
  QImage picture(width, height, QImage::Format_RGB888);
  std::mt19937 random(1);
  for (int y = 0; y < height; ++y)
    std::generate_n(picture.scanLine(y), width * 3,
                    [&] { return static_cast<unsigned char>(random()); });
  return picture;
}

bool reduce(QImage &picture, int newWidth, int newHeight, ReductionMethod method) {
  CMemStream target;
  CReductionStream reduction;
  if (reduction.CreateReductionStream(&target, width, height, 3, newWidth, newHeight, method) !=
          1 ||
      reduction.Open(streamWriteMode) != 1)
    return false;
  for (int y = 0; y < height; ++y)
    if (reduction.Write(picture.scanLine(y), width * 3L, nullptr) != 1)
      return false;
  return reduction.Close() == 1 && target.GetSize() == 3L * newWidth * newHeight;
}

int measure(int newWidth) {
  QImage picture = randomPicture();
  const int newHeight = std::max(1, newWidth * height / width);
  const auto by = [&](ReductionMethod method) {
    return [&, method] { return reduce(picture, newWidth, newHeight, method); };
  };
  Row rows[] = {
      {"average", by(reductionAverage), {}},
      {"bilinear", by(reductionBilinear), {}},
      {"nearest", by(reductionNearest), {}},
      {"Qt, smooth",
       [&] {
         return picture.scaled(newWidth, newHeight, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                    .width() == newWidth;
       },
       {}}};
  for (int round = 0; round < rounds; ++round)
    for (Row &row : rows) {
      const auto begin = std::chrono::steady_clock::now();
      if (!row.reduce()) {
        std::fprintf(stderr, "reductions_bench: %s failed\n", row.label);
        return 1;
      }
      row.times.push_back(
          std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
              .count());
    }
  for (Row &row : rows)
    std::sort(row.times.begin(), row.times.end());
  const double peer = rows[3].times[rounds / 2];
  std::printf("| %d by %d to %d by %d | median ms | least ms | of Qt's time |\n"
              "| --- | ---: | ---: | ---: |\n",
              width, height, newWidth, newHeight);
  for (const Row &row : rows)
    std::printf("| %s | %.1f | %.1f | %.2f |\n", row.label, row.times[rounds / 2], row.times[0],
                row.times[rounds / 2] / peer);
  return 0;
}

} // namespace

} // namespace searchsystem

int main(int count, char **arguments) {
  const int newWidth = count > 1 ? std::atoi(arguments[1]) : 256;
  if (newWidth < 1 || newWidth > searchsystem::width) {
    std::fprintf(stderr, "usage: reductions_bench [NEW_WIDTH]\n");
    return 2;
  }
  return searchsystem::measure(newWidth);
}
