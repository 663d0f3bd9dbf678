// SPDX-License-Identifier: Apache-2.0
// Writes reports as the library does: unescaped, line by line.

const INDENT = " ".repeat(15);
const ENVELOPE = '<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/"' +
  ' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">';
const REQUEST = '<postPoolDatas xmlns:m="http://reporting.kelvane.example/portal" SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">';

let count = 0;

function header(name, value) {
  return `         <${name} xsi:type="xsd:string">${value}</${name}>\r\n`;
}

export function field(name, value, type = "string", indent = INDENT) {
  return `${indent}<Field xsi:type="com_Field" FieldType="${type}">\r\n` +
    `${indent}  <Name xsi:type="xsd:string">${name}</Name>\r\n` +
    `${indent}  <Value xsi:type="xsd:string">${value}</Value>\r\n${indent}</Field>\r\n`;
}

// groups: a list of lists of [name, value].
export function array(name, groups) {
  let text = `${INDENT}<Field xsi:type="com_Field" FieldType="array">\r\n${INDENT}  <Name xsi:type="xsd:string">${name}</Name>\r\n`;
  for (const group of groups) {
    text += `${INDENT}  <Fields xsi:type="com_Fields">\r\n`;
    for (const [fieldName, value] of group) text += field(fieldName, value, "string", `${INDENT}    `);
    text += `${INDENT}  </Fields>\r\n`;
  }
  return `${text}${INDENT}</Field>\r\n`;
}

export function pool(type, fields) {
  return `           <Data xsi:type="com_Pool" Pool="${type}">\r\n` +
    '             <Date xsi:type="xsd:dateTime">2026-11-21T12:00:00.000UTC</Date>\r\n' +
    `             <Fields xsi:type="com_Fields">\r\n${fields}             </Fields>\r\n           </Data>\r\n`;
}

function time(milliseconds) {
  return new Date(Date.UTC(2026, 10, 21, 12) + milliseconds).toISOString().replace("Z", "UTC");
}

// steps: a list of [name, type, milliseconds since the start, message].
export function execution({steps = [], duration = 1_000, success = "TRUE", more = ""} = {}) {
  return pool("EXECUTION", field("START_TIME", time(0)) + field("END_TIME", time(duration)) +
    field("CANCELLED", "FALSE", "boolean") + field("SUCCESSFULL", success, "boolean") +
    array("INSTALLATIONSTEPS", steps.map(([name, type, at, message = ""]) => [
      ["STEP_NAME", name], ["STEP_TYPE", type], ["STEP_TIMESTAMP", time(at)], ["STEP_MESSAGESTRING", message], ["STEP_MESSAGECODE", ""],
    ])) + more);
}

export const INSTALLATION = [
  ["Licence", "ENTER", 0],
  ["Copy", "ENTER", 400],
  ["Copy", "INFO", 900, "214 files"],
  ["Copy", "LEAVE", 2_400],
  ["Register", "ENTER", 2_400],
  ["Register", "ERROR", 3_100, "access denied"],
  ["Finish", "EXIT", 4_000],
];

export function report({customerId = "Kelvane", applicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", applicationVersion = "2.1.77",
  machineId = "{11111111-2222-3333-4444-555555555555}", reportId, pools} = {}) {
  count += 1;
  const id = reportId ?? `{0F6B1C5E-0000-4000-8000-${String(count).padStart(12, "0")}}`;
  return `${ENVELOPE}\r\n  <SOAP-ENV:Body>\r\n    ${REQUEST}\r\n       <reportData xsi:type="com_Report">\r\n` +
    header("ReportID", id) + header("MachineID", machineId) + header("CustomerID", customerId) +
    header("ApplicationID", applicationId) + header("ApplicationVersion", applicationVersion) +
    `         <Datas xsi:type="com_Pools">\r\n${pools ?? pool("EDITIONS", field("EDITION", "Home"))}         </Datas>\r\n` +
    "       </reportData>\r\n    </postPoolDatas>\r\n  </SOAP-ENV:Body>\r\n</SOAP-ENV:Envelope>\r\n";
}
