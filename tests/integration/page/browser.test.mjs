// SPDX-License-Identifier: Apache-2.0
// The page in a real browser, on a real inbox.

import assert from "node:assert/strict";
import {once} from "node:events";
import {createServer} from "node:http";
import {after, afterEach, before, beforeEach, test} from "node:test";

import {Browser, accessibilityFaults} from "./Browser.mjs";
import {Inbox} from "./Inbox.mjs";
import {INSTALLATION, array, execution, field, pool, report} from "./reports.mjs";

let browser;
let inbox;
let opened;

before(async () => {
  browser = await Browser.start();
});
after(() => browser.stop());
beforeEach(async () => {
  inbox = await Inbox.start();
});
afterEach(async () => {
  await opened?.close();
  opened = undefined;
  await inbox.stop();
});

async function open(path, options) {
  opened = await browser.open(inbox, path, options);
  return opened.page;
}

function customers(page) {
  return page.locator(".row .who").allInnerTexts();
}

async function expectRows(page, count) {
  await page.waitForFunction((wanted) => document.querySelectorAll(".row").length === wanted, count);
}

async function expectText(page, selector, text) {
  await page.waitForFunction(([where, wanted]) => document.querySelector(where)?.textContent.includes(wanted), [selector, text]);
}

async function sendMany(count) {
  for (let index = 1; index <= count; index += 1) {
    await inbox.send(report({customerId: `Customer${index}`, applicationVersion: `1.${index}`}));
  }
}

test("explains how to point a host at it while there are no reports", async () => {
  const page = await open();
  await expectText(page, "#empty", "No reports yet");
  await expectText(page, "#empty", `${inbox.url}/reporting/kelvane.xml`);
  assert.deepEqual(await opened.faults(), []);
});

test("shows reports as they arrive, newest first and unread", async () => {
  const page = await open();
  await inbox.send(report({customerId: "Kelvane", applicationVersion: "1.0"}));
  await expectRows(page, 1);
  await inbox.send(report({customerId: "Norvantel", applicationVersion: "2.0"}));
  await expectCustomers(page, ["Norvantel 2.0", "Kelvane 1.0"]);
  assert.equal(await page.locator(".row[data-unread]").count(), 2);
  await expectText(page, "#news", "New report of Norvantel: accepted");
  await expectText(page, "#list-count", "2 · 2 unread");
  assert.equal(await page.title(), "(2) Inbox");
  assert.deepEqual(await opened.faults(), []);
});

test("catches up after the inbox was restarted", async () => {
  const page = await open("#/", {allowErrors: true});
  await inbox.send(report());
  await expectRows(page, 1);
  const address = new URL(inbox.url).host;
  await inbox.end();
  await page.waitForSelector("#live[data-state=lost]");
  await inbox.launch(["--listen", address]);
  await inbox.send(report({customerId: "Meanwhile"}));
  await expectRows(page, 2);
  await page.waitForSelector("#live[data-state=live]");
  await inbox.send(report({customerId: "Afterwards"}));
  await expectRows(page, 3);
});

test("opens older reports page by page", async () => {
  await sendMany(103);
  const page = await open();
  await expectRows(page, 100);
  await page.click("#older");
  await expectRows(page, 103);
  assert.equal((await customers(page)).at(-1), "Customer1 1.1");
  assert.equal(await page.isVisible("#older"), false);
});

test("opens a report with its summary, its steps to scale and its pools, and marks it as read", async () => {
  await inbox.send(report({pools: execution({steps: INSTALLATION, duration: 4_000, success: "FALSE", more: field("EDITION", "Home")})}));
  const page = await open();
  await page.click(".row-link");
  await expectText(page, ".summary", "{11111111-2222-3333-4444-555555555555}");
  await expectText(page, ".pane-title", "failed");
  await expectText(page, ".timeline .block-head", "7 steps · 1 failed · 4 s");
  const bars = await page.locator(".steps .span").evaluateAll((rects) => rects.map((rect) => [rect.getAttribute("x"), rect.getAttribute("width")]));
  assert.deepEqual(bars, [["0.000%", "10.000%"], ["10.000%", "50.000%"], ["60.000%", "17.500%"]]);
  assert.match(await page.locator(".step[data-kind=error]").innerText(), /Register\s+ERROR\s+access denied/);
  assert.equal(await page.locator(".pool details[open]").count(), 0);
  await page.click(".pool summary");
  assert.equal(await page.locator(".pool .group >> visible=true").count(), 7);
  await page.waitForFunction(() => document.querySelectorAll(".row[data-unread]").length === 0);
  assert.equal((await inbox.ask("reports/1")).read, true);
  assert.equal(new URL(page.url()).hash, "#/reports/1");
  assert.deepEqual(await opened.faults(), []);
});

test("shows the raw text with line numbers and XML errors", async () => {
  await inbox.send(report({pools: pool("NOTES", field("NOTE", "Tom & Jerry < 3"))}));
  const page = await open("#/reports/1/raw");
  await expectText(page, ".verdict", 'An XML parser stops at line 16, column 51: a bare "&": no reference follows.');
  assert.deepEqual(await page.locator("mark").allInnerTexts(), ["&", "<"]);
  assert.equal((await page.locator(".line").nth(15).innerText()).trim(), '<Value xsi:type="xsd:string">Tom & Jerry < 3</Value>');
  const [download] = await Promise.all([page.waitForEvent("download"), page.click("a[download]")]);
  assert.equal(download.suggestedFilename(), "report-1.xml");
  assert.deepEqual(await opened.faults(), []);
});

test("copies the raw text and shows the request", async () => {
  const text = report();
  await inbox.send(text);
  const page = await open("#/reports/1/raw", {permissions: ["clipboard-read", "clipboard-write"]});
  await page.click(".raw button:text-is('Copy')");
  await expectText(page, "#toasts", "Copied");
  const copied = await page.evaluate(() => navigator.clipboard.readText());
  assert.equal(copied.replaceAll("\r\n", "\n"), text.replaceAll("\r\n", "\n"));
  await page.click(".views a:text-is('Request')");
  await expectText(page, ".block-head code", "POST /soap HTTP/1.1");
});

test("links reports with the same ID", async () => {
  await inbox.send(report({reportId: "{SAME}"}));
  await inbox.send(report({reportId: "{SAME}"}));
  const page = await open("#/reports/2");
  await page.click(".pane-title a:text-is('duplicate of #1')");
  await expectText(page, ".summary", "Same ID#2");
});

// Waits until the list shows these customers. Counting rows would not do: the list before may have as
// many.
async function expectCustomers(page, expected, message) {
  for (let tries = 0; ; ++tries) {
    const shown = await customers(page);
    if (tries === 200 || JSON.stringify(shown) === JSON.stringify(expected)) {
      assert.deepEqual(shown, expected, message);
      return;
    }
    await page.waitForTimeout(50);
  }
}

test("searches with operators and words, and says when nothing is found", async () => {
  await inbox.send(report({customerId: "Kelvane", pools: pool("DISKS", field("DEVICE", "sda"))}));
  await inbox.send(report({customerId: "Norvantel", pools: pool("MY POOL", field("NOTE", "no route"))}));
  const page = await open();
  await expectRows(page, 2);
  const rows = [
    ["customer:Kelvane", ["Kelvane 2.1.77"]],
    ['pool:"MY POOL"', ["Norvantel 2.1.77"]],
    ["sda", ["Kelvane 2.1.77"]],
    ['"no route" customer:Norvantel', ["Norvantel 2.1.77"]],
    ["after:1h", ["Norvantel 2.1.77", "Kelvane 2.1.77"]],
    ["machine:{11111111-2222-3333-4444-555555555555} application:none", []],
    ["before:2020-01-01", []],
  ];
  for (const [query, expected] of rows) {
    await page.fill("#query", query);
    await page.waitForFunction((wanted) => decodeURIComponent(location.hash).endsWith(`q=${wanted}`), query);
    await expectCustomers(page, expected, query);
  }
  await expectText(page, "#empty", "None of 2 reports matches this search.");
  await page.fill("#query", "after:yesterday");
  await expectText(page, "#query-fault", "after: needs a day");
  assert.deepEqual(await opened.faults(), []);
});

test("keeps a search while reports arrive", async () => {
  const page = await open("#/?q=customer%3AKelvane");
  await inbox.send(report({customerId: "Norvantel"}));
  await inbox.send(report({customerId: "Kelvane"}));
  await expectCustomers(page, ["Kelvane 2.1.77"]);
  await expectText(page, "#list-count", "1 of 2");
});

test("changes how reports are answered, and shows it", async () => {
  const page = await open();
  await expectText(page, "#switch-text", "Accepts");
  await page.click("#switch");
  await page.check("input[value=refuse]");
  await page.fill("#slow", "20");
  await page.click("dialog button:text-is('Apply')");
  await expectText(page, "#switch-text", "Refuses, after 20 ms");
  assert.equal(await page.getAttribute("#switch", "data-tone"), "bad");
  assert.deepEqual(await inbox.ask("behaviour"), {answer: "refuse", failRate: 0, scenario: [], seed: 0, slow: 20});

  await page.click("#switch");
  await page.fill("#status", "404");
  await page.fill("#scenario", '[{"answer": "drop"}, {"answer": "acept"}]');
  await page.click("dialog button:text-is('Apply')");
  await expectText(page, "dialog .fault", "Not changed: /scenario/1/answer: must be accept");
  await page.fill("#scenario", "[{");
  await page.click("dialog button:text-is('Apply')");
  await expectText(page, "dialog .fault", "The scenario is not JSON.");
  await page.fill("#scenario", '[{"answer": "drop"}, {"answer": "accept"}]');
  await page.click("dialog button:text-is('Apply')");
  await expectText(page, "#switch-text", "Scenario of 2");
  assert.equal((await inbox.ask("behaviour")).answer, "error:404");

  await inbox.behave({answer: "hang", scenario: [], slow: 0});
  await expectText(page, "#switch-text", "Hangs");
  await page.click("#switch");
  await page.click("dialog button:text-is('Accept everything')");
  await expectText(page, "#switch-text", "Accepts");
  assert.equal(await inbox.send(report()).then((answer) => answer.includes("true")), true);
});

test("deletes one report, the found ones, and all, after a confirmation", async () => {
  await sendMany(4);
  const page = await open("#/reports/4");
  await page.click(".pane-title button:text-is('Delete')");
  await page.click("dialog button:text-is('Cancel')");
  await expectRows(page, 4);
  await page.click(".pane-title button:text-is('Delete')");
  await expectText(page, "dialog", "This permanently deletes report #4 of Customer4.");
  await page.click("dialog button:text-is('Delete')");
  await expectRows(page, 3);

  await page.fill("#query", "customer:Customer2");
  await expectRows(page, 1);
  await page.click("#delete-all:text-is('Delete found')");
  await expectText(page, "dialog", "This permanently deletes 1 report and keeps all others.");
  await page.click("dialog button:text-is('Delete 1')");
  await expectText(page, "#empty", "None of 2 reports");
  await page.fill("#query", "");
  await expectRows(page, 2);

  await page.click("#delete-all:text-is('Delete all')");
  await page.click("dialog button:text-is('Delete all')");
  await expectText(page, "#empty", "No reports yet");
  assert.deepEqual(await inbox.ask("reports"), []);
});

test("shows what is deleted and marked elsewhere, and keeps its place", async () => {
  await sendMany(150);
  const page = await open("#/reports/150");
  await page.click("#older");
  await expectRows(page, 150);
  await expectText(page, "#list-count", "149 unread");
  await inbox.ask("reports/10", {method: "DELETE"});
  await inbox.ask("reports/20/read", {method: "PUT", body: JSON.stringify({read: true})});
  await page.waitForFunction(() => !document.querySelector('.row[data-number="10"]'));
  await page.waitForFunction(() => !document.querySelector('.row[data-number="20"]').hasAttribute("data-unread"));
  await expectRows(page, 149);
  await expectText(page, "#list-count", "147 unread");
  await inbox.ask("reports?before=1000", {method: "DELETE"});
  await expectText(page, "#empty", "No reports yet");
});

test("compares two reports field by field", async () => {
  await inbox.send(report({applicationVersion: "1.0", pools: pool("EDITIONS", field("EDITION", "Home") + field("OLD", "1"))}));
  await inbox.send(report({applicationVersion: "1.1", pools: pool("EDITIONS", field("EDITION", "Pro") + field("NEW", "2"))}));
  const page = await open("#/reports/1/compare");
  await page.selectOption("#other", "2");
  await expectText(page, ".pane-body", "3 changed · 1 only in #1 · 1 only in #2");
  const rows = await page.locator(".compared tbody tr").evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.innerText.trim())));
  assert.deepEqual(rows.filter(([name]) => !name.includes("Report ID")), [
    ["Report Version", "1.0", "1.1", "changed"],
    ["EDITIONS EDITION", "Home", "Pro", "changed"],
    ["EDITIONS NEW", "—", "2", "only #2"],
    ["EDITIONS OLD", "1", "—", "only #1"],
  ]);
  await page.uncheck("#only-differences");
  await expectText(page, ".compared", "equal");
  assert.equal(new URL(page.url()).hash, "#/reports/1/compare/2");
});

test("draws charts of the stored reports", async () => {
  await inbox.send(report({pools: execution({steps: INSTALLATION, duration: 4_000})}));
  await inbox.behave({answer: "refuse"});
  await inbox.send(report({pools: execution({steps: INSTALLATION, duration: 4_000, success: "FALSE"})}));
  const page = await open();
  await page.click("#to-charts");
  await expectText(page, ".pane-body", "Answers per");
  assert.deepEqual(await page.locator(".chart + .legend").allInnerTexts().then(([text]) => text.split("\n").sort()), ["1 failed (50 %)", "1 succeeded (50 %)"]);
  assert.match(await page.locator(".range").first().innerText(), /Copy × 2\s+2 s – 2 s – 2 s/);
  await page.click(".figures summary");
  const sums = await page.locator(".figures tbody tr").evaluateAll((rows) => rows.map((row) => [...row.cells].slice(1).map((cell) => Number(cell.innerText))));
  assert.deepEqual(sums.reduce((total, row) => total.map((value, index) => value + row[index])), [1, 1, 0]);
  assert.deepEqual(await opened.faults(), []);
});

test("can be used with the keyboard alone", async () => {
  await sendMany(3);
  const page = await open();
  await expectRows(page, 3);
  const focused = () => page.evaluate(() => document.activeElement.closest(".row")?.dataset.number ?? document.activeElement.id);
  await page.keyboard.press("j");
  assert.equal(await focused(), "3");
  await page.keyboard.press("j");
  await page.keyboard.press("j");
  assert.equal(await focused(), "1");
  await page.keyboard.press("k");
  assert.equal(await focused(), "2");
  await page.keyboard.press("Enter");
  await expectText(page, ".pane-title", "Customer2");
  assert.equal(await focused(), "pane-title");
  await page.keyboard.press("j");
  await expectText(page, ".pane-title", "Customer1");
  await page.keyboard.press("Escape");
  await page.waitForSelector("#pane", {state: "hidden"});
  await page.waitForFunction(() => document.activeElement.closest(".row")?.dataset.number === "1");
  await page.keyboard.press("?");
  await expectText(page, "dialog h2", "Help");
  await page.keyboard.press("Escape");
  await page.waitForSelector("dialog", {state: "detached"});
  await page.keyboard.press("/");
  assert.equal(await focused(), "query");
  await page.keyboard.type("jk?");
  assert.equal(await page.inputValue("#query"), "jk?");
  await page.keyboard.press("Escape");
  await page.keyboard.press("Escape");
  assert.equal(await page.inputValue("#query"), "");
  assert.notEqual(await focused(), "query");
  assert.deepEqual(await opened.faults(), []);
});

// Markup, scripts, terminal escapes and the end of an attribute.
const HOSTILE = '<img src=x onerror="alert(1)"><script>alert(2)</script>"\'><svg onload=alert(3)>\u001b[31m\u202e<a href="javascript:alert(4)">{{7*7}}';

test("never runs or parses the content of a report", async () => {
  const hostile = report({
    customerId: HOSTILE, applicationId: HOSTILE, applicationVersion: HOSTILE, machineId: HOSTILE, reportId: HOSTILE,
    pools: execution({steps: [[HOSTILE, "ENTER", 0, HOSTILE], [HOSTILE, HOSTILE, 500, HOSTILE]]}) +
      pool(HOSTILE, field(HOSTILE, HOSTILE) + array(HOSTILE, [[[HOSTILE, HOSTILE]]])),
  });
  await inbox.send(hostile);
  await fetch(`${inbox.url}/soap`, {method: "POST", body: hostile, headers: {"X-Hostile": '<img src=x onerror="alert(5)">'}});
  const page = await open();
  await expectRows(page, 2);
  for (const view of ["reports/1", "reports/1/raw", "reports/2/request", "reports/1/compare/2", "charts", `?q=${encodeURIComponent(HOSTILE)}`]) {
    await page.goto(`${inbox.url}/#/${view}`);
    await page.waitForTimeout(250);
    const foreign = await page.evaluate(() => document.querySelectorAll("script:not([src='/page/app.mjs']), #main img, #main iframe, [onerror], [onload], [onclick], [href^='javascript:'], [style]").length);
    assert.equal(foreign, 0, view);
  }
  await page.goto(`${inbox.url}/#/reports/1`);
  await expectText(page, ".pane-title", "alert(1)");
  assert.deepEqual(await opened.faults(), []);
});

test("refuses the reports that a page of another site sends", async () => {
  // Any page in the user's browser could once fill the inbox.
  const text = report();
  const post = (url, body) => fetch(url, {method: "POST", mode: "no-cors", body}).catch(() => {});
  const site = createServer((request, response) => response.end("<!doctype html><form method=post enctype=text/plain><input name=a></form>"));
  await once(site.listen(0, "127.0.0.1"), "listening");
  const page = await open();
  try {
    await page.goto(`http://localhost:${site.address().port}/`);
    for (const address of ["/soap", "/soap-test"]) {
      await page.evaluate(`(${post})(${JSON.stringify(inbox.url + address)}, ${JSON.stringify(text)})`);
    }
    const answered = page.waitForResponse(`${inbox.url}/soap`);
    await page.evaluate(([url, value]) => {
      document.forms[0].action = url;
      document.forms[0].a.name = value;
      document.forms[0].submit();
    }, [inbox.url + "/soap", text]);
    assert.equal((await answered).status(), 403);
    await page.waitForURL(`${inbox.url}/soap`);
    assert.deepEqual(await inbox.ask("reports"), []);
    // The same works from the inbox's own page.
    await page.goto(inbox.url);
    await page.evaluate(`(${post})("/soap", ${JSON.stringify(text)})`);
    assert.equal((await inbox.ask("reports")).length, 1);
  } finally {
    site.close();
  }
});

test("shows the beginning of a report that is too large to show", async () => {
  await inbox.send(report({pools: pool("LARGE", field("VALUE", "x".repeat(3 * 1024 * 1024)))}));
  const page = await open("#/reports/1");
  await expectText(page, ".pool", "3.0 MiB in all");
  await page.click(".views a:text-is('Raw text')");
  await expectText(page, ".raw", "The first 1.0 MiB of 3.0 MiB is shown");
});

const VIEWS = ["", "reports/1", "reports/1/raw", "reports/1/request", "reports/1/compare/2", "charts", "?q=nothing"];

for (const colorScheme of ["light", "dark"]) {
  for (const width of [360, 1_600]) {
    test(`is accessible and fits, ${colorScheme}, ${width} px wide`, async () => {
      await inbox.send(report({pools: execution({steps: INSTALLATION, duration: 4_000, success: "FALSE", more: field("N".repeat(300), "a&b".repeat(100))})}));
      await inbox.send(report({customerId: "C".repeat(300)}));
      const page = await open("#/", {colorScheme, viewport: {width, height: 800}});
      const ground = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
      assert.equal(ground, colorScheme === "dark" ? "rgb(19, 21, 24)" : "rgb(246, 246, 244)");
      for (const view of VIEWS) {
        await page.goto(`${inbox.url}/#/${view}`);
        await page.waitForTimeout(300);
        assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width, view);
        assert.deepEqual(await accessibilityFaults(page), [], view);
      }
      await page.goto(`${inbox.url}/#/`);
      for (const selector of ["#switch", "#to-help", "#delete-all"]) {
        await page.click(selector);
        await page.waitForSelector("dialog[open]");
        assert.deepEqual(await accessibilityFaults(page), [], selector);
        await page.keyboard.press("Escape");
      }
      assert.deepEqual(await opened.faults(), []);
    });
  }
}

// With ZT_UPDATE=1 it takes the picture of README.md.
test("shows the reports of several customers beside one of them", async () => {
  const customers = ["Norvantel", "Brisalink", "Quillnet", "Cavomedia", "Kelvane"];
  for (let index = 1; index <= 14; index += 1) {
    await inbox.behave({answer: index === 9 ? "refuse" : "accept"});
    const customerId = customers[index % customers.length];
    const run = execution({duration: 1_400 + 300 * index, success: index % 5 === 0 ? "FALSE" : "TRUE"});
    await inbox.send(report({customerId, applicationVersion: `2.${index % 4}.${index}`, pools: run}), index === 8 ? "/soap-test" : "/soap");
  }
  await inbox.send(report({pools: execution({steps: INSTALLATION, duration: 4_000, success: "FALSE", more: field("EDITION", "Home")})}));
  await inbox.send(report());
  const page = await open("#/reports/15", {viewport: {width: 1_280, height: 760}});
  await expectText(page, ".timeline .block-head", "7 steps · 1 failed · 4 s");
  await expectText(page, "#list-count", "16 · 15 unread");
  if (process.env.ZT_UPDATE) await page.screenshot({path: new URL("../../../docs/pictures/inbox.png", import.meta.url).pathname});
  assert.deepEqual(await opened.faults(), []);
});
