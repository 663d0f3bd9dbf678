#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace zt::torture {

/// How a forked process ended.
struct TrialEnd {
  enum class How { kReturned, kThrew, kKilled, kHung };

  How how = How::kReturned;
  int signal = 0;    ///< of kKilled
  std::string told;  ///< what it told until then; for kThrew the exception's text
};

/// What the body of a trial says while it runs; it survives the end of the process.
class Teller {
 public:
  explicit Teller(int pipe) : _pipe(pipe) {}
  void tell(const std::string& text) const;

 private:
  int _pipe;
};

/// A process forked from this one that runs `body`. It has what this process has in memory and no
/// threads of it; nothing of it comes back but what it tells.
class Trial {
 public:
  using Body = std::function<void(const Teller&)>;

  explicit Trial(const Body& body);
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;
  ~Trial();

  void kill() const;
  /// Waits for the end; a process that goes on beyond `patience` is killed and counts as hung.
  TrialEnd wait(std::chrono::milliseconds patience);

 private:
  int _process = -1;
  int _pipe = -1;
};

}  // namespace zt::torture
