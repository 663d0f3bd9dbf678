#include "ztportal/platform/linux/modules/XmlModule.h"

#include "ztportal/base/ZtExport.h"

extern "C" ZT_EXPORT const zt::XmlModule ztportalModuleTable;
const zt::XmlModule ztportalModuleTable{zt::parseXmlTree,    zt::releaseXmlTree,   zt::xmlTreeText,
                                        zt::xmlTreeRoot,     zt::xmlNodeName,      zt::xmlNodeText,
                                        zt::xmlNodeChildren, zt::xmlNodeAttributes};
