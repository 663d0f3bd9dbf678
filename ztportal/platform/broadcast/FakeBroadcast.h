// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "ztportal/platform/broadcast/Broadcast.h"

namespace zt::test {

class FakeBroadcast final : public Broadcast {
 public:
  struct Message {
    ZtString name;
    ZtString object;
    std::map<std::string, ZtString> userInfo;
  };

  void post(const ZtString& name, const ZtString& object,
            const std::map<std::string, ZtString>& userInfo) override {
    posted.push_back({name, object, userInfo});
    if (onPost) onPost();
  }
  void closeConnections() override { ++closings; }

  std::vector<Message> posted;
  std::function<void()> onPost;  // may throw
  int closings = 0;              // calls of closeConnections()
};

}  // namespace zt::test
