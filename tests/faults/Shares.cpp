#include "tests/faults/Shares.h"

#include <chrono>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>

#include "tests/faults/Failure.h"
#include "tests/faults/Trial.h"

namespace zt::torture {

namespace {

constexpr std::chrono::hours kAsLongAsItTakes{24};

}  // namespace

Figures inShares(unsigned jobs, Budget& budget, const std::function<Figures(unsigned)>& work) {
  std::list<Trial> shares;
  for (unsigned share = 0; share < jobs; ++share) {
    shares.emplace_back([&budget, &work, share](const Teller& teller) {
      try {
        teller.tell(nlohmann::json(work(share)).dump());
      } catch (...) {
        budget.stop();
        throw;
      }
    });
  }

  Figures sum;
  std::optional<std::string> failure;
  for (Trial& share : shares) {
    const TrialEnd end = share.wait(kAsLongAsItTakes);
    if (end.how == TrialEnd::How::kReturned) {
      for (const auto& [name, count] : nlohmann::json::parse(end.told).get<Figures>()) {
        sum[name] += count;
      }
    } else if (!failure) {
      failure = end.how == TrialEnd::How::kThrew
                    ? end.told
                    : "the process died of signal " + std::to_string(end.signal);
    }
  }
  if (failure) throw Failure(*failure);
  return sum;
}

}  // namespace zt::torture
