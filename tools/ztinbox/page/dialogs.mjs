// SPDX-License-Identifier: Apache-2.0
// Dialogs. They are native dialog elements, which keep the focus inside and close on Escape.

import {h} from "./dom.mjs";

export function openDialog(title, content, {wide = false} = {}) {
  const heading = h("h2", {id: "dialog-title"}, title);
  const close = h("button", {type: "button", class: "close", "aria-label": "Close", onclick: () => dialog.close()}, "×");
  const dialog = h("dialog", {"aria-labelledby": "dialog-title", class: wide ? "wide" : null}, h("div", {class: "dialog-head"}, heading, close), content);
  dialog.addEventListener("close", () => dialog.remove());
  dialog.addEventListener("click", (event) => {
    if (event.target === dialog) dialog.close();
  });
  document.body.append(dialog);
  dialog.showModal();
  return dialog;
}

// Resolves to true if the user confirms.
export function confirmed(title, text, action) {
  return new Promise((resolve) => {
    let answer = false;
    const say = (value) => () => {
      answer = value;
      dialog.close();
    };
    const dialog = openDialog(
      title,
      h(
        "div",
        {class: "dialog-body"},
        h("p", {}, text),
        h("div", {class: "buttons"},
          h("button", {type: "button", onclick: say(false), autofocus: true}, "Cancel"),
          h("button", {type: "button", class: "danger strong", onclick: say(true)}, action)),
      ),
    );
    dialog.addEventListener("close", () => resolve(answer));
  });
}

const KEYS = [
  ["j  k", "go to the next or previous report; if a report is open, open that one instead"],
  ["Enter", "open the report"],
  ["Esc", "close the report; leave the search box"],
  ["/", "search"],
  ["?", "this help"],
];

const OPERATORS = [
  ["customer:Kelvane", "exactly this customer ID; application: and machine: work the same way"],
  ["pool:EXECUTION", "reports with a pool of this type"],
  ["after:2026-11-21", "received on this day or later; also a time (2026-11-21T12:00) or an age (15m, 2h, 3d)"],
  ["before:2h", "received before this day, time or age"],
  ["is:unread", "not yet read; also is:read and is:test"],
  ["copy \"no route\"", "words in names and values; quotation marks make a phrase"],
];

function definitions(rows) {
  return h("dl", {class: "keys"}, ...rows.flatMap(([term, text]) => [
    h("dt", {}, ...term.split("  ").map((key) => h("kbd", {}, key))),
    h("dd", {}, text),
  ]));
}

export function openHelp() {
  openDialog("Help", h(
    "div",
    {class: "dialog-body"},
    h("h3", {}, "Keys"),
    definitions(KEYS),
    h("h3", {}, "Search"),
    definitions(OPERATORS),
    h("p", {class: "quiet"}, "Scripts use the JSON interface, described at ", h("a", {href: "/api/v1/openapi.json"}, "/api/v1/openapi.json"), "."),
  ));
}
