// SPDX-License-Identifier: Apache-2.0
// Computes the bars of the charts from the statistics.

const MINUTE = 60_000;
// Possible widths of a bar, in minutes.
const WIDTHS = [1, 2, 5, 10, 15, 30, 60, 120, 240, 360, 720, 1_440, 2_880, 10_080, 43_200];

// The API lists only the minutes in which reports arrived. The bars cover the whole time from the first
// to the last, and are wide enough that there are at most `most`.
//
//     -> {minutes: 5, bars: [{begin, accepted, refused, failed}], highest}
export function barsOf(minutes, most) {
  if (minutes.length === 0) return {minutes: 1, bars: [], highest: 0};
  const times = minutes.map(({minute}) => Date.parse(minute) / MINUTE);
  const first = times[0];
  const last = times.at(-1);
  const countOf = (size) => Math.floor(last / size) - Math.floor(first / size) + 1;
  const width = WIDTHS.find((size) => countOf(size) <= most) ?? Math.ceil((last - first + 1) / (most - 1));
  const begin = Math.floor(first / width);
  const bars = Array.from({length: countOf(width)}, (_, index) => ({
    begin: new Date((begin + index) * width * MINUTE),
    accepted: 0,
    refused: 0,
    failed: 0,
  }));
  minutes.forEach((minute, index) => {
    const bar = bars[Math.floor(times[index] / width) - begin];
    for (const key of ["accepted", "refused", "failed"]) bar[key] += minute[key];
  });
  const highest = Math.max(...bars.map((bar) => bar.accepted + bar.refused + bar.failed));
  return {minutes: width, bars, highest};
}

// "minute", "5 minutes", "hour", "2 days"
export function widthText(minutes) {
  for (const [unit, size] of [["day", 1_440], ["hour", 60], ["minute", 1]]) {
    if (minutes % size !== 0) continue;
    const count = minutes / size;
    return count === 1 ? unit : `${count} ${unit}s`;
  }
  return "";
}
