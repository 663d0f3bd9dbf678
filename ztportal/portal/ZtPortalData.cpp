#include "ztportal/portal/ZtPortalData.h"

#include <string_view>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/identity/MachineIdentity.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/Markup.h"
#include "ztportal/portal/SoapEnvelope.h"
#include "ztportal/system/ZtSystemInfos.h"

// The document and its envelope.

namespace {

constexpr zt::Tag kReport("<reportData", "com_Report", ">\r\n");
constexpr zt::Tag kReportId("  <ReportID", zt::kXsdString, ">");
constexpr zt::Tag kMachineId("  <MachineID", zt::kXsdString, ">");
constexpr zt::Tag kCustomerId("  <CustomerID", zt::kXsdString, ">");
constexpr zt::Tag kApplicationId("  <ApplicationID", zt::kXsdString, ">");
constexpr zt::Tag kApplicationVersion("  <ApplicationVersion", zt::kXsdString, ">");
constexpr zt::Tag kPools("  <Datas", "com_Pools", ">\r\n");

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSoapIndent = "       ";
// Where the pools stand: deeper than `reportData` by four.
constinit const ZtString kSoapPoolPrefix = ZtString::constant<"           ">();
constinit const ZtString kPlainPoolPrefix = ZtString::constant<"    ">();

/// Room for a typical report: an inventory, forty steps and thirty facts take 64 KiB.
constexpr std::size_t kUsualSize = std::size_t{80} * 1024;

ZtString braced(const ZtString& id) {
  std::string text;
  zt::appendText(text, "{", id.printed(), "}");
  return text;
}

}  // namespace

std::shared_ptr<ZtPortalData> ZtPortalData::initWithValues(const ZtString& configurationUrl,
                                                           bool cacheConfiguration,
                                                           const ZtString& customerId,
                                                           const ZtString& applicationId,
                                                           const ZtString& applicationVersion) {
  return std::make_shared<ZtPortalData>(Creation{}, configurationUrl, cacheConfiguration,
                                        customerId, applicationId, applicationVersion);
}

ZtPortalData::ZtPortalData(Creation /*creation*/, ZtString configurationUrl,
                           bool cacheConfiguration, ZtString customerId, ZtString applicationId,
                           ZtString applicationVersion)
    : _configurationUrl(std::move(configurationUrl)),
      _customerId(std::move(customerId)),
      _applicationId(std::move(applicationId)),
      _reportId(braced(createUUID())),
      _applicationVersion(std::move(applicationVersion)),
      _cacheConfiguration(cacheConfiguration) {
  _systemInfos = ZtSystemInfos::getSystemInfos();
  const auto uuid = _systemInfos.find(std::string(ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID.view()));
  _machineId = braced(uuid != _systemInfos.end() ? uuid->second : ZtString());
  _initHttp(_configurationUrl, _cacheConfiguration);
}

ZtPortalData::~ZtPortalData() = default;

ZtString ZtPortalData::createUUID() { return zt::randomUuid(); }

template <class Pool, class... Arguments>
std::shared_ptr<Pool> ZtPortalData::_addPool(const Arguments&... arguments) try {
  auto pool = Pool::initWithValues(arguments...);
  _pools.push_back(pool);
  return pool;
} catch (const ZtException&) {
  return nullptr;
}

std::shared_ptr<ZtPortalPool> ZtPortalData::addPool(const ZtString& poolType,
                                                    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPool>(poolType, timeStamp);
}

std::shared_ptr<ZtPortalPoolComputerSystem> ZtPortalData::addPoolComputerSystem(
    const ZtDate& timeStamp) {
  return addPoolComputerSystemWithAutoCheck(timeStamp, false);
}

std::shared_ptr<ZtPortalPoolComputerSystem> ZtPortalData::addPoolComputerSystemWithAutoCheck(
    const ZtDate& timeStamp, bool autoCheck) {
  return _addPool<ZtPortalPoolComputerSystem>(timeStamp, autoCheck);
}

std::shared_ptr<ZtPortalPoolExecution> ZtPortalData::addPoolExecution(const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolExecution>(timeStamp);
}

std::shared_ptr<ZtPortalPoolDeinstallation> ZtPortalData::addPoolDeinstallation(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolDeinstallation>(timeStamp);
}

std::shared_ptr<ZtPortalPoolInitialization> ZtPortalData::addPoolInitialization(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolInitialization>(timeStamp);
}

std::shared_ptr<ZtPortalPoolDiagnose> ZtPortalData::addPoolDiagnose(const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolDiagnose>(timeStamp);
}

std::shared_ptr<ZtPortalPoolConnectionManager> ZtPortalData::addPoolConnectionManager(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolConnectionManager>(timeStamp);
}

const std::shared_ptr<ZtPortalPool>& ZtPortalData::_pool(std::int32_t index) const {
  return zt::entryAt(_pools, index);
}

std::string ZtPortalData::getSoapString() {
  if (!_mutexEnabled()) return generateXml(_xmlData, true);

  const ZtString remembered = _customerId;
  if (!remembered.isNull()) _customerId = std::string(remembered.view()) + "_Test";
  std::string text = generateXml(_xmlData, true);
  if (!remembered.empty()) _customerId = remembered;
  return text;
}

std::string ZtPortalData::generateXml(const ZtString& /*text*/, bool soap) const try {
  const std::string_view indent = soap ? kSoapIndent : std::string_view();
  std::string xml;
  xml.reserve(kUsualSize);
  const auto header = [&](const zt::Tag& tag, const ZtString& value, std::string_view end) {
    zt::appendText(xml, indent, tag.text(soap), value.printed(), end);
  };

  if (soap) {
    zt::appendText(xml, zt::kEnvelopeStart, kLineEnd, zt::kBodyStart, kLineEnd,  //
                   "    <postPoolDatas", zt::kReportingNamespace, zt::kPostEncoding, ">\r\n");
  } else {
    xml += "<?xml version=\"1.0\"?>\r\n";
  }
  zt::appendText(xml, indent, kReport.text(soap));
  header(kReportId, _reportId, "</ReportID>\r\n");
  header(kMachineId, _machineId, "</MachineID>\r\n");
  header(kCustomerId, _customerId, "</CustomerID>\r\n");
  header(kApplicationId, _applicationId, "</ApplicationID>\r\n");
  header(kApplicationVersion, _applicationVersion, "</ApplicationVersion>\r\n");
  zt::appendText(xml, indent, kPools.text(soap));

  const ZtString& poolPrefix = soap ? kSoapPoolPrefix : kPlainPoolPrefix;
  // Without pools the last index is the largest there is, the first look-up raises, and so an
  // empty document has no text at all. Hosts know an empty report by it.
  const std::uint64_t last = std::uint64_t{_pools.size()} - 1;
  for (std::uint64_t index = 0; index <= last; ++index) {
    _pool(static_cast<std::int32_t>(index))->addToXml(poolPrefix, xml, soap);
  }

  zt::appendText(xml, indent, "  </Datas>\r\n", indent, "</reportData>\r\n");
  if (soap) {
    zt::appendText(xml, "    </postPoolDatas>\r\n", zt::kBodyEnd, kLineEnd, zt::kEnvelopeEnd,
                   kLineEnd);
  }
  return xml;
} catch (const ZtException&) {
  return "";
}
