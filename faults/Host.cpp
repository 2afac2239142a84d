#include "faults/Host.h"

#include "faults/Allocations.h"
#include "faults/Verdict.h"
#include "platform/content/Content.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/Perform.h"

#include <algorithm>

namespace searchsystem {

namespace {

Paths results, unreadFiles;
int ends = 0;

void takeUnread(CFStringRef path, int32_t reason, void * /*context*/) {
  const Allocations::Exempt exempt;
  check(ends == 0, "an unread file after the end");
  check(reason >= PFContentNeedsPassword && reason <= PFContentNoReader, "an unknown reason");
  unreadFiles.emplace_back(CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
}

} // namespace

Record::Record(const std::string &folder, const Wanted &wanted, SearchResultCallback callback) {
  const auto text = [&](const char *bytes) {
    return bytes == nullptr
               ? nullptr
               : keep(CFStringCreateWithCString(nullptr, bytes, kCFStringEncodingUTF8));
  };
  const auto date = [&](double seconds) {
    const bool isOpen = seconds == Wanted::open || seconds == -Wanted::open;
    return isOpen ? nullptr : keep(CFDateCreate(nullptr, seconds));
  };
  predicate.nameKeyword = text(wanted.name);
  predicate.contentKeyword = text(wanted.content);
  predicate.modDateStart = date(wanted.modifiedFrom);
  predicate.modDateEnd = date(wanted.modifiedTo);
  predicate.exifDateStart = date(wanted.shotFrom);
  predicate.searchExifText = wanted.isInExif ? 1 : 0;
  predicate.searchPDFText = wanted.isInPDF ? 1 : 0;
  predicate.checkSubFolder = wanted.isFolderAlone ? 0 : 1;
  predicate.isAndSearch = wanted.any ? 0 : 1;
  predicate.searchFolder =
      keep(CFStringCreateWithFileSystemRepresentation(nullptr, folder.c_str()));
  predicate.resultCallback = callback;
}

Record::~Record() {
  for (const CFTypeRef object : kept_)
    CFRelease(object);
}

void Record::setList(const Paths &paths) {
  std::vector<const void *> elements;
  for (const std::string &path : paths)
    elements.push_back(keep(CFStringCreateWithFileSystemRepresentation(nullptr, path.c_str())));
  predicate.fileList =
      keep(CFArrayCreate(nullptr, elements.data(), static_cast<CFIndex>(elements.size()), nullptr));
}

void Host::take(CFStringRef path, int32_t state) {
  const Allocations::Exempt exempt;
  check(ends == 0, "a report after the end");
  check((path != nullptr ? 1 : 0) == state, "path and state do not agree");
  if (path == nullptr)
    ++ends;
  else
    results.emplace_back(CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
}

Paths Host::search(Record &record) {
  results.clear();
  unreadFiles.clear();
  ends = 0;
  mustGoOnWithin(120);
  SS_SearchStart(&record.predicate);
  while (ends == 0 &&
         CFRunLoopRunInMode(kCFRunLoopDefaultMode, 20, 1) == kCFRunLoopRunHandledSource) {
  }
  const Allocations::Exempt exempt;
  settle();
  check(ends == 1, std::to_string(ends) + " end notifications");
  std::sort(results.begin(), results.end());
  return results;
}

Paths Host::unread() {
  std::sort(unreadFiles.begin(), unreadFiles.end());
  check(std::adjacent_find(unreadFiles.begin(), unreadFiles.end()) == unreadFiles.end(),
        "an unread file is told twice");
  return unreadFiles;
}

void Host::settle() {
  // The virtual clock advances only when no thread is at work.
  class Stop final : public TimedWork {
    void fire() override { MainRunLoop::shared().stop(); }
    void finished() noexcept override {}
  } stop;
  MainRunLoop::shared().schedule(stop, std::chrono::seconds(12));
  CFRunLoopRun();
}

void searchDeep(bool isDeep) {
  PFContentSetDepth(isDeep ? PFContentDeep : PFContentPlain);
  PFContentSetUnreadCallback(isDeep ? takeUnread : nullptr, nullptr);
}

void useIndex(bool isUsed) {
  setSystemVersionForTesting(0x1058);
  useSpotlight(isUsed ? 1 : 0);
}

std::string relative(const Paths &paths, const std::string &folder) {
  std::string all;
  for (const std::string &path : paths)
    all += (all.empty() ? "" : " ") +
           (path.starts_with(folder + "/") ? path.substr(folder.size() + 1) : path);
  return all;
}

} // namespace searchsystem
