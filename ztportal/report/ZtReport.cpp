#include "ztportal/report/ZtReport.h"

#include <string_view>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/report/CustomerTable.h"
#include "ztportal/system/ZtHost.h"

namespace {

ZtString hostVersion() {
  std::string version;
  zt::appendText(version, ZtHost::bundleInfo("CFBundleShortVersionString").printed(), ".",
                 ZtHost::bundleInfo("CFBundleVersion").printed());
  return version;
}

/// Gives every fact to `add`, then forgets them: what was reported once is not reported again.
template <class Add>
void moveFacts(const std::shared_ptr<ZtReport::Facts>& facts, Add add) {
  if (facts == nullptr) return;
  for (const auto& [name, value] : *facts) add(name, value);
  facts->clear();
}

}  // namespace

std::shared_ptr<ZtReport> ZtReport::initWithCustomerAndGuid(const ZtString& customer,
                                                            const ZtString& guid) {
  const zt::Customer* const row = zt::customerWithId(customer);
  if (row == nullptr) return nullptr;
  return std::make_shared<ZtReport>(Creation{}, guid.empty() ? row->defaultApplicationId : guid,
                                    row->id, row->url);
}

ZtReport::ZtReport(Creation /*creation*/, ZtString appId, ZtString customerId, ZtString url)
    : _url(std::move(url)), _customerId(std::move(customerId)), _appId(std::move(appId)) {
  _data = ZtPortalData::initWithValues(_url, false, _customerId, _appId, hostVersion());
  _data->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
}

ZtReport::~ZtReport() = default;

void ZtReport::startReport(const ZtString& startPoint) {
  if (_poolExecution == nullptr && _data != nullptr) {
    _poolExecution = _data->addPoolExecution(ZtDate::now());
  }
  if (_poolExecution == nullptr) return;
  _poolExecution->setStartPoint(startPoint);
  _poolExecution->setStartTime(ZtDate::now());
}

void ZtReport::stopReport(const ZtString& endPoint) {
  if (_poolExecution == nullptr) return;
  _poolExecution->setEndPoint(endPoint);
  _poolExecution->setEndTime(ZtDate::now());
}

bool ZtReport::sendReport(bool send) try {
  moveFacts(_installDataString, [this](const std::string& name, const ZtString& value) {
    if (_poolExecution != nullptr) _poolExecution->addString(name, value);
  });
  moveFacts(_installDataBOOL, [this](const std::string& name, const ZtString& value) {
    if (_poolExecution == nullptr) return;
    _poolExecution->addBOOL(name, static_cast<ZtBOOL>(zt::equalsAnyCase(value.view(), "yes")));
  });
  if (send) return _data != nullptr && _data->reportToServer();
  if (_data != nullptr) _data->saveReport();
  return true;
} catch (const ZtException&) {
  return false;
}

bool ZtReport::sendSavedReports() { return _data != nullptr && _data->sendSavedReports(); }
