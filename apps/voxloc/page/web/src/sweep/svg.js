// Elements of a drawing.

export function svg(name, attributes = {}, ...children) {
  const element = document.createElementNS('http://www.w3.org/2000/svg', name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...children);
  return element;
}

export function html(name, properties = {}, ...children) {
  const element = Object.assign(document.createElement(name), properties);
  element.append(...children);
  return element;
}
