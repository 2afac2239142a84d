// Damages the file of the index and runs a query, which must still find every file.
//
// An input is a list of changes to a good file: the place (two bytes, counted in fours), a length,
// and that many bytes. A length of 255 cuts the file off there.

#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/NSMetadataQuery.h"
#include "testing/StatusAnHourAgo.h"
#include "testing/SystemCallsGuard.h"
#include "testing/TemporaryTree.h"
#include "testing/WaitForThreads.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
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
    // Long names, so that the index has several rows of records.
    for (int i = 0; i < 240; ++i)
      tree_.file("folder " + std::to_string(i % 5) + "/in " + std::to_string(i % 40) + "/" +
                 std::string(200, 'n') + std::to_string(i) + ".jpg");
    expected_ = find();
    std::ifstream stream(file());
    good_.assign(std::istreambuf_iterator<char>(stream), {});
    if (expected_.size() != 240 || good_.size() < 65536)
      std::abort();
  }

  void test(std::string_view changes) {
    std::string bytes = good_;
    while (changes.size() > 3) {
      const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(changes[i]); };
      const std::size_t place = std::min<std::size_t>((byte(0) << 8 | byte(1)) * 4, bytes.size());
      const std::size_t length = byte(2);
      changes.remove_prefix(3);
      const std::string_view put = changes.substr(0, length);
      changes.remove_prefix(put.size());
      if (length == 255)
        bytes.resize(place);
      else
        bytes.replace(place, std::min(put.size(), bytes.size() - place), put);
    }
    IndexPlace::current()->removeFiles();
    std::ofstream(file()) << bytes;
    chmod(file().c_str(), 0600);
    if (find() != expected_)
      std::abort();
  }

private:
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
