#pragma once

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::bench {

/// A session bus and a data folder of the measurement's own, in force for a scope.
class Desktop {
 public:
  const test::TemporaryFolder& dataFolder() const { return _data; }

 private:
  test::TemporaryFolder _data;
  test::SessionBus _bus;
  test::ScopedEnvironment _address{"DBUS_SESSION_BUS_ADDRESS", _bus.address().c_str()};
  test::ScopedEnvironment _dataHome{"XDG_DATA_HOME", _data.path().c_str()};
  test::ScopedEnvironment _proxy{"http_proxy", nullptr};
};

}  // namespace zt::bench
