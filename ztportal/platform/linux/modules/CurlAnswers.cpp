#include "ztportal/platform/CurlHttpTransport.h"
#include "ztportal/platform/linux/modules/CurlModule.h"
#include "ztportal/platform/linux/modules/Module.h"

namespace zt {

HttpAnswer CurlHttpTransport::exchange(const HttpRequest& request) noexcept {
  const auto* curl = module<CurlModule>();
  return curl == nullptr ? HttpAnswer() : curl->exchange(request);
}

}  // namespace zt
