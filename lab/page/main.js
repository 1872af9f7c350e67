// What the address behind "#" asks for is shown: a device, or the devices of a kind.

const main = document.getElementById("main");
const left = new Map();  // how far an address was scrolled, and the link that was followed from there
let shown = null;

function title() {
  const count = data.devices.length;
  if (!isComparison) return "Rehearsal of " + counted(count, "device", "devices");
  return counted(count, "device differs", "devices differ") + " of " +
    (count + data.unchanged).toLocaleString("en");
}

const overview = data.kind === "household" ? null : makeOverview(title());

function deviceView(place) {
  const device = data.devices[place];
  const back = overview === null ? null
    : element("p", { class: "back" }, element("a", { href: listAddress }, "Back to the devices"));
  return element("article", {}, back, element("h1", { tabindex: "-1" }, element("bdi", { dir: "ltr" }, device.image)),
    isComparison ? comparisonView(device) : householdView(device));
}

function show() {
  const asked = overview === null ? "0" : address().get("device");
  const device = /^\d+$/.test(asked || "") ? data.devices[asked] : undefined;
  const isFirst = shown === null;
  if (device !== undefined) {
    document.title = device.image;
    main.replaceChildren(deviceView(asked));
    if (!isFirst) {
      scrollTo(0, 0);
      main.querySelector("h1").focus({ preventScroll: true });
    }
  } else if (overview === null) {
    main.replaceChildren(element("p", {}, "There is no device in this page."));
  } else {
    document.title = title();
    const wasHere = overview.view.parentNode === main;
    if (!wasHere) main.replaceChildren(overview.view);
    overview.update();
    const place = left.get(location.hash);
    if (!wasHere && place !== undefined) {
      scrollTo(0, place.scrolled);
      const link = place.link && main.querySelector('a[href="' + place.link + '"]');
      if (link) link.focus({ preventScroll: true });
    } else if (!isFirst && !(document.activeElement instanceof HTMLSelectElement)) {
      overview.heading.focus({ preventScroll: true });
      overview.heading.scrollIntoView();
    }
  }
  shown = location.hash;
}

document.addEventListener("click", (event) => {
  const link = event.target instanceof Element ? event.target.closest("a") : null;
  if (link === null) return;
  if (link.classList.contains("skip")) {
    event.preventDefault();
    main.focus();
    return;
  }
  left.set(location.hash, { scrolled: scrollY, link: link.getAttribute("href") });
});

// On paper nothing can be opened.
let opened = [];
addEventListener("beforeprint", () => {
  opened = [...document.querySelectorAll("details:not([open])")];
  for (const details of opened) details.open = true;
});
addEventListener("afterprint", () => {
  for (const details of opened) details.open = false;
});

history.scrollRestoration = "manual";
addEventListener("hashchange", show);
show();
