// SPDX-License-Identifier: Apache-2.0
// Calls of the inbox's JSON interface. They throw an ApiFault with the reason that the inbox gave.

const ROOT = "/api/v1/";

export class ApiFault extends Error {
  constructor(reason, status) {
    super(reason);
    this.status = status;
  }
}

function address(path, parameters = {}) {
  const query = new URLSearchParams(parameters).toString();
  return ROOT + path + (query ? `?${query}` : "");
}

async function ask(method, path, parameters, body) {
  let response;
  try {
    response = await fetch(address(path, parameters), {
      method,
      body: body === undefined ? undefined : JSON.stringify(body),
    });
  } catch {
    throw new ApiFault("the inbox does not respond", 0);
  }
  if (response.ok) return response.json();
  const answer = await response.json().catch(() => ({}));
  throw new ApiFault(answer.detail ?? `error ${response.status}`, response.status);
}

export const listReports = (parameters) => ask("GET", "reports", parameters);
export const readReport = (number) => ask("GET", `reports/${number}`);
export const deleteReport = (number) => ask("DELETE", `reports/${number}`);
export const deleteReports = (parameters) => ask("DELETE", "reports", parameters);
export const markReport = (number, read) => ask("PUT", `reports/${number}/read`, {}, {read});
export const markReports = (parameters, read) => ask("PUT", "reports/read", parameters, {read});
export const readStatistics = (parameters) => ask("GET", "stats", parameters);
export const readBehaviour = () => ask("GET", "behaviour");
export const changeBehaviour = (change) => ask("PUT", "behaviour", {}, change);

export const rawAddress = (number) => address(`reports/${number}/raw`);
export const eventsAddress = (after) => address("events", {after});

// Reads at most `most` bytes of a report; `cut` is true if there are more: {bytes, cut}
export async function readRaw(number, most) {
  const response = await fetch(rawAddress(number));
  if (!response.ok) throw new ApiFault("no such report", response.status);
  const reader = response.body.getReader();
  const bytes = new Uint8Array(most);
  let size = 0;
  for (;;) {
    const {done, value} = await reader.read();
    if (done) return {bytes: bytes.subarray(0, size), cut: false};
    const part = value.subarray(0, most - size);
    bytes.set(part, size);
    size += part.length;
    if (part.length < value.length) {
      await reader.cancel();
      return {bytes, cut: true};
    }
  }
}
