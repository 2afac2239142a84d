#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace searchsystem::ssfind {

/// The files whose content could not be read, each once, in the order of their paths.
class UnreadFiles {
public:
  struct File {
    /// The path as it is printed.
    std::string shown;
    /// As in `Content.h`.
    std::int32_t reason = 0;
  };

  void add(std::string_view path, std::string shown, std::int32_t reason) {
    files_.try_emplace(std::string(path), File{std::move(shown), reason});
  }

  [[nodiscard]] bool isEmpty() const noexcept { return files_.empty(); }

  [[nodiscard]] const std::map<std::string, File, std::less<>> &byPath() const noexcept {
    return files_;
  }

  /// How many there are for which reason, in one line: "3 files could not be read: ...".
  [[nodiscard]] std::string summary() const;

  /// A reason in words.
  [[nodiscard]] static std::string_view textOf(std::int32_t reason) noexcept;

private:
  std::map<std::string, File, std::less<>> files_;
};

} // namespace searchsystem::ssfind
