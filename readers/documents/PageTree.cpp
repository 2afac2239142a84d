#include "readers/documents/PageTree.h"

namespace searchsystem {

namespace {

// Pages that stand outside of a tree name their parent.
constexpr int mostParents = 16;

} // namespace

void PageTree::forEachPage(const Visit &visit) {
  if (!walk(visit) || hasPages_)
    return;
  store_.repair();
  met_.clear();
  if (walk(visit) && !hasPages_)
    static_cast<void>(visitLoosePages(visit));
}

bool PageTree::walk(const Visit &visit) {
  std::vector<Node> open;
  Object root = store_.catalog().get("Pages");
  open.push_back({std::span(&root, 1), 0, {}});
  while (!open.empty()) {
    if (open.back().next == open.back().kids.size()) {
      open.pop_back();
      continue;
    }
    const Object kid = open.back().kids[open.back().next++];
    if (kid.isReference() && !met_.insert(kid.reference().number).second)
      continue;
    const Object node = store_.resolve(kid);
    if (!node.isDictionary())
      continue;
    const Page page = inherit(open.back().inherited, node.dictionary());
    const Object kids = store_.get(page.dictionary, "Kids");
    if (kids.isArray() && !store_.get(page.dictionary, "Type").isName("Page")) {
      open.push_back({kids.array(), 0, page});
      continue;
    }
    hasPages_ = true;
    if (!visit(page))
      return false;
  }
  return true;
}

bool PageTree::visitLoosePages(const Visit &visit) {
  for (std::uint32_t number = 0; number < store_.end(); ++number) {
    const Dictionary dictionary = store_.resolve(Object::ofReference({number, 0})).dictionary();
    if (!store_.get(dictionary, "Type").isName("Page"))
      continue;
    std::vector<Dictionary> line{dictionary};
    for (int i = 0; i < mostParents && !line.back().isEmpty(); ++i)
      line.push_back(store_.get(line.back(), "Parent").dictionary());
    Page page;
    for (auto member = line.rbegin(); member != line.rend(); ++member)
      page = inherit(page, *member);
    if (!visit(page))
      return false;
  }
  return true;
}

Page PageTree::inherit(const Page &inherited, const Dictionary &dictionary) {
  Page page = inherited;
  page.dictionary = dictionary;
  if (const Object resources = store_.get(dictionary, "Resources"); resources.isDictionary())
    page.resources = resources.dictionary();
  if (const Object box = store_.get(dictionary, "MediaBox"); box.isArray())
    page.mediaBox = box;
  if (const Object rotation = store_.get(dictionary, "Rotate"); rotation.isNumber())
    page.rotation = static_cast<int>((rotation.integer() % 360 + 360) % 360) / 90 * 90;
  return page;
}

} // namespace searchsystem
