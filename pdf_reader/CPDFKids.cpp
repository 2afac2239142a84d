#include "pdf_reader/CPDFKids.h"

#include "pdf_reader/ReferenceValues.h"
#include "streams/MemoryShortage.h"

#include <new>

int CPDFKids::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  try {
    if (isPassed()) {
      tokens->Reset();
      *goOn = 0;
      return 1;
    }
    ReferenceValues values(*tokens);
    const int result = walkObject(tokens, goOn, [&](unsigned long i) -> unsigned long {
      if (tokens->token(i) != "/Contents")
        return 1;
      if (i + 1 == tokens->GetCount())
        return 0;
      const unsigned long used = values.read(i + 1, contents_);
      return used == 0 ? failed : used + 1;
    });
    isClean_ = tokens->GetCount() == 0;
    return result;
  } catch (const std::bad_alloc &) {
    MemoryShortage::note();
    return 0;
  }
}

/// Whether all that follows was read by an earlier parse.
bool CPDFKids::isPassed() {
  if (lines_ == nullptr || reader_ == nullptr)
    return false;
  if (isClean_ && lines_->pass(reader_->groupPosition(), isInside_))
    return true;
  LooseEnds &looseEnds = lines_->looseEnds();
  if (reader_->isJoined())
    looseEnds.note(reader_->joinedFrom(), reader_->joinedTo());
  if (reader_->tokensEnd() < reader_->lineEnd())
    looseEnds.note(reader_->tokensEnd() + 1, reader_->lineEnd());
  return false;
}

void CPDFKids::FollowLines(PassedLines *lines) noexcept {
  lines_ = lines;
  looseEnds_ = lines == nullptr ? nullptr : &lines->looseEnds();
}

void CPDFKids::ReleaseParse() {
  CPDFSection::ReleaseParse();
  contents_.Release();
  isClean_ = true;
}
