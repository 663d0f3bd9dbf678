#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "tests/faults/Random.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt::torture {

/// Where the campaigns' host finds things. An empty text: there is no such thing.
struct HostSettings {
  std::string dataFolder;
  std::string proxy;       ///< URL
  std::string sessionBus;  ///< address
};

/// Makes this process the host "Torture" 1.0 for all that follows.
void becomeHost(const HostSettings& settings);

/// The library's patience with one exchange. What took this long on a busy machine may have lost an
/// answer to it, as if the network had.
inline constexpr std::chrono::seconds kExchangeTimeout{2};

/// The store of that host.
std::string storeFolder(const std::string& dataFolder);

/// The name of the document's file in the store.
std::string fileNameOf(const ZtPortalData& document);

std::string textOf(const ZtString& text);

/// A document of the configuration at `url`, without pools.
std::shared_ptr<ZtPortalData> makeDocument(const std::string& url);

/// Adds up to four pools with whatever values; all of them can be sent again from the store, so
/// there is no array and no markup in them.
void fill(ZtPortalData& document, Random& random);

/// What arrives when a file with the text `written` is sent again: XML has one line end only.
std::string resentText(std::string written);

}  // namespace zt::torture
