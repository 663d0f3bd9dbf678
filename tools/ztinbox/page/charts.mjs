// SPDX-License-Identifier: Apache-2.0
// Charts of all stored reports, or of those that a search finds.

import {barsOf, widthText} from "./chartScale.mjs";
import {h, svg} from "./dom.mjs";
import {clockText, countText, dateText, durationText, resultTone, sizeText} from "./format.mjs";

const MOST_BARS = 90;
const HEIGHT = 140;
const KINDS = [
  ["accepted", "accepted", "good"],
  ["refused", "refused", "bad"],
  ["failed", "fault or no response", "warn"],
];

function percent(part) {
  return `${(part * 100).toFixed(3)}%`;
}

function legend(rows) {
  return h("ul", {class: "legend"}, ...rows.map(([text, tone]) => h("li", {}, h("span", {class: "swatch", "data-tone": tone, "aria-hidden": "true"}), text)));
}

function figures(title, columns, rows) {
  return h("details", {class: "figures"}, h("summary", {}, "Figures"),
    h("div", {class: "scroll", tabindex: "0", role: "region", "aria-label": title},
      h("table", {}, h("caption", {class: "hidden"}, title),
        h("thead", {}, h("tr", {}, ...columns.map((column) => h("th", {scope: "col"}, column)))),
        h("tbody", {}, ...rows.map(([first, ...others]) => h("tr", {}, h("th", {scope: "row"}, first), ...others.map((value) => h("td", {}, String(value)))))))));
}

function minuteText(date) {
  return `${dateText(date)} ${clockText(date).slice(0, 5)}`;
}

function barView(bar, index, count, highest) {
  let top = HEIGHT;
  const parts = KINDS.map(([key, , tone]) => {
    const height = (bar[key] / highest) * HEIGHT;
    top -= height;
    return height > 0 ? svg("rect", {"data-tone": tone, x: percent((index + 0.08) / count), width: percent(0.84 / count), y: top.toFixed(2), height: height.toFixed(2)}) : null;
  });
  const sums = KINDS.filter(([key]) => bar[key] > 0).map(([key, label]) => `${bar[key]} ${label}`);
  return svg("g", {}, svg("title", {}, `${minuteText(bar.begin)}: ${sums.join(", ") || "none"}`), ...parts);
}

function minutesChart({minutes}) {
  const {minutes: width, bars, highest} = barsOf(minutes, MOST_BARS);
  // Leaves space on the right if there are only a few bars.
  const count = Math.max(bars.length, 24);
  const title = `Answers per ${widthText(width)}`;
  const chart = svg("svg", {class: "chart", height: HEIGHT + 1, role: "img", "aria-label": `${title}: ${countText(bars.length, "bar")}, the highest ${highest}`},
    ...[0, 0.5, 1].map((part) => svg("line", {class: "tick", x1: 0, x2: "100%", y1: HEIGHT * part + 0.5, y2: HEIGHT * part + 0.5})),
    ...bars.map((bar, index) => barView(bar, index, count, highest)));
  return h("section", {class: "block"},
    h("div", {class: "block-head"}, h("h3", {}, title), h("span", {class: "gap"}), legend(KINDS.map(([, label, tone]) => [label, tone]))),
    h("div", {class: "plot"},
      h("div", {class: "plot-axis", "aria-hidden": "true"}, h("span", {}, String(highest)), h("span", {}, "0")),
      chart,
      h("div", {class: "plot-times", "aria-hidden": "true"}, h("span", {}, minuteText(bars[0].begin)), bars.length > 1 ? h("span", {}, minuteText(bars.at(-1).begin)) : null)),
    figures(title, ["From", "Accepted", "Refused", "Fault"], bars.filter((bar) => bar.accepted + bar.refused + bar.failed > 0)
      .map((bar) => [minuteText(bar.begin), bar.accepted, bar.refused, bar.failed])));
}

function resultsChart({results}) {
  const total = results.reduce((sum, {count}) => sum + count, 0);
  let from = 0;
  const parts = results.map(({result, count}) => {
    const start = from;
    from += count / total;
    return svg("rect", {"data-tone": resultTone(result), x: percent(start), width: percent(count / total), y: 0, height: 22});
  });
  const words = results.map(({result, count}) => `${count} ${result} (${Math.round((count / total) * 100)} %)`);
  return h("section", {class: "block"},
    h("div", {class: "block-head"}, h("h3", {}, "Results of the runs"), h("span", {class: "quiet"}, countText(total, "run"))),
    svg("svg", {class: "chart", height: 22, role: "img", "aria-label": words.join(", ")}, ...parts),
    legend(results.map(({result}, index) => [words[index], resultTone(result)])));
}

function stepsChart({steps}) {
  const longest = Math.max(...steps.map((step) => step.longest), 1);
  const rows = steps.map((step) => h("li", {class: "range"},
    h("span", {class: "range-name"}, step.name || "unnamed", h("span", {class: "quiet"}, ` × ${step.count}`)),
    svg("svg", {class: "track", height: 20, "aria-hidden": "true", focusable: "false"},
      svg("line", {class: "tick", x1: 0, x2: "100%", y1: 10, y2: 10}),
      svg("rect", {class: "span enter", x: percent(step.shortest / longest), width: percent(Math.max(step.longest - step.shortest, longest / 200) / longest), y: 6, height: 8, rx: 2}),
      svg("circle", {class: "mean", cx: percent(step.mean / longest), cy: 10, r: 4.5})),
    h("span", {class: "range-times"}, `${durationText(step.shortest)} – `, h("strong", {}, durationText(step.mean)), ` – ${durationText(step.longest)}`)));
  return h("section", {class: "block"},
    h("div", {class: "block-head"}, h("h3", {}, "Durations of the steps"), h("span", {class: "quiet"}, "shortest – mean – longest, most frequent steps first")),
    h("ol", {class: "ranges"}, ...rows));
}

// `query` is the search whose reports the charts show, for the headline.
export function chartsView(statistics, query, close) {
  const {reports, bytes, unread, tests} = statistics;
  const facts = [countText(reports, "report"), sizeText(bytes), `${unread} unread`, `${tests} to the test address`];
  return [
    h("header", {class: "pane-head"},
      h("div", {class: "pane-title"},
        h("button", {type: "button", class: "back", "aria-label": "Back to the list", title: "Back to the list (Esc)", onclick: close}, "←"),
        h("h2", {tabindex: "-1", id: "pane-title"}, "Charts"),
        h("span", {class: "quiet"}, query ? `of reports found by: ${query}` : "of all reports"))),
    h("div", {class: "pane-body"},
      h("p", {class: "block quiet"}, facts.join(" · ")),
      ...(reports === 0 ? [h("p", {class: "block"}, "Nothing to show yet.")] : [minutesChart(statistics)]),
      ...(statistics.results.length > 0 ? [resultsChart(statistics)] : []),
      ...(statistics.steps.length > 0 ? [stepsChart(statistics)] : [])),
  ];
}
