// Reads PDF documents with the document reader, all in this process: prints the text of each, or
// the paths of those that hold a keyword, or nothing, to be timed.

#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/NSString.h"
#include "readers/ByteSource.h"
#include "readers/documents/DocumentText.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace searchsystem;

namespace {

/// The maps of the package poppler-data, a folder for each collection of characters.
class InstalledMaps final : public CharacterMaps {
public:
  InstalledMaps() {
    std::error_code failed;
    for (const auto &folder :
         std::filesystem::directory_iterator("/usr/share/poppler/cMap", failed))
      folders_.push_back(folder.path());
  }
  [[nodiscard]] std::string read(std::string_view name) const override {
    if (name.find('/') == std::string_view::npos)
      for (const std::filesystem::path &folder : folders_)
        if (std::ifstream file(folder / name, std::ios::binary); file)
          return {std::istreambuf_iterator<char>(file), {}};
    return {};
  }

private:
  std::vector<std::filesystem::path> folders_;
};

class StringSink final : public TextSink {
public:
  bool take(std::string_view utf8) override {
    text += utf8;
    return true;
  }
  std::string text;
};

UnreadReason readText(const std::string &path, const CharacterMaps &maps, TextSink &sink) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    return UnreadReason::cannotBeOpened;
  FileSource source(descriptor);
  const UnreadReason reason = readDocumentText(source, maps, sink);
  close(descriptor);
  return reason;
}

void readAll(const std::vector<std::string> &paths, const std::string &keyword, bool isPrinted) {
  const InstalledMaps maps;
  const auto wanted = NSString::create(keyword);
  for (const std::string &path : paths) {
    StringSink sink;
    const UnreadReason reason = readText(path, maps, sink);
    if (isPrinted)
      std::cout << static_cast<int>(reason) << ' ' << sink.text.size() << '\n' << sink.text;
    else if (!keyword.empty() && CFStringFind(NSString::create(sink.text).get(), wanted.get(),
                                              kCFCompareCaseInsensitive)
                                         .location != kCFNotFound)
      std::cout << path << '\n';
  }
}

} // namespace

int main(int argc, char **argv) {
  std::vector<std::string> paths;
  std::string keyword;
  bool isPrinted = false;
  CLI::App app{"Reads the text of PDF documents, whose paths come line by line."};
  app.add_option("DOCUMENT", paths, "the documents; without any their paths are read from input");
  app.add_option("--keyword", keyword, "print the paths of documents that hold it in any case");
  app.add_flag("--print", isPrinted, "print a line with reason and size, then the text");
  CLI11_PARSE(app, argc, argv);
  if (paths.empty())
    for (std::string line; std::getline(std::cin, line);)
      paths.push_back(line);

  try {
    readAll(paths, keyword, isPrinted);
  } catch (const std::exception &error) {
    std::cerr << "document_texts: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
