#include "ztportal/platform/linux/modules/PlistModule.h"

#include "ztportal/base/ZtExport.h"

extern "C" ZT_EXPORT const zt::PlistModule ztportalModuleTable;
const zt::PlistModule ztportalModuleTable{zt::readPropertyList};
