#include "readers/documents/OptionalContent.h"

#include <algorithm>
#include <string_view>

namespace searchsystem {

namespace {

constexpr int deepestExpression = 20;
constexpr int mostSteps = 1000;
constexpr std::size_t mostGroups = 100'000;

} // namespace

OptionalContent::OptionalContent(Document &document) : document_(document) {
  const Dictionary properties = document_.get(document_.catalog(), "OCProperties").dictionary();
  const Dictionary configuration = document_.get(properties, "D").dictionary();
  isShownByDefault_ = document_.get(configuration, "BaseState").name() != "OFF";
  const Object exceptions = document_.get(configuration, isShownByDefault_ ? "OFF" : "ON");
  for (const Object &group : exceptions.array())
    if (group.isReference() && exceptions_.size() < mostGroups)
      exceptions_.insert(group.reference().number);
}

bool OptionalContent::isHidden(const Object &membership) {
  if (membership.isNull() || (isShownByDefault_ && exceptions_.empty()))
    return false;
  const Reference reference = membership.reference();
  if (const auto known = hidden_.find(reference.number);
      membership.isReference() && known != hidden_.end())
    return known->second;
  const bool hidden = computeIsHidden(document_.resolve(membership).dictionary(), reference);
  if (membership.isReference() && hidden_.size() < mostGroups)
    hidden_.emplace(reference.number, hidden);
  return hidden;
}

bool OptionalContent::computeIsHidden(const Dictionary &dictionary, Reference reference) {
  const std::string_view type = document_.get(dictionary, "Type").name();
  if (type == "OCG")
    return !isGroupShown(Object::ofReference(reference));
  if (type != "OCMD")
    return false;
  int steps = 0;
  const Object expression = document_.get(dictionary, "VE");
  return expression.isArray() ? !doesExpressionShow(expression, 0, steps)
                              : !doesPolicyShow(dictionary);
}

bool OptionalContent::isGroupShown(const Object &group) const {
  return isShownByDefault_ != exceptions_.contains(group.reference().number);
}

bool OptionalContent::doesPolicyShow(const Dictionary &membership) {
  const Object &entry = membership.get("OCGs");
  const Object groups = document_.resolve(entry);
  const std::string_view policy = document_.get(membership, "P").name();
  const auto isShown = [this](const Object &group) { return isGroupShown(group); };
  if (!groups.isArray())
    return !groups.isDictionary() || isGroupShown(entry) == !policy.ends_with("Off");
  const auto items = groups.array();
  if (items.empty())
    return true;
  return policy == "AllOn"    ? std::all_of(items.begin(), items.end(), isShown)
         : policy == "AnyOff" ? !std::all_of(items.begin(), items.end(), isShown)
         : policy == "AllOff" ? std::none_of(items.begin(), items.end(), isShown)
                              : std::any_of(items.begin(), items.end(), isShown);
}

bool OptionalContent::doesExpressionShow(const Object &expression, int depth, int &steps) {
  const Object resolved = document_.resolve(expression);
  if (!resolved.isArray())
    return isGroupShown(expression);
  const auto items = resolved.array();
  if (items.empty() || depth > deepestExpression || ++steps > mostSteps)
    return true;
  const std::string_view operation = document_.resolve(items[0]).name();
  const auto shows = [&](const Object &operand) {
    return doesExpressionShow(operand, depth + 1, steps);
  };
  const auto operands = items.subspan(1);
  return operation == "And"  ? std::all_of(operands.begin(), operands.end(), shows)
         : operation == "Or" ? std::any_of(operands.begin(), operands.end(), shows)
                             : operands.empty() || !shows(operands[0]);
}

} // namespace searchsystem
