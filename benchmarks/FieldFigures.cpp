// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <libxml/xmlwriter.h>
#include <malloc.h>
#include <tinyxml2.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/Figure.h"
#include "benchmarks/Reports.h"
#include "ztportal/ztportal.h"

// The cost of one string field: in an execution pool of 10,000 steps with five string fields each,
// written as SOAP and compared with other writers; and in a generic pool of a million fields,
// compared with one of a thousand. Every peer writes the same bytes as the library, but from
// ready-made values, so that only the library has to format the timestamps.

namespace zt::bench {

namespace {

constexpr std::size_t kFieldsPerStep = 5;

/// The values of one step's fields.
struct StepTexts {
  std::array<std::string, kFieldsPerStep> values;
};

using Buffer = std::unique_ptr<char[]>;

const ZtString kPrefix = "           ";

constexpr std::array<std::string_view, kFieldsPerStep> kNames{
    "STEP_NAME", "STEP_TYPE", "STEP_TIMESTAMP", "STEP_MESSAGESTRING", "STEP_MESSAGECODE"};

std::string stepName(std::size_t step) { return "Copy file " + std::to_string(step); }
std::string message(std::size_t step) { return step % 4 == 0 ? "replaced an older version" : ""; }

constexpr std::string_view kRecordStart = "                 <Fields xsi:type=\"com_Fields\">\r\n";
constexpr std::string_view kRecordEnd = "                 </Fields>\r\n";
constexpr std::string_view kBeforeName =
    "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
    "                     <Name xsi:type=\"xsd:string\">";
constexpr std::string_view kBeforeValue =
    "</Name>\r\n"
    "                     <Value xsi:type=\"xsd:string\">";
constexpr std::string_view kAfterValue =
    "</Value>\r\n"
    "                   </Field>\r\n";

/// Cuts the lines of the steps out of the whole pool's text.
std::string stepLines(const std::string& poolText) {
  const std::size_t start = poolText.find(kRecordStart, poolText.find("INSTALLATIONSTEPS"));
  const std::size_t end = poolText.rfind(kRecordEnd) + kRecordEnd.size();
  return poolText.substr(start, end - start);
}

const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::shared_ptr<ZtPortalPoolExecution> makePool(std::size_t steps) {
  setEnvironment();
  auto pool = ZtPortalPoolExecution::initWithValues(stepTime(0));
  for (std::size_t i = 0; i < steps; ++i) {
    const auto step = pool->addStep(stepTime(i), stepName(i), ZtPortalStepInfo);
    step->setStepMessageString(message(i));
    step->setStepMessageCode("0");
  }
  return pool;
}

std::vector<StepTexts> makeTexts(std::size_t steps) {
  setEnvironment();
  std::vector<StepTexts> texts(steps);
  for (std::size_t i = 0; i < steps; ++i) {
    const ZtString date = ZtPortalDef::stringFromDate(stepTime(i));
    texts[i].values = {stepName(i), "INFO", std::string(date.view()), message(i), "0"};
  }
  return texts;
}

/// Writes the whole pool with the library.
void writePool(const ZtPortalPoolExecution& pool, std::string& xml) {
  pool.addToXml(kPrefix, xml, true);
}

/// The lines of the steps, which every peer has to write.
std::string expectedLines(std::size_t steps) {
  std::string xml;
  writePool(*makePool(steps), xml);
  return stepLines(xml);
}

std::size_t sizeOf(const std::vector<StepTexts>& texts) {
  std::size_t size = 0;
  for (const StepTexts& step : texts) {
    size += kRecordStart.size() + kRecordEnd.size();
    for (std::size_t i = 0; i < kFieldsPerStep; ++i) {
      size += kBeforeName.size() + kNames.at(i).size() + kBeforeValue.size() +
              step.values.at(i).size() + kAfterValue.size();
    }
  }
  return size;
}

/// A loop that copies the constant pieces and the values into a buffer of `sizeOf(texts)` bytes.
Buffer writeByCopying(const std::vector<StepTexts>& texts, std::size_t size) {
  Buffer buffer = std::make_unique_for_overwrite<char[]>(size);
  char* end = buffer.get();
  const auto copy = [&end](std::string_view piece) {
    std::memcpy(end, piece.data(), piece.size());
    end += piece.size();
  };
  for (const StepTexts& step : texts) {
    copy(kRecordStart);
    for (std::size_t i = 0; i < kFieldsPerStep; ++i) {
      copy(kBeforeName);
      copy(kNames[i]);
      copy(kBeforeValue);
      copy(step.values[i]);
      copy(kAfterValue);
    }
    copy(kRecordEnd);
  }
  return buffer;
}

/// libxml2's text writer. It is given every space and line end, so that its text is the same.
std::string writeByLibxml(const std::vector<StepTexts>& texts) {
  const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(),
                                                                    &xmlBufferFree);
  const std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> writer(
      xmlNewTextWriterMemory(buffer.get(), 0), &xmlFreeTextWriter);
  const auto blanks = [&writer](const char* text) {
    xmlTextWriterWriteRaw(writer.get(), xml(text));
  };
  const auto start = [&writer](const char* name, const char* type) {
    xmlTextWriterStartElement(writer.get(), xml(name));
    xmlTextWriterWriteAttribute(writer.get(), xml("xsi:type"), xml(type));
  };
  const auto end = [&writer] { xmlTextWriterEndElement(writer.get()); };
  for (const StepTexts& step : texts) {
    blanks("                 ");
    start("Fields", "com_Fields");
    blanks("\r\n");
    for (std::size_t i = 0; i < kFieldsPerStep; ++i) {
      blanks("                   ");
      start("Field", "com_Field");
      xmlTextWriterWriteAttribute(writer.get(), xml("FieldType"), xml("string"));
      blanks("\r\n                     ");
      start("Name", "xsd:string");
      xmlTextWriterWriteString(writer.get(), xml(kNames[i].data()));
      end();
      blanks("\r\n                     ");
      start("Value", "xsd:string");
      xmlTextWriterWriteString(writer.get(), xml(step.values[i].c_str()));
      end();
      blanks("\r\n                   ");
      end();
      blanks("\r\n");
    }
    blanks("                 ");
    end();
    blanks("\r\n");
  }
  xmlTextWriterFlush(writer.get());
  return {reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
          static_cast<std::size_t>(xmlBufferLength(buffer.get()))};
}

/// tinyxml2's printer in compact mode; spaces and line ends are written as texts.
std::string writeByTinyxml(const std::vector<StepTexts>& texts) {
  tinyxml2::XMLPrinter printer(nullptr, true);
  const auto blanks = [&printer](const char* text) { printer.PushText(text); };
  const auto start = [&printer](const char* name, const char* type) {
    printer.OpenElement(name, true);
    printer.PushAttribute("xsi:type", type);
  };
  for (const StepTexts& step : texts) {
    blanks("                 ");
    start("Fields", "com_Fields");
    blanks("\r\n");
    for (std::size_t i = 0; i < kFieldsPerStep; ++i) {
      blanks("                   ");
      start("Field", "com_Field");
      printer.PushAttribute("FieldType", "string");
      blanks("\r\n                     ");
      start("Name", "xsd:string");
      printer.PushText(kNames[i].data());
      printer.CloseElement(true);
      blanks("\r\n                     ");
      start("Value", "xsd:string");
      printer.PushText(step.values[i].c_str());
      printer.CloseElement(true);
      blanks("\r\n                   ");
      printer.CloseElement(true);
      blanks("\r\n");
    }
    blanks("                 ");
    printer.CloseElement(true);
    blanks("\r\n");
  }
  return {printer.CStr(), static_cast<std::size_t>(printer.CStrSize() - 1)};
}

/// `fmt::format_to`, with one format for the four lines of a field.
std::string writeByFmt(const std::vector<StepTexts>& texts) {
  std::string text;
  auto out = std::back_inserter(text);
  for (const StepTexts& step : texts) {
    fmt::format_to(out, "{}<Fields xsi:type=\"com_Fields\">\r\n", "                 ");
    for (std::size_t i = 0; i < kFieldsPerStep; ++i) {
      fmt::format_to(out,
                     "{0}<Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
                     "{0}  <Name xsi:type=\"xsd:string\">{1}</Name>\r\n"
                     "{0}  <Value xsi:type=\"xsd:string\">{2}</Value>\r\n"
                     "{0}</Field>\r\n",
                     "                   ", kNames[i], step.values[i]);
    }
    fmt::format_to(out, "{}</Fields>\r\n", "                 ");
  }
  return text;
}

constexpr std::size_t kSteps = 10'000;
constexpr const char* kFieldFigure = "one string field written";

template <auto kWrite>
Work writer(const std::vector<StepTexts>& texts, const std::string& expected) {
  if (kWrite(texts) != expected) throw std::runtime_error("a peer writes another text");
  return [&texts] {
    const std::string text = kWrite(texts);
    benchmark::DoNotOptimize(text.data());
  };
}

constexpr std::size_t kFew = 1'000;
constexpr std::size_t kMany = 1'000'000;
constexpr std::size_t kTimes = 100;  // rounds of the small pool that are timed together

std::shared_ptr<ZtPortalPool> poolOf(std::size_t fields) {
  auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
  for (std::size_t i = 0; i < fields; ++i) pool->addString("FIELD", "a value");
  return pool;
}

Work build(std::size_t fields, std::size_t times) {
  return [fields, times] {
    for (std::size_t i = 0; i < times; ++i) benchmark::DoNotOptimize(poolOf(fields).get());
  };
}

/// Keeps the memory of the text between rounds, like that of the fields.
Work write(std::size_t fields, std::size_t times) {
  return [pool = poolOf(fields), times, xml = std::make_shared<std::string>()] {
    for (std::size_t i = 0; i < times; ++i) {
      xml->clear();
      pool->addToXml("", *xml, true);
      benchmark::DoNotOptimize(xml->data());
    }
  };
}

Figure figure(const std::string& name, const std::vector<double>& seconds) {
  const double few = seconds[0] * 1e9 / static_cast<double>(kFew * kTimes);
  const double many = seconds[1] * 1e9 / static_cast<double>(kMany);
  return atMostTimes(1.25, name, many, {"of a thousand", few}, "ns");
}

}  // namespace

std::vector<Figure> fieldFigures() {
  const auto pool = makePool(kSteps);
  const std::vector<StepTexts> texts = makeTexts(kSteps);
  const std::string expected = expectedLines(kSteps);
  const std::size_t size = sizeOf(texts);
  if (std::string_view(writeByCopying(texts, size).get(), size) != expected) {
    throw std::runtime_error("the loop copies another text");
  }
  const Work ours = [&pool] {
    std::string xml;
    writePool(*pool, xml);
    benchmark::DoNotOptimize(xml.data());
  };
  const Work copying = [&texts, size] {
    const Buffer buffer = writeByCopying(texts, size);
    benchmark::DoNotOptimize(buffer.get());
  };
  const auto nanoseconds = [](double seconds) { return seconds * 1e9 / (kSteps * kFieldsPerStep); };
  const std::vector<double> best = fastest(2000, {ours, copying});
  const std::vector<double> others =
      fastest(60, {writer<writeByLibxml>(texts, expected), writer<writeByTinyxml>(texts, expected),
                   writer<writeByFmt>(texts, expected), ours});
  const double field = nanoseconds(std::min(best[0], others[3]));
  return {
      atMostTimes(1.5, kFieldFigure, field, {"copying loop", nanoseconds(best[1])}, "ns"),
      timesFaster(25, kFieldFigure, field, {"libxml2's text writer", nanoseconds(others[0])}, "ns"),
      timesFaster(8, kFieldFigure, field, {"tinyxml2's printer", nanoseconds(others[1])}, "ns"),
      timesFaster(5, kFieldFigure, field, {"fmt::format_to", nanoseconds(others[2])}, "ns"),
  };
}

std::vector<Figure> millionFieldsFigures() {
  // Makes the allocator keep freed memory. Otherwise new pages from the kernel would dominate the
  // time of so many fields.
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
  return {
      figure("a field of a million: build", fastest(12, {build(kFew, kTimes), build(kMany, 1)})),
      figure("a field of a million: write", fastest(12, {write(kFew, kTimes), write(kMany, 1)}))};
}

}  // namespace zt::bench
