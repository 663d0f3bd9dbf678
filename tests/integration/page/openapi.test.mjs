// SPDX-License-Identifier: Apache-2.0
// Every response of the API validates against its OpenAPI description, and every described response
// occurs. ZT_PAGE_PACKAGES is the folder of the npm packages.

import assert from "node:assert/strict";
import {request as httpRequest} from "node:http";
import {createRequire} from "node:module";
import {test} from "node:test";

import {Inbox} from "./Inbox.mjs";
import {array, execution, field, pool, report} from "./reports.mjs";

const Ajv = createRequire(`${process.env.ZT_PAGE_PACKAGES}/`)("ajv/dist/2020.js").default;

const BASE = "/api/v1/";
const FOREIGN = {Host: "evil.example"};
const LARGE = JSON.stringify("x".repeat(1_100_000));
const READ = '{"read": true}';

// [method, path, status, {number, query, body, headers}]
const REQUESTS = [
  ["GET", "reports", 200],
  ["GET", "reports", 200, {query: "customer=Kelvane&limit=1&text=edition&pool=CUSTOM&before=9"}],
  ["GET", "reports", 400, {query: "limit=0"}],
  ["GET", "reports", 400, {query: "custommer=Kelvane"}],
  ["GET", "reports", 403, {headers: FOREIGN}],
  ["POST", "reports", 405],
  ["DELETE", "reports", 400, {query: "since=yesterday"}],
  ["DELETE", "reports", 403, {headers: FOREIGN}],
  ["PUT", "reports/read", 200, {query: "customer=Kelvane", body: READ}],
  ["PUT", "reports/read", 400, {query: "test=perhaps", body: READ}],
  ["PUT", "reports/read", 400, {body: '{"read": 1}'}],
  ["PUT", "reports/read", 403, {body: READ, headers: FOREIGN}],
  ["PUT", "reports/read", 413, {body: LARGE}],
  ["GET", "reports/{number}", 200, {number: 1}],
  ["GET", "reports/{number}", 200, {number: 2}],
  ["GET", "reports/{number}", 200, {number: 3}],
  ["GET", "reports/{number}", 400, {number: 1, query: "raw"}],
  ["GET", "reports/{number}", 403, {number: 1, headers: FOREIGN}],
  ["GET", "reports/{number}", 404, {number: 4}],
  ["GET", "reports/{number}/raw", 200, {number: 2}],
  ["GET", "reports/{number}/raw", 403, {number: 2, headers: FOREIGN}],
  ["GET", "reports/{number}/raw", 404, {number: 9}],
  ["DELETE", "reports/{number}/raw", 405, {number: 1}],
  ["PUT", "reports/{number}/read", 200, {number: 1, body: '{"read": false}'}],
  ["PUT", "reports/{number}/read", 400, {number: 1, body: "read"}],
  ["PUT", "reports/{number}/read", 403, {number: 1, body: READ, headers: FOREIGN}],
  ["PUT", "reports/{number}/read", 404, {number: 9, body: READ}],
  ["GET", "reports/{number}/read", 405, {number: 1}],
  ["GET", "events", 200, {query: "after=0"}],
  ["GET", "events", 400, {query: "after=-1"}],
  ["GET", "events", 400, {headers: {"Last-Event-ID": "x"}}],
  ["GET", "events", 403, {headers: FOREIGN}],
  ["POST", "events", 405],
  ["GET", "wait", 200, {query: "count=3"}],
  ["GET", "wait", 400, {query: "count=x"}],
  ["GET", "wait", 403, {headers: FOREIGN}],
  ["GET", "wait", 408, {query: "count=4&timeout=0"}],
  ["PUT", "wait", 405],
  ["GET", "stats", 200],
  ["GET", "stats", 200, {query: "customer=Kelvane&until=2100-01-01"}],
  ["GET", "stats", 400, {query: "until="}],
  ["GET", "stats", 403, {headers: FOREIGN}],
  ["DELETE", "stats", 405],
  ["GET", "behaviour", 200],
  ["GET", "behaviour", 403, {headers: FOREIGN}],
  ["PUT", "behaviour", 200, {body: '{"answer": "error:503", "scenario": [{"answer": "drop", "slow": 1}]}'}],
  ["PUT", "behaviour", 400, {body: "{"}],
  ["PUT", "behaviour", 403, {body: "{}", headers: FOREIGN}],
  ["PUT", "behaviour", 413, {body: LARGE}],
  ["DELETE", "behaviour", 405],
  ["GET", "openapi.json", 200],
  ["GET", "openapi.json", 403, {headers: FOREIGN}],
  ["PUT", "openapi.json", 405],
  ["DELETE", "reports/{number}", 200, {number: 3}],
  ["DELETE", "reports/{number}", 403, {number: 3, headers: FOREIGN}],
  ["DELETE", "reports/{number}", 404, {number: 3}],
  ["DELETE", "reports", 200, {query: "test=true"}],
  ["DELETE", "reports", 200],
];

// An event stream does not end, so its first part is its body.
function exchange(url, method, body, headers, isStream) {
  return new Promise((resolve, reject) => {
    const sent = httpRequest(url, {method, headers: {"Content-Length": Buffer.byteLength(body), ...headers}}, (response) => {
      const parts = [];
      const end = () => {
        resolve({status: response.statusCode, headers: response.headers, body: Buffer.concat(parts).toString("latin1")});
        response.destroy();
      };
      response.on("data", (part) => {
        parts.push(part);
        if (isStream) end();
      });
      response.on("end", end);
    });
    sent.on("error", reject);
    sent.end(body);
  });
}

test("every response is described, and every described response occurs", async () => {
  const inbox = await Inbox.start();
  try {
    const empty = array("EMPTY", []).replace("</Name>", "</Date>").replace(/<\/Field>\r\n$/, "</Data>\r\n");
    await inbox.send(report({pools: execution({steps: [["Copy", "ENTER", 1_000]], duration: 9_000}) + pool("CUSTOM", empty)}));
    const notUtf8 = report({customerId: "\xff<script>", pools: pool("EDITIONS", field("EDITION", "\xfe".repeat(100_000)))});
    await inbox.send(Buffer.from(notUtf8, "latin1"), "/soap-test");
    await inbox.send("<postPoolDatas/>");

    const description = await inbox.ask("openapi.json");
    const ajv = new Ajv({strict: false, allErrors: true});
    ajv.addSchema(description, "description");
    const resolved = (part) => {
      if (!part.$ref) return part;
      return part.$ref.slice(2).split("/").reduce((value, key) => value[key], description);
    };
    const unseen = new Set();
    for (const [path, methods] of Object.entries(description.paths)) {
      for (const [method, operation] of Object.entries(methods)) {
        for (const status of Object.keys(operation.responses ?? {})) unseen.add(`${method} ${path} ${status}`);
      }
    }

    for (const [method, path, status, {number = "", query = "", body = "", headers = {}} = {}] of REQUESTS) {
      const target = BASE + path.replace("{number}", number) + (query && `?${query}`);
      const name = `${method} ${target}`;
      const response = await exchange(inbox.url + target, method, body, headers, status === 200 && path === "events");
      assert.equal(response.status, status, name);
      const key = `${method.toLowerCase()} ${BASE}${path} ${status}`;
      unseen.delete(key);
      const described = resolved(description.paths[BASE + path][method.toLowerCase()].responses[status]);
      for (const header of Object.keys(described.headers ?? {})) {
        assert.ok(header.toLowerCase() in response.headers, `${name}: no ${header}`);
      }
      const [type, content] = Object.entries(described.content)[0];
      assert.equal(response.headers["content-type"], type, name);
      if (!type.endsWith("json")) continue;
      // References in the schema are relative to the whole description.
      const schema = JSON.parse(JSON.stringify(content.schema).replaceAll('"#/', '"description#/'));
      const isValid = ajv.validate(schema, JSON.parse(Buffer.from(response.body, "latin1").toString("utf8")));
      assert.ok(isValid, `${name}: ${ajv.errorsText()}`);
    }
    assert.deepEqual([...unseen], []);
  } finally {
    await inbox.stop();
  }
});
