// SPDX-License-Identifier: Apache-2.0
// Entry point of the page: shows what the address asks for, adds new reports, handles keys and buttons.

import {ApiFault, deleteReport, deleteReports, listReports, markReport, markReports, readReport, readStatistics} from "./api.mjs";
import {openBehaviour, refreshBehaviour} from "./behaviour.mjs";
import {chartsView} from "./charts.mjs";
import {confirmed, openHelp} from "./dialogs.mjs";
import {byId, h, toast} from "./dom.mjs";
import {countText, nameOf} from "./format.mjs";
import {ReportList, emptyText} from "./list.mjs";
import {LiveReports} from "./live.mjs";
import {parseQuery} from "./query.mjs";
import {reportView} from "./report.mjs";
import {addressOf, readRoute} from "./route.mjs";

const REFRESH = 5_000;
const GATHER = 150;
const REST = 1_000;
const TYPING = 250;

let route = readRoute("");
let shownQuery = null;
let statistics = {reports: 0, unread: 0, total: 0};
let paneLoads = 0;

const list = new ReportList((number) => addressOf({view: "", number, query: route.query}));
list.onChange = showHead;

function go(change, {replace = false} = {}) {
  const address = addressOf({...route, ...change});
  if (replace) {
    history.replaceState(null, "", address);
    follow();
  } else {
    location.hash = address;
  }
}

const closePane = () => {
  const {number} = route;
  go({page: "list", number: null, view: "", other: null});
  setTimeout(() => (number === null ? byId("list").focus() : list.focus(number)));
};

// Runs an action that the user asked for, and shows a message if the inbox refuses it.
async function attempt(action) {
  try {
    return await action();
  } catch (error) {
    if (!(error instanceof ApiFault)) throw error;
    toast(`That failed: ${error.message}.`, "bad");
    return undefined;
  }
}

// Runs an action that the user did not ask for. Errors are not shown; the header shows a lost
// connection.
async function quietly(action) {
  try {
    await action();
  } catch (error) {
    if (!(error instanceof ApiFault)) throw error;
  }
}

function showHead() {
  const {reports, unread, total} = statistics;
  const unreadText = unread > 0 ? ` · ${unread.toLocaleString("en")} unread` : "";
  byId("list-title").textContent = list.isFiltered ? "Found" : "Reports";
  byId("list-count").textContent = list.isFiltered ? `${reports.toLocaleString("en")} of ${total.toLocaleString("en")}${unreadText}` : `${reports.toLocaleString("en")}${unreadText}`;
  byId("delete-all").textContent = list.isFiltered ? "Delete found" : "Delete all";
  byId("delete-all").disabled = list.reports.length === 0;
  byId("mark-all").disabled = unread === 0;
  document.title = unread > 0 ? `(${unread}) Inbox` : "Inbox";
  const empty = byId("empty");
  const isEmpty = list.reports.length === 0;
  if (isEmpty) empty.replaceChildren(...emptyText(list, statistics, location.origin));
  empty.hidden = !isEmpty;
}

async function refreshStatistics() {
  const found = await readStatistics(list.parameters);
  const total = list.isFiltered ? (await readStatistics({})).reports : found.reports;
  statistics = {...found, total};
  showHead();
}

function showFault(text) {
  byId("query-fault").textContent = text ?? "";
  byId("query").setAttribute("aria-invalid", text ? "true" : "false");
}

async function showList() {
  if (shownQuery === route.query) return;
  shownQuery = route.query;
  if (document.activeElement !== byId("query")) byId("query").value = route.query;
  const {parameters, fault} = parseQuery(route.query);
  showFault(fault);
  if (fault) return;
  try {
    await list.load(parameters);
    await refreshStatistics();
  } catch (error) {
    if (!(error instanceof ApiFault)) throw error;
    showFault(error.message);
  }
}

const actionsFor = (report) => ({
  address: (number, view = "") => addressOf({page: "report", number, view, query: route.query}),
  compare: (other) => go({other: other || null}),
  close: closePane,
  remove: () => removeOne(report),
  unread: () => attempt(async () => {
    await markReport(report.number, false);
    list.setRead(report.number, false);
    closePane();
    await refreshStatistics();
  }),
});

async function openReport() {
  const load = ++paneLoads;
  let report;
  let content;
  try {
    report = await readReport(route.number);
    content = await reportView(report, route, actionsFor(report));
  } catch (error) {
    if (!(error instanceof ApiFault)) throw error;
    if (error.status === 404 && !report) list.remove(route.number);
    content = [h("div", {class: "pane-body"}, h("h2", {tabindex: "-1", id: "pane-title"}, "Report not found"),
      h("p", {}, `Report #${route.number}${route.other ? ` or #${route.other}` : ""} cannot be shown: ${error.message}.`),
      h("p", {}, h("a", {href: addressOf({page: "list", query: route.query})}, "Back to the list")))];
  }
  if (load !== paneLoads) return;
  showPane(content);
  if (!report || report.read) return;
  await attempt(() => markReport(report.number, true));
  list.setRead(report.number, true);
  await refreshStatistics();
}

async function openCharts() {
  const load = ++paneLoads;
  const {parameters, fault} = parseQuery(route.query);
  const found = await attempt(() => readStatistics(fault ? {} : parameters));
  if (found && load === paneLoads) showPane(chartsView(found, fault ? "" : route.query, closePane));
}

let focusPane = false;

function showPane(content) {
  const pane = byId("pane");
  pane.replaceChildren(...content);
  pane.scrollTop = 0;
  if (focusPane) byId("pane-title")?.focus();
  focusPane = false;
}

async function follow() {
  const before = route;
  route = readRoute(location.hash);
  document.body.dataset.view = route.page;
  byId("pane").hidden = route.page === "list";
  byId("to-charts").setAttribute("href", addressOf(route.page === "charts" ? {page: "list", query: route.query} : {page: "charts", query: route.query}));
  if (route.page === "charts") byId("to-charts").setAttribute("aria-current", "page");
  else byId("to-charts").removeAttribute("aria-current");
  const moved = before.page !== route.page || before.number !== route.number || before.view !== route.view || before.other !== route.other;
  const listed = showList();
  list.refreshAddresses();
  list.open(route.number);
  if (route.page === "list") {
    paneLoads += 1;
    byId("pane").replaceChildren();
  } else if (moved || before.query !== route.query) {
    focusPane = focusPane || !byId("list").contains(document.activeElement) && document.activeElement !== byId("query");
    await (route.page === "charts" ? openCharts() : openReport());
  }
  await listed;
}

async function removeOne(report) {
  const text = `This permanently deletes report #${report.number} of ${nameOf(report)}.`;
  if (!(await confirmed("Delete this report?", text, "Delete"))) return;
  await attempt(async () => {
    await deleteReport(report.number);
    list.remove(report.number);
    closePane();
    await refreshStatistics();
  });
}

async function removeAll() {
  const {isFiltered, parameters, newest} = list;
  await attempt(refreshStatistics);
  const count = countText(statistics.reports, "report");
  const title = isFiltered ? "Delete the found reports?" : "Delete all reports?";
  const text = `This permanently deletes ${count}${isFiltered ? " and keeps all others" : ""}.`;
  if (!(await confirmed(title, text, isFiltered ? `Delete ${statistics.reports}` : "Delete all"))) return;
  await attempt(async () => {
    // Keeps the reports that arrived after the list was shown.
    const {deleted} = await deleteReports(isFiltered ? {...parameters, before: newest + 1} : {});
    toast(`${countText(deleted, "report")} deleted`);
    if (route.page === "report") closePane();
    await list.load();
    await refreshStatistics();
  });
}

async function markAll() {
  await attempt(async () => {
    await markReports({...list.parameters, before: list.newest + 1}, true);
    await list.load();
    await refreshStatistics();
  });
}

// Computing the statistics of many reports takes a while, so they are read at most once a second.
let resting = false;
let stale = false;

async function refreshSoon() {
  stale = true;
  if (resting) return;
  resting = true;
  while (stale) {
    stale = false;
    await quietly(async () => {
      await Promise.all([refreshStatistics(), refreshBehaviour()]);
      if (route.page === "charts") await openCharts();
    });
    await new Promise((resolve) => setTimeout(resolve, REST));
  }
  resting = false;
}

// Reports can arrive faster than rows can be built, so they are collected briefly.
let gathered = [];

async function takeGathered() {
  const reports = gathered;
  gathered = [];
  await quietly(() => list.arrive(reports));
  refreshSoon();
  const last = reports.at(-1);
  byId("news").textContent = reports.length > 1 ? `${reports.length} new reports` : `New report of ${nameOf(last)}: ${last.answer}${last.result ? `, ${last.result}` : ""}`;
}

const live = new LiveReports({
  onReport(report) {
    if (gathered.push(report) === 1) setTimeout(takeGathered, GATHER);
  },
  onChanged() {
    quietly(() => list.refresh());
    refreshSoon();
  },
  onState(state) {
    byId("live").dataset.state = state;
    byId("live-text").textContent = state === "live" ? "live" : "no connection";
  },
  onAgain() {
    quietly(() => list.load());
    refreshSoon();
  },
});

function move(step) {
  const number = list.next(step);
  if (number === null) return;
  if (byId("list").checkVisibility()) list.focus(number);
  if (route.page === "report") go({number, other: null, view: route.view === "compare" ? "" : route.view}, {replace: true});
}

function leave() {
  if (route.page !== "list") return closePane();
  if (route.query) go({query: ""});
  return undefined;
}

const KEYS = {
  j: () => move(1),
  k: () => move(-1),
  "/": () => byId("query").select(),
  "?": openHelp,
  Escape: leave,
};

function onKey(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || document.querySelector("dialog[open]")) return;
  if (event.target.closest("input, textarea, select")) return;
  const act = KEYS[event.key];
  if (!act) return;
  event.preventDefault();
  act();
}

function onSearchKey(event) {
  if (event.key !== "Escape") return;
  event.preventDefault();
  if (byId("query").value !== "") {
    byId("query").value = "";
    search();
  } else {
    byId("query").blur();
  }
}

function search() {
  const query = byId("query").value.trim();
  if (query !== route.query) go({query}, {replace: true});
}

let typing;

function wire() {
  addEventListener("hashchange", follow);
  document.addEventListener("keydown", onKey);
  byId("query").addEventListener("keydown", onSearchKey);
  byId("query").addEventListener("input", () => {
    clearTimeout(typing);
    typing = setTimeout(search, TYPING);
  });
  byId("search").addEventListener("submit", (event) => {
    event.preventDefault();
    clearTimeout(typing);
    search();
    list.focus(list.newest);
  });
  byId("switch").addEventListener("click", () => attempt(openBehaviour));
  byId("to-help").addEventListener("click", openHelp);
  byId("delete-all").addEventListener("click", removeAll);
  byId("mark-all").addEventListener("click", markAll);
  byId("rows").addEventListener("click", () => {
    focusPane = true;
  });
  document.querySelector(".skip").addEventListener("click", (event) => {
    event.preventDefault();
    byId("list").focus();
  });
  setInterval(() => {
    if (!document.hidden) quietly(refreshBehaviour);
  }, REFRESH);
}

wire();
quietly(refreshBehaviour);
// Read before the list, so that no report that arrives in between is missed.
const newest = (await attempt(() => listReports({limit: 1})))?.[0]?.number ?? 0;
await follow();
live.start(newest);
