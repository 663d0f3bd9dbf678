#include "ztportal/report/CustomerTable.h"

#include <algorithm>
#include <array>

#include "ztportal/report/ZtReportConstants.h"

namespace zt {

const Customer* customerWithId(const ZtString& id) {
  // Made at the first use and never destroyed: hosts report from static objects of their own, too.
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
  const auto* const found =
      std::find_if(table.begin(), table.end(), [&id](const Customer& row) { return row.id == id; });
  return found != table.end() ? found : nullptr;
}

}  // namespace zt
