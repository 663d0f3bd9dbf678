// SPDX-License-Identifier: Apache-2.0
#include <zlib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/http/Gzip.h"

// Transport options and their effect on the requests of documents.

namespace zt::test {
namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::StartsWith;

std::string unpacked(std::string packed) {
  std::string text(1'000'000, '\0');
  z_stream stream{};
  constexpr int kGzipFormat = 16;
  if (::inflateInit2(&stream, MAX_WBITS + kGzipFormat) != Z_OK) return "no memory";
  stream.next_in = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  const int end = ::inflate(&stream, Z_FINISH);
  text.resize(stream.total_out);
  ::inflateEnd(&stream);
  return end == Z_STREAM_END && stream.avail_in == 0 ? text : "damaged";
}

TEST(GzipTest, KeepsTheText) {
  std::string mixed;
  for (unsigned byte = 1; mixed.size() < 300'000; byte = byte * 1103515245U + 12345U) {
    mixed += static_cast<char>(byte >> 16U);
  }
  for (const std::string& text :
       {std::string(), std::string("a"), std::string(500'000, 'x'), mixed}) {
    EXPECT_EQ(unpacked(gzip(text)), text) << text.size();
  }
  EXPECT_LT(gzip(std::string(500'000, 'x')).size(), 5'000U);
}

class TransportOptionsTest : public PortalTest {
 protected:
  ~TransportOptionsTest() override { ZtHost::setTransportOptions({}); }

  std::vector<std::chrono::milliseconds> timeouts() {
    std::vector<std::chrono::milliseconds> all;
    for (const auto& asked : platform.http_.asked) all.push_back(asked.timeout);
    return all;
  }
  static ZtTransportOptions withTimeout(std::chrono::milliseconds timeout) {
    ZtTransportOptions options;
    options.timeout = timeout;
    return options;
  }
};

TEST_F(TransportOptionsTest, ThoseOfTheProcessAreForLaterDocuments) {
  const auto before = makeDocumentWithPool();
  EXPECT_THAT(ZtHost::setTransportOptions(withTimeout(7s)), IsEmpty());
  EXPECT_EQ(ZtHost::transportOptions().timeout, 7s);
  const auto later = ZtPortalData::initWithValues(kConfigurationUrl, false, "", "", "");
  later->reportToServer();
  EXPECT_THAT(timeouts(), ElementsAre(7s, 7s, 7s));
  forget();
  before->reportToServer();
  EXPECT_THAT(timeouts(), ElementsAre(2s));
}

TEST_F(TransportOptionsTest, ThoseOfADocumentAreForItsLaterRequests) {
  ZtHost::setTransportOptions(withTimeout(7s));
  const auto document = makeDocumentWithPool();
  const auto other = makeDocumentWithPool();
  EXPECT_THAT(document->setTransportOptions(withTimeout(9s)), IsEmpty());
  document->reportToServer();
  other->reportToServer();
  EXPECT_THAT(timeouts(), ElementsAre(9s, 7s));
}

TEST_F(TransportOptionsTest, WrongOnesAreRefusedAndTheOldOnesStay) {
  ZtHost::setTransportOptions(withTimeout(7s));
  EXPECT_THAT(ZtHost::setTransportOptions(withTimeout(-1ms)), StartsWith("timeout: "));
  EXPECT_EQ(ZtHost::transportOptions().timeout, 7s);
  const auto document = makeDocumentWithPool();
  EXPECT_THAT(document->setTransportOptions(withTimeout(0ms)), StartsWith("timeout: "));
  document->reportToServer();
  EXPECT_THAT(timeouts(), ElementsAre(7s));
}

TEST_F(TransportOptionsTest, WithoutALimitARequestMayTakeVeryLong) {
  ZtTransportOptions options = withTimeout(0ms);
  options.idleTimeout = 10s;
  const auto document = makeDocumentWithPool();
  EXPECT_THAT(document->setTransportOptions(options), IsEmpty());
  document->reportToServer();
  EXPECT_GT(timeouts().front(), std::chrono::hours(24 * 20));
}

TEST_F(TransportOptionsTest, OnlyLargeRequestsAreCompressed) {
  ZtTransportOptions options;
  options.compressRequests = true;
  ZtHost::setTransportOptions(options);
  const auto document = ZtPortalData::initWithValues(kConfigurationUrl, false, "", "", "");
  document->addPool("CUSTOM", ZtDate())->addString("LOG", std::string(100'000, 'x'));
  EXPECT_TRUE(document->reportToServer());
  ASSERT_EQ(platform.http_.asked.size(), 3U);
  const auto encoding = Contains(Pair("Content-Encoding", "gzip"));
  EXPECT_THAT(platform.http_.asked[0].headers, Not(encoding));
  EXPECT_THAT(platform.http_.asked[1].headers, Not(encoding));
  const auto& sent = platform.http_.asked[2];
  EXPECT_THAT(sent.headers, encoding);
  EXPECT_EQ(unpacked(*sent.body), requestOf(*document));
  EXPECT_EQ(document->lastDelivery().requestBytes, requestOf(*document).size());
}

// The host's own transport.

TEST_F(TransportOptionsTest, AHostsTransportGetsTheWholeRequest) {
  std::vector<std::string> requests;
  ZtTransportOptions options;
  options.headers = {{"Authorization", "Bearer abc"}};
  options.transport = [&](const ZtTransportRequest& request) {
    std::string text(request.method);
    appendText(text, " ", request.url, "\n");
    for (const auto& [name, value] : request.headers) appendText(text, name, ": ", value, "\n");
    requests.push_back(text += request.body);
    ZtTransportResponse response;
    response.status = 200;
    response.body = request.method == "GET" ? configuration.body
                    : requests.size() == 2  ? version.body
                                            : kAccepted;
    return response;
  };
  ZtHost::setTransportOptions(options);
  const auto document = ZtPortalData::initWithValues(kConfigurationUrl, false, "", "", "");
  document->addPool("CUSTOM", ZtDate());
  EXPECT_TRUE(document->reportToServer());
  const std::string headers =
      "\nContent-Type: application/xml\nUser-Agent: Kelvane portal service (osx)\n"
      "Authorization: Bearer abc\n";
  EXPECT_THAT(requests,
              ElementsAre("GET http://config.test/reporting/kelvane.xml" + headers,
                          StartsWith("POST http://report.test/soap" + headers + "<SOAP-ENV"),
                          "POST http://report.test/soap" + headers + requestOf(*document)));
  EXPECT_THAT(platform.http_.asked, IsEmpty());
  EXPECT_GE(document->lastDelivery().totalTime.count(), 0);
}

// The transport of the host was called with an empty URL when a document without one was created.
TEST_F(TransportOptionsTest, AHostsTransportIsNotAskedWithoutAUrl) {
  std::size_t asked = 0;
  ZtTransportOptions options;
  options.transport = [&](const ZtTransportRequest&) {
    ++asked;
    return ZtTransportResponse();
  };
  ZtHost::setTransportOptions(options);
  const auto document = ZtPortalData::initWithValues("", false, "", "", "");
  document->addPool("CUSTOM", ZtDate());
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(asked, 0U);
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Offline);
}

TEST_F(TransportOptionsTest, AHostsTransportMayFail) {
  const auto failed = [](const char* reason) {
    ZtTransportResponse response;
    response.error = reason;
    return response;
  };
  const struct {
    std::function<ZtTransportResponse(const ZtTransportRequest&)> transport;
    const char* message;
  } rows[] = {
      {[&](const auto&) { return failed("The tunnel is closed."); }, "The tunnel is closed."},
      {[&](const auto&) { return failed(""); }, "The host's transport failed."},
      {[](const auto&) -> ZtTransportResponse { throw std::runtime_error("no tunnel"); },
       "no tunnel"},
      {[](const auto&) -> ZtTransportResponse { throw 7; }, "The host's transport failed."},
  };
  for (const auto& row : rows) {
    const auto document = makeDocumentWithPool();
    ZtTransportOptions options;
    options.transport = row.transport;
    document->setTransportOptions(options);
    EXPECT_FALSE(document->reportToServer()) << row.message;
    const ZtDelivery delivery = document->lastDelivery();
    EXPECT_EQ(delivery.outcome, ZtDeliveryOutcome::Unreachable) << row.message;
    EXPECT_EQ(delivery.error, ZtDeliveryError::Host) << row.message;
    EXPECT_EQ(delivery.message, row.message);
    EXPECT_EQ(delivery.savedTo, document->reportFile().view());
  }
}

}  // namespace
}  // namespace zt::test
