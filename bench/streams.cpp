// Measures the streams: copying a file through memory, and growth in small steps.
// Usage: streams FOLDER [MEGABYTES]; makes two files in the folder and removes them.

#include "streams/CBlankStream.h"
#include "streams/CFileStream.h"
#include "streams/CMemStream.h"
#include "streams/CResizeBuffer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

constexpr long blockSize = 65536;
constexpr int rounds = 5;

using Clock = std::chrono::steady_clock;

void require(bool isDone, const char *what) {
  if (isDone)
    return;
  std::fprintf(stderr, "streams: %s failed\n", what);
  std::exit(1);
}

double milliseconds(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// The least and the median of a few times in milliseconds.
struct Times {
  std::vector<double> all;

  [[nodiscard]] double least() const { return *std::min_element(all.begin(), all.end()); }
  [[nodiscard]] double median() const {
    std::vector<double> sorted = all;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
  }
};

struct FileCloser {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File openFile(const std::string &path, const char *mode) {
  File file(std::fopen(path.c_str(), mode));
  require(file != nullptr, path.c_str());
  return file;
}

/// The C library's loop from file to file.
void copyByLibrary(const std::string &from, const std::string &to) {
  const std::vector<char>::size_type size = blockSize;
  std::vector<char> block(size);
  const File source = openFile(from, "rb");
  const File target = openFile(to, "wb");
  while (const std::size_t count = std::fread(block.data(), 1, size, source.get()))
    require(std::fwrite(block.data(), 1, count, target.get()) == count, "writing");
}

/// The C library's loops from file to memory and back, the memory taken at once.
void copyThroughMemoryByLibrary(const std::string &from, const std::string &to, long size) {
  const std::unique_ptr<char[]> memory(new char[static_cast<std::size_t>(size)]);
  {
    const File source = openFile(from, "rb");
    for (long at = 0; at < size; at += blockSize)
      require(std::fread(memory.get() + at, 1, blockSize, source.get()) == blockSize, "reading");
  }
  const File target = openFile(to, "wb");
  for (long at = 0; at < size; at += blockSize)
    require(std::fwrite(memory.get() + at, 1, blockSize, target.get()) == blockSize, "writing");
}

void copyByStreams(const std::string &from, const std::string &to) {
  CFileStream source, target;
  CMemStream memory;
  source.CreateFileStream(from.c_str(), streamProgressNone, nullptr);
  target.CreateFileStream(to.c_str(), streamProgressNone, nullptr);
  memory.CreateMemStream(0, blockSize, streamProgressNone, nullptr);
  require(CopyStream(&memory, &source, blockSize) == 1, "copying into memory");
  require(CopyStream(&target, &memory, blockSize) == 1, "copying out of memory");
}

void measureCopies(const std::string &folder, long size) {
  const std::string from = folder + "/streams-from", to = folder + "/streams-to";
  {
    const File source = openFile(from, "wb");
    std::vector<unsigned char> block(blockSize);
    for (long at = 0; at < size; at += blockSize) {
      for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<unsigned char>((at >> 12) + static_cast<long>(i * 7));
      require(std::fwrite(block.data(), 1, block.size(), source.get()) == block.size(), "writing");
    }
  }
  Times library, libraryThroughMemory, streams;
  // In turn, so that what else the machine does meets all of them.
  for (int round = 0; round < rounds; ++round) {
    const auto timed = [&](Times &times, const auto &copy) {
      std::remove(to.c_str());
      const auto start = Clock::now();
      copy();
      times.all.push_back(milliseconds(start));
    };
    timed(library, [&] { copyByLibrary(from, to); });
    timed(libraryThroughMemory, [&] { copyThroughMemoryByLibrary(from, to, size); });
    timed(streams, [&] { copyByStreams(from, to); });
  }
  std::remove(from.c_str());
  std::remove(to.c_str());
  const struct {
    const char *name;
    const Times &times;
  } rows[] = {{"C library, file to file", library},
              {"C library, file to memory to file", libraryThroughMemory},
              {"CopyStream, file to memory to file", streams}};
  std::printf("| copy of %ld MiB in 64 KiB | median ms | least ms | streams / it, medians | "
              "streams / it, least "
              "|\n| --- | ---: | ---: | ---: | ---: |\n",
              size >> 20);
  for (const auto &row : rows)
    std::printf("| %s | %.1f | %.1f | %.2f | %.2f |\n", row.name, row.times.median(),
                row.times.least(), streams.median() / row.times.median(),
                streams.least() / row.times.least());
}

/// Prints the time per byte while something grows, eighth by eighth. `append` adds one part.
template <typename Start, typename Append>
void measureGrowth(const char *name, long size, long part, const Start &start,
                   const Append &append) {
  std::array<double, 8> least;
  least.fill(1e300);
  for (int round = 0; round < rounds; ++round) {
    start();
    for (double &eighth : least) {
      const auto begin = Clock::now();
      for (long at = 0; at < size / 8; at += part)
        append();
      eighth = std::min(eighth, milliseconds(begin) * 1e6 / (static_cast<double>(size) / 8));
    }
  }
  std::printf("| %s |", name);
  for (const double eighth : least)
    std::printf(" %.3f |", eighth);
  const double start2 = (least[0] + least[1]) / 2, end2 = (least[6] + least[7]) / 2;
  std::printf(" %.2f |\n", end2 / start2);
}

void measureGrowths(long size) {
  std::printf("\n| ns per byte, by eighths | 1 | 2 | 3 | 4 | 5 | 6 | 7 | 8 | last two / first two "
              "|\n| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |\n");
  std::unique_ptr<CResizeBuffer> buffer;
  measureGrowth(
      "CResizeBuffer, bytes, 1 MiB", 1 << 20, 1,
      [&] { buffer = std::make_unique<CResizeBuffer>(0); },
      [&] { require(buffer->AddData("a", 1) == 1, "appending"); });
  CMemStream memory;
  std::vector<char> block(blockSize, 'a');
  measureGrowth(
      "CMemStream, 64 KiB blocks", size, blockSize,
      [&] {
        memory.CreateMemStream(0, blockSize, streamProgressNone, nullptr);
        memory.Open(streamWriteMode);
      },
      [&] { require(memory.Write(block.data(), blockSize, nullptr) == 1, "writing"); });
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int count, char **arguments) {
  const long megabytes = count > 2 ? std::atol(arguments[2]) : 256;
  if (count < 2 || megabytes < 1) {
    std::fprintf(stderr, "usage: streams FOLDER [MEGABYTES]\n");
    return 2;
  }
  measureCopies(arguments[1], megabytes << 20);
  measureGrowths(megabytes << 20);
}
