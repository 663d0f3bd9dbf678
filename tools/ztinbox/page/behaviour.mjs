// SPDX-License-Identifier: Apache-2.0
// How the inbox answers reports: the state in the header and the dialog that changes it.

import {changeBehaviour, readBehaviour} from "./api.mjs";
import {openDialog} from "./dialogs.mjs";
import {byId, h, toast} from "./dom.mjs";
import {durationText} from "./format.mjs";

const ANSWERS = [
  ["accept", "Accept", "answer true"],
  ["refuse", "Refuse", "answer false"],
  ["error", "Error", "only an HTTP status, such as 503"],
  ["garbage", "Garbage", "a web page instead of a SOAP response"],
  ["hang", "Hang", "receive the report and never respond"],
  ["drop", "Drop", "close the connection without a response"],
  ["truncate", "Truncate", "close the connection in the middle of the response"],
];

const WORDS = {
  accept: ["Accepts", "good"],
  refuse: ["Refuses", "bad"],
  garbage: ["Answers garbage", "warn"],
  hang: ["Hangs", "warn"],
  drop: ["Drops", "warn"],
  truncate: ["Truncates", "warn"],
};

// A short description and its colour: {text: "Accepts, after 200 ms", tone: "warn"}
export function describeBehaviour({answer, slow, failRate, scenario}) {
  const error = answer.startsWith("error:") ? [`Error ${answer.slice(6)}`, "warn"] : null;
  let [text, tone] = WORDS[answer] ?? error ?? [answer, "warn"];
  if (scenario.length > 0) [text, tone] = [`Scenario of ${scenario.length}`, "warn"];
  if (failRate > 0) text += `, ${Math.round(failRate * 1000) / 10} % fail`;
  if (slow > 0) text += `, after ${durationText(slow)}`;
  if (tone === "good" && (failRate > 0 || slow > 0)) tone = "warn";
  return {text, tone};
}

function show(behaviour) {
  const {text, tone} = describeBehaviour(behaviour);
  const button = byId("switch");
  if (byId("switch-text").textContent !== text) byId("switch-text").textContent = text;
  button.dataset.tone = tone;
}

export async function refreshBehaviour() {
  show(await readBehaviour());
}

function numberField(id, label, value, attributes) {
  return h("div", {class: "field"},
    h("label", {for: id}, label),
    h("input", {id, type: "number", value, ...attributes}));
}

function answerChoice([word, label, text], chosen) {
  return h("label", {class: "choice"},
    h("input", {type: "radio", name: "answer", value: word, checked: word === chosen}),
    h("span", {}, h("strong", {}, label), h("span", {class: "quiet"}, ` ${text}`)));
}

// The settings in the form, as the API expects them. Throws a SyntaxError if the scenario is not JSON.
function readForm(form) {
  const value = (id) => form.querySelector(`#${id}`).value;
  const answer = form.querySelector("[name=answer]:checked").value;
  const scenario = value("scenario").trim();
  return {
    answer: answer === "error" ? `error:${value("status")}` : answer,
    slow: Number(value("slow")),
    failRate: Number(value("fail-rate")) / 100,
    seed: Number(value("seed")),
    scenario: scenario === "" ? [] : JSON.parse(scenario),
  };
}

function changesOf(before, after) {
  return Object.fromEntries(Object.entries(after).filter(([key, value]) => JSON.stringify(before[key]) !== JSON.stringify(value)));
}

export async function openBehaviour() {
  const now = await readBehaviour();
  const [word, status] = now.answer.split(":");
  const fault = h("p", {class: "fault", role: "alert"});
  const steps = now.scenario.length > 0 ? `[\n${now.scenario.map((step) => `  ${JSON.stringify(step)}`).join(",\n")}\n]` : "";

  const send = async (change) => {
    try {
      show(await changeBehaviour(change));
      dialog.close();
      toast(`From now on: ${byId("switch-text").textContent}`);
    } catch (error) {
      fault.textContent = error instanceof SyntaxError ? "The scenario is not JSON." : `Not changed: ${error.message}.`;
    }
  };
  const submit = (event) => {
    event.preventDefault();
    try {
      send(changesOf(now, readForm(form)));
    } catch {
      fault.textContent = "The scenario is not JSON.";
    }
  };
  const form = h("form", {class: "dialog-body", onsubmit: submit},
    h("fieldset", {class: "choices"}, h("legend", {}, "Answer to each report"), ...ANSWERS.map((row) => answerChoice(row, word))),
    h("div", {class: "fields"},
      numberField("status", "Error status", status ?? 503, {min: 200, max: 599, required: true}),
      numberField("slow", "Delay, ms", now.slow, {min: 0, max: 3_600_000, required: true}),
      numberField("fail-rate", "Random faults, %", Math.round(now.failRate * 1e6) / 1e4, {min: 0, max: 100, step: "any", required: true}),
      numberField("seed", "Seed of the faults", now.seed, {min: 0, required: true})),
    h("div", {class: "field"},
      h("label", {for: "scenario"}, "Scenario: steps played in order, instead of the answer above; the last one stays in force"),
      h("textarea", {id: "scenario", rows: 4, spellcheck: "false", placeholder: '[{"answer": "error:503", "times": 2}, {"answer": "accept"}]'}, steps)),
    fault,
    h("div", {class: "buttons"},
      h("button", {type: "button", onclick: () => send({answer: "accept", slow: 0, failRate: 0, scenario: []})}, "Accept everything"),
      h("span", {class: "gap"}),
      h("button", {type: "button", onclick: () => dialog.close()}, "Cancel"),
      h("button", {type: "submit", class: "strong"}, "Apply")));
  form.querySelector("#status").addEventListener("input", () => {
    form.querySelector("[value=error]").checked = true;
  });
  const dialog = openDialog("How reports are answered", form, {wide: true});
  form.querySelector("[name=answer]:checked").focus();
}
