#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "testing/PhotoFile.h"
#include "testing/SystemCallsGuard.h"
#include "testing/TemporaryTree.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace searchsystem {

namespace {

using namespace std::string_literals;

constexpr std::uint32_t taken = 0x9003, description = 0x010E, maker = 0x010F, model = 0x0110,
                        comment = 0x9286;

std::string viewOf(const Ref<const NSString> &text) {
  return text ? std::string(text->view()) : "none";
}

/// What an analysis answers for a tag; "closed" when the file has no EXIF tags.
std::string answer(const Ref<ExifAnalysis> &analysis, std::uint32_t tag) {
  if (!analysis)
    return "closed";
  auto text = viewOf(analysis->getExifInfo(tag));
  analysis->endExifAnalysis();
  EXPECT_EQ(viewOf(analysis->getExifInfo(tag)), "none") << "after the end";
  return text;
}

/// What is answered by an analysis that reads only what it needs.
std::string answerInSteps(const std::string &path, std::uint32_t tag) {
  const auto name = NSString::create(path);
  FileItem item(*name);
  return answer(ExifAnalysis::startExifAnalysisAtPath(item), tag);
}

/// What a file answers for a tag, however it is read.
std::string answer(const std::string &path, std::uint32_t tag) {
  const auto name = NSString::create(path);
  const auto text = answer(ExifAnalysis::startExifAnalysisAtPath(name.get()), tag);
  EXPECT_EQ(answerInSteps(path, tag), text) << path;
  return text;
}

/// The bytes of a file that have been read.
std::string isRead;

ssize_t readAndNote(int file, void *buffer, std::size_t size, off_t offset) {
  const ssize_t count = realSystemCalls().readAt(file, buffer, size, offset);
  const auto begin = static_cast<std::size_t>(offset);
  isRead.resize(std::max(isRead.size(), begin + size));
  for (std::size_t i = begin; i < begin + size; ++i)
    EXPECT_EQ(isRead[i]++, 0) << "read twice: " << i;
  return count;
}

TEST(ExifAnalysis, AnswersTheTagsOfASearch) {
  const auto photo = [] { return PhotoTags::photo(); };
  const struct {
    const char *name;
    PhotoTags tags;
    std::uint32_t tag;
    std::string text;
  } rows[] = {
      {"taken", photo().taken("2005:07:14 09:05:03"), taken, "2005/07/14 09:05:03"},
      {"digitized", photo().text(1, 0x9004, "2005:07:14 09:05:03"), taken, "2005/07/14 09:05:03"},
      {"both", photo().text(1, 0x9004, "2006:01:01 00:00:00").taken("2005:07:14 09:05:03"), taken,
       "2005/07/14 09:05:03"},
      {"taken is empty", photo().taken("").text(1, 0x9004, "2005:07:14 09:05:03"), taken, "none"},
      {"unknown date", photo().taken("0000:00:00 00:00:00"), taken, "test"},
      {"blank date", photo().taken("    :  :     :  :  "), taken, "test"},
      {"numbers", photo().field(1, taken, PhotoTags::Byte, 19, "2005:07:14 09:05:03"), taken,
       "none"},
      {"date of the file", photo().text(0, 0x0132, "2005:07:14 09:05:03"), taken, "none"},
      {"digitized, asked for", photo().text(1, 0x9004, "2005:07:14 09:05:03"), 0x9004, "none"},
      {"no date", photo(), taken, "none"},
      {"description", photo().text(0, description, "Caf\u00e9"), description, "Caf\u00e9"},
      {"maker in Latin-1", photo().text(0, maker, "Caf\xe9\0x"s), maker, "Caf\u00e9"},
      {"model not ended", photo().field(0, model, PhotoTags::ASCII, 3, "D70"), model, "D70"},
      {"empty model", photo().text(0, model, "\0D70"s), model, "none"},
      {"model in the other directory", photo().text(1, model, "D70"), model, "none"},
      {"comment", photo().comment("ASCII", "sea"), comment, "sea"},
      {"comment as text", photo().text(1, comment, "ASCII\0\0\0sea"s), comment, "none"},
      {"no comment", photo(), comment, "none"},
      {"no EXIF directory", PhotoTags(ByteOrder::Big).text(0, model, "D70"), model, "closed"},
      {"no version", PhotoTags(ByteOrder::Big).taken("2005:07:14 09:05:03"), taken, "closed"},
  };
  TemporaryTree files;
  for (const auto &row : rows) {
    EXPECT_EQ(answer(files.file("a.jpg", jpegFile({row.tags.exifSegment()})), row.tag), row.text)
        << row.name;
    EXPECT_EQ(answer(files.file("a.tif", row.tags.tiff(5000)), row.tag), row.text) << row.name;
  }
}

TEST(ExifAnalysis, DecodesComments) {
  const struct {
    const char *name, *code;
    std::string bytes, text;
  } rows[] = {{"ASCII, padded", "ASCII", "sea  \0"s, "sea  \0"s},
              {"ASCII, eight bits", "ASCII", "caf\xe9", "none"},
              {"JIS", "JIS", "\x1b$B<L??\x1b(B", "写真"},
              {"UTF-16, no mark", "UNICODE", "A\0B\0"s, "AB"},
              {"UTF-16, no mark, big-endian", "UNICODE", "\0A\0B"s, "\u4100\u4200"},
              {"UTF-16, little-endian", "UNICODE", "\xff\xfe\0A"s, "\u4100"},
              {"UTF-16, big-endian", "UNICODE", "\xfe\xff\0A\0\0"s, "A\0"s},
              {"UTF-8", "UNICODE", "\xef\xbb\xbf\u00e9", "\ufeff\u00e9"},
              {"code only", "UNICODE", "", ""},
              {"code only", "ASCII", "", "none"},
              {"undefined, UTF-8", "", "\u00e9", "\u00e9"},
              {"undefined, Latin-1", "", "\xe9", "\u00e9"},
              {"unknown", "Unknown", "sea", "none"}};
  TemporaryTree tree;
  for (const auto &row : rows)
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
      const PhotoTags tags = PhotoTags::photo(order).comment(row.code, row.bytes);
      EXPECT_EQ(answer(tree.file("a.tif", tags.tiff()), comment), row.text) << row.name;
    }
  const PhotoTags cut = PhotoTags::photo().field(1, comment, PhotoTags::Undefined, 5, "ASCII");
  EXPECT_EQ(answer(tree.file("a.tif", cut.tiff()), comment), "none") << "a part of a code";
}

TEST(ExifAnalysis, ReadsNoMoreOfRegularFilesThanItNeeds) {
  TemporaryTree tree;
  const PhotoTags tags = PhotoTags::photo().text(0, model, "D70");
  const auto notes = PhotoTags::photo()
                         .field(0, maker, PhotoTags::ASCII, 20'000, std::string(20'000, 'x'))
                         .text(0, model, "D70 and more");
  const auto path = tree.file("big.jpg", jpegFile({tags.exifSegment()}, 100'000));
  const auto behind = jpegFile(
      {jpegSegment(0xE2, std::string(65'000, 'x')), std::string(500, ' '), tags.exifSegment()});
  const auto longPath = std::string(200, 'd') + "/" + std::string(200, 'd') + "/a.tif";
  tree.file(longPath, tags.tiff() + std::string(1000, ' '));
  tree.link("long.jpg", tree.path(longPath));
  tree.link("short.jpg", "big.jpg");
  const struct {
    const char *name;
    std::string path, text;
    int opens, reads;
    /// How many bytes are read in steps.
    std::size_t needed;
  } rows[] = {
      {"large", path, "D70", 1, 1, 1024},
      {"behind the first 65,535 bytes", tree.file("behind.jpg", behind), "closed", 1, 1, 2047},
      {"between other segments",
       tree.file("between.jpg",
                 jpegFile({jpegSegment(0xE1, std::string(6000, 'x')), tags.exifSegment()})),
       "D70", 1, 1, 2048},
      {"behind a long value", tree.file("notes.tif", notes.tiff()), "D70 and more", 1, 1, 1650},
      {"behind the image", tree.file("image.tif", tags.tiff(50'000)), "D70", 1, 1, 1920},
      {"small", tree.file("small.tif", tags.tiff()), "D70", 1, 1, 56},
      {"empty", tree.file("empty.jpg"), "closed", 1, 0, 0},
      {"missing", tree.path("missing.jpg"), "closed", 0, 0, 0},
      {"a folder", tree.folder("folder.jpg"), "closed", 0, 0, 0},
      {"a pipe", tree.fifo("pipe.jpg"), "closed", 0, 0, 0},
      {"a link as long as the tags need", tree.path("long.jpg"), "D70", 1, 1,
       tree.path(longPath).size()},
      {"a link too short for the tags", tree.path("short.jpg"), "closed", 1, 1, 7},
      {"a link to a pipe", tree.link("to_pipe.jpg", tree.path("pipe.jpg")), "closed", 0, 0, 0},
      {"a link to nothing", tree.link("to_nothing.jpg", tree.path("missing.jpg")), "closed", 0, 0,
       0}};
  const SystemCallsGuard guard({.readAt = readAndNote});
  for (const auto &row : rows)
    for (const bool isInSteps : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.name << isInSteps);
      guard.resetCounts();
      isRead.clear();
      const auto name = NSString::create(row.path);
      EXPECT_EQ(isInSteps ? answerInSteps(row.path, model)
                          : answer(ExifAnalysis::startExifAnalysisAtPath(name.get()), model),
                row.text);
      EXPECT_EQ(guard.counts().openAt, row.opens);
      if (isInSteps)
        EXPECT_EQ(std::count(isRead.begin(), isRead.end(), 1), row.needed);
      else
        EXPECT_EQ(guard.counts().readAt, row.reads);
    }
}

TEST(ExifAnalysis, LoadsAFileByItsPath) {
  TemporaryTree tree;
  const std::string tiff = PhotoTags::photo().text(0, model, "D70").tiff();
  const auto photo = NSString::create(tree.file("a.tif", tiff)),
             other = NSString::create(tree.file("b.tif", "II*"));
  const auto analysis = ExifAnalysis::create();
  EXPECT_EQ(analysis->initCIMAGETAG(nullptr) + analysis->initCIMAGETAG(other.get()), 0);
  EXPECT_EQ(analysis->initCIMAGETAG(photo.get()), 1);
  EXPECT_EQ(viewOf(analysis->getExifInfo(model)), "D70");
  EXPECT_EQ(analysis->initCIMAGETAG(other.get()), 0);
  EXPECT_EQ(viewOf(analysis->getExifInfo(model)), "none") << "nothing is left of the one before";

  Ref<const NSData> data;
  EXPECT_EQ(analysis->readDataHandle(NSString::create(tree.path("none")).get(), &data), -43);
  EXPECT_FALSE(data);
  EXPECT_EQ(analysis->readDataHandle(photo.get(), &data), 0);
  EXPECT_EQ(data->view(), tiff);
  EXPECT_EQ(analysis->readDataHandle(NSString::create(tree.file("c.tif")).get(), &data), -43);
  EXPECT_EQ(data->view(), tiff) << "nothing is stored";
}

TEST(ExifAnalysis, SurvivesShortAndFailingReads) {
  TemporaryTree tree;
  const auto path = tree.file("a.tif", PhotoTags::photo().text(0, model, "D70").tiff(3000));
  const auto isShort = [](int file, void *buffer, std::size_t size, off_t offset) {
    return realSystemCalls().readAt(file, buffer, std::min<std::size_t>(size, 1000), offset);
  };
  const auto isCutOff = [](int file, void *buffer, std::size_t size, off_t offset) {
    constexpr off_t left = 3010;
    size = offset < left ? std::min(size, static_cast<std::size_t>(left - offset)) : 0;
    return realSystemCalls().readAt(file, buffer, size, offset);
  };
  const auto fails = [](auto...) -> ssize_t { return errno = EIO, -1; };
  const auto failsInTheEnd = [](int file, void *buffer, std::size_t size, off_t offset) -> ssize_t {
    return offset < 1000 ? realSystemCalls().readAt(file, buffer, 1000, offset)
                         : (errno = EIO, static_cast<void>(size), -1);
  };
  EXPECT_EQ((SystemCallsGuard({.readAt = isShort}), answer(path, model)), "D70");
  EXPECT_EQ((SystemCallsGuard({.readAt = isCutOff}), answer(path, model)), "closed");
  EXPECT_EQ((SystemCallsGuard({.readAt = fails}), answer(path, model)), "closed");
  EXPECT_EQ((SystemCallsGuard({.readAt = failsInTheEnd}), answer(path, model)), "closed");
}

TEST(ExifAnalysis, AnswersRightWhileOthersReadOtherFiles) {
  TemporaryTree tree;
  std::vector<std::thread> workers;
  std::atomic<int> wrong{0};
  for (const char *const day : {"10", "11", "12", "13"}) {
    const PhotoTags tags = PhotoTags::photo()
                               .taken("2005:07:"s + day + " 09:05:03")
                               .comment("JIS", "\x1b$B<L??\x1b(B"s + day);
    workers.emplace_back([&wrong, day, path = tree.file(day, jpegFile({tags.exifSegment()}))] {
      const std::string date = "2005/07/"s + day + " 09:05:03", text = "写真"s + day;
      for (int round = 0; round < 100; ++round)
        wrong += answer(path, taken) != date || answer(path, comment) != text ? 1 : 0;
    });
  }
  for (std::thread &worker : workers)
    worker.join();
  EXPECT_EQ(wrong, 0);
}

TEST(FS_CheckDate, TakesDatesApartInsideTheirText) {
  const struct {
    const char *text;
    int result;
    std::array<int, 6> fields;
  } rows[] = {{"2005:07:14 09:05:03", 1, {2005, 7, 14, 9, 5, 3}},
              {"2005-07-14T09:05:03", 1, {2005, 7, 14, 9, 5, 3}},
              {"2005:07:14 xx:yy:zz", 1, {2005, 7, 14, 0, 0, 0}},
              {"2005:07:14 -1: 5:+3 and more", 1, {2005, 7, 14, -1, 5, 3}},
              {"2005:13:45 24:60:99999", 1, {2005, 13, 45, 24, 60, -31073}},
              {"2005:07:14 09:05:4294967297", 1, {2005, 7, 14, 9, 5, -1}},
              {"0000:00:01 00:00:00", 1, {0, 0, 1, 0, 0, 0}},
              {"2005:07", 1, {2005, 7, 0, 0, 0, 0}},
              {"2005", 1, {2005, 0, 0, 0, 0, 0}},
              {"0000:00:00 12:00:00", 0, {0, 0, 0, 12, 0, 0}},
              {"20a5:07:14 00:00:00", 0, {}},
              {"2005: 7:14 00:00:00", 0, {}},
              {"2005:07:-1 00:00:00", 0, {}},
              {"", 0, {}}};
  for (const auto &row : rows) {
    // As large as the text, so that a write beyond it is seen.
    const std::unique_ptr<char[]> text(new char[std::strlen(row.text) + 1]);
    std::strcpy(text.get(), row.text);
    DateTimeRec date{1, 1, 1, 1, 1, 1, 1};
    EXPECT_EQ(FS_CheckDate(text.get(), &date), row.result) << row.text;
    const std::array<int, 6> fields{date.year, date.month,  date.day,
                                    date.hour, date.minute, date.second};
    EXPECT_EQ(fields, row.fields) << row.text;
    EXPECT_EQ(date.dayOfWeek, 0) << row.text;
  }
}

TEST(FS_Exif_GetValueFromType, CopiesByTheRuleOfEachType) {
  const struct {
    std::int16_t type;
    int size;
    std::size_t copied; // of three values
  } rows[] = {{IMAGETAG_BYTE, 1, 3},
              {IMAGETAG_ASCII, 0, 0},
              {IMAGETAG_SHORT, 2, 2},
              {IMAGETAG_LONG, 4, 4},
              {IMAGETAG_RATIONAL, 8, 24},
              {IMAGETAG_SBYTE, 1, 1},
              {IMAGETAG_UNDEFINED, 1, 1},
              {IMAGETAG_SSHORT, 2, 2},
              {IMAGETAG_SLONG, 4, 4},
              {IMAGETAG_SRATIONAL, 4, 4},
              {IMAGETAG_FLOAT, 4, 4},
              {IMAGETAG_DOUBLE, 8, 8},
              {13, 0, 0}};
  for (const auto &[type, size, copied] : rows) {
    alignas(8) char value[] = "vvvvvvvvvvvvvvvvvvvvvvvv";
    std::string out(25, '-');
    IMAGETAG_INFO info{};
    info.type = type;
    info.count = 3;
    info.value.bytes = value;
    EXPECT_EQ(FS_Exif_GetValueFromType(out.data(), &info), size) << type;
    EXPECT_EQ(out, std::string(copied, 'v') + std::string(25 - copied, '-')) << type;
    info.count = 0;
    EXPECT_EQ(FS_Exif_GetValueFromType(out.data(), &info), 0) << type;
  }
}

} // namespace

} // namespace searchsystem
