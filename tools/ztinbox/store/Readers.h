#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// A few connections for reading that threads share one after another; each is opened when it is
/// first needed. Any thread may call it.
class Readers {
 public:
  explicit Readers(std::string file) : _file(std::move(file)) {}

  /// A connection for the scope.
  class Lease {
   public:
    explicit Lease(Readers& readers) : _readers(readers), _database(readers.take()) {}
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() { _readers.giveBack(std::move(_database)); }

    Database& database() { return *_database; }

   private:
    Readers& _readers;
    std::unique_ptr<Database> _database;
  };

 private:
  /// Waits for a free one. Throws DatabaseFault.
  std::unique_ptr<Database> take();
  void giveBack(std::unique_ptr<Database> database);

  const std::string _file;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::vector<std::unique_ptr<Database>> _free;
  std::size_t _taken = 0;
};

}  // namespace zt::inbox
