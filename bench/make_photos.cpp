// Makes folders of photographs as cameras write them: JPEG and TIFF files of realistic size, with
// EXIF tags, but with bytes in place of an image. The same parameters make the same files. Behind
// their first 68 KB, which no reader of tags goes beyond, the files are holes and take no room.

#include "testing/PhotoFile.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>

namespace searchsystem {

namespace {

using namespace std::string_literals;

constexpr std::size_t writtenSize = 68 * std::size_t{1024};

struct Parameters {
  std::uint64_t jpegs = 20'000;
  std::uint64_t tiffs = 2'000;
  std::uint64_t perFolder = 200;
  double keyword = 0.005;
  double taken = 0.5;
};

struct Counts {
  std::uint64_t keyword = 0, taken = 0, both = 0;
};

class PhotoMaker {
public:
  explicit PhotoMaker(const Parameters &parameters) : parameters_(parameters) {
    // No byte that could be a marker of a JPEG file.
    noise_.resize(writtenSize);
    for (char &byte : noise_)
      byte = static_cast<char>(below(255));
  }

  /// Writes the next photograph.
  void write(const std::filesystem::path &path, bool isJPEG) {
    const bool hasKeyword = isBelow(parameters_.keyword), isTaken = isBelow(parameters_.taken);
    counts_.keyword += hasKeyword ? 1 : 0;
    counts_.taken += isTaken ? 1 : 0;
    counts_.both += hasKeyword && isTaken ? 1 : 0;
    const PhotoTags tags = tagsOf(hasKeyword, isTaken);
    // Some programs write the directory behind the first strips of the image.
    std::string bytes = isJPEG ? jpegOf(tags) : tags.tiff(below(4) == 0 ? 40'000 : 8);
    if (bytes.size() < writtenSize)
      bytes.append(noise_, bytes.size());
    const std::uint64_t size =
        isJPEG ? 1'500'000 + below(4'500'000) : 6'000'000 + below(24'000'000);
    std::ofstream file(path, std::ios::binary);
    if (!(file << bytes).flush())
      throw std::runtime_error(path.string() + " cannot be written");
    file.close();
    std::filesystem::resize_file(path, size);
  }

  [[nodiscard]] const Counts &counts() const { return counts_; }

private:
  std::uint64_t below(std::uint64_t limit) { return random_() % limit; }
  bool isBelow(double part) { return static_cast<double>(random_() >> 11) * 0x1p-53 < part; }

  std::string date(int year) {
    std::array<char, 24> text{};
    const auto part = [&](int limit) {
      return static_cast<int>(below(static_cast<std::uint64_t>(limit)));
    };
    std::snprintf(text.data(), text.size(), "%04d:%02d:%02d %02d:%02d:%02d", year, 1 + part(12),
                  1 + part(28), part(24), part(60), part(60));
    return text.data();
  }

  PhotoTags tagsOf(bool hasKeyword, bool isTaken) {
    const ByteOrder order = below(2) == 0 ? ByteOrder::Little : ByteOrder::Big;
    PhotoTags tags = PhotoTags::photo(order);
    const auto n = [&](std::uint64_t value, std::size_t size) { return tags.number(value, size); };
    const std::uint64_t place = hasKeyword ? below(4) : 4;
    tags.text(0, 0x010E, place == 0 ? "At the Beach" : "                               ");
    tags.text(0, 0x010F, place == 1 ? "BEACH OPTICAL CO." : "LAKE OPTICAL CO.");
    tags.text(0, 0x0110, place == 2 ? "beach D70" : "LAKE D70");
    tags.field(0, 0x0112, PhotoTags::Short, 1, n(1, 2)).text(0, 0x0131, "Ver.1.02");
    tags.field(0, 0x011A, 5, 1, n(300, 4) + n(1, 4)).field(0, 0x011B, 5, 1, n(300, 4) + n(1, 4));
    const int year = isTaken ? 2019 : 2005 + static_cast<int>(below(14));
    const std::string taken = date(year);
    tags.text(0, 0x0132, date(2020)).taken(taken).text(1, 0x9004, taken);
    tags.field(1, 0x829A, 5, 1, n(1, 4) + n(250, 4)).field(1, 0x829D, 5, 1, n(56, 4) + n(10, 4));
    tags.field(1, 0x8827, PhotoTags::Short, 1, n(200, 2));
    // The maker's own notes, and a preview among them.
    const std::size_t notes = 4'000 + below(16'000);
    tags.field(1, 0x927C, PhotoTags::Undefined, static_cast<std::uint32_t>(notes),
               noise_.substr(0, notes));
    if (place == 3)
      tags.comment(below(2) == 0 ? "ASCII" : "", "on the beach" + std::string(100, ' '));
    else if (below(2) == 0)
      tags.comment("ASCII", std::string(117, ' '));
    else
      tags.comment("UNICODE", "l\0a\0k\0e\0 \0\0\0"s);
    return tags;
  }

  std::string jpegOf(const PhotoTags &tags) {
    const auto xmp =
        jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/\0<x:xmpmeta>"s + std::string(2'500, ' '));
    const auto tables = jpegSegment(0xDB, noise_.substr(0, 130));
    const auto frame = jpegSegment(0xC0, "\x08\x0b\xb8\x0f\xa0\3\1\x22\0\2\x11\1\3\x11\1"s);
    switch (below(3)) {
    case 0:
      return jpegFile({xmp, tags.exifSegment(), tables, frame});
    case 1:
      return jpegFile(
          {jpegSegment(0xE0, "JFIF\0\1\1\0\0\1\0\1\0\0"s), tags.exifSegment(), tables, frame});
    default:
      return jpegFile({tags.exifSegment(), xmp, tables, frame});
    }
  }

  const Parameters parameters_;
  std::mt19937_64 random_{1};
  std::string noise_;
  Counts counts_;
};

Counts makePhotos(const std::filesystem::path &root, const Parameters &parameters) {
  PhotoMaker maker(parameters);
  const std::uint64_t count = parameters.jpegs + parameters.tiffs;
  std::uint64_t tiffsLeft = parameters.tiffs;
  std::filesystem::path folder;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (i % parameters.perFolder == 0) {
      folder = root / ("roll " + std::to_string(i / parameters.perFolder));
      std::filesystem::create_directory(folder);
    }
    // The TIFF files are spread evenly.
    const bool isJPEG = (i + 1) * parameters.tiffs / count <= parameters.tiffs - tiffsLeft;
    tiffsLeft -= isJPEG ? 0 : 1;
    maker.write(folder / ("IMG_" + std::to_string(100'000 + i) + (isJPEG ? ".JPG" : ".TIF")),
                isJPEG);
  }
  return maker.counts();
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  Parameters parameters;
  std::string target;
  CLI::App application("Makes photographs with EXIF tags.");
  application.add_option("folder", target, "where; must not exist, or be empty")->required();
  application.add_option("--jpegs", parameters.jpegs, "JPEG files")->capture_default_str();
  application.add_option("--tiffs", parameters.tiffs, "TIFF files")->capture_default_str();
  application.add_option("--per-folder", parameters.perFolder, "files in each folder")
      ->check(CLI::Range(1, 100'000'000))
      ->capture_default_str();
  application
      .add_option("--keyword", parameters.keyword,
                  "which part of the files has a tag that holds \"beach\" in any case")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  application.add_option("--taken", parameters.taken, "which part was taken in 2019")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  CLI11_PARSE(application, argc, argv);

  try {
    std::filesystem::create_directories(target);
    if (!std::filesystem::is_empty(target))
      throw std::runtime_error(target + " is not empty");
    const Counts counts = makePhotos(target, parameters);
    std::cout << target << ": " << parameters.jpegs << " JPEG, " << parameters.tiffs << " TIFF, "
              << counts.keyword << " with the keyword, " << counts.taken << " taken in 2019, "
              << counts.both << " both\n";
  } catch (const std::exception &error) {
    std::cerr << "make_photos: " << error.what() << '\n';
    return 2;
  }
  return 0;
}
