#pragma once

#include <string>
#include <vector>

namespace zt::bench {

/// A row of the table that `script/bench` prints.
struct Figure {
  std::string name;
  std::string ours;
  std::string peer;   // what it is measured beside, and that one's measure
  std::string limit;  // what is to be reached
  std::string ratio;
  bool holds = false;
};

/// A measure in words: 14.3, "ns".
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
/// At most `limit` by itself.
Figure atMost(double limit, const std::string& name, double ours, const std::string& unit);

/// The table as Markdown, its columns aligned.
std::string table(const std::vector<Figure>& figures);

// What is measured, each in a file of its own. Each raises std::runtime_error when it cannot be
// measured, for example since a peer's text is another one.
std::vector<Figure> fieldFigures();
std::vector<Figure> timeStampFigures();
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
