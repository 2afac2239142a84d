#include "platform/metadata/FolderKey.h"
#include "platform/metadata/IndexDatabase.h"
#include "testing/TemporaryTree.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

using Model = std::map<std::string, IndexRecord>;

/// An index beside a plain map with the same content.
class IndexRowsTest : public testing::TestWithParam<unsigned> {
protected:
  IndexRowsTest() {
    IndexPlace::setCacheFolderForTesting(cache.path());
    place = IndexPlace::current();
  }
  ~IndexRowsTest() override { IndexPlace::setCacheFolderForTesting(std::nullopt); }

  std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random);
  }

  /// A folder in a tree of three levels, whose names are of several lengths.
  std::string anyKey() {
    std::string key;
    for (std::size_t level = upTo(3); level > 0; --level)
      key.append(1, '\0').append(upTo(2) + 1, static_cast<char>('a' + upTo(7)));
    return key;
  }

  IndexRecord anyRecord(std::string key) {
    const std::size_t size = upTo(9) == 0 ? upTo(100'000) : upTo(3000);
    return {std::move(key), static_cast<std::uint32_t>(upTo(99)), std::string(size, 'r')};
  }

  void change(std::size_t most) {
    Model records;
    for (std::size_t i = upTo(most); i > 0; --i) {
      const std::string key = anyKey();
      records[key] = anyRecord(key);
    }
    std::set<std::string> gone;
    for (std::size_t i = upTo(3); i > 0; --i)
      if (const std::string key = anyKey(); !key.empty())
        gone.insert(key);
    std::erase_if(gone, [&](const std::string &key) {
      return std::any_of(gone.begin(), gone.end(),
                         [&](const auto &other) { return FolderKey::isBelow(key, other); });
    });
    for (const std::string &key : gone)
      std::erase_if(model, [&](const auto &row) { return FolderKey::isInTree(row.first, key); });
    std::vector<IndexRecord> inOrder;
    for (const auto &[key, record] : records) {
      inOrder.push_back(record);
      model[key] = record;
    }
    IndexFault fault = IndexFault::None;
    const auto index = IndexDatabase::openToWrite(*place, fault);
    ASSERT_TRUE(index);
    ASSERT_EQ(index->store(inOrder, std::vector<std::string>(gone.begin(), gone.end())),
              IndexFault::None);
  }

  void compare(const std::string &tree) {
    IndexFault fault = IndexFault::None;
    const auto index = IndexDatabase::openToRead(*place, fault);
    ASSERT_TRUE(index);
    index->selectTree(tree);
    IndexDatabase::Totals expected;
    for (const auto &[key, record] : model) {
      ++expected.folders;
      expected.entries += record.entries;
      if (!FolderKey::isInTree(key, tree))
        continue;
      const auto found = index->next();
      ASSERT_TRUE(found);
      ASSERT_EQ(found->key, key);
      ASSERT_EQ(found->bytes, record.bytes);
    }
    EXPECT_FALSE(index->next());
    EXPECT_EQ(index->fault(), IndexFault::None);
    const auto totals = index->totals();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->folders, expected.folders);
    EXPECT_EQ(totals->entries, expected.entries);
  }

  TemporaryTree cache;
  std::optional<IndexPlace> place;
  std::mt19937 random{GetParam()};
  Model model;
};

TEST_P(IndexRowsTest, HoldWhatWasPutIn) {
  for (int step = 0; step < 150 && !HasFatalFailure(); ++step) {
    change(step % 10 == 0 ? 200 : 5);
    compare("");
    compare(anyKey());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, IndexRowsTest, testing::Values(1, 2));

} // namespace

} // namespace searchsystem
