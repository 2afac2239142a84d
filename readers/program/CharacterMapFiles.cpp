#include "readers/program/CharacterMapFiles.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

struct Collection {
  const char *folder;
  std::vector<const char *> maps;
};

/// The maps that documents may name (ISO 32000-2, 9.7.5.2), and for each collection the one that
/// leads to text. They build on each other only. (There are more in the folders, but each open file
/// costs every worker.)
const Collection collections[] = {
    {"/usr/share/poppler/cMap/Adobe-GB1",
     {"GB-EUC-H", "GB-EUC-V", "GBpc-EUC-H", "GBpc-EUC-V", "GBK-EUC-H", "GBK-EUC-V", "GBKp-EUC-H",
      "GBKp-EUC-V", "GBK2K-H", "GBK2K-V", "UniGB-UCS2-H", "UniGB-UCS2-V", "UniGB-UTF16-H",
      "UniGB-UTF16-V", "Adobe-GB1-UCS2"}},
    {"/usr/share/poppler/cMap/Adobe-CNS1",
     {"B5pc-H", "B5pc-V", "HKscs-B5-H", "HKscs-B5-V", "ETen-B5-H", "ETen-B5-V", "ETenms-B5-H",
      "ETenms-B5-V", "CNS-EUC-H", "CNS-EUC-V", "UniCNS-UCS2-H", "UniCNS-UCS2-V", "UniCNS-UTF16-H",
      "UniCNS-UTF16-V", "Adobe-CNS1-UCS2"}},
    {"/usr/share/poppler/cMap/Adobe-Japan1",
     {"83pv-RKSJ-H",
      "90ms-RKSJ-H",
      "90ms-RKSJ-V",
      "90msp-RKSJ-H",
      "90msp-RKSJ-V",
      "90pv-RKSJ-H",
      "Add-RKSJ-H",
      "Add-RKSJ-V",
      "EUC-H",
      "EUC-V",
      "Ext-RKSJ-H",
      "Ext-RKSJ-V",
      "H",
      "V",
      "UniJIS-UCS2-H",
      "UniJIS-UCS2-V",
      "UniJIS-UCS2-HW-H",
      "UniJIS-UCS2-HW-V",
      "UniJIS-UTF16-H",
      "UniJIS-UTF16-V",
      "Adobe-Japan1-UCS2"}},
    {"/usr/share/poppler/cMap/Adobe-Korea1",
     {"KSC-EUC-H", "KSC-EUC-V", "KSCms-UHC-H", "KSCms-UHC-V", "KSCms-UHC-HW-H", "KSCms-UHC-HW-V",
      "KSCpc-EUC-H", "UniKS-UCS2-H", "UniKS-UCS2-V", "UniKS-UTF16-H", "UniKS-UTF16-V",
      "Adobe-Korea1-UCS2"}},
};

constexpr off_t largestFile = 4 << 20;

/// So many descriptors are left for requests and workers where few are allowed: without a map some
/// documents lack text, without a descriptor all do.
constexpr rlim_t otherDescriptors = 32;

/// Maps get lower numbers than this.
rlim_t mostDescriptors() noexcept {
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) != 0)
    return 0;
  return files.rlim_cur - std::min(files.rlim_cur, otherDescriptors);
}

} // namespace

CharacterMapFiles::~CharacterMapFiles() {
  for (const auto &[name, file] : files_)
    close(file.descriptor);
}

void CharacterMapFiles::open() {
  const rlim_t most = mostDescriptors();
  for (const Collection &collection : collections)
    for (const char *const map : collection.maps)
      openMap(std::string(collection.folder) + '/' + map, map, most);
}

void CharacterMapFiles::openMap(const std::string &path, const char *name, rlim_t most) {
  const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (file < 0)
    return;
  struct stat status {};
  if (static_cast<rlim_t>(file) < most && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
      status.st_size <= largestFile)
    files_.try_emplace(name, File{file, static_cast<std::size_t>(status.st_size)});
  else
    close(file);
}

std::string CharacterMapFiles::read(std::string_view name) const {
  const auto found = files_.find(name);
  if (found == files_.end())
    return {};
  std::string bytes(found->second.size, '\0');
  const ssize_t size = pread(found->second.descriptor, bytes.data(), bytes.size(), 0);
  bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return bytes;
}

} // namespace searchsystem
