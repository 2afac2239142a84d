// Gives the host any answer of a reader process about a document, and about photographs, and
// compares any text.
//
// The first byte says whether case counts; the second is the length of the keyword, which follows;
// then come records, each behind its length in one byte.

#include "platform/content/PhotographRecords.h"
#include "platform/content/ReaderAnswer.h"
#include "platform/content/TextComparison.h"
#include "readers/ReaderProtocol.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace searchsystem;

constexpr std::uint64_t longestText = 600;

/// Whether a text that comes at once holds the keyword.
bool holds(std::string_view text, std::string_view keyword, bool isDistinct) {
  TextComparison comparison(keyword, isDistinct);
  return comparison.take(text);
}

void require(bool condition) {
  if (!condition)
    std::abort();
}

/// What is to be said of a record, when `text` came before it.
void check(std::string_view record, const std::string &text, bool isHeld,
           const std::optional<ContentAnswer> &answer) {
  const auto is = [&](bool holds, UnreadReason reason) {
    return answer && answer->holds == holds && answer->reason == reason;
  };
  const char kind = record.empty() ? '\0' : record.front();
  if (kind == static_cast<char>(ReaderRecord::alive))
    require(!answer);
  else if (kind == static_cast<char>(ReaderRecord::end) && record.size() == 2 &&
           static_cast<unsigned char>(record[1]) <= static_cast<int>(UnreadReason::noReader))
    require(is(false, static_cast<UnreadReason>(record[1])));
  else if (kind != static_cast<char>(ReaderRecord::text) || record.size() == 1)
    require(is(false, UnreadReason::readerCrashed));
  else if (text.size() > longestText)
    require(is(false, UnreadReason::tooLarge));
  else
    require(isHeld ? is(true, UnreadReason::none) : !answer);
}

std::string_view cut(std::string_view &rest) {
  if (rest.empty())
    return {};
  const std::size_t length = static_cast<unsigned char>(rest.front());
  const std::string_view part = rest.substr(1, length);
  rest.remove_prefix(1 + part.size());
  return part;
}

/// Whatever comes is taken or refused, and an answer that is whole has a reason that there is.
void checkPhotographs(std::string_view rest, std::string_view keyword, bool isDistinct) {
  TextComparison comparison(keyword, isDistinct);
  PhotographRecords records(&comparison, longestText);
  while (records.isLeft() || !rest.empty()) {
    const auto state = records.isLeft() ? records.takeRest() : records.take(cut(rest));
    require(records.content().reason <= UnreadReason::noReader);
    require(!records.content().holds || !comparison.isEmpty());
    if (state == PhotographRecords::State::WorkerEnded) {
      require(records.content().reason != UnreadReason::none);
      return;
    }
    if (state == PhotographRecords::State::Complete)
      records.restart();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char *>(data), size);
  if (rest.empty())
    return 0;
  const bool isDistinct = (rest.front() & 1) != 0;
  rest.remove_prefix(1);
  const std::string_view keyword = cut(rest);
  checkPhotographs(rest, keyword, isDistinct);
  TextComparison comparison(keyword, isDistinct);
  ReaderAnswer records(comparison, longestText);
  std::string text;
  while (!rest.empty()) {
    const std::string_view record = cut(rest);
    const std::optional<ContentAnswer> answer = records.take(record);
    if (!record.empty() && record.front() == static_cast<char>(ReaderRecord::text))
      text.append(record.substr(1));
    check(record, text, holds(text, keyword, isDistinct), answer);
    if (answer)
      break;
  }
  return 0;
}
