// SPDX-License-Identifier: Apache-2.0
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
  std::string peer;  ///< name and value
  std::string limit;
  std::string ratio;
  bool passes = false;
};

/// A value with its unit, such as "14.3 ns".
std::string measure(double value, const std::string& unit);

/// The alternative with which a figure is compared.
struct Peer {
  std::string name;
  double value;
};

/// Passes if it is at most `limit` times the peer's value; both are in `unit`.
Figure atMostTimes(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit);
/// Passes if it is at least `limit` times as fast as the peer; both values are times.
Figure timesFaster(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit);
/// Passes if it is at least `limit` times the peer's rate.
Figure atLeastTimes(double limit, const std::string& name, double ours, const Peer& peer,
                    const std::string& unit);
/// Passes if it is at most `limit`; has no peer.
Figure atMost(double limit, const std::string& name, double ours, const std::string& unit);

using Work = std::function<void()>;

double secondsOf(const Work& work);

/// The shortest time in seconds that each of `works` takes. They take turns for many rounds, so
/// that other load on the machine affects all of them alike; the shortest round is the undisturbed
/// one.
///
///     const auto best = fastest(100, {ours, theirs});    // best[0] / best[1]
std::vector<double> fastest(std::size_t rounds, const std::vector<Work>& works);

/// The memory that this thread has allocated with `new`.
struct Allocations {
  std::uint64_t count;
  std::int64_t bytesInUse;  ///< as requested, without the allocator's overhead
};
Allocations allocations();

// The groups of figures. Each throws std::runtime_error if it cannot be measured, for example
// because the text of a peer differs.
std::vector<Figure> fieldFigures();
std::vector<Figure> timestampFigures();
std::vector<Figure> requestFigures();
std::vector<Figure> interfaceFigures();
std::vector<Figure> millionFieldsFigures();
std::vector<Figure> deliveryFigures();
std::vector<Figure> processWalkFigures();
std::vector<Figure> resendFigures();
std::vector<Figure> backgroundFigures();
std::vector<Figure> firstReportFigures();
std::vector<Figure> idleHostFigures();
std::vector<Figure> probeFigures();
std::vector<Figure> pythonFigures();
std::vector<Figure> inboxFigures();

}  // namespace zt::bench
