// The stream of reports that come in. The browser resumes it by itself with the number of the last
// report it got; where it has given up, the stream is begun anew behind that report.

import {eventsAddress} from "./api.mjs";

const PAUSE = 2_000;

// onReport(report), onChanged() when reports were deleted or marked by whomever, onState("live" or
// "lost"), onAgain() when the connection is back.
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
