#pragma once

#include "readers/documents/CharacterMap.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace searchsystem {

/// The character maps that the system has, for documents in Chinese, Japanese and Korean: they
/// stand in files of the distribution (poppler-data), which may be missing. A sealed process opens
/// nothing, so that they are opened beforehand and read when a document asks.
///
/// Ownership: keeps its descriptors open. Threads: one at a time.
class CharacterMapFiles final : public CharacterMaps {
public:
  ~CharacterMapFiles() override;

  /// Opens what there is, as far as the process may have descriptors.
  void open();

  [[nodiscard]] std::string read(std::string_view name) const override;

private:
  struct File {
    int descriptor;
    std::size_t size;
  };

  void openMap(const std::string &path, const char *name, rlim_t most);

  std::map<std::string, File, std::less<>> files_;
};

} // namespace searchsystem
