// SPDX-License-Identifier: Apache-2.0
#include "ztportal/report/ZtReport.h"

#include <array>
#include <new>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/report/Customers.h"
#include "ztportal/system/ZtHost.h"

namespace {

struct Customer {
  ZtString id;
  ZtString url;  // of the configuration document
  ZtString defaultApplicationId;
};

/// The customer with exactly this ID, or null.
const Customer* customerWithId(const ZtString& id) {
  // Created at the first use and never destroyed, because hosts also report from static objects.
  // The vendor's own default ID is longer than a GUID.
  static const auto& table = *new std::array<Customer, 5>{{
      {REP_CUSTOMERID_ZT, REP_URL_ZT,
       ZtString::constant<"{51414B0C-9B14-4AE3-AEAF-77084476EDED-AD32-B53E40FB73D93A3C}">()},
      {REP_CUSTOMERID_NORVANTEL, REP_URL_NORVANTEL,
       ZtString::constant<"{4AC1FFA7-0D5B-4B01-82CF-4A7F3D8C7A31}">()},
      {REP_CUSTOMERID_BRISALINK, REP_URL_BRISALINK,
       ZtString::constant<"{9D5A644A-C47F-46E1-957B-59702FFEE53A}">()},
      {REP_CUSTOMERID_CAVOMEDIA, REP_URL_CAVOMEDIA,
       ZtString::constant<"{55F8F5AD-4F4C-4935-B4D4-4A72885500BA}">()},
      {REP_CUSTOMERID_QUILLNET, REP_URL_QUILLNET,
       ZtString::constant<"{3A261E04-A188-45CB-9783-32CFE041B4A3}">()},
  }};
  for (const Customer& row : table) {
    if (row.id == id) return &row;
  }
  return nullptr;
}

ZtString hostVersion() {
  std::string version;
  zt::appendText(version, ZtHost::bundleInfo("CFBundleShortVersionString").printed(), ".",
                 ZtHost::bundleInfo("CFBundleVersion").printed());
  return version;
}

/// Calls `add` for every fact, then clears them, so that no fact is reported twice.
template <class Add>
void moveFacts(const std::shared_ptr<ZtReport::Facts>& facts, Add add) {
  if (facts == nullptr) return;
  for (const auto& [name, value] : *facts) add(name, value);
  facts->clear();
}

}  // namespace

bool zt::isCustomer(const ZtString& id) { return customerWithId(id) != nullptr; }

std::shared_ptr<ZtReport> ZtReport::initWithCustomerAndGuid(const ZtString& customer,
                                                            const ZtString& guid) try {
  const Customer* const row = customerWithId(customer);
  if (row == nullptr) {
    zt::log(ZtLogLevel::Error, "report", "there is no report: the customer is unknown");
    return nullptr;
  }
  return std::make_shared<ZtReport>(Creation{}, guid.empty() ? row->defaultApplicationId : guid,
                                    row->id, row->url);
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", "there is no report: not enough memory");
  return nullptr;
}

ZtReport::ZtReport(Creation /*creation*/, ZtString appId, ZtString customerId, ZtString url)
    : _url(std::move(url)), _customerId(std::move(customerId)), _appId(std::move(appId)) {
  _data = ZtPortalData::initWithValues(_url, false, _customerId, _appId, hostVersion());
  if (_data == nullptr) throw std::bad_alloc();
  _data->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
}

ZtReport::~ZtReport() = default;

void ZtReport::startReport(const ZtString& startPoint) try {
  if (_poolExecution == nullptr && _data != nullptr) {
    _poolExecution = _data->addPoolExecution(ZtDate::now());
  }
  if (_poolExecution == nullptr) return;
  _poolExecution->setStartPoint(startPoint);
  _poolExecution->setStartTime(ZtDate::now());
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", "the report has no execution pool: not enough memory");
}

void ZtReport::stopReport(const ZtString& endPoint) {
  if (_poolExecution == nullptr) return;
  _poolExecution->setEndPoint(endPoint);
  _poolExecution->setEndTime(ZtDate::now());
}

bool ZtReport::sendReport(bool send) try {
  const auto hasFacts = [](const auto& facts) { return facts != nullptr && !facts->empty(); };
  if (_poolExecution == nullptr && (hasFacts(_installDataString) || hasFacts(_installDataBOOL))) {
    zt::log(ZtLogLevel::Error, "report", "the facts are lost, because the run was not started");
  }
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
} catch (const ZtException& error) {
  zt::log(ZtLogLevel::Error, "report", "the report is lost: ", error.name().view());
  return false;
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", "the report is lost: not enough memory");
  return false;
}

bool ZtReport::sendSavedReports() { return _data != nullptr && _data->sendSavedReports(); }
