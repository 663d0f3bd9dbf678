#include <gtest/gtest.h>

#include <string>

#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/soap/SoapRequest.h"

namespace {

using zt::inbox::SoapRequest;
using zt::inbox::soapRequest;

TEST(SoapRequestTest, TellsReportsFromVersionRequests) {
  EXPECT_EQ(soapRequest(zt::test::SampleReport().text()), SoapRequest::kReport);
  EXPECT_EQ(soapRequest(zt::test::kVersionRequest), SoapRequest::kVersion);
}

TEST(SoapRequestTest, AValueDoesNotDecide) {
  zt::test::SampleReport report;
  report.customerId = "<getVersionInfo/>";
  report.value = "<Body><getVersionInfo/></Body>";
  EXPECT_EQ(soapRequest(report.text()), SoapRequest::kReport);
}

TEST(SoapRequestTest, ReadsNothingButTheFirstElementOfTheBody) {
  const struct {
    const char* text;
    SoapRequest request;
  } rows[] = {
      {"", SoapRequest::kOther},
      {"getVersionInfo", SoapRequest::kOther},
      {"postPoolDatas", SoapRequest::kOther},
      {"<postPoolDatas>", SoapRequest::kReport},
      {"<getVersionInfo/>", SoapRequest::kVersion},
      {"<m:getVersionInfo/>", SoapRequest::kVersion},
      {"<?xml version=\"1.0\"?><!-- <getVersionInfo/> --><postPoolDatas\r\n>",
       SoapRequest::kReport},
      {"<!DOCTYPE x><e:Envelope><e:Header><getVersionInfo/></e:Header><e:Body>"
       "<m:postPoolDatas>",
       SoapRequest::kReport},
      {"<Envelope><Body><other/><postPoolDatas/>", SoapRequest::kOther},
      {"<Envelope><postPoolDatas/></Envelope>", SoapRequest::kOther},
      {"<Envelope><Body>", SoapRequest::kOther},
      {"<postPoolDatasX/>", SoapRequest::kOther},
      {"<postPoolDatas", SoapRequest::kOther},
      {"<reportData><postPoolDatas/>", SoapRequest::kOther},
      {"<!-- <postPoolDatas/>", SoapRequest::kOther},
      {"<<<postPoolDatas>", SoapRequest::kReport},
      {"<postpooldatas>", SoapRequest::kOther},
  };
  for (const auto& row : rows) EXPECT_EQ(soapRequest(row.text), row.request) << row.text;
}

TEST(SoapRequestTest, LooksAtTheBeginningOnly) {
  const std::string start = "<Envelope>" + std::string(70'000, ' ');
  EXPECT_EQ(soapRequest(start + "<Body><postPoolDatas>"), SoapRequest::kOther);
}

}  // namespace
