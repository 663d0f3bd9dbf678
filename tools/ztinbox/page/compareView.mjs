// SPDX-License-Identifier: Apache-2.0
// Two reports side by side, field by field.

import {listReports, readReport} from "./api.mjs";
import {compareReports, countStates} from "./compare.mjs";
import {h} from "./dom.mjs";
import {timeText, nameOf} from "./format.mjs";

const STATES = {equal: "equal", changed: "changed"};
const MOST_ROWS = 5_000;
const LONGEST_VALUE = 2_000;

function valueCell(value) {
  if (value === null) return h("td", {class: "none"}, "—");
  return h("td", {}, value.length > LONGEST_VALUE ? `${value.slice(0, LONGEST_VALUE)}…` : value);
}

function table(rows, left, right) {
  const words = {...STATES, left: `only #${left.number}`, right: `only #${right.number}`};
  return h("div", {class: "scroll", tabindex: "0", role: "region", "aria-label": "Fields of both reports"},
    h("table", {class: "compared"},
      h("thead", {}, h("tr", {}, h("th", {scope: "col"}, "Field"), h("th", {scope: "col"}, `#${left.number}`), h("th", {scope: "col"}, `#${right.number}`), h("th", {scope: "col"}, "State"))),
      h("tbody", {}, ...rows.slice(0, MOST_ROWS).map((row) => h("tr", {"data-state": row.state},
        h("th", {scope: "row"}, h("span", {class: "path"}, row.path.slice(0, -1).join(" › ")), " ", row.path.at(-1)),
        valueCell(row.left),
        valueCell(row.right),
        h("td", {class: "word"}, words[row.state]))))));
}

function optionText(report) {
  const words = [`#${report.number}`, timeText(report.received), nameOf(report), report.applicationVersion, report.result];
  return words.filter(Boolean).join("  ");
}

// The reports to choose from: those of the same application, or else the newest.
async function candidates(report) {
  const same = report.applicationId ? await listReports({application: report.applicationId, limit: 100}) : [];
  const others = same.filter(({number}) => number !== report.number);
  return others.length > 0 ? others : (await listReports({limit: 100})).filter(({number}) => number !== report.number);
}

// `go(number)` opens the comparison with another report.
export async function compareView(report, otherNumber, go) {
  const choices = await candidates(report);
  if (choices.length === 0 && !otherNumber) {
    return h("p", {class: "quiet block"}, "There is no other report to compare with.");
  }
  const select = h("select", {id: "other", onchange: () => go(Number(select.value))},
    ...(otherNumber ? [] : [h("option", {value: ""}, "Choose a report")]),
    ...(otherNumber && !choices.some(({number}) => number === otherNumber) ? [h("option", {value: otherNumber}, `#${otherNumber}`)] : []),
    ...choices.map((choice) => h("option", {value: choice.number}, optionText(choice))));
  if (otherNumber) select.value = String(otherNumber);
  const head = h("div", {class: "block-head"}, h("label", {for: "other"}, "Compare with"), select);
  if (!otherNumber) return h("div", {class: "block"}, head);

  const other = await readReport(otherNumber);
  const rows = compareReports(report, other);
  const counts = countStates(rows);
  const body = h("div", {});
  const toggle = h("input", {type: "checkbox", id: "only-differences", checked: true});
  const show = () => {
    const shown = toggle.checked ? rows.filter(({state}) => state !== "equal") : rows;
    body.replaceChildren(...(shown.length > 0 ? [table(shown, report, other)] : [h("p", {class: "quiet"}, "No field differs.")]));
    if (shown.length > MOST_ROWS) body.append(h("p", {class: "quiet"}, `The first ${MOST_ROWS} of ${shown.length} rows are shown.`));
  };
  toggle.addEventListener("change", show);
  show();
  head.append(h("span", {class: "gap"}), toggle, h("label", {for: "only-differences"}, "Differences only"));
  const incomplete = report.complete && other.complete ? null : h("p", {class: "quiet"}, "Only the beginning of very large reports and values is compared.");
  return h("div", {class: "block"}, head,
    h("p", {class: "quiet"}, `${counts.changed} changed · ${counts.left} only in #${report.number} · ${counts.right} only in #${other.number} · ${counts.equal} equal`),
    incomplete, body);
}
