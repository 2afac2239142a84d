#include "pdf_reader/VectorBytes.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>

namespace searchsystem {

namespace {

using namespace vectorBytes;

/// Bytes from `choice`, with line ends behind them that may be read as well.
std::string randomBytes(std::mt19937 &random, std::string_view choice) {
  std::string bytes;
  for (std::size_t size = random() % 90; size > 0; --size)
    bytes += choice.empty() ? static_cast<char>(random()) : choice[random() % choice.size()];
  return bytes;
}

TEST(VectorBytes, GiveWhatPlainLoopsGive) {
  std::mt19937 random(1);
  // Among them what stands beside the digits and letters.
  for (const std::string_view choice :
       {"0123456789abcdefABCDEF", "0123456789abcdefABCDEF0123456789abcdefABCDEF/:@G`g>?", "",
        "xxxxxxxxj%E\r"})
    for (int i = 0; i < 20'000; ++i) {
      const std::string bytes = randomBytes(random, choice) + std::string(guardSize, '\n');
      const LineScan scan = scanLine(bytes.data(), 'j', 'E');
      const LineScan plainScan = plain::scanLine(bytes.data(), 'j', 'E');
      ASSERT_EQ(scan.end, plainScan.end);
      ASSERT_EQ(scan.hasComment, plainScan.hasComment);
      ASSERT_EQ(scan.hasEither, plainScan.hasEither);

      std::string out(bytes.size() + guardSize, '?');
      std::string plainOut = out;
      const char *digits = bytes.data();
      const char *plainDigits = bytes.data();
      const std::size_t size = decodePairs(digits, out.data());
      ASSERT_EQ(size, plain::decodePairs(plainDigits, plainOut.data())) << bytes;
      ASSERT_EQ(digits, plainDigits) << bytes;
      ASSERT_EQ(out.substr(0, size), plainOut.substr(0, size)) << bytes;
    }
}

TEST(VectorBytes, DecodeEveryPairOfDigits) {
  const std::string_view digits = "0123456789abcdef";
  for (unsigned value = 0; value < 256; ++value) {
    const std::string text =
        std::string(1, digits[value / 16]) + digits[value % 16] + std::string(guardSize, '\n');
    char out[guardSize + 1];
    for (auto *const decode : {decodePairs, plain::decodePairs}) {
      const char *position = text.data();
      ASSERT_EQ(decode(position, out), 1U);
      ASSERT_EQ(out[0], static_cast<char>(value));
    }
  }
}

} // namespace

} // namespace searchsystem
