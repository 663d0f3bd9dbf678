// SPDX-License-Identifier: Apache-2.0
// Finds all XML 1.0 errors in the text of a report. Reports are written without escaping, so errors are
// common. Unlike a parser, this does not stop at the first one.

const NAME = "[:A-Z_a-z\\u00c0-\\ufffd][-:A-Z_a-z.0-9\\u00b7-\\ufffd]*";
const START_TAG = new RegExp(`<(${NAME})`, "y");
const END_TAG = new RegExp(`</(${NAME})\\s*>`, "y");
const ATTRIBUTE = new RegExp(`\\s+(${NAME})\\s*=\\s*("[^"<]*"|'[^'<]*')`, "y");
const TAG_END = /\s*(\/?)>/y;
const NEXT_TAG = new RegExp(`<(/?)(${NAME})`, "g");
const SUSPECTS = /&(#x[0-9a-fA-F]+;|#[0-9]+;|[A-Za-z][\w.-]*;)?|\]\]>|[\x00-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]/g;
const ENTITIES = new Set(["amp;", "lt;", "gt;", "quot;", "apos;"]);

export const MOST_FAULTS = 1_000;

function isCharacter(code) {
  return code === 0x9 || code === 0xa || code === 0xd || (code >= 0x20 && code <= 0xd7ff) ||
    (code >= 0xe000 && code <= 0xfffd) || (code >= 0x10000 && code <= 0x10ffff);
}

function referenceFault(name) {
  if (name === undefined) return 'a bare "&": no reference follows';
  if (ENTITIES.has(name)) return null;
  if (!name.startsWith("#")) return `the entity "&${name}" is not defined`;
  const code = name[1] === "x" ? Number.parseInt(name.slice(2), 16) : Number(name.slice(1, -1));
  return isCharacter(code) ? null : `"&${name}" is not an XML character`;
}

class Check {
  constructor(text, cut) {
    this.text = text;
    this.cut = cut;
    this.faults = [];
    this.open = [];
    this.at = 0;
    this.rooted = false;
    this.strayed = false;
  }

  run() {
    while (this.at < this.text.length && this.faults.length < MOST_FAULTS) {
      if (this.text[this.at] === "<") {
        this.readMarkup();
      } else {
        this.readText();
      }
    }
    if (this.faults.length < MOST_FAULTS && !this.cut) this.finish();
    return this.faults.sort((one, other) => one.start - other.start);
  }

  fault(start, length, reason) {
    this.faults.push({start, end: Math.min(start + length, this.text.length), reason});
  }

  match(pattern) {
    pattern.lastIndex = this.at;
    const found = pattern.exec(this.text);
    if (found) this.at = pattern.lastIndex;
    return found;
  }

  readText() {
    const next = this.text.indexOf("<", this.at);
    const end = next < 0 ? this.text.length : next;
    this.checkText(this.at, end, true);
    this.at = end;
  }

  checkText(start, end, isContent) {
    const part = this.text.slice(start, end);
    if (isContent && this.open.length === 0) {
      const first = part.search(/[^\s\ufeff]/);
      if (first < 0) return;
      if (!this.strayed) this.fault(start + first, part.slice(first).trimEnd().length, "text outside the document's element");
      this.strayed = true;
      return;
    }
    SUSPECTS.lastIndex = 0;
    for (let found; (found = SUSPECTS.exec(part)) && this.faults.length < MOST_FAULTS;) {
      const reason = this.suspectFault(found, isContent);
      if (reason) this.fault(start + found.index, found[0].length, reason);
    }
  }

  suspectFault(found, isContent) {
    if (found[0][0] === "&") return referenceFault(found[1]);
    if (found[0] === "]]>") return isContent ? '"]]>" in text' : null;
    const code = found[0].charCodeAt(0).toString(16).toUpperCase().padStart(4, "0");
    return `the character U+${code} is not allowed`;
  }

  readMarkup() {
    const start = this.at;
    if (this.text.startsWith("<!--", start)) return this.skipTo("-->", 4, "the comment has no end");
    if (this.text.startsWith("<![CDATA[", start)) {
      if (this.open.length === 0) this.fault(start, 9, "text outside the document's element");
      return this.skipTo("]]>", 9, "the CDATA section has no end");
    }
    if (this.text.startsWith("<?", start)) {
      if (start > 0 && /^<\?xml\s/.test(this.text.slice(start, start + 6))) {
        this.fault(start, 5, "the XML declaration is not at the beginning");
      }
      return this.skipTo("?>", 2, "the processing instruction has no end");
    }
    if (this.text.startsWith("<!DOCTYPE", start)) return this.skipTo(">", 9, "the document type has no end");
    if (this.text.startsWith("</", start)) return this.readEndTag();
    this.readStartTag();
  }

  skipTo(end, skipped, reason) {
    const found = this.text.indexOf(end, this.at + skipped);
    if (found < 0 && !this.cut) this.fault(this.at, skipped, reason);
    this.at = found < 0 ? this.text.length : found + end.length;
  }

  bareBracket(start, length) {
    if (this.cut && this.text.indexOf(">", start) < 0) {
      this.at = this.text.length;
      return;
    }
    this.fault(start, length, `a bare "${this.text.slice(start, start + length)}": no tag follows`);
    this.at = start + length;
  }

  readStartTag() {
    const start = this.at;
    const tag = this.match(START_TAG);
    if (!tag) return this.bareBracket(start, 1);
    const attributes = [];
    for (let found; (found = this.match(ATTRIBUTE));) {
      attributes.push({name: found[1], start: this.at - found[2].length, end: this.at});
    }
    const end = this.match(TAG_END);
    if (!end) return this.bareBracket(start, 1);
    this.checkAttributes(attributes);
    if (this.open.length === 0 && this.rooted) {
      this.fault(start, tag[0].length, "a second element outside the document's element");
    }
    this.rooted = true;
    if (end[1] === "") this.open.push({name: tag[1], start});
  }

  checkAttributes(attributes) {
    const seen = new Set();
    for (const {name, start, end} of attributes) {
      if (seen.has(name)) this.fault(start, end - start, `the attribute "${name}" is given twice`);
      seen.add(name);
      this.checkText(start, end, false);
    }
  }

  readEndTag() {
    const start = this.at;
    const tag = this.match(END_TAG);
    if (!tag) return this.bareBracket(start, 2);
    const top = this.open.at(-1);
    if (!top) return this.fault(start, tag[0].length, `the end tag "${tag[1]}" has no start tag`);
    if (top.name === tag[1]) return this.open.pop();
    this.fault(start, tag[0].length, `the end tag "${tag[1]}" does not match the start tag "${top.name}"`);
    // It either replaces the right end tag or is an extra one. If the right one follows, it is an extra
    // one.
    NEXT_TAG.lastIndex = this.at;
    const next = NEXT_TAG.exec(this.text);
    if (!(next && next[1] === "/" && next[2] === top.name)) this.open.pop();
  }

  finish() {
    if (!this.rooted && !this.strayed) this.fault(0, 0, "there is no element");
    const top = this.open.at(-1);
    if (top) this.fault(top.start, top.name.length + 1, `the element "${top.name}" has no end tag`);
  }
}

// Returns [{start, end, reason}] in text order. `cut`: the text is only the beginning of the report, so
// its end is not an error.
export function findFaults(text, cut = false) {
  return new Check(text, cut).run();
}

// Line and column, counted from 1.
export function placeOf(text, offset) {
  const before = text.slice(0, offset);
  const line = before.split("\n").length;
  return {line, column: offset - (before.lastIndexOf("\n") + 1) + 1};
}

// Splits the text into lines, each a list of parts {text, reason}; `reason` is null for correct parts.
export function markedLines(text, faults) {
  const lines = [];
  let next = 0;
  let offset = 0;
  for (const whole of text.split("\n")) {
    const end = offset + whole.length;
    const parts = [];
    let at = offset;
    while (next < faults.length && faults[next].start <= end) {
      const {start, end: faultEnd, reason} = faults[next];
      const from = Math.max(start, at);
      const to = Math.min(faultEnd, end);
      if (from > at) parts.push({text: text.slice(at, from), reason: null});
      if (to > from) parts.push({text: text.slice(from, to), reason});
      at = Math.max(at, to);
      if (faultEnd > end + 1) break;
      next += 1;
    }
    if (end > at) parts.push({text: text.slice(at, end), reason: null});
    lines.push(parts);
    offset = end + 1;
  }
  return lines;
}
