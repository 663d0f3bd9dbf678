#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/ztportal.h"

// An execution pool of many steps written as SOAP, five string fields a step, and what one would
// write it with instead. Every peer writes the steps' fields byte for byte as the library does; its
// values are ready-made texts, so that the library alone has to format the time stamps.

namespace zt::bench {

constexpr std::size_t kFieldsPerStep = 5;

/// The values of one step's fields.
struct StepTexts {
  std::array<std::string, kFieldsPerStep> values;
};

/// The zone and the locale that time stamps are written in: Berlin, German.
void setEnvironment();

ZtDate stepTime(std::size_t step);
std::shared_ptr<ZtPortalPoolExecution> makePool(std::size_t steps);
std::vector<StepTexts> makeTexts(std::size_t steps);

/// What the library writes for `makePool(steps)`, appended to `xml`.
void writePool(const ZtPortalPoolExecution& pool, std::string& xml);
/// The lines of the steps alone out of that text, which every peer has to write.
std::string expectedLines(std::size_t steps);

using Buffer = std::unique_ptr<char[]>;
std::size_t sizeOf(const std::vector<StepTexts>& texts);

/// A loop that copies the constant pieces and the values into a buffer of `sizeOf(texts)` bytes.
Buffer writeByCopying(const std::vector<StepTexts>& texts, std::size_t size);
/// libxml2's text writer, told every blank and line end so that its text is the same.
std::string writeByLibxml(const std::vector<StepTexts>& texts);
/// tinyxml2's printer in its compact form; the blanks are texts.
std::string writeByTinyxml(const std::vector<StepTexts>& texts);
/// `fmt::format_to`, four lines a field in one format.
std::string writeByFmt(const std::vector<StepTexts>& texts);

}  // namespace zt::bench
