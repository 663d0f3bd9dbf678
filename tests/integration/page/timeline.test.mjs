// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import {test} from "node:test";

import {barsOf, widthText} from "../../../tools/ztinbox/page/chartScale.mjs";
import {durationText, sizeText} from "../../../tools/ztinbox/page/format.mjs";
import {addressOf, readRoute} from "../../../tools/ztinbox/page/route.mjs";
import {kindOf, niceTicks, timelineScale} from "../../../tools/ztinbox/page/timeline.mjs";

const step = (offset, duration = null) => ({offset, duration, type: "ENTER", failed: false});

test("positions steps by their times", () => {
  const {total, isTimed, bars} = timelineScale([step(0, 500), step(500), step(null)], 2_000);
  assert.equal(total, 2_000);
  assert.equal(isTimed, true);
  assert.deepEqual(bars, [{start: 0, width: 0.25}, {start: 0.25, width: null}, {start: null, width: null}]);
});

test("extends to the last step if the run's duration is missing or too short", () => {
  assert.equal(timelineScale([step(100, 300)], null).total, 400);
  assert.equal(timelineScale([step(100, 300)], 50).total, 400);
});

test("puts everything at the beginning if no time passed", () => {
  const {total, bars, ticks} = timelineScale([step(0, 0), step(0)], 0);
  assert.equal(total, 0);
  assert.deepEqual(bars, [{start: 0, width: 0}, {start: 0, width: null}]);
  assert.deepEqual(ticks, [{time: 0, at: 0}]);
});

test("is not timed if no step has a time", () => {
  assert.equal(timelineScale([step(null)], null).isTimed, false);
  assert.equal(timelineScale([], null).isTimed, false);
});

test("chooses round ticks", () => {
  const rows = [
    [0, [0]],
    [4_000, [0, 1_000, 2_000, 3_000, 4_000]],
    [1_200, [0, 200, 400, 600, 800, 1_000, 1_200]],
    [7, [0, 2, 4, 6]],
    [86_400_000, [0, 20_000_000, 40_000_000, 60_000_000, 80_000_000]],
  ];
  for (const [total, ticks] of rows) assert.deepEqual(niceTicks(total, 6), ticks, String(total));
});

test("draws each kind of step", () => {
  const rows = [
    [{type: "ENTER", failed: false}, "enter"],
    [{type: "LEAVE", failed: false}, "leave"],
    [{type: "EXIT", failed: false}, "leave"],
    [{type: "INFO", failed: false}, "note"],
    [{type: "ENTER", failed: true}, "error"],
  ];
  for (const [candidate, kind] of rows) assert.equal(kindOf(candidate), kind);
});

const minute = (time, accepted, refused = 0, failed = 0) => ({minute: `2026-11-21T${time}:00.000Z`, accepted, refused, failed});

test("adds bars for the minutes without reports", () => {
  const {minutes, bars, highest} = barsOf([minute("12:00", 1), minute("12:02", 2, 1)], 10);
  assert.equal(minutes, 1);
  assert.equal(highest, 3);
  assert.deepEqual(bars.map(({accepted, refused}) => [accepted, refused]), [[1, 0], [0, 0], [2, 1]]);
  assert.equal(bars[1].begin.toISOString(), "2026-11-21T12:01:00.000Z");
});

test("widens the bars until there are few enough", () => {
  const {minutes, bars} = barsOf([minute("12:04", 1), minute("12:05", 2), minute("13:33", 0, 0, 4)], 20);
  assert.equal(minutes, 5);
  assert.equal(bars.length, 19);
  assert.deepEqual([bars[0].accepted, bars[1].accepted, bars[18].failed], [1, 2, 4]);
  const years = barsOf([{...minute("12:00", 1), minute: "1999-01-01T00:00:00.000Z"}, minute("12:00", 1)], 20);
  assert.ok(years.bars.length <= 20);
  assert.equal(years.bars.reduce((sum, bar) => sum + bar.accepted, 0), 2);
  assert.deepEqual(barsOf([], 20), {minutes: 1, bars: [], highest: 0});
});

test("names the width of a bar", () => {
  for (const [minutes, text] of [[1, "minute"], [5, "5 minutes"], [60, "hour"], [120, "2 hours"], [1_440, "day"], [90, "90 minutes"]]) {
    assert.equal(widthText(minutes), text);
  }
});

test("writes durations and sizes", () => {
  const rows = [[0, "0 ms"], [999, "999 ms"], [1_000, "1 s"], [1_760, "1.76 s"], [10_040, "10 s"], [90_000, "1 min 30 s"], [3_600_000, "1 h"], [90_061_000, "1 d 1 h"], [null, ""]];
  for (const [milliseconds, text] of rows) assert.equal(durationText(milliseconds), text);
  for (const [bytes, text] of [[0, "0 B"], [1_023, "1023 B"], [11_642, "11.4 KiB"], [3_145_728, "3.0 MiB"]]) {
    assert.equal(sizeText(bytes), text);
  }
});

test("reads the addresses that it writes", () => {
  const rows = ["#/", "#/charts", "#/reports/12", "#/reports/12/raw", "#/reports/12/request", "#/reports/12/compare", "#/reports/12/compare/9", "#/?q=pool%3A%22A%20%3F%23B%22", "#/reports/1?q=x"];
  for (const address of rows) assert.equal(addressOf(readRoute(address)), address);
  for (const other of ["", "#", "#/reports", "#/reports/0", "#/reports/x", "#/reports/1/nothing", "#/elsewhere"]) {
    assert.equal(addressOf(readRoute(other)), "#/", other);
  }
});
