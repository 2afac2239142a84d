// Prints what the library reads from photographs. The names of the files come on standard input,
// each ended by a NUL; for each the answer for every tag is printed, as its length, a colon and its
// bytes, or as "-" when the file does not have it, and a newline after the last tag.

#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"

#include <array>
#include <cstdint>
#include <iostream>
#include <string>

using namespace searchsystem;

int main() {
  constexpr std::array<std::uint32_t, 5> tags{0x9003, 0x010E, 0x010F, 0x0110, 0x9286};
  for (std::string name; std::getline(std::cin, name, '\0');) {
    const auto path = NSString::create(name);
    const auto analysis = ExifAnalysis::startExifAnalysisAtPath(path.get());
    for (const std::uint32_t tag : tags) {
      const auto text = analysis ? analysis->getExifInfo(tag) : nullptr;
      if (text)
        std::cout << text->length() << ':' << text->view();
      else
        std::cout << '-';
    }
    std::cout << '\n';
    if (analysis)
      analysis->endExifAnalysis();
  }
  return std::cout.flush() ? 0 : 1;
}
