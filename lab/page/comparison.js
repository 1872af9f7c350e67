// What two programs make of one device, setting by setting.
function comparisonView(raw) {
  const device = expand(raw);
  const columns = [{ title: "Setting" }, { title: "Old" }, { title: "New" }];
  const side = (text) => text === "" ? element("span", { class: "soft" }, "(none)") : path(text);
  return [
    element("p", { class: "facts" }, element("span", {}, "from build ", foreign(device.from)),
      element("span", {}, counted(device.differences.length, "difference", "differences"))),
    section("Differences", table({ class: "stacked", "aria-label": "Differences" }, columns,
      device.differences.map((difference) =>
        ({ cells: [path(difference.what), side(difference.old), side(difference.new)] })))),
  ];
}
