// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import {test} from "node:test";

import {operatorText, parseQuery} from "../../../tools/ztinbox/page/query.mjs";

const NOW = new Date("2026-11-21T12:00:00Z");

function local(text) {
  return new Date(text).toISOString();
}

const ROWS = [
  ["", {}],
  ["  ", {}],
  ["copy files", {text: "copy files"}],
  ['"no route" copy', {text: '"no route" copy'}],
  ["customer:Kelvane", {customer: "Kelvane"}],
  ["CUSTOMER:Kelvane", {customer: "Kelvane"}],
  ["application:{7C1B} machine:M pool:P", {application: "{7C1B}", machine: "M", pool: "P"}],
  ['pool:"MY POOL" x', {pool: "MY POOL", text: "x"}],
  ['pool:"no end', {pool: "no end"}],
  ["customer:a:b", {customer: "a:b"}],
  ["http://host/ unknown:x", {text: "http://host/ unknown:x"}],
  ["constructor:x toString:y", {text: "constructor:x toString:y"}],
  ["after:2026-11-21", {since: local("2026-11-21T00:00")}],
  ["before:2026-11-21T10:30", {until: local("2026-11-21T10:30")}],
  ["after:2026-11-21T10:30:05Z", {since: "2026-11-21T10:30:05.000Z"}],
  ["after:2026-11-21T10:30+02:00", {since: "2026-11-21T08:30:00.000Z"}],
  ["after:15m before:30s", {since: "2026-11-21T11:45:00.000Z", until: "2026-11-21T11:59:30.000Z"}],
  ["after:2d", {since: "2026-11-19T12:00:00.000Z"}],
  ["is:unread", {read: "false"}],
  ["is:read is:test", {read: "true", test: "true"}],
];

for (const [query, parameters] of ROWS) {
  test(`reads ${JSON.stringify(query)}`, () => {
    assert.deepEqual(parseQuery(query, NOW), {parameters, fault: null});
  });
}

const TIME_RULE = "needs a day (2026-11-21), a time (2026-11-21T12:00) or an age (15m, 2h, 3d)";
const FAULTS = [
  ["customer:", "customer: needs a value"],
  ['customer:""', "customer: needs a value"],
  ["pool:a pool:b", "pool: can be given only once"],
  ["after:yesterday", `after: ${TIME_RULE}`],
  ["before:2026-02-31", `before: ${TIME_RULE}`],
  ["before:2026-13-01", `before: ${TIME_RULE}`],
  ["after:5y", `after: ${TIME_RULE}`],
  ["is:new", "is: needs one of unread, read, test"],
  ["is:constructor", "is: needs one of unread, read, test"],
  ["is:read is:unread", "is: can be given only once"],
];

for (const [query, fault] of FAULTS) {
  test(`rejects ${query}`, () => {
    assert.deepEqual(parseQuery(query, NOW), {parameters: {}, fault});
  });
}

test("writes operators that it can read", () => {
  assert.equal(operatorText("pool", "DISKS"), "pool:DISKS");
  assert.equal(operatorText("pool", "MY POOL"), 'pool:"MY POOL"');
  assert.deepEqual(parseQuery(operatorText("pool", "MY POOL")).parameters, {pool: "MY POOL"});
});
