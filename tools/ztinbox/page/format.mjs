// SPDX-License-Identifier: Apache-2.0
// Formats values of the API for display.

const UNITS = [
  ["d", 86_400_000],
  ["h", 3_600_000],
  ["min", 60_000],
  ["s", 1_000],
];

// 250 -> "250 ms", 1500 -> "1.5 s", 90000 -> "1 min 30 s"
export function durationText(milliseconds) {
  if (milliseconds === null || milliseconds === undefined) return "";
  if (milliseconds < 1_000) return `${Math.round(milliseconds)} ms`;
  if (milliseconds < 10_000) return `${trimmed((milliseconds / 1_000).toFixed(2))} s`;
  if (milliseconds < 60_000) return `${trimmed((milliseconds / 1_000).toFixed(1))} s`;
  const parts = [];
  let left = Math.round(milliseconds / 1_000) * 1_000;
  for (const [unit, size] of UNITS) {
    const count = Math.floor(left / size);
    left -= count * size;
    if (count > 0) parts.push(`${count} ${unit}`);
  }
  return parts.slice(0, 2).join(" ");
}

function trimmed(number) {
  return number.includes(".") ? number.replace(/0+$/, "").replace(/\.$/, "") : number;
}

// 11642 -> "11.4 KiB"
export function sizeText(bytes) {
  if (bytes < 1024) return `${bytes} B`;
  if (bytes < 1024 * 1024) return `${(bytes / 1024).toFixed(1)} KiB`;
  return `${(bytes / 1024 / 1024).toFixed(1)} MiB`;
}

// "1 report", "2 reports"
export function countText(count, one, many = `${one}s`) {
  return `${count.toLocaleString("en")} ${count === 1 ? one : many}`;
}

function two(number) {
  return String(number).padStart(2, "0");
}

export function dateText(date) {
  return `${date.getFullYear()}-${two(date.getMonth() + 1)}-${two(date.getDate())}`;
}

export function clockText(date) {
  return `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;
}

// Date and time in the browser's time zone; for today only the time.
export function timeText(iso, now = new Date()) {
  const date = new Date(iso);
  const day = dateText(date);
  return day === dateText(now) ? clockText(date) : `${day} ${clockText(date)}`;
}

export function fullTimeText(iso) {
  const date = new Date(iso);
  const milliseconds = String(date.getMilliseconds()).padStart(3, "0");
  return `${dateText(date)} ${clockText(date)}.${milliseconds}`;
}

// A short name for the sender of a report.
export function nameOf(report) {
  return report.customerId || report.applicationId || "unnamed sender";
}

const ANSWER_TONES = {accepted: "good", refused: "bad"};
const RESULT_TONES = {succeeded: "good", failed: "bad", cancelled: "warn"};

export function answerTone(answer) {
  return ANSWER_TONES[answer] ?? "warn";
}

export function resultTone(result) {
  return RESULT_TONES[result] ?? "plain";
}
