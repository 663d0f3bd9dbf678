// SPDX-License-Identifier: Apache-2.0
// The stream of new reports. After a lost connection the browser reconnects by itself, starting after
// the last report that it received. If the browser gives up, this module does the same.

import {eventsAddress} from "./api.mjs";

const PAUSE = 2_000;

// Calls onReport(report) for each new report, onChanged() when any client deleted or marked reports,
// onState("live" or "lost"), and onAgain() when the connection is back.
export class LiveReports {
  constructor({onReport, onChanged, onState, onAgain}) {
    this.onReport = onReport;
    this.onChanged = onChanged;
    this.onState = onState;
    this.onAgain = onAgain;
    this.last = 0;
    this.lost = false;
  }

  start(after) {
    this.last = after;
    this.connect();
  }

  connect() {
    const source = new EventSource(eventsAddress(this.last));
    source.addEventListener("open", () => {
      this.onState("live");
      if (this.lost) this.onAgain();
      this.lost = false;
    });
    source.addEventListener("report", (event) => {
      this.last = Number(event.lastEventId);
      this.onReport(JSON.parse(event.data));
    });
    source.addEventListener("changed", () => this.onChanged());
    source.addEventListener("error", () => {
      this.lost = true;
      this.onState("lost");
      if (source.readyState !== EventSource.CLOSED) return;
      setTimeout(() => this.connect(), PAUSE);
    });
  }
}
