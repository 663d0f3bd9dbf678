#pragma once

#include <optional>
#include <string_view>

#include "ztportal/platform/plist/PropertyList.h"

namespace zt {

enum class PropertyListForm { Xml, Binary };

/// What `parsePropertyList` in PropertyList.h gives for `data`, which has been found to be of the
/// form and to do no harm.
std::optional<PropertyListStrings> readPropertyList(std::string_view data, PropertyListForm form);

}  // namespace zt
