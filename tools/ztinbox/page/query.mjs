// SPDX-License-Identifier: Apache-2.0
// The language of the search box: operators and words.
//
//     customer:Kelvane pool:"MY POOL" after:2026-11-21 "no route"
//
// Everything that is not an operator is searched as text.

const DAY = /^\d{4}-\d{2}-\d{2}$/;
const TIME = /^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}(:\d{2}(\.\d{1,3})?)?(Z|[+-]\d{2}:\d{2})?$/;
const AGO = /^(\d{1,6})(s|m|h|d)$/;
const SECONDS = {s: 1, m: 60, h: 3_600, d: 86_400};
const TIME_RULE = "needs a day (2026-11-21), a time (2026-11-21T12:00) or an age (15m, 2h, 3d)";

const OPERATORS = {
  customer: {parameter: "customer"},
  application: {parameter: "application"},
  pool: {parameter: "pool"},
  machine: {parameter: "machine"},
  after: {parameter: "since", read: readTime},
  before: {parameter: "until", read: readTime},
  is: {words: {unread: ["read", "false"], read: ["read", "true"], test: ["test", "true"]}},
};

// A day or a time without an offset is in the browser's time zone.
function readTime(text, now) {
  const ago = AGO.exec(text);
  if (ago) return new Date(now.getTime() - Number(ago[1]) * SECONDS[ago[2]] * 1_000).toISOString();
  if (!DAY.test(text) && !TIME.test(text)) return null;
  const date = new Date(DAY.test(text) ? `${text}T00:00` : text);
  if (Number.isNaN(date.getTime())) return null;
  // The browser reads 31 February as a day in March.
  if (DAY.test(text) && date.getDate() !== Number(text.slice(8))) return null;
  return date.toISOString();
}

// Splits at spaces outside quotation marks, which are kept: a"b c" is one word.
function split(text) {
  return text.match(/(?:"[^"]*(?:"|$)|[^\s"])+/g) ?? [];
}

function unquoted(text) {
  return text.replaceAll('"', "");
}

// Returns {parameters: {customer: "Kelvane", text: "…"}, fault: null}, or a fault as text.
export function parseQuery(text, now = new Date()) {
  const parameters = {};
  const words = [];
  const set = (parameter, value, word) => {
    if (parameter in parameters) return `${word}: can be given only once`;
    parameters[parameter] = value;
    return null;
  };
  for (const token of split(text)) {
    const [, word, rest] = /^([a-z]+):(.*)$/is.exec(token) ?? [];
    const name = word?.toLowerCase();
    if (name === undefined || !Object.hasOwn(OPERATORS, name)) {
      words.push(token);
      continue;
    }
    const fault = take(name, unquoted(rest), set, now);
    if (fault) return {parameters: {}, fault};
  }
  if (words.length > 0) parameters.text = words.join(" ");
  return {parameters, fault: null};
}

function take(name, value, set, now) {
  const operator = OPERATORS[name];
  if (operator.words) {
    if (!Object.hasOwn(operator.words, value)) {
      return `${name}: needs one of ${Object.keys(operator.words).join(", ")}`;
    }
    return set(...operator.words[value], name);
  }
  if (value === "") return `${name}: needs a value`;
  const read = operator.read ? operator.read(value, now) : value;
  if (read === null) return `${name}: ${TIME_RULE}`;
  return set(operator.parameter, read, name);
}

// Writes an operator for the search box: operatorText("pool", "MY POOL") -> pool:"MY POOL"
export function operatorText(name, value) {
  return /[\s"]/.test(value) ? `${name}:"${unquoted(value)}"` : `${name}:${value}`;
}
