// Makes elements: make("li", {class: "set", onclick: f}, "text", child, ...)

function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) {
      element.addEventListener(name.slice(2), value);
    } else if (value !== undefined && value !== false) {
      element.setAttribute(name, value === true ? "" : value);
    }
  }
  element.append(...children);
  return element;
}

export function make(tag, attributes = {}, ...children) {
  return fill(document.createElement(tag), attributes, children);
}

export function draw(tag, attributes = {}, ...children) {
  return fill(document.createElementNS("http://www.w3.org/2000/svg", tag), attributes, children);
}

/** Marks an element with what is wrong with its signal or message; nothing takes the mark away. */
export function markFault(element, fault) {
  if (fault) {
    element.dataset.fault = fault;
  } else {
    delete element.dataset.fault;
  }
}

/** Sets an element's text, where it differs: most of what is told changes nothing here. */
export function setText(element, text) {
  if (element.textContent !== text) {
    element.textContent = text;
  }
}
