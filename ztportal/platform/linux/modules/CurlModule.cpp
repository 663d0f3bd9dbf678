#include "ztportal/platform/linux/modules/CurlModule.h"

#include "ztportal/base/ZtExport.h"
#include "ztportal/platform/CurlHttpTransport.h"

namespace {

zt::HttpAnswer exchange(const zt::HttpRequest& request) {
  return zt::CurlHttpTransport().exchange(request);
}

}  // namespace

extern "C" ZT_EXPORT const zt::CurlModule ztportalModuleTable;
const zt::CurlModule ztportalModuleTable{exchange};
