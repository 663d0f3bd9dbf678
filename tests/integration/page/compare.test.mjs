// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import {test} from "node:test";

import {compareReports, countStates, flatten} from "../../../tools/ztinbox/page/compare.mjs";

function details(pools, more = {}) {
  const content = pools.map(([type, fields]) => ({type, fields}));
  return {customerId: "C", applicationId: "A", applicationVersion: "1", machineId: "M", reportId: "R", answer: "accepted", result: null, content, ...more};
}

const value = (name, text) => ({name, type: "string", value: text});
const array = (name, ...groups) => ({name, type: "array", groups});

function ofPools(rows) {
  return rows.filter(({path}) => path[0] !== "Report").map(({path, ...rest}) => [path.join("/"), ...Object.values(rest)]);
}

test("gives every field a unique path", () => {
  const report = details([
    ["P", [value("N", "1"), value("N", "2"), array("L", [value("X", "3")])]],
    ["P", [array("L", [value("X", "4")], [value("X", "5"), array("D", [value("Y", "6")])])]],
  ]);
  assert.deepEqual(ofPools(flatten(report)), [
    ["P/N", "1"],
    ["P/N [2]", "2"],
    ["P/L/X", "3"],
    ["P [2]/L/1/X", "4"],
    ["P [2]/L/2/X", "5"],
    ["P [2]/L/2/D/Y", "6"],
  ]);
});

test("finds equal, changed and one-sided fields, in order", () => {
  const left = details([["P", [value("A", "1"), value("B", "2"), value("C", "3")]]]);
  const right = details([["P", [value("NEW", "0"), value("A", "1"), value("AFTER", "9"), value("C", "4")]]]);
  assert.deepEqual(ofPools(compareReports(left, right)), [
    ["P/NEW", "right", null, "0"],
    ["P/A", "equal", "1", "1"],
    ["P/AFTER", "right", null, "9"],
    ["P/B", "left", "2", null],
    ["P/C", "changed", "3", "4"],
  ]);
});

test("also compares the identity of the reports", () => {
  const rows = compareReports(details([]), details([], {applicationVersion: "2", result: "failed"}));
  assert.deepEqual(rows.filter(({state}) => state !== "equal").map(({path, left, right}) => [path.join("/"), left, right]), [
    ["Report/Version", "1", "2"],
    ["Report/Result", "", "failed"],
  ]);
  assert.deepEqual(countStates(rows), {equal: 5, changed: 2, left: 0, right: 0});
});

test("does not mistake a name with a separator for a path", () => {
  const left = details([["P", [array("A", [value("B", "1")])]]]);
  const right = details([["P", [value("A/B", "1")]]]);
  assert.deepEqual(ofPools(compareReports(left, right)).map(([, state]) => state).sort(), ["left", "right"]);
});

test("compares large reports in time proportional to their size", () => {
  const fields = (from) => Array.from({length: 20_000}, (_, index) => value(`F${from + index}`, "x"));
  const rows = compareReports(details([["P", fields(0)]]), details([["P", fields(20_000)]]));
  assert.equal(rows.length, 40_007);
});
