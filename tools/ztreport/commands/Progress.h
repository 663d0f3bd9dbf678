#pragma once

#include <chrono>
#include <cstddef>

namespace zt::tools {

/// How far a number of reports is, as one line of a terminal at standard error that is written
/// over and over and is gone at the end of the object. Nothing is written when standard error is
/// no terminal, or one that cannot go back in a line (`TERM` is "dumb" or unset).
class Progress {
 public:
  explicit Progress(std::size_t all);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// `done` of them are sent.
  void show(std::size_t done) const;

 private:
  const std::size_t _all;
  const bool _isShown;
  const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

}  // namespace zt::tools
