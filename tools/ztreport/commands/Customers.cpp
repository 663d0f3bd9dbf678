#include "tools/ztreport/commands/Customers.h"

#include <array>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

namespace {

struct Customer {
  const ZtString* id;
  const ZtString* url;
};

constexpr std::array<Customer, 5> kCustomers{{
    {&REP_CUSTOMERID_ZT, &REP_URL_ZT},
    {&REP_CUSTOMERID_NORVANTEL, &REP_URL_NORVANTEL},
    {&REP_CUSTOMERID_BRISALINK, &REP_URL_BRISALINK},
    {&REP_CUSTOMERID_CAVOMEDIA, &REP_URL_CAVOMEDIA},
    {&REP_CUSTOMERID_QUILLNET, &REP_URL_QUILLNET},
}};

}  // namespace

ZtString configurationUrlOf(const std::string& customer) {
  std::string known;
  for (const Customer& row : kCustomers) {
    if (*row.id == customer) return *row.url;
    known += (known.empty() ? "" : ", ") + std::string(row.id->view());
  }
  throw Failure(Exit::WrongInput,
                "--customer: no such customer: \"" + customer + "\"; it is one of " + known);
}

std::vector<std::string> customerIds() {
  std::vector<std::string> ids;
  ids.reserve(kCustomers.size());
  for (const Customer& row : kCustomers) ids.emplace_back(row.id->view());
  return ids;
}

}  // namespace zt::tools
