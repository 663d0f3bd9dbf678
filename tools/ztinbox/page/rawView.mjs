// SPDX-License-Identifier: Apache-2.0
// The text of a report with line numbers and highlighted XML errors.

import {readRaw} from "./api.mjs";
import {h, toast} from "./dom.mjs";
import {countText, sizeText} from "./format.mjs";
import {MOST_FAULTS, findFaults, markedLines, placeOf} from "./rawText.mjs";

const MOST_BYTES = 1024 * 1024;
const MOST_LINES = 20_000;

function decode(bytes) {
  try {
    return {text: new TextDecoder("utf-8", {fatal: true, ignoreBOM: true}).decode(bytes), isUtf8: true};
  } catch {
    return {text: new TextDecoder("utf-8", {ignoreBOM: true}).decode(bytes), isUtf8: false};
  }
}

// Each replacement character (U+FFFD) marks bytes that are not UTF-8.
function encodingFaults(text, isUtf8, cut) {
  if (isUtf8) return [];
  const faults = [];
  for (let at = text.indexOf("\ufffd"); at >= 0 && faults.length < MOST_FAULTS; at = text.indexOf("\ufffd", at + 1)) {
    if (cut && at >= text.length - 3) break;
    faults.push({start: at, end: at + 1, reason: "bytes that are not UTF-8"});
  }
  return faults;
}

export async function copyText(text) {
  try {
    await navigator.clipboard.writeText(text);
    toast("Copied");
  } catch {
    // Browsers give access to the clipboard only on loopback addresses and over HTTPS.
    const area = h("textarea", {class: "hidden", "aria-hidden": "true"});
    area.value = text;
    document.body.append(area);
    area.select();
    const done = document.execCommand("copy");
    area.remove();
    toast(done ? "Copied" : "The browser does not let the page copy", done ? "plain" : "bad");
  }
}

function lineView(parts, number) {
  return h("li", {class: "line", id: `line-${number}`},
    ...parts.map(({text, reason}) => (reason === null ? text : h("mark", {title: reason}, text))));
}

function goTo(line, pane) {
  const target = pane.querySelector(`#line-${line}`);
  if (!target) return;
  for (const old of pane.querySelectorAll(".line[data-aim]")) delete old.dataset.aim;
  target.dataset.aim = "";
  target.scrollIntoView({block: "center"});
}

function verdict(text, faults, pane, cut) {
  if (faults.length === 0) {
    return h("p", {class: "verdict", "data-tone": "good"}, cut ? "The part that is shown has no XML errors." : "Well-formed XML.");
  }
  const [first] = faults;
  const {line, column} = placeOf(text, first.start);
  const count = faults.length >= MOST_FAULTS ? `${MOST_FAULTS} errors or more` : countText(faults.length, "error");
  return h("div", {class: "verdict", "data-tone": "bad"},
    h("p", {}, "An XML parser stops at ",
      h("button", {type: "button", class: "link", onclick: () => goTo(line, pane)}, `line ${line}, column ${column}`),
      `: ${first.reason}.`),
    faults.length > 1 ? h("details", {}, h("summary", {}, count), h("ol", {class: "faults"}, ...faults.slice(0, 100).map((fault) => {
      const place = placeOf(text, fault.start);
      return h("li", {}, h("button", {type: "button", class: "link", onclick: () => goTo(place.line, pane)}, `${place.line}:${place.column}`), ` ${fault.reason}`);
    }))) : null);
}

export async function rawView(report) {
  const {bytes, cut} = await readRaw(report.number, MOST_BYTES);
  const {text, isUtf8} = decode(bytes);
  const faults = [...findFaults(text, cut), ...encodingFaults(text, isUtf8, cut)].sort((one, other) => one.start - other.start);
  const pane = h("div", {class: "raw"});
  const lines = markedLines(text.replaceAll("\r\n", " \n").replaceAll("\r", " "), faults);
  const shown = lines.slice(0, MOST_LINES);
  pane.append(
    h("div", {class: "block-head"},
      h("h3", {}, "Raw text"),
      h("span", {class: "quiet"}, `${sizeText(report.size)} · ${countText(lines.length, "line")}${isUtf8 ? "" : " · not UTF-8"}`),
      h("span", {class: "gap"}),
      h("button", {type: "button", onclick: () => copyText(text)}, cut ? "Copy the shown part" : "Copy")),
    verdict(text, faults, pane, cut),
    ...[cut ? h("p", {class: "quiet"}, `The first ${sizeText(MOST_BYTES)} of ${sizeText(report.size)} is shown. The download is complete.`) : null,
      shown.length < lines.length ? h("p", {class: "quiet"}, `The first ${MOST_LINES} lines are shown.`) : null].filter(Boolean),
    h("ol", {class: "lines", tabindex: "0", "aria-label": "Lines of the report"}, ...shown.map((parts, index) => lineView(parts, index + 1))));
  return pane;
}
