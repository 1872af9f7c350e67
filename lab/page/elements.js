// An element with attributes and children. Texts become text nodes, never markup.
function element(name, attributes, ...children) {
  const made = document.createElement(name);
  for (const [attribute, value] of Object.entries(attributes || {})) {
    if (value !== undefined && value !== null && value !== false) made.setAttribute(attribute, value);
  }
  made.append(...children.flat(Infinity).filter((child) => child !== null && child !== undefined));
  return made;
}

// A text from outside: whatever way it is written, what stands beside it stays in its place.
const foreign = (text) => element("bdi", {}, String(text));
const path = (text) => element("bdi", { class: "path", dir: "ltr" }, String(text));
const badge = (text, tone) => element("span", { class: "badge " + (tone || "") }, foreign(text));
const section = (title, ...children) => element("section", {}, element("h2", { tabindex: "-1" }, foreign(title)), ...children);

const counted = (count, one, many) => count.toLocaleString("en") + " " + (count === 1 ? one : many);

// A table of rows, each an array of cells. Its roles are said, since on a phone it is laid out as cards.
function table(attributes, columns, rows) {
  const cell = (content, place) => place === 0
    ? element("th", { scope: "row", role: "rowheader" }, content)
    : element("td", { role: "cell", "data-label": columns[place].title }, content);
  return element("table", { role: "table", ...attributes },
    element("thead", { role: "rowgroup" }, element("tr", { role: "row" }, columns.map((column) =>
      element("th", { scope: "col", role: "columnheader", "aria-sort": column.sort }, column.head || column.title)))),
    element("tbody", { role: "rowgroup" }, rows.map((row) =>
      element("tr", { role: "row", class: row.marked ? "marked" : null }, row.cells.map(cell)))));
}

// Bars that lead somewhere, as long as their share of `total`: each entry has a label, a count, an href, and perhaps a tone, a badge and a note.
function chart(entries, total) {
  return element("ul", { class: "chart" }, entries.map((entry) => {
    const bar = element("span", { class: "bar " + (entry.tone || "") });
    const percent = 100 * entry.count / Math.max(total, 1);
    bar.style.width = percent + "%";
    return element("li", {}, element("a", { href: entry.href },
      element("span", {}, entry.badge ? [entry.badge, " "] : null, foreign(entry.label)),
      element("span", { class: "count" }, entry.count.toLocaleString("en") + " (" + percent.toFixed(1) + " %)"),
      element("span", { class: "track", "aria-hidden": "true" }, bar),
      entry.note ? element("span", { class: "note" }, entry.note) : null));
  }));
}
