#include "ztportal/platform/linux/modules/Module.h"
#include "ztportal/platform/linux/modules/PlistModule.h"

namespace zt {

std::optional<PropertyListStrings> readPropertyList(std::string_view data, PropertyListForm form) {
  const auto* plist = module<PlistModule>();
  return plist == nullptr ? std::nullopt : plist->read(data, form);
}

}  // namespace zt
