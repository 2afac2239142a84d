// Damages the file of the index and runs a query, which must still find every file.
//
// An input is a byte and a list of changes to a good file: the place (two bytes, counted in twos),
// a length, and that many bytes. A length of 255 cuts the file off there. With bit 0 of the byte
// set, all check sums are made right again, as a forger would: the query may then find anything,
// but must end. With bit 1 set, the query after it must find the index repaired.

#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "platform/metadata/CheckSum.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/NSMetadataQuery.h"
#include "testing/StatusAnHourAgo.h"
#include "testing/SystemCallsGuard.h"
#include "testing/TemporaryTree.h"
#include "testing/WaitForThreads.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

using Paths = std::vector<std::string>;

/// A tree, and an index of it.
class Fixture {
public:
  Fixture() {
    PFMainLoopSetClock(PFMainLoopClockVirtual);
    IndexPlace::setCacheFolderForTesting(cache_.path());
    // So many that the second query appends to the index, and that one folder has several parts.
    for (int i = 0; i < 240; ++i)
      tree_.file("folder " + std::to_string(i % 2 * (i % 5)) + "/in " + std::to_string(i % 40) +
                 "/" + std::string(120, 'n') + std::to_string(i) + ".jpg");
    for (int i = 0; i < 600; ++i)
      tree_.file("many/" + std::string(120, 'm') + std::to_string(i));
    find();
    tree_.file("folder 1/new.jpg");
    expected_ = find();
    std::ifstream stream(file());
    good_.assign(std::istreambuf_iterator<char>(stream), {});
    if (expected_.size() != 241 || good_.size() < 65536 || good_.size() > 2 * 65536)
      std::abort();
  }

  void test(std::string_view changes) {
    std::string bytes = good_;
    const unsigned mode = changes.empty() ? 0 : static_cast<unsigned char>(changes.front());
    changes.remove_prefix(std::min<std::size_t>(changes.size(), 1));
    while (changes.size() > 3) {
      const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(changes[i]); };
      const std::size_t place = std::min<std::size_t>((byte(0) << 8 | byte(1)) * 2, bytes.size());
      const std::size_t length = byte(2);
      changes.remove_prefix(3);
      const std::string_view put = changes.substr(0, length);
      changes.remove_prefix(put.size());
      if (length == 255)
        bytes.resize(place);
      else
        bytes.replace(place, std::min(put.size(), bytes.size() - place), put);
    }
    const bool isForged = (mode & 1) != 0;
    if (isForged)
      forgeSums(bytes);
    IndexPlace::current()->removeFiles();
    std::ofstream(file()) << bytes;
    chmod(file().c_str(), 0600);
    if (find() != expected_ && !isForged)
      std::abort();
    if (isForged || (mode & 2) == 0)
      return;
    find();
    calls_.resetCounts();
    if (find() != expected_ || calls_.counts().listEntries != 0)
      std::abort();
  }

private:
  /// Makes the sums of all segments and records right that can be found.
  static void forgeSums(std::string &bytes) {
    struct {
      std::uint64_t form, sum, records, recordBytes, groups, sumOfTable;
    } header{};
    for (std::size_t begin = 0; bytes.size() - begin >= sizeof header;) {
      std::memcpy(&header, bytes.data() + begin, sizeof header);
      const std::size_t left = bytes.size() - begin - sizeof header;
      if (header.recordBytes > left || header.groups > (left - header.recordBytes) / 8)
        return;
      const std::size_t records = begin + sizeof header, table = records + header.recordBytes;
      std::vector<std::uint64_t> groups(header.groups + 1, header.recordBytes);
      std::memcpy(groups.data(), bytes.data() + table, header.groups * 8);
      for (std::size_t i = 0; i < header.groups; ++i)
        if (groups[i] <= groups[i + 1] && groups[i + 1] <= header.recordBytes)
          forgeGroup(bytes, records + groups[i], records + groups[i + 1]);
      header.sumOfTable =
          checkSum({reinterpret_cast<const char *>(groups.data()), groups.size() * 8});
      header.sum = 0;
      header.sum = checkSum({reinterpret_cast<const char *>(&header), sizeof header});
      std::memcpy(bytes.data() + begin, &header, sizeof header);
      begin = table + header.groups * 8;
    }
  }

  static void forgeGroup(std::string &bytes, std::size_t begin, std::size_t end) {
    std::string path;
    while (begin < end) {
      std::string_view rest(bytes.data() + begin, end - begin);
      const std::size_t size = rest.size();
      const auto record = FolderRecord::take(rest, path);
      if (!record)
        return;
      std::string packed;
      FolderRecord::pack(packed, path, record->facts(), record->names());
      // The sum comes first.
      packed.copy(bytes.data() + begin, sizeof(std::uint64_t));
      begin += size - rest.size();
    }
  }

  static std::string file() { return IndexPlace::current()->file(); }

  Paths find() {
    const auto query = NSMetadataQuery::create();
    query->setPredicate(NSPredicate::predicateWithFormat("kMDItemFSName like[c] '*.jpg'"));
    query->setSearchScopes(NSArray::create({Ref<const NSObject>(NSString::create(tree_.path()))}));
    if (query->startQuery() != 1)
      std::abort();
    // For the query, and for its last writes.
    waitForThreads();
    Paths paths;
    for (std::size_t i = 0; i < query->resultCount(); ++i) {
      const auto path = query->resultAtIndex(i)->valueForAttribute("kMDItemPath");
      paths.emplace_back(dynamic_cast<const NSString &>(*path).view());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
  }

  TemporaryTree cache_, tree_;
  /// Folders that seem old, so that the index trusts its records.
  const SystemCallsGuard calls_{{.statusAt = statusAnHourAgo}};
  Paths expected_;
  std::string good_;
};

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static Fixture fixture;
  if (size > 4096)
    return 0;
  fixture.test({reinterpret_cast<const char *>(data), size});
  return 0;
}
