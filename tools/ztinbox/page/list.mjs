// SPDX-License-Identifier: Apache-2.0
// The list of reports, newest first. New reports are added on top; older ones are loaded page by page.

import {listReports} from "./api.mjs";
import {byId, h} from "./dom.mjs";
import {answerTone, countText, durationText, fullTimeText, timeText, nameOf, resultTone, sizeText} from "./format.mjs";

const PAGE = 100;
// When new reports make the list longer than this, the oldest rows are removed.
const MOST_ROWS = 1_000;

export function badge(text, tone) {
  return h("span", {class: "badge", "data-tone": tone}, text);
}

function rowOf(report, address) {
  const result = report.result ?? "";
  return h(
    "li",
    {class: "row", "data-number": report.number, "data-unread": report.read ? null : "", "data-tone": resultTone(report.result)},
    h(
      "a",
      {href: address(report.number), class: "row-link"},
      h("span", {class: "mark"}, report.read ? null : h("span", {class: "hidden"}, "unread ")),
      h("span", {class: "who"}, nameOf(report), report.applicationVersion ? h("span", {class: "version"}, ` ${report.applicationVersion}`) : null),
      h("span", {class: "app"}, report.applicationId ?? ""),
      h("time", {class: "when", datetime: report.received, title: fullTimeText(report.received)}, timeText(report.received)),
      h(
        "span",
        {class: "facts"},
        badge(report.answer, answerTone(report.answer)),
        result ? badge(result, resultTone(result)) : null,
        report.test ? badge("test", "plain") : null,
        report.duplicateOf === null ? null : badge(`duplicate of #${report.duplicateOf}`, "plain"),
      ),
      h("span", {class: "pools"}, report.pools.slice(0, 6).join(" · "), report.pools.length > 6 ? ` · ${report.pools.length - 6} more` : ""),
      h("span", {class: "took"}, durationText(report.duration)),
      h("span", {class: "size"}, sizeText(report.size)),
      h("span", {class: "number"}, `#${report.number}`),
    ),
  );
}

export class ReportList {
  // `address(number)` returns the link target of a row.
  constructor(address) {
    this.address = address;
    this.rows = byId("rows");
    this.reports = [];
    this.parameters = {};
    this.more = false;
    this.loads = 0;
    this.opened = null;
    this.onChange = () => {};
    byId("older").addEventListener("click", () => this.loadOlder());
  }

  get newest() {
    return this.reports[0]?.number ?? 0;
  }

  get isFiltered() {
    return Object.keys(this.parameters).length > 0;
  }

  // Shows the newest reports that `parameters` find; throws an ApiFault.
  async load(parameters = this.parameters) {
    const load = ++this.loads;
    const found = await listReports({...parameters, limit: PAGE});
    if (load !== this.loads) return;
    this.parameters = parameters;
    this.reports = found;
    this.more = found.length === PAGE;
    this.rows.replaceChildren(...found.map((report) => rowOf(report, this.address)));
    this.changed();
  }

  async loadOlder() {
    const load = this.loads;
    const last = this.reports.at(-1).number;
    const found = await listReports({...this.parameters, limit: PAGE, before: last});
    if (load !== this.loads) return;
    this.reports.push(...found);
    this.more = found.length === PAGE;
    const rows = found.map((report) => rowOf(report, this.address));
    this.rows.append(...rows);
    this.changed();
    rows[0]?.firstChild.focus();
  }

  // Adds new reports, which are given oldest first.
  async arrive(reports) {
    let fresh = reports;
    if (this.isFiltered) {
      const load = this.loads;
      fresh = (await listReports({...this.parameters, limit: PAGE})).reverse();
      if (load !== this.loads) return;
    }
    const newest = this.newest;
    fresh = fresh.filter((report) => report.number > newest).reverse();
    if (fresh.length === 0) return;
    this.rows.prepend(...fresh.map((report) => {
      const row = rowOf(report, this.address);
      row.classList.add("fresh");
      return row;
    }));
    this.reports.unshift(...fresh);
    if (this.reports.length > MOST_ROWS) {
      this.reports.length = MOST_ROWS;
      while (this.rows.children.length > MOST_ROWS) this.rows.lastChild.remove();
      this.more = true;
    }
    this.changed();
  }

  // Shows what was deleted or marked elsewhere, without moving the list.
  async refresh() {
    const load = this.loads;
    if (this.reports.length === 0) return;
    const found = await listReports({...this.parameters, limit: MOST_ROWS, before: this.newest + 1});
    if (load !== this.loads) return;
    const oldest = found.length === MOST_ROWS ? found.at(-1).number : 0;
    const current = new Map(found.map((report) => [report.number, report]));
    for (const report of this.reports.filter(({number}) => number >= oldest)) {
      const now = current.get(report.number);
      if (!now) this.remove(report.number);
      else if (now.read !== report.read) this.setRead(report.number, now.read);
    }
    if (this.reports.length < Math.min(PAGE, found.length)) await this.load();
  }

  remove(number) {
    const index = this.reports.findIndex((report) => report.number === number);
    if (index < 0) return;
    this.reports.splice(index, 1);
    this.rows.children[index].remove();
    this.changed();
  }

  setRead(number, read) {
    const report = this.reports.find((candidate) => candidate.number === number);
    if (!report) return;
    report.read = read;
    const row = rowOf(report, this.address);
    const old = this.rowOf(number);
    const focused = old.contains(document.activeElement);
    old.replaceWith(row);
    if (focused) row.firstChild.focus();
    this.changed();
  }

  // Marks the row of the opened report.
  open(number) {
    this.opened = number;
    this.changed();
  }

  // The number of the report `step` rows below the focused one, or else the open one; null beyond either
  // end of the list.
  next(step) {
    const focused = document.activeElement?.closest(".row");
    const from = Number(focused?.dataset.number ?? this.opened ?? 0);
    const index = this.reports.findIndex((report) => report.number === from);
    if (index < 0) return this.reports[0]?.number ?? null;
    return this.reports[index + step]?.number ?? null;
  }

  focus(number) {
    const link = this.rowOf(number)?.firstChild;
    link?.focus();
    link?.scrollIntoView({block: "nearest"});
  }

  refreshAddresses() {
    for (const row of this.rows.children) row.firstChild.setAttribute("href", this.address(row.dataset.number));
  }

  rowOf(number) {
    return this.rows.querySelector(`[data-number="${Number(number)}"]`);
  }

  changed() {
    for (const row of this.rows.querySelectorAll("[aria-current]")) row.removeAttribute("aria-current");
    if (this.opened !== null) this.rowOf(this.opened)?.firstChild.setAttribute("aria-current", "true");
    byId("older").hidden = !this.more;
    this.onChange(this);
  }
}

// The content that is shown when the list is empty.
export function emptyText(list, statistics, origin) {
  if (list.isFiltered) {
    return [
      h("h3", {}, "Nothing found"),
      h("p", {}, `None of ${countText(statistics?.total ?? 0, "report")} matches this search. Operators need the exact value; words also find longer words that start with them.`),
      h("p", {}, h("a", {href: "#/"}, "Show all reports")),
    ];
  }
  const line = (text) => h("pre", {tabindex: "0"}, text);
  return [
    h("h3", {}, "No reports yet"),
    h("p", {}, "Point a host at this inbox in one of two ways. Its reports then appear here as they arrive."),
    h("h4", {}, "As an HTTP proxy, without changing the host"),
    line(`http_proxy=${origin} ./your-host`),
    h("h4", {}, "As its configuration URL"),
    line(`${origin}/reporting/kelvane.xml`),
    h("p", {}, "Or try it from the command line:"),
    line(`ztreport send --config-url ${origin}/reporting/kelvane.xml report.json`),
  ];
}
