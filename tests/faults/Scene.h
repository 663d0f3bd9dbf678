#pragma once

#include <map>
#include <string>

#include "tests/faults/FolderContent.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Inbox.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::torture {

/// The machine on which a host's operations are tried: its data folder, its server, its session
/// bus. Making one makes this process the host. The library is not used by it, so that a forked
/// process uses it for the first time.
class Scene {
 public:
  Scene();

  test::Inbox& inbox() { return _inbox; }
  const std::string& dataFolder() const { return _home; }
  std::string store() const;
  std::string configurationUrl() const { return _inbox.configurationUrl(); }

  /// Reports as an earlier run of the host saved them.
  const std::map<std::string, std::string>& savedEarlier() const { return _savedEarlier; }

  /// An empty data folder.
  void clear() const;
  /// A data folder whose store holds the first `reports` of savedEarlier() and a user's notes. The
  /// user has a browser there, too.
  void fillStore(std::size_t reports) const;
  FolderContent stored() const { return folderContent(store()); }

 private:
  void saveReports();
  void installBrowser() const;
  std::string busAddress();

  test::TemporaryFolder _folder;
  std::string _home = _folder.path("home");
  test::Inbox _inbox;
  test::ChildProcess _bus;
  std::map<std::string, std::string> _savedEarlier;
};

}  // namespace zt::torture
