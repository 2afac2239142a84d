#include "platform/metadata/NSMetadataItem.h"

Ref<const NSMetadataItem> NSMetadataItem::create(Ref<const NSString> path) {
  return Ref<const NSMetadataItem>::adopt(new NSMetadataItem(std::move(path)));
}

Ref<const NSObject> NSMetadataItem::valueForAttribute(std::string_view name) const noexcept {
  if (name != "kMDItemPath")
    return nullptr;
  return path_;
}
