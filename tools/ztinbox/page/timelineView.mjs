// SPDX-License-Identifier: Apache-2.0
// Draws the steps of a run, one row each, as bars and marks on a common time scale.

import {h, svg} from "./dom.mjs";
import {durationText} from "./format.mjs";
import {kindOf, timelineScale} from "./timeline.mjs";

const MOST_STEPS = 500;

function percent(part) {
  return `${(part * 100).toFixed(3)}%`;
}

function track(step, bar, ticks) {
  const kind = kindOf(step);
  const lines = ticks.map(({at}) => svg("line", {class: "tick", x1: percent(at), x2: percent(at), y1: 0, y2: "100%"}));
  const marks = [];
  if (bar.width !== null) {
    marks.push(svg("rect", {class: `span ${kind}`, x: percent(bar.start), width: percent(bar.width), y: 5, height: 10, rx: 2}));
  }
  if (bar.start !== null) {
    marks.push(svg("rect", {class: `instant ${kind}`, x: percent(bar.start), y: kind === "error" ? 2 : 5, width: 3, height: kind === "error" ? 16 : 10, rx: 1}));
  }
  return svg("svg", {class: "track", height: 20, "aria-hidden": "true", focusable: "false"}, ...lines, ...marks);
}

function stepRow(step, bar, ticks, isTimed) {
  return h("li", {class: "step", "data-kind": kindOf(step)},
    h("span", {class: "step-name"}, step.name || "unnamed"),
    h("span", {class: "step-type"}, step.type),
    h("span", {class: "step-message"}, [step.code && `[${step.code}]`, step.message].filter(Boolean).join(" ")),
    isTimed ? track(step, bar, ticks) : null,
    h("span", {class: "step-at"}, step.offset === null ? "" : `+${durationText(step.offset)}`),
    h("span", {class: "step-took"}, step.duration === null ? "" : durationText(step.duration)));
}

export function timelineView(pool) {
  const {total, isTimed, bars, ticks} = timelineScale(pool.steps, pool.duration);
  const shown = pool.steps.slice(0, MOST_STEPS);
  const errors = pool.steps.filter((step) => step.failed).length;
  const axis = svg("svg", {class: "track", height: 18, "aria-hidden": "true", focusable: "false"},
    ...ticks.map(({at, time}) => svg("text", {x: percent(at), y: 13, "text-anchor": at > 0.94 ? "end" : "start"}, durationText(time))));
  const facts = [
    pool.steps.length === 1 ? "1 step" : `${pool.steps.length} steps`,
    errors > 0 ? `${errors} failed` : null,
    isTimed && total > 0 ? durationText(total) : null,
    isTimed && total === 0 ? "all at the same time" : null,
    isTimed ? null : "without times",
  ].filter(Boolean);
  return h("section", {class: "block timeline", "data-timed": isTimed ? "" : null},
    h("div", {class: "block-head"}, h("h3", {}, "Steps"), h("span", {class: "quiet"}, facts.join(" · "))),
    isTimed && total > 0 ? h("div", {class: "step axis", "aria-hidden": "true"}, axis) : null,
    h("ol", {class: "steps"}, ...shown.map((step, index) => stepRow(step, bars[index], total > 0 ? ticks : [], isTimed))),
    shown.length < pool.steps.length ? h("p", {class: "quiet"}, `The first ${MOST_STEPS} steps are shown.`) : null);
}
