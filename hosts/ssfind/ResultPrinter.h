#pragma once

#include "hosts/ssfind/EntryStatus.h"
#include "hosts/ssfind/Options.h"

#include <optional>
#include <string>
#include <string_view>

namespace ssfind {

/// Writes one match after another in the format that was asked for.
class ResultPrinter {
public:
  /// With `isForTerminal` names are made visible; otherwise their bytes are written as they are.
  ResultPrinter(Format format, char separator, bool hasColors, bool isForTerminal)
      : format_(format), separator_(separator), hasColors_(hasColors),
        isForTerminal_(isForTerminal) {}

  /// Whether print() wants to know the status.
  [[nodiscard]] bool needsStatus() const noexcept { return format_ != Format::Path; }

  void print(std::string &out, std::string_view path,
             const std::optional<EntryStatus> &status) const;

private:
  void appendPath(std::string &out, std::string_view path) const;
  void appendName(std::string &out, std::string_view name) const;

  const Format format_;
  const char separator_;
  const bool hasColors_;
  const bool isForTerminal_;
};

} // namespace ssfind
