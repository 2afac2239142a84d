#pragma once

#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/PassedLines.h"

/// A page (PDF standard, 7.7.3.3): the references of its content streams.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFKids : public CPDFSection {
public:
  CPDFKids() noexcept = default;

  int ParseLine(CParamArray *tokens, char *goOn, void *context) override;
  void ReleaseParse() override;

  [[nodiscard]] int GeContentsCount() const noexcept { return contents_.GetCount(); }

  /// Valid until the next parse; null when there is none at `index`.
  [[nodiscard]] const tagOBJECTRECORD *GetContentsInfo(int index) const noexcept {
    return contents_.GetObject(index);
  }

  /// Has the parses that follow end at lines that were passed before, and note those that were not.
  /// The lines have to live as long; null ends that.
  void FollowLines(PassedLines *lines) noexcept;

private:
  bool isPassed();

  CObjectList contents_;
  PassedLines *lines_ = nullptr;
  /// Whether no tokens wait from the lines before.
  bool isClean_ = true;
};
