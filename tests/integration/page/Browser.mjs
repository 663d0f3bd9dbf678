// SPDX-License-Identifier: Apache-2.0
// The system's Chromium, driven over its DevTools protocol. ZT_PAGE_PACKAGES is the folder of the
// installed packages, ZT_CHROMIUM the browser.

import {readFileSync} from "node:fs";
import {createRequire} from "node:module";

const require = createRequire(`${process.env.ZT_PAGE_PACKAGES}/package.json`);
const {chromium} = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export class Browser {
  static async start() {
    const browser = new Browser();
    // No sandbox, because the tests may run as root; they open only our own page.
    browser.chromium = await chromium.launch({executablePath: process.env.ZT_CHROMIUM, args: ["--no-sandbox"]});
    return browser;
  }

  stop() {
    return this.chromium.close();
  }

  // Opens a page of `inbox` in a new profile. `faults` lists what must not happen in it: script errors,
  // violations of the content security policy, dialogs, requests to other servers.
  async open(inbox, path = "#/", options = {}) {
    const context = await this.chromium.newContext({viewport: {width: 1280, height: 800}, ...options});
    const page = await context.newPage();
    const faults = [];
    page.on("pageerror", (error) => faults.push(`error: ${error}`));
    page.on("console", (message) => {
      if (message.type() === "error" && !options.allowErrors) faults.push(`console: ${message.text()}`);
    });
    page.on("dialog", (dialog) => {
      faults.push(`dialog: ${dialog.message()}`);
      dialog.dismiss();
    });
    page.on("request", (request) => {
      if (!request.url().startsWith(`${inbox.url}/`)) faults.push(`request: ${request.url()}`);
    });
    await page.addInitScript(() => {
      globalThis.violations = [];
      document.addEventListener("securitypolicyviolation", (event) => globalThis.violations.push(`${event.violatedDirective} ${event.blockedURI}`));
    });
    page.setDefaultTimeout(10_000);
    await page.goto(`${inbox.url}/${path}`);
    await page.waitForSelector("#live[data-state=live]", {state: "attached"});
    return {
      page,
      async faults() {
        return [...faults, ...(await page.evaluate(() => globalThis.violations))];
      },
      close: () => context.close(),
    };
  }
}

// Violations of WCAG 2.1 A and AA that axe-core finds, as "rule: element".
export async function accessibilityFaults(page) {
  await page.evaluate(axe);
  const found = await page.evaluate(() => globalThis.axe.run(document, {runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "best-practice"]}));
  return found.violations.flatMap(({id, nodes}) => nodes.map((node) => `${id}: ${node.html.slice(0, 160)} ${node.failureSummary ?? ""}`));
}
