#include "benchmarks/ExecutionPoolPeers.h"

#include <fmt/format.h>
#include <libxml/xmlwriter.h>
#include <stdlib.h>
#include <tinyxml2.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace zt::bench {

namespace {

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

/// The lines of the steps out of the whole pool's text.
std::string stepLines(const std::string& poolText) {
  const std::size_t start = poolText.find(kRecordStart, poolText.find("INSTALLATIONSTEPS"));
  const std::size_t end = poolText.rfind(kRecordEnd) + kRecordEnd.size();
  return poolText.substr(start, end - start);
}

const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

}  // namespace

ZtDate stepTime(std::size_t step) {
  constexpr std::int64_t kStart = 1795262400000;  // 2026-11-21T12:00:00Z
  return ZtDate::fromMilliseconds(kStart + static_cast<std::int64_t>(step) * 137);
}

void setEnvironment() {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("LC_ALL", "de_DE.UTF-8", 1);
}

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

void writePool(const ZtPortalPoolExecution& pool, std::string& xml) {
  pool.addToXml(kPrefix, xml, true);
}

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

}  // namespace zt::bench
