// SPDX-License-Identifier: Apache-2.0
// Builds elements. Texts only become text nodes and attribute values, so the content of a report is
// never parsed as markup. Do not add a function here that sets markup, styles or scripts from a string.

const SVG = "http://www.w3.org/2000/svg";

function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    if (name.startsWith("on")) {
      element.addEventListener(name.slice(2), value);
    } else {
      element.setAttribute(name, value === true ? "" : String(value));
    }
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== false));
  return element;
}

// h("a", {href: "#/", onclick: go}, "text", otherElement)
export function h(tag, attributes = {}, ...children) {
  return fill(document.createElement(tag), attributes, children);
}

export function svg(tag, attributes = {}, ...children) {
  return fill(document.createElementNS(SVG, tag), attributes, children);
}

export function byId(id) {
  return document.getElementById(id);
}

// Shows a message for four seconds; screen readers announce it.
export function toast(text, tone = "plain") {
  const message = h("p", {class: "toast", "data-tone": tone}, text);
  byId("toasts").append(message);
  setTimeout(() => message.remove(), 4000);
}
