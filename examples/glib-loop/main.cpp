// SPDX-License-Identifier: Apache-2.0
// glib-loop [SECONDS [CONFIGURATION-URL]]: a main loop, as of a GTK application, that draws 60
// frames a second, whatever the reporting server does. It hands over a report every half second,
// and prints the receipts. At the end it prints the longest time between two frames.

#include <glib-unix.h>
#include <ztportal/ztportal.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

namespace {

struct Application {
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  ZtBackgroundSender sender;
  gint64 lastFrame = g_get_monotonic_time();
  gint64 longestGap = 0;  // microseconds
};

gboolean drawFrame(gpointer data) {
  auto& application = *static_cast<Application*>(data);
  const gint64 now = g_get_monotonic_time();
  application.longestGap = std::max(application.longestGap, now - application.lastFrame);
  application.lastFrame = now;
  return G_SOURCE_CONTINUE;
}

gboolean handOver(gpointer data) {
  // Without a URL, because a document with one waits for the server when it is created.
  const auto document =
      ZtPortalData::initWithValues("", false, REP_CUSTOMERID_ZT, REP_APPID_ZT_REPAIRTOOL, "3.0");
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  if (!static_cast<Application*>(data)->sender.send(*document)) {
    std::cerr << document->lastDelivery().saveError << '\n';
  }
  return G_SOURCE_CONTINUE;
}

gboolean takeReceipts(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
  for (const auto& receipt : static_cast<Application*>(data)->sender.receipts()) {
    std::cout << receipt.report.reportId << ": " << receipt.delivery.message << '\n';
  }
  return G_SOURCE_CONTINUE;
}

gboolean quit(gpointer data) {
  g_main_loop_quit(static_cast<Application*>(data)->loop);
  return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) {
  ZtHost::setBundleInfo({{"CFBundleName", "Example Loop"}, {"CFBundleShortVersionString", "3.0"}});
  ZtBackgroundOptions options;
  options.configurationUrl = argc > 2 ? ZtString(argv[2]) : REP_URL_ZT;
  Application application{.sender = ZtBackgroundSender(options)};

  g_timeout_add(16, drawFrame, &application);
  g_timeout_add(500, handOver, &application);
  g_unix_fd_add(application.sender.descriptor(), G_IO_IN, takeReceipts, &application);
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
  g_timeout_add(static_cast<guint>(1000 * seconds), quit, &application);
  g_main_loop_run(application.loop);
  g_main_loop_unref(application.loop);

  std::cout << "Longest time between two frames: "
            << static_cast<double>(application.longestGap) / 1000 << " ms.\n"
            << "Reports that are left for the next run: "
            << application.sender.stop(std::chrono::seconds(5)) << ".\n";
}
