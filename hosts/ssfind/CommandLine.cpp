#include "hosts/ssfind/CommandLine.h"

#include "hosts/ssfind/MarkedText.h"

#include <algorithm>

namespace searchsystem::ssfind {

namespace {

bool hasLetters(std::string_view argument) {
  return argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
}

bool isOption(std::string_view argument, std::string_view name, char letter) {
  if (hasLetters(argument))
    return letter != '\0' && argument.find(letter) != argument.npos;
  return argument.starts_with("--") && argument.substr(2, argument.find('=') - 2) == name;
}

} // namespace

CommandLine::CommandLine(int argc, const char *const *argv)
    : arguments_(argv + std::min(argc, 1), argv + argc) {}

std::vector<std::size_t> CommandLine::placesOf(std::string_view name, char letter) const {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < arguments_.size() && arguments_[i] != "--"; ++i)
    if (isOption(arguments_[i], name, letter))
      places.push_back(i);
  return places;
}

std::vector<std::size_t> CommandLine::placesOfUnknown(std::string_view text) const {
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    const std::string &argument = arguments_[i];
    if (argument == text || (hasLetters(argument) && argument.ends_with(text.substr(1))))
      return {i};
  }
  return {};
}

std::string CommandLine::marked(const std::vector<std::size_t> &places) const {
  constexpr std::size_t neighbours = 3;
  if (places.empty())
    return {};
  MarkedText text;
  text.add("ssfind");
  bool isLeavingOut = false;
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    const auto isNear = [&](std::size_t place) {
      return i + neighbours >= place && place + neighbours >= i;
    };
    if (std::none_of(places.begin(), places.end(), isNear)) {
      if (!isLeavingOut)
        text.add(" …");
      isLeavingOut = true;
      continue;
    }
    isLeavingOut = false;
    text.add(" ");
    if (std::find(places.begin(), places.end(), i) != places.end())
      text.addMarked(arguments_[i]);
    else
      text.add(arguments_[i]);
  }
  return text.text();
}

} // namespace searchsystem::ssfind
