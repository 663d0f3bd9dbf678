// SPDX-License-Identifier: Apache-2.0
// Reads and writes the page's addresses: #/, #/charts, #/reports/12, #/reports/12/raw,
// #/reports/12/request, #/reports/12/compare/9. Each may end in ?q= and the search text.

const REPORT = /^\/reports\/([1-9]\d{0,18})(?:\/(raw|request|compare)(?:\/([1-9]\d{0,18}))?)?$/;

export function readRoute(hash) {
  const [path, query = ""] = hash.replace(/^#/, "").split(/\?(.*)/s);
  const common = {query: new URLSearchParams(query).get("q") ?? "", number: null, view: "", other: null};
  if (path === "/charts") return {...common, page: "charts"};
  const [, number, view = "", other] = REPORT.exec(path) ?? [];
  if (number === undefined) return {...common, page: "list"};
  return {...common, page: "report", number: Number(number), view, other: other === undefined ? null : Number(other)};
}

export function addressOf({page = "report", number = null, view = "", other = null, query = ""}) {
  let path = "/";
  if (page === "charts") path = "/charts";
  if (page === "report" && number !== null) {
    path = `/reports/${number}${view ? `/${view}` : ""}${view === "compare" && other ? `/${other}` : ""}`;
  }
  return `#${path}${query ? `?q=${encodeURIComponent(query)}` : ""}`;
}
