#include "hosts/ssfind/CommandTemplate.h"

#include <algorithm>

namespace searchsystem::ssfind {

std::variant<CommandTemplate, std::string>
CommandTemplate::parse(const std::vector<std::string> &arguments, bool isBatch) {
  if (arguments.empty() || arguments.front().empty())
    return "needs a command";
  std::vector<PathTemplate> templates(arguments.begin(), arguments.end());
  const auto count =
      std::count_if(templates.begin(), templates.end(),
                    [](const PathTemplate &argument) { return argument.hasPlaceholder(); });
  if (isBatch && (count > 1 || templates.front().hasPlaceholder()))
    return "has one placeholder, behind the program";
  if (count == 0)
    templates.emplace_back("{}");
  return CommandTemplate(std::move(templates), isBatch);
}

std::vector<std::string>
CommandTemplate::argumentsFor(const std::vector<std::string> &paths) const {
  std::vector<std::string> arguments;
  for (const PathTemplate &argument : arguments_) {
    if (!argument.hasPlaceholder())
      arguments.push_back(argument.textFor(""));
    else
      std::transform(paths.begin(), paths.end(), std::back_inserter(arguments),
                     [&](const std::string &path) { return argument.textFor(path); });
  }
  return arguments;
}

} // namespace searchsystem::ssfind
