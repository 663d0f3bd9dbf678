// SPDX-License-Identifier: Apache-2.0
// Computes the scale of a run's timeline. Positions and widths are fractions of the whole, 0 to 1.

const FIRST_STEPS = [1, 2, 5];

// Round times from 0 to `total` in at most `count` steps: niceTicks(1200, 6) -> [0, 200, …, 1200]
export function niceTicks(total, count) {
  if (!(total > 0)) return [0];
  let step = 1;
  for (let size = 1; ; size *= 10) {
    const fitting = FIRST_STEPS.find((first) => total / (first * size) <= count);
    if (fitting !== undefined) {
      step = fitting * size;
      break;
    }
  }
  const ticks = [];
  for (let at = 0; at <= total; at += step) ticks.push(at);
  return ticks;
}

// Returns for each step {start, width}, and ticks {at, time}. `start` is null for a step without a time,
// `width` for one without a duration. `total` is 0 if no time passed or no time is known.
export function timelineScale(steps, duration, tickCount = 6) {
  let total = duration ?? 0;
  for (const step of steps) total = Math.max(total, (step.offset ?? 0) + (step.duration ?? 0));
  const part = (milliseconds) => (total > 0 ? milliseconds / total : 0);
  return {
    total,
    isTimed: steps.some((step) => step.offset !== null),
    bars: steps.map((step) => ({
      start: step.offset === null ? null : part(step.offset),
      width: step.offset === null || step.duration === null ? null : part(step.duration),
    })),
    ticks: niceTicks(total, tickCount).map((time) => ({time, at: part(time)})),
  };
}

// How a step is drawn: "error", "enter", "leave" or "note".
export function kindOf(step) {
  if (step.failed) return "error";
  if (step.type === "ENTER") return "enter";
  if (step.type === "LEAVE" || step.type === "EXIT") return "leave";
  return "note";
}
