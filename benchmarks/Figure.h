#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zt::bench {

/// A row of the table that `script/bench` prints.
struct Figure {
  std::string name;
  std::string ours;
  std::string peer;  ///< its name and measure
  std::string limit;
  std::string ratio;
  bool passes = false;
};

/// A measure with its unit, such as "14.3 ns".
std::string measure(double value, const std::string& unit);

/// What a figure is measured beside.
struct Peer {
  std::string name;
  double value;
};

/// At most `limit` times the peer's measure; both in `unit`.
Figure atMostTimes(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit);
/// At least `limit` times as fast as the peer, by the time that each takes.
Figure timesFaster(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit);
/// At least `limit` times the peer's rate.
Figure atLeastTimes(double limit, const std::string& name, double ours, const Peer& peer,
                    const std::string& unit);
/// At most `limit`, without a peer.
Figure atMost(double limit, const std::string& name, double ours, const std::string& unit);

using Work = std::function<void()>;

double secondsOf(const Work& work);

/// The seconds that each of `works` takes at best. They take turns, so that other programs on the
/// machine disturb all of them, and the least of many rounds is what each takes undisturbed.
///
///     const auto best = fastest(100, {ours, theirs});    // best[0] / best[1]
std::vector<double> fastest(std::size_t rounds, const std::vector<Work>& works);

/// The memory that this thread got from `new` so far.
struct Allocations {
  std::uint64_t count;
  std::int64_t bytesInUse;  ///< as requested, without the allocator's overhead
};
Allocations allocations();

// The groups of figures. Each throws std::runtime_error when it cannot be measured, for example
// when a peer writes another text.
std::vector<Figure> fieldFigures();
std::vector<Figure> timestampFigures();
std::vector<Figure> requestFigures();
std::vector<Figure> millionFieldsFigures();
std::vector<Figure> deliveryFigures();
std::vector<Figure> processWalkFigures();
std::vector<Figure> resendFigures();
std::vector<Figure> firstReportFigures();
std::vector<Figure> idleHostFigures();
std::vector<Figure> probeFigures();
std::vector<Figure> inboxFigures();

}  // namespace zt::bench
