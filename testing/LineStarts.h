#pragma once

#include "pdf_reader/LineUtility.h"

#include <string>
#include <vector>

namespace searchsystem {

enum class LineOrder { Forward, Backward };

/// Where the lines of a text start, in the order in which a walk over them meets them.
inline std::vector<unsigned long> lineStarts(std::string text, LineOrder order) {
  auto *const bytes = reinterpret_cast<unsigned char *>(text.data());
  char **const lines = (order == LineOrder::Forward ? FindLine : RevFindLine)(bytes, text.size());
  std::vector<unsigned long> starts;
  for (unsigned long start = 0; FindNextLine(lines, &start) == 1;)
    starts.push_back(start);
  FindLineClose(lines);
  return starts;
}

} // namespace searchsystem
