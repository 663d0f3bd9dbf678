// SPDX-License-Identifier: Apache-2.0
// A running ztinbox on a free loopback port, with a temporary data folder. ZT_INBOX_PROGRAM is the path
// of the program.

import {spawn} from "node:child_process";
import {once} from "node:events";
import {mkdtemp, rm} from "node:fs/promises";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {createInterface} from "node:readline";

export class Inbox {
  static async start(options = []) {
    const inbox = new Inbox();
    inbox.folder = await mkdtemp(join(tmpdir(), "ztinbox-page-"));
    await inbox.launch(["--listen", "127.0.0.1:0", ...options]);
    return inbox;
  }

  async launch(options) {
    this.child = spawn(process.env.ZT_INBOX_PROGRAM, [...options, "--data", this.folder], {stdio: ["ignore", "pipe", "inherit"]});
    const lines = createInterface({input: this.child.stdout});
    const [line] = await once(lines, "line");
    // The other lines are discarded, because a full pipe would block the inbox.
    lines.on("line", () => {});
    this.url = line.replace("ztinbox: listening on ", "");
  }

  async end() {
    this.child.kill("SIGTERM");
    await once(this.child, "exit");
  }

  async stop() {
    await this.end();
    await rm(this.folder, {recursive: true});
  }

  async send(body, path = "/soap") {
    const response = await fetch(this.url + path, {method: "POST", body});
    return response.text();
  }

  async ask(path, options) {
    const response = await fetch(`${this.url}/api/v1/${path}`, options);
    return response.json();
  }

  behave(change) {
    return this.ask("behaviour", {method: "PUT", body: JSON.stringify(change)});
  }
}
