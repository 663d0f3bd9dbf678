// SPDX-License-Identifier: Apache-2.0
// Compares two reports field by field.

const IDENTITY = [
  ["Customer", "customerId"],
  ["Application", "applicationId"],
  ["Version", "applicationVersion"],
  ["Machine", "machineId"],
  ["Report ID", "reportId"],
  ["Answer", "answer"],
  ["Result", "result"],
];

// Numbers repeated names: "NAME", "NAME [2]", …
class Names {
  constructor() {
    this.counts = new Map();
  }

  name(text) {
    const count = (this.counts.get(text) ?? 0) + 1;
    this.counts.set(text, count);
    return count === 1 ? text : `${text} [${count}]`;
  }
}

function addFields(fields, path, rows) {
  const names = new Names();
  for (const field of fields) {
    const here = [...path, names.name(field.name)];
    if (!field.groups) {
      rows.push({path: here, value: field.value});
      continue;
    }
    field.groups.forEach((group, index) => {
      addFields(group, field.groups.length > 1 ? [...here, String(index + 1)] : here, rows);
    });
  }
}

// A report's details as a list of {path, value}; every path occurs once.
export function flatten(report) {
  const rows = IDENTITY.map(([label, key]) => ({path: ["Report", label], value: report[key] ?? ""}));
  const names = new Names();
  for (const pool of report.content) addFields(pool.fields, [names.name(pool.type)], rows);
  return rows;
}

function keyOf(row) {
  return JSON.stringify(row.path);
}

// Returns [{path, state, left, right}]; `state` is "equal", "changed", "left" (only there) or "right".
// Rows are in the order of the left report. A row that only the right report has comes after the row that
// precedes it there.
export function compareReports(left, right) {
  const leftRows = flatten(left);
  const rightRows = flatten(right);
  const rightByKey = new Map(rightRows.map((row) => [keyOf(row), row]));
  const leftKeys = new Set(leftRows.map(keyOf));
  const following = new Map();
  let anchor = "";
  for (const row of rightRows) {
    const key = keyOf(row);
    if (leftKeys.has(key)) {
      anchor = key;
    } else {
      if (!following.has(anchor)) following.set(anchor, []);
      following.get(anchor).push(row);
    }
  }
  const compared = [];
  const addFollowing = (key) => {
    for (const row of following.get(key) ?? []) {
      compared.push({path: row.path, state: "right", left: null, right: row.value});
    }
  };
  addFollowing("");
  for (const row of leftRows) {
    const other = rightByKey.get(keyOf(row));
    const state = other === undefined ? "left" : other.value === row.value ? "equal" : "changed";
    compared.push({path: row.path, state, left: row.value, right: other?.value ?? null});
    addFollowing(keyOf(row));
  }
  return compared;
}

// {equal: 3, changed: 1, left: 0, right: 2}
export function countStates(rows) {
  const counts = {equal: 0, changed: 0, left: 0, right: 0};
  for (const {state} of rows) counts[state] += 1;
  return counts;
}
