// Writes the seeds of the fuzzer of image tags into a folder.

#include "testing/PhotoFile.h"
#include "testing/SeedFiles.h"

#include <string>

using namespace searchsystem;
using namespace std::string_literals;

int main(int argc, char **argv) {
  const auto little = [] {
    return PhotoTags::photo().taken("2005:07:14 09:05:03").text(0, 0x010F, "Maker");
  };
  const auto big = [] {
    return PhotoTags::photo(ByteOrder::Big)
        .text(0, 0x010E, "a beach")
        .text(1, 0x9004, "2005:07:14");
  };
  const auto xmp = jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/\0<x:xmpmeta/>"s);
  const auto jpeg = [](PhotoTags tags) { return jpegFile({tags.exifSegment()}, 0); };
  const Seed seeds[] = {
      {"little.tif", little().tiff()},
      {"big.tif", big().tiff(30)},
      {"plain.jpg", jpeg(little())},
      {"xmp_first.jpg", jpegFile({xmp, "\xFF\xFF"s, big().exifSegment()}, 0)},
      {"ascii.jpg", jpeg(big().comment("ASCII", "sea"))},
      {"jis.jpg", jpeg(little().comment("JIS", "\x1b$B<L??\x1b(B"))},
      {"utf16.jpg", jpeg(big().comment("UNICODE", "A\0B\0"s))},
      {"utf16_marked.jpg", jpeg(little().comment("UNICODE", "\xfe\xff\0A\xd8\x3d\xde\0"s))},
      {"utf8.jpg", jpeg(little().comment("UNICODE", "\xef\xbb\xbf\u00e9"))},
      {"undefined.tif", big().comment("", "caf\xe9").tiff()},
      {"numbers.tif",
       little().field(0, 0x0112, 3, 1, "\1\0"s).field(0, 0x011A, 5, 1, "\0\0\0\1\0\0\0\2"s).tiff()},
  };
  return writeSeeds(argc, argv, seeds);
}
