// SPDX-License-Identifier: Apache-2.0
// qt-window [SECONDS [CONFIGURATION-URL]]: a window that is painted 60 times a second, whatever the
// reporting server does. It hands over a report every half second, and shows the receipts. At the
// end it prints what its user noticed of that.

#include <ztportal/ztportal.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

namespace {

using namespace std::chrono_literals;

class Window : public QWidget {
 public:
  void showReceipt(const ZtBackgroundReceipt& receipt) {
    _text = QString::fromUtf8(receipt.delivery.message.data(),
                              static_cast<qsizetype>(receipt.delivery.message.size()));
  }
  double longestGap() const { return static_cast<double>(_longestGap) / 1e6; }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.translate(width() / 2, height() / 2);
    painter.rotate(6 * ++_frames);
    painter.drawText(0, 0, _text);  // loads the fonts when it is called for the first time
    if (_sinceFrame.isValid()) _longestGap = std::max(_longestGap, _sinceFrame.nsecsElapsed());
    _sinceFrame.start();
  }

 private:
  QString _text = "no receipt yet";
  QElapsedTimer _sinceFrame;
  qint64 _longestGap = 0;
  int _frames = 0;
};

void handOver(ZtBackgroundSender& sender) {
  // Without a URL, because a document with one waits for the server when it is created.
  const auto document =
      ZtPortalData::initWithValues("", false, REP_CUSTOMERID_ZT, REP_APPID_ZT_REPAIRTOOL, "3.0");
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  if (!sender.send(*document)) std::cerr << document->lastDelivery().saveError << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  ZtHost::setBundleInfo(
      {{"CFBundleName", "Example Window"}, {"CFBundleShortVersionString", "3.0"}});

  ZtBackgroundOptions options;
  options.configurationUrl = argc > 2 ? ZtString(argv[2]) : REP_URL_ZT;
  ZtBackgroundSender sender(options);

  Window window;
  const QSocketNotifier receipts(sender.descriptor(), QSocketNotifier::Read);
  QObject::connect(&receipts, &QSocketNotifier::activated, [&] {
    for (const ZtBackgroundReceipt& receipt : sender.receipts()) window.showReceipt(receipt);
  });

  QTimer frames;
  frames.setTimerType(Qt::PreciseTimer);
  QObject::connect(&frames, &QTimer::timeout, [&] { window.update(); });
  frames.start(16ms);
  QTimer reports;
  QObject::connect(&reports, &QTimer::timeout, [&] { handOver(sender); });
  reports.start(500ms);

  const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
  QTimer::singleShot(std::chrono::seconds(seconds), &application, &QApplication::quit);
  window.resize(400, 400);
  window.show();
  QApplication::exec();

  std::cout << "Longest time between two frames: " << window.longestGap() << " ms.\n"
            << "Reports that are left for the next run: " << sender.stop(5s) << ".\n";
}
