// SPDX-License-Identifier: Apache-2.0
// One report, in four views: its content, its raw text, its HTTP request, and a comparison.

import {rawAddress} from "./api.mjs";
import {compareView} from "./compareView.mjs";
import {h} from "./dom.mjs";
import {answerTone, durationText, fullTimeText, nameOf, resultTone, sizeText} from "./format.mjs";
import {badge} from "./list.mjs";
import {operatorText} from "./query.mjs";
import {copyText, rawView} from "./rawView.mjs";
import {timelineView} from "./timelineView.mjs";

const VIEWS = [
  ["", "Report"],
  ["raw", "Raw text"],
  ["request", "Request"],
  ["compare", "Compare"],
];

function searchLink(operator, value) {
  if (!value) return h("span", {class: "none"}, "none");
  const query = operatorText(operator, value);
  return h("a", {href: `#/?q=${encodeURIComponent(query)}`, title: `Search ${query}`}, value);
}

function summary(report, address) {
  const rows = [
    ["Customer", searchLink("customer", report.customerId)],
    ["Application", searchLink("application", report.applicationId)],
    ["Version", report.applicationVersion || h("span", {class: "none"}, "none")],
    ["Machine", searchLink("machine", report.machineId)],
    ["Report ID", report.reportId || h("span", {class: "none"}, "none")],
    ["Received", h("time", {datetime: report.received}, fullTimeText(report.received))],
    ["From", report.sender],
    ["Size", sizeText(report.size)],
  ];
  if (report.duration !== null) rows.push(["Duration", durationText(report.duration)]);
  const others = report.sameId.slice(0, 20).flatMap((number, index) => [index > 0 ? ", " : "", h("a", {href: address(number)}, `#${number}`)]);
  if (others.length > 0) rows.push(["Same ID", h("span", {}, ...others, report.sameId.length > 20 ? ", …" : "")]);
  return h("dl", {class: "summary block"}, ...rows.map(([term, value]) => h("div", {}, h("dt", {}, term), h("dd", {}, value))));
}

function groupView(field) {
  const size = field.groups.reduce((sum, group) => sum + group.length, 0);
  const groups = field.groups.length === 1 ? `${size} fields` : `${field.groups.length} groups`;
  return h("details", {},
    h("summary", {}, `${groups}`),
    ...field.groups.map((group, index) => h("div", {class: "group"},
      field.groups.length > 1 ? h("p", {class: "quiet"}, String(index + 1)) : null,
      fieldTable(group, `${field.name} ${index + 1}`))));
}

function valueView(field) {
  if (field.groups) return groupView(field);
  const parts = [field.value];
  if (field.size) parts.push(h("span", {class: "quiet"}, ` … ${sizeText(field.size)} in all`));
  return h("span", {class: "value"}, ...parts);
}

function fieldTable(fields, caption) {
  if (fields.length === 0) return h("p", {class: "quiet"}, "No fields.");
  return h("table", {class: "fields-table"},
    h("caption", {class: "hidden"}, caption),
    h("colgroup", {}, h("col", {class: "name-column"}), h("col", {class: "type-column"}), h("col")),
    h("thead", {class: "hidden"}, h("tr", {}, h("th", {scope: "col"}, "Name"), h("th", {scope: "col"}, "Type"), h("th", {scope: "col"}, "Value"))),
    h("tbody", {}, ...fields.map((field) => h("tr", {},
      h("th", {scope: "row"}, field.name),
      h("td", {class: "type"}, field.type),
      h("td", {}, valueView(field))))));
}

function poolView(pool) {
  return h("section", {class: "block pool"},
    h("div", {class: "block-head"},
      h("h3", {}, pool.type || "unnamed pool"),
      pool.result ? badge(pool.result, resultTone(pool.result)) : null,
      h("span", {class: "quiet"}, pool.date)),
    fieldTable(pool.fields, `Fields of ${pool.type}`));
}

function faultView(report, address) {
  const what = report.content.length === 0 ? "No pool" : "Only a part";
  return h("p", {class: "block", role: "note"}, `${what} of this report can be read: ${report.fault}. See its `, h("a", {href: address(report.number, "raw")}, "raw text"), ".");
}

function contentView(report, address) {
  const runs = report.content.filter((pool) => pool.steps?.length > 0);
  return [
    summary(report, address),
    ...runs.map(timelineView),
    ...report.content.map(poolView),
    report.fault ? faultView(report, address) : null,
    report.content.length === 0 && !report.fault ? h("p", {class: "quiet block"}, "This report has no pools.") : null,
    report.complete ? null : h("p", {class: "quiet block"}, "Only the beginning of this very large report is shown. The download is complete."),
  ];
}

function requestView(report) {
  const text = [report.request, ...report.headers.map(({name, value}) => `${name}: ${value}`)].join("\n");
  return h("div", {class: "block"},
    h("div", {class: "block-head"}, h("h3", {}, "Request"), h("code", {}, report.request), h("span", {class: "gap"}),
      h("button", {type: "button", onclick: () => copyText(text)}, "Copy")),
    h("table", {class: "fields-table"},
      h("caption", {class: "hidden"}, "Headers of the request"),
      h("colgroup", {}, h("col", {class: "name-column"}), h("col")),
      h("thead", {class: "hidden"}, h("tr", {}, h("th", {scope: "col"}, "Name"), h("th", {scope: "col"}, "Value"))),
      h("tbody", {}, ...report.headers.map(({name, value}) => h("tr", {}, h("th", {scope: "row"}, name), h("td", {}, h("span", {class: "value"}, value)))))));
}

async function bodyOf(report, route, actions) {
  if (route.view === "raw") return [await rawView(report)];
  if (route.view === "request") return [requestView(report)];
  if (route.view === "compare") return [await compareView(report, route.other, actions.compare)];
  return contentView(report, actions.address);
}

// The whole pane. `actions` has address(number, view), compare(number), close(), remove(), unread().
export async function reportView(report, route, actions) {
  const body = await bodyOf(report, route, actions);
  const head = h("header", {class: "pane-head"},
    h("div", {class: "pane-title"},
      h("button", {type: "button", class: "back", "aria-label": "Back to the list", title: "Back to the list (Esc)", onclick: actions.close}, "←"),
      h("h2", {tabindex: "-1", id: "pane-title"}, nameOf(report), report.applicationVersion ? h("span", {class: "version"}, ` ${report.applicationVersion}`) : null),
      h("span", {class: "number"}, `#${report.number}`),
      badge(report.answer, answerTone(report.answer)),
      report.result ? badge(report.result, resultTone(report.result)) : null,
      report.test ? badge("test", "plain") : null,
      report.duplicateOf === null ? null : h("a", {class: "badge", "data-tone": "plain", href: actions.address(report.duplicateOf)}, `duplicate of #${report.duplicateOf}`),
      h("span", {class: "gap"}),
      h("span", {class: "buttons"},
        h("a", {class: "button", href: rawAddress(report.number), download: `report-${report.number}.xml`}, "Download"),
        h("button", {type: "button", onclick: actions.unread}, "Unread"),
        h("button", {type: "button", class: "danger", onclick: actions.remove}, "Delete"))),
    h("nav", {class: "views", "aria-label": "Views of the report"},
      ...VIEWS.map(([view, label]) => h("a", {href: actions.address(report.number, view), "aria-current": view === route.view ? "page" : null}, label))));
  return [head, h("div", {class: "pane-body"}, ...body.filter(Boolean))];
}
