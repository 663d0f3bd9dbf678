// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LoopbackClient.h"

// Measures how many reports per second a running inbox accepts from several clients at once:
//
//     zt_inbox_load PORT CONNECTIONS SECONDS BYTES
//
// Each client waits for the response to its report before it posts the next one, as hosts do. Every
// report has a unique ID and unique words in its values.

namespace {

using Clock = std::chrono::steady_clock;

struct Load {
  int port = 0;
  int connections = 0;
  int seconds = 0;
  std::size_t bytes = 0;
};

std::string field(std::size_t indent, const std::string& name, const std::string& value) {
  const std::string lead(indent, ' ');
  return lead + "<Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n" + lead +
         "  <Name xsi:type=\"xsd:string\">" + name + "</Name>\r\n" + lead +
         "  <Value xsi:type=\"xsd:string\">" + value + "</Value>\r\n" + lead + "</Field>\r\n";
}

/// A report as the library writes it, with as many fields as its size needs.
std::string report(std::uint64_t serial, std::size_t bytes) {
  std::string text =
      "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
      " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
      " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\r\n  <SOAP-ENV:Body>\r\n"
      "    <postPoolDatas xmlns:m=\"http://reporting.kelvane.example/portal\""
      " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\r\n"
      "       <reportData xsi:type=\"com_Report\">\r\n"
      "         <ReportID xsi:type=\"xsd:string\">{0F6B1C5E-0000-4000-" +
      std::to_string(10'000'000'000'000'000U + serial) +
      "}</ReportID>\r\n"
      "         <MachineID xsi:type=\"xsd:string\">{11111111-2222-3333-4444-" +
      std::to_string(100'000'000'000U + serial % 500) +
      "}</MachineID>\r\n"
      "         <CustomerID xsi:type=\"xsd:string\">Kelvane</CustomerID>\r\n"
      "         <ApplicationID xsi:type=\"xsd:string\">{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}"
      "</ApplicationID>\r\n"
      "         <ApplicationVersion xsi:type=\"xsd:string\">2.1.77</ApplicationVersion>\r\n"
      "         <Datas xsi:type=\"com_Pools\">\r\n"
      "           <Data xsi:type=\"com_Pool\" Pool=\"CUSTOM\">\r\n"
      "             <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
      "             <Fields xsi:type=\"com_Fields\">\r\n";
  for (std::uint64_t i = 0; text.size() + 400 < bytes; ++i) {
    text +=
        field(15, "FACT_" + std::to_string(i),
              "value " + std::to_string(serial * 31 % 5'000 + i) + " of " + std::to_string(serial));
  }
  text +=
      "             </Fields>\r\n           </Data>\r\n         </Datas>\r\n"
      "       </reportData>\r\n    </postPoolDatas>\r\n  </SOAP-ENV:Body>\r\n"
      "</SOAP-ENV:Envelope>\r\n";
  return text;
}

/// Reads one response, which has a Content-Length; empty at the end of the connection.
std::string receiveAnswer(zt::test::RawClient& client, std::string& rest) {
  for (;;) {
    const std::size_t headEnd = rest.find("\r\n\r\n");
    if (headEnd != std::string::npos) {
      constexpr std::string_view kLength = "Content-Length: ";
      const std::size_t at = rest.find(kLength);
      const std::size_t length = std::strtoul(rest.c_str() + at + kLength.size(), nullptr, 10);
      const std::size_t end = headEnd + 4 + length;
      if (rest.size() >= end) {
        std::string answer = rest.substr(0, end);
        rest.erase(0, end);
        return answer;
      }
    }
    const std::string more = client.receiveSome();
    if (more.empty()) return {};
    rest += more;
  }
}

std::uint64_t post(const Load& load, std::atomic<std::uint64_t>& serial, Clock::time_point end) {
  std::uint64_t accepted = 0;
  while (Clock::now() < end) {
    zt::test::RawClient client(load.port);
    std::string rest;
    while (Clock::now() < end) {
      if (!client.send(zt::test::postRequest("/soap", report(++serial, load.bytes)))) break;
      const std::string answer = receiveAnswer(client, rest);
      if (answer.find(">true<") != std::string::npos) ++accepted;
      if (answer.empty() || answer.find("Connection: close") != std::string::npos) break;
    }
  }
  return accepted;
}

int run(const Load& load) {
  std::atomic<std::uint64_t> serial{static_cast<std::uint64_t>(
      std::chrono::system_clock::now().time_since_epoch() / std::chrono::microseconds(1))};
  std::atomic<std::uint64_t> accepted = 0;
  const auto start = Clock::now();
  const auto end = start + std::chrono::seconds(load.seconds);
  std::vector<std::thread> clients;
  clients.reserve(static_cast<std::size_t>(load.connections));
  for (int i = 0; i < load.connections; ++i) {
    clients.emplace_back([&] { accepted += post(load, serial, end); });
  }
  for (std::thread& client : clients) client.join();
  const std::chrono::duration<double> time = Clock::now() - start;
  std::printf("%llu reports of %zu bytes by %d connections in %.1f s: %.0f a second\n",
              static_cast<unsigned long long>(accepted), report(0, load.bytes).size(),
              load.connections, time.count(), static_cast<double>(accepted) / time.count());
  return accepted > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: zt_inbox_load PORT CONNECTIONS SECONDS BYTES\n", stderr);
    return 2;
  }
  try {
    return run({std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3]),
                static_cast<std::size_t>(std::atoi(argv[4]))});
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "zt_inbox_load: %s\n", fault.what());
    return 1;
  }
}
