// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import {test} from "node:test";

import {findFaults, markedLines, placeOf} from "../../../tools/ztinbox/page/rawText.mjs";

function found(text, cut) {
  return findFaults(text, cut).map(({start, end, reason}) => [text.slice(start, end), reason]);
}

const FINE = [
  "<a/>",
  "\n<a>\n</a>\n",
  '<?xml version="1.0"?><!-- c --><a b="1" c=\'&lt;"\'>x &amp; &#65; &#x1F600; > <![CDATA[<&]]><?p i?></a>',
  "<!DOCTYPE a><a:b-c.d _e='>'/>",
  "\ufeff<ä>ü</ä>",
];

for (const text of FINE) {
  test(`finds no error in ${JSON.stringify(text)}`, () => {
    assert.deepEqual(found(text), []);
  });
}

const BARE = 'a bare "<": no tag follows';
const OUTSIDE = "text outside the document's element";
const FAULTY = [
  ["<a>x & y</a>", [["&", 'a bare "&": no reference follows']]],
  ["<a>&nbsp;&#0;&#x41;</a>", [["&nbsp;", 'the entity "&nbsp;" is not defined'], ["&#0;", '"&#0;" is not an XML character']]],
  ['<a b="x&y"/>', [["&", 'a bare "&": no reference follows']]],
  ["<a>1 < 2 <3 <b</a>", [["<", BARE], ["<", BARE], ["<", BARE]]],
  ["<a>x ]]> y</a>", [["]]>", '"]]>" in text']]],
  ["<a>\u001b[31m\u0000</a>", [["\u001b", "the character U+001B is not allowed"], ["\u0000", "the character U+0000 is not allowed"]]],
  ["<a><n>DISK</d><f></f></a>", [["</d>", 'the end tag "d" does not match the start tag "n"']]],
  ["<a><v>x </b> y</v></a>", [["</b>", 'the end tag "b" does not match the start tag "v"']]],
  ["<a></a></a>", [["</a>", 'the end tag "a" has no start tag']]],
  ["<a></a><b/>", [["<b", "a second element outside the document's element"]]],
  ["<a/>more", [["more", OUTSIDE]]],
  ["not XML at all", [["not XML at all", OUTSIDE]]],
  ["", [["", "there is no element"]]],
  ["<a><b></b>", [["<a", 'the element "a" has no end tag']]],
  ["<a><!-- x</a>", [["<!--", "the comment has no end"], ["<a", 'the element "a" has no end tag']].reverse()],
  ["<a b='1' b='2'/>", [["'2'", 'the attribute "b" is given twice']]],
  ["<a b=1/>", [["<", BARE], ["a b=1/>", OUTSIDE]]],
  [' <?xml version="1.0"?><a/>', [["<?xml", "the XML declaration is not at the beginning"]]],
];

for (const [text, faults] of FAULTY) {
  test(`finds the errors in ${JSON.stringify(text)}`, () => {
    assert.deepEqual(found(text), faults);
  });
}

test("does not report the end of a text that is cut off", () => {
  for (const text of ["<a><b>x", "<a><b c='", "<a><!-- x", "<a><![CDATA[x", "<a></b"]) assert.deepEqual(found(text, true), [], text);
});

test("takes time proportional to the length of the text", () => {
  for (const part of ["<", "<a ", "&", "</a>", "<a>", '<a b="', "<!--", "<a b='1' "]) {
    const began = performance.now();
    findFaults(part.repeat(200_000));
    findFaults(`<a>${part.repeat(200_000)}`, true);
    assert.ok(performance.now() - began < 5_000, part);
  }
});

test("counts lines and columns from one", () => {
  assert.deepEqual(placeOf("ab\ncd", 0), {line: 1, column: 1});
  assert.deepEqual(placeOf("ab\ncd", 4), {line: 2, column: 2});
});

test("splits marked lines", () => {
  const text = "a & b\nlong\nmark here";
  const faults = [{start: 2, end: 3, reason: "one"}, {start: 8, end: 15, reason: "two"}];
  assert.deepEqual(markedLines(text, faults), [
    [{text: "a ", reason: null}, {text: "&", reason: "one"}, {text: " b", reason: null}],
    [{text: "lo", reason: null}, {text: "ng", reason: "two"}],
    [{text: "mark", reason: "two"}, {text: " here", reason: null}],
  ]);
});
