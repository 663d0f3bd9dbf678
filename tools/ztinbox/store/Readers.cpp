#include "tools/ztinbox/store/Readers.h"

#include "tools/ztinbox/store/Schema.h"

namespace zt::inbox {

namespace {

constexpr std::size_t kMostConnections = 4;

}  // namespace

std::unique_ptr<Database> Readers::take() {
  std::unique_lock lock(_mutex);
  _changed.wait(lock, [this] { return _taken < kMostConnections; });
  ++_taken;
  if (!_free.empty()) {
    auto database = std::move(_free.back());
    _free.pop_back();
    return database;
  }
  try {
    auto database = std::make_unique<Database>(_file, Database::Access::kRead);
    prepareForReading(*database);
    return database;
  } catch (...) {
    --_taken;
    _changed.notify_one();
    throw;
  }
}

void Readers::giveBack(std::unique_ptr<Database> database) {
  {
    const std::lock_guard lock(_mutex);
    --_taken;
    _free.push_back(std::move(database));
  }
  _changed.notify_one();
}

}  // namespace zt::inbox
