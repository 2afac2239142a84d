#pragma once

#include "hosts/ssfind/MatchDetails.h"
#include "hosts/ssfind/Options.h"

#include <optional>
#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Writes matches in the requested format.
class ResultPrinter {
public:
  /// With `isForTerminal` names are escaped; otherwise their bytes are written as they are.
  ResultPrinter(const OutputOptions &options, bool hasColors, bool isForTerminal)
      : format_(options.format), template_(options.formatTemplate), separator_(options.separator),
        hasShootingDate_(options.hasShootingDate),
        hasCamera_(options.hasShootingDate && options.isDeep), hasColors_(hasColors),
        isForTerminal_(isForTerminal) {}

  /// Whether print() needs these details.
  [[nodiscard]] bool needsStatus() const {
    return template_ ? template_->needsStatus() : format_ != Format::Path;
  }
  [[nodiscard]] bool needsPhotograph() const {
    return template_ ? template_->needsPhotograph() : hasShootingDate_ && format_ != Format::Path;
  }

  void print(std::string &out, std::string_view path, const MatchDetails &details) const;

  /// Writes a file that could not be read, with the reason.
  void printUnread(std::string &out, std::string_view path, std::string_view reason) const;

private:
  void appendJson(std::string &out, std::string_view path, const MatchDetails &details) const;
  void appendColumns(std::string &out, const MatchDetails &details) const;
  void appendPath(std::string &out, std::string_view path) const;
  void appendName(std::string &out, std::string_view name) const;

  const Format format_;
  const std::optional<FormatTemplate> template_;
  const char separator_;
  const bool hasShootingDate_;
  const bool hasCamera_;
  const bool hasColors_;
  const bool isForTerminal_;
};

} // namespace searchsystem::ssfind
