// Opens any bytes as a document and looks for a keyword in it. The answer must equal that of the
// plain reader, and come within the time that the document's size allows.

#include "fuzz/PlainDocument.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSString.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace searchsystem {

namespace {

/// The sanitizers make everything slower by about this much.
constexpr double slowness = 12;

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

[[noreturn]] void fail(const char *what, std::size_t size, double value) {
  std::fprintf(stderr, "%s: %zu bytes, %g\n", what, size, value);
  std::abort();
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size < 1)
    return 0;
  static const int descriptor = memfd_create("document", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  const std::string_view file(reinterpret_cast<const char *>(data + 1), size - 1);
  if (ftruncate(descriptor, 0) != 0 ||
      pwrite(descriptor, file.data(), file.size(), 0) != static_cast<ssize_t>(file.size()))
    std::abort();

  constexpr std::array<std::uint32_t, 4> encodings{0, 1, 0x0201, 0x0600};
  constexpr std::array<std::string_view, 4> keywords{"ab", "A", "\u3042b", "xyzzy"};
  const std::uint32_t encoding = encodings[data[0] & 3];
  const std::string_view keyword = keywords[data[0] >> 2 & 3];
  const bool isCaseSensitive = (data[0] & 16) != 0;
  const auto string = NSString::create(keyword);

  const double start = processorSeconds();
  CPDFFile document;
  const bool isOpen = document.Open(path.c_str()) == 1;
  const bool isFound = isOpen && document.FindText(string.get(), isCaseSensitive, encoding) == 1;
  const double seconds = processorSeconds() - start;
  const double limit = 0.01 + 0.1 * static_cast<double>(file.size()) / (1 << 20);
  if (seconds > limit * slowness)
    fail("slow", file.size(), seconds);
  if (isOpen)
    document.IsVordaPDF();

  // Beyond this the reader leaves out what it has read before, which is no part of the plain one.
  PlainDocument plain(file, 1 << 17);
  const unsigned options =
      isCaseSensitive ? NSLiteralSearch : NSLiteralSearch | NSCaseInsensitiveSearch;
  const bool isPlainlyOpen = plain.open();
  const bool isPlainlyFound = isPlainlyOpen && plain.find(keyword, options, encoding);
  if (plain.isBudgetSpent())
    return 0;
  if (isOpen != isPlainlyOpen)
    fail("opened", file.size(), isOpen);
  if (isFound != isPlainlyFound)
    fail("found", file.size(), isFound);
  return 0;
}
