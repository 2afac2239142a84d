#include "readers/documents/NamedMaps.h"

namespace searchsystem {

std::shared_ptr<const CharacterMap> NamedMaps::find(std::string_view name) {
  if (const auto known = maps_.find(name); known != maps_.end())
    return known->second;
  const bool isVertical = name == "Identity-V";
  const bool isIdentity = isVertical || name == "Identity-H";
  const std::string program = isIdentity ? std::string() : files_.read(name);
  // What is not there is not kept, as a document may name much.
  if (!isIdentity && program.empty())
    return nullptr;
  auto &map = maps_.emplace(name, nullptr).first->second;
  map = isIdentity ? CharacterMap::identity(isVertical) : CharacterMap::parse(program, *this);
  return map;
}

} // namespace searchsystem
