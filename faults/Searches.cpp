#include "faults/Searches.h"

#include "platform/foundation/LocalTime.h"
#include "testing/CompressedDocument.h"
#include "testing/DocumentWriter.h"
#include "testing/PhotoFile.h"
#include "testing/PhotographContainers.h"

#include <memory>

namespace searchsystem {

void makeSmallTree(TemporaryTree &tree) {
  const PhotoTags tags = PhotoTags::photo().text(0, 0x010E, "a beach").taken("2010:01:05 12:00:00");
  const std::string photo = jpegFile({tags.exifSegment()});
  const std::string document = documentShowing({"beach"});
  tree.file("1beach.jpg", photo);
  tree.file("2Beach.pdf", document);
  tree.file("3other.jpg", photo);
  tree.file("in/4beach.tif", tags.tiff());
  tree.file("in/5other.pdf", document);
  tree.file("in/deep/6beach.pct");
  tree.link("in/deep/link beach.jpg", tree.path("1beach.jpg"));
  tree.file("shelf.doc/7beach.jpg");
  tree.file("in/beach.txt", "beach");
  std::int64_t time = PFSecondsFrom1970To2001;
  for (const char *const name : {"1beach.jpg", "2Beach.pdf", "3other.jpg", "in/4beach.tif",
                                 "in/5other.pdf", "in/deep/6beach.pct", "shelf.doc/7beach.jpg"})
    tree.setModified(name, ++time);
}

void addDeepFiles(TemporaryTree &tree) {
  tree.file("in/7titled.png", pngFile({pngChunk("tEXt", std::string("Title\0the beach", 15))}));
  tree.file("in/8packed.pdf", CompressedDocument::showing("the beach"));
  tree.file("in/9broken.pdf", "no document");
}

const std::vector<Way> &allWays() {
  const std::string named = "1beach.jpg 2Beach.pdf in/4beach.tif in/deep/6beach.pct "
                            "in/deep/link beach.jpg shelf.doc/7beach.jpg";
  const Wanted content{.content = "beach", .isInExif = true, .isInPDF = true};
  Wanted anyContent = content;
  anyContent.any = true;
  Wanted anything = anyContent;
  anything.name = "beach";
  const std::string deep =
      "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf in/7titled.png in/8packed.pdf";
  const std::string deepWithLink = deep + " in/deep/link beach.jpg";
  const std::string unread = "in/9broken.pdf shelf.doc/7beach.jpg";
  const Wanted shot{.content = "beach", .isInExif = true, .shotFrom = 284'000'000};
  static const std::vector<Way> ways{
      {"walk", {.name = "beach"}, false, false, named},
      {"walk, any",
       {.name = "beach", .modifiedFrom = 2.5, .modifiedTo = 3.5, .any = true},
       false,
       false,
       "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/deep/6beach.pct "
       "in/deep/link beach.jpg shelf.doc/7beach.jpg"},
      {"walk, content", content, false, false, "1beach.jpg 2Beach.pdf 3other.jpg in/5other.pdf"},
      {"walk, any content", anyContent, false, false,
       "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf"},
      {"list",
       {.name = "beach"},
       false,
       true,
       "1beach.jpg 2Beach.pdf in/4beach.tif in/deep/6beach.pct"},
      {"list, content", content, false, true, "1beach.jpg 2Beach.pdf 3other.jpg in/5other.pdf"},
      {"index", {.name = "beach"}, true, false, named},
      {"index, dates",
       {.name = "beach", .modifiedFrom = 2.5, .modifiedTo = 6.5},
       true,
       false,
       "in/4beach.tif in/deep/6beach.pct"},
      {"index, content", content, true, false, "1beach.jpg 2Beach.pdf 3other.jpg in/5other.pdf"},
      {"index, shot", shot, true, false, "1beach.jpg 3other.jpg"},
      {"content walk", anyContent, true, false,
       "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf"},
      {"index and content walk", anything, true, false,
       "1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf in/deep/6beach.pct "
       "in/deep/link beach.jpg shelf.doc/7beach.jpg"},
      {"deep, content", content, false, false, deepWithLink, true, unread},
      {"deep, any content", anyContent, false, false, deepWithLink, true, unread},
      {"deep list, content", content, false, true, deep, true, "in/9broken.pdf"},
      {"deep index", {.name = "beach"}, true, false, named, true},
  };
  return ways;
}

std::unique_ptr<Record> makeRecord(const Way &way, const std::string &tree,
                                   SearchResultCallback callback) {
  auto record = std::make_unique<Record>(tree, way.wanted, callback);
  if (!way.isList)
    return record;
  Paths list;
  for (const char *const name : {"1beach.jpg", "2Beach.pdf", "3other.jpg", "in/4beach.tif",
                                 "in/5other.pdf", "in/deep/6beach.pct", "in/beach.txt", "missing",
                                 "in/7titled.png", "in/8packed.pdf", "in/9broken.pdf"})
    list.push_back(tree + "/" + name);
  record->setList(list);
  return record;
}

} // namespace searchsystem
