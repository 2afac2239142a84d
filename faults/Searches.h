#pragma once

#include "faults/Host.h"
#include "testing/TemporaryTree.h"

#include <memory>

#include <string>
#include <vector>

namespace searchsystem {

/// A small tree with every kind of file that a search judges in its own way.
///
///     1beach.jpg 2Beach.pdf 3other.jpg in/4beach.tif in/5other.pdf in/deep/6beach.pct
///     in/deep/link beach.jpg (to 1beach.jpg) shelf.doc/7beach.jpg in/beach.txt
///
/// The files 1, 3 and 4 are photographs with the word "beach", shot in 2010; 2 and 5 have it in
/// their text. They were modified in the first seconds of 2001, each one second after the one
/// before.
void makeSmallTree(TemporaryTree &tree);

/// Adds in/7titled.png and in/8packed.pdf, in which only a deep search finds "beach", and
/// in/9broken.pdf, which nothing can read, no more than the empty shelf.doc/7beach.jpg.
void addDeepFiles(TemporaryTree &tree);

/// One way through the library.
struct Way {
  const char *name;
  Wanted wanted;
  bool usesIndex, isList;
  /// The paths found in the small tree with its deep files, relative to it, in alphabetical
  /// order.
  std::string found;
  /// A deep search, and the paths of what it cannot read.
  bool isDeep = false;
  std::string unread = {};
};

/// All of them.
const std::vector<Way> &allWays();

/// The request for a way on a small tree.
std::unique_ptr<Record> makeRecord(const Way &way, const std::string &tree,
                                   SearchResultCallback callback);

} // namespace searchsystem
