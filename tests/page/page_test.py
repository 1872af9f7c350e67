"""The pages of --html, in a browser. Run by scripts/test-page."""

import base64
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from selenium.common.exceptions import NoSuchElementException, StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

import made_up
from browser import Browser

BUILD = pathlib.Path(os.environ["KELP_BUILD"])
SOURCE = pathlib.Path(__file__).resolve().parents[2]
SCREENSHOTS = os.environ.get("KELP_SCREENSHOTS")
MANY = 10_000


def devicelab(*arguments):
    return subprocess.run([BUILD / "devicelab", *arguments], stdout=subprocess.PIPE, check=True).stdout


class PageCase(unittest.TestCase):
    """Every test begins with a page as it opens from disk, and ends with a look at the console and the requests."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        cls.page = cls.folder / "page.html"
        cls.make()

    def setUp(self):
        self.browser.window(1280)
        self.open()

    def tearDown(self):
        self.assertEqual(self.browser.console(), [])
        outside = [url for url in self.browser.requests() if url != "about:blank"
                   and url.split("#")[0] != self.page.as_uri()]
        self.assertEqual(outside, [])
        self.assertEqual(self.browser.run("return performance.getEntriesByType('resource').length"), 0)

    def open(self, address=""):
        self.browser.open(self.page, address)

    # What a person sees and does.

    def all(self, selector):
        return self.browser.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.browser.driver.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector="main"):
        return self.one(selector).text

    def wait(self, condition):
        # What is being replaced while it is looked at is looked at again.
        WebDriverWait(self.browser.driver, 30, 0.05, [NoSuchElementException, StaleElementReferenceException]).until(
            lambda _: condition())

    def back(self):
        self.browser.driver.back()

    def press(self, *keys):
        for key in keys:
            self.browser.driver.switch_to.active_element.send_keys(key)

    def focused(self):
        return self.browser.run("return document.activeElement.textContent")

    def tab_to(self, wanted, most=80):
        """Walks with the tabulator to what has that text."""
        for _ in range(most):
            self.press(Keys.TAB)
            if self.focused().startswith(wanted):
                return
        self.fail(f"the tabulator does not lead to {wanted}")

    def assert_fits(self, width):
        self.assertLessEqual(self.browser.run("return document.documentElement.scrollWidth"), width)

    def shoot(self, name):
        if SCREENSHOTS:
            for kind, width, scheme in [("light", 1280, "light"), ("dark", 1280, "dark"), ("phone", 360, "light")]:
                self.browser.window(width, scheme=scheme)
                self.browser.screenshot(pathlib.Path(SCREENSHOTS) / f"{name}-{kind}.png")
            self.browser.window(794, medium="print")
            self.browser.run("dispatchEvent(new Event('beforeprint'))")
            self.browser.screenshot(pathlib.Path(SCREENSHOTS) / f"{name}-paper.png")
            self.browser.run("dispatchEvent(new Event('afterprint'))")
            (pathlib.Path(SCREENSHOTS) / f"{name}.pdf").write_bytes(self.browser.paper())
            self.browser.window(1280)


class PageOfAHousehold(PageCase):
    @classmethod
    def make(cls):
        devicelab("run", SOURCE / "devices/tri-band-repeater", "--from", "8000", "--html", cls.page)

    def test_shows_the_household_before_and_after(self):
        text = self.text()
        self.assertIn("migrated-with-fallbacks", self.text(".facts"))
        self.assertIn("A security setting was not recognised, so the network uses WPA2", text)
        self.assertIn("What to do: Choose the security setting again.", text)
        for part in ["Primary Network", "Guest Network", "Radios", "WPS", "Log", "Files"]:
            self.assertIn(part, [heading.text for heading in self.all("h2")])
        self.assertIn("Security\nsecurity\nWPA2 4, WPA2 fell back", [row.text for row in self.all("tr.marked")])
        self.assertIn("Bj\u00f8rkeli\nstored as", text)
        sections = {section.text.partition("\n")[0]: section.text for section in self.all("section")}
        self.assertIn("Guests are kept out of the home network", sections["Guest Network"])
        self.assertNotIn("Guests are kept out of the home network", sections["Primary Network"])
        self.shoot("household")

    def test_masks_secrets(self):
        self.assertIn("********", self.text())
        shown = devicelab("run", SOURCE / "devices/tri-band-repeater", "--from", "8000", "--json", "--show-secrets")
        secrets = {setting["now"] for network in json.loads(shown)["networks"] for radio in network["radios"]
                   for setting in radio["settings"] if setting["member"] == "password"} - {""}
        self.assertGreater(len(secrets), 0)
        unmasked = self.folder / "unmasked.html"
        devicelab("run", SOURCE / "devices/tri-band-repeater", "--from", "8000", "--html", unmasked, "--show-secrets")
        for secret in secrets:
            written = json.dumps(secret)[1:-1].replace("&", "\\u0026")
            self.assertIn(written, unmasked.read_text())
            self.assertNotIn(written, self.page.read_text())

    def test_opens_what_is_folded_away(self):
        summary = self.one("details summary")
        summary.click()
        self.assertIsNotNone(self.one("details").get_attribute("open"))

    def test_fits_a_phone(self):
        self.browser.window(360)
        self.assert_fits(360)
        self.browser.run("for (const details of document.querySelectorAll('details')) details.open = true")
        self.assert_fits(360)

    def test_opens_all_of_it_on_paper(self):
        closed = len(self.all("details:not([open])"))
        self.assertGreater(closed, 0)
        self.browser.run("addEventListener('beforeprint', () => { window.open_on_paper = "
                         "document.querySelectorAll('details[open]').length; })")
        self.assertEqual(self.browser.paper()[:5], b"%PDF-")
        self.assertEqual(self.browser.run("return window.open_on_paper"), closed)
        self.assertEqual(len(self.all("details:not([open])")), closed)

    def test_is_dark_where_the_reader_prefers_it_but_not_on_paper(self):
        colour = "return getComputedStyle(document.body).backgroundColor"
        self.assertEqual(self.browser.run(colour), "rgb(255, 255, 255)")
        self.browser.window(1280, scheme="dark")
        self.assertEqual(self.browser.run(colour), "rgb(20, 23, 27)")
        self.browser.window(1280, scheme="dark", medium="print")
        self.assertEqual(self.browser.run(colour), "rgb(255, 255, 255)")


class PageOfAFleet(PageCase):
    @classmethod
    def make(cls):
        household = json.loads(devicelab("run", SOURCE / "devices/tri-band-repeater", "--from", "8000", "--json"))
        devices = [made_up.record(number) for number in range(MANY)]
        for number in range(0, MANY, 10):
            devices[number] = made_up.with_household(devices[number], household, f"Lighthouse {number}")
        made_up.write_page(BUILD / "lab_make_page", "fleet", made_up.lines(devices), cls.page)

    def rows(self):
        return self.all(".devices tbody tr")

    def count(self):
        return self.text("#count")

    def search(self, words):
        field = self.one("input[name=q]")
        field.clear()
        field.send_keys(words)

    def chart_link(self, label):
        return next(link for link in self.all(".chart a") if label in link.text)

    def test_shows_the_fleet_at_a_glance(self):
        self.assertEqual(self.text("h1"), "Rehearsal of 10,000 devices")
        self.assertIn("6,000 (60.0 %)", self.chart_link("migrated").text)
        self.assertIn("2,000 (20.0 %)", self.chart_link("security setting was not recognised").text)
        self.assertIn("100 (1.0 %)", self.one(".chart a[href='#finding=ssid-lost']").text)
        found = [link.get_attribute("href").partition("#finding=")[2] for link in self.all(".chart a[href^='#finding=']")]
        self.assertEqual(found, ["security-unknown", "ssid-lost", "archive-stopped"], "those that break come first")
        self.shoot("fleet")

    def test_draws_a_few_rows_of_ten_thousand(self):
        self.assertEqual(self.count(), "Devices 1 to 50 of 10,000")
        self.assertEqual(len(self.rows()), 50)
        self.assertLess(self.browser.run("return document.querySelectorAll('*').length"), 2000)

    def test_turns_the_pages(self):
        self.browser.driver.find_element(By.LINK_TEXT, "Next").click()
        self.wait(lambda: self.count() == "Devices 51 to 100 of 10,000")
        self.assertIn("device-00050", self.rows()[0].text)
        self.browser.driver.find_element(By.LINK_TEXT, "Last").click()
        self.wait(lambda: self.count() == "Devices 9,951 to 10,000 of 10,000")
        self.assertIn("device-09999", self.rows()[-1].text)
        self.back()
        self.back()
        self.wait(lambda: self.count() == "Devices 1 to 50 of 10,000")

    def test_charts_lead_to_their_devices(self):
        self.chart_link("failed").click()
        self.wait(lambda: self.count() == "Devices 1 to 50 of 2,000")
        self.assertIn("device-00004", self.rows()[0].text)
        self.assertEqual(self.chart_link("failed").get_attribute("aria-current"), "true")
        self.chart_link("security setting was not recognised").click()
        self.wait(lambda: "device-00003" in self.rows()[0].text)
        self.assertIsNone(self.chart_link("failed").get_attribute("aria-current"))

    def test_filters(self):
        Select(self.one("select[name=outcome]")).select_by_visible_text("migrated-with-fallbacks")
        self.wait(lambda: self.count() == "Devices 1 to 50 of 2,000")
        Select(self.one("select[name=finding]")).select_by_visible_text("ssid-lost")
        self.wait(lambda: self.count() == "Devices 1 to 50 of 100")
        self.assertIn("device-00003", self.rows()[0].text)
        self.assertIn("device-00103", self.rows()[1].text)
        Select(self.one("select[name=outcome]")).select_by_visible_text("failed")
        self.wait(lambda: self.count() == "No device")
        self.assertEqual(self.rows(), [])
        self.one(".filters button").click()
        self.wait(lambda: self.count() == "Devices 1 to 50 of 10,000")
        Select(self.one("select[name=log]")).select_by_visible_text("760")
        self.wait(lambda: self.count() == "Devices 1 to 50 of 2,000")

    def test_searches(self):
        self.search("device-0777")
        self.wait(lambda: self.count() == "Devices 1 to 10 of 10")
        self.search("LIGHTHOUSE 4320")
        self.wait(lambda: self.count() == "Devices 1 to 1 of 1")
        self.assertIn("device-04320", self.rows()[0].text)
        self.search("cannot move device-00004")
        self.wait(lambda: self.count() == "Devices 1 to 1 of 1")
        self.search("nowhere at all")
        self.wait(lambda: self.count() == "No device")

    def test_sorts(self):
        self.browser.driver.find_element(By.LINK_TEXT, "Findings").click()
        self.wait(lambda: "device-00003" in self.rows()[0].text)
        self.assertIn("device-00103", self.rows()[1].text)
        self.assertEqual(self.all("th[aria-sort]")[0].text, "Findings")

    def test_opens_a_device_and_goes_back_to_where_it_was(self):
        self.search("lighthouse")
        self.wait(lambda: self.count() == "Devices 1 to 50 of 1,000")
        self.browser.driver.find_element(By.LINK_TEXT, "Next").click()
        self.wait(lambda: self.count() == "Devices 51 to 100 of 1,000")
        self.one("a[href='#device=520']").click()
        self.wait(lambda: self.text("h1") == "fleet/device-00520")
        self.assertIn("Lighthouse 520", self.text())
        self.assertIn("Primary Network", self.text())
        self.assertEqual(self.focused(), "fleet/device-00520")
        self.shoot("device")
        self.back()
        self.wait(lambda: self.all("#count") and self.count() == "Devices 51 to 100 of 1,000")
        self.assertEqual(self.one("input[name=q]").get_attribute("value"), "lighthouse")
        self.assertEqual(self.focused(), "fleet/device-00520")
        self.browser.driver.forward()
        self.wait(lambda: self.text("h1") == "fleet/device-00520")
        self.browser.driver.find_element(By.LINK_TEXT, "Back to the devices").click()
        self.wait(lambda: self.all("#count") and self.count() == "Devices 51 to 100 of 1,000")

    def test_tells_of_a_device_without_settings_what_it_knows(self):
        self.open("#device=3")
        text = self.text()
        self.assertIn("A security setting was not recognised", text)
        self.assertIn("Invalid security mode: WPA2", text)
        self.assertIn("/usr/kelp/etc/wifi/wifi_nvram", text)
        self.assertIn("--details", text)

    def test_an_address_of_no_device_shows_the_fleet(self):
        for address in ["#device=10000", "#device=length", "#page=-3", "#page=x", "#outcome=", "#a=%", "#sort=toString"]:
            self.open(address)
            self.assertTrue(self.count().startswith("Devices 1 to 50 of "), address)

    def test_works_with_the_keyboard_alone(self):
        self.press(Keys.TAB)
        self.assertEqual(self.focused(), "Skip to the content")
        self.press(Keys.ENTER)
        self.tab_to("failed")
        outline = "return getComputedStyle(document.activeElement).outlineStyle"
        self.assertEqual(self.browser.run(outline), "solid")
        self.press(Keys.ENTER)
        self.wait(lambda: self.count() == "Devices 1 to 50 of 2,000")
        self.assertEqual(self.focused(), "Devices")
        self.press(Keys.TAB)
        self.press("device-00014")
        self.wait(lambda: self.count() == "Devices 1 to 1 of 1")
        self.tab_to("fleet/device-00014")
        self.press(Keys.ENTER)
        self.wait(lambda: self.text("h1") == "fleet/device-00014")
        self.tab_to("Back to the devices")
        self.press(Keys.ENTER)
        self.wait(lambda: self.all("#count") and self.count() == "Devices 1 to 1 of 1")
        self.tab_to("Clear filters")
        self.press(Keys.SPACE)
        self.wait(lambda: self.count() == "Devices 1 to 50 of 10,000")

    def test_says_what_its_parts_are(self):
        self.assertEqual({row.aria_role for row in self.rows()}, {"row"})
        for field in self.all(".filters input, .filters select"):
            self.assertNotEqual(field.accessible_name, "")
        self.assertEqual(self.one("#count").get_attribute("role"), "status")
        self.assertEqual(self.one("html").get_attribute("lang"), "en")

    def test_fits_a_phone(self):
        self.browser.window(360)
        self.assert_fits(360)
        self.open("#finding=security-unknown")
        self.assert_fits(360)
        self.open("#device=520")
        self.assert_fits(360)

    def test_leaves_off_on_paper_what_cannot_be_used_there(self):
        self.browser.window(794, medium="print")
        self.assertFalse(self.one(".filters").is_displayed())
        self.assertTrue(self.one("#count").is_displayed())
        self.assertTrue(self.chart_link("failed").is_displayed())
        self.assert_fits(794)


class PageOfARehearsedFleet(PageCase):
    """Through the commands, and what they write as records beside the page."""

    @classmethod
    def make(cls):
        devicelab("new", cls.folder / "fleet", "--count", "60", "--seed", "1")
        cls.records = cls.folder / "fleet.jsonl"
        devicelab("fleet", f"@{cls.folder}/fleet/list.jsonl", "--from", "8000", "--output", cls.records,
                  "--html", cls.page, "--fail-on", "none")

    def test_shows_each_device_of_the_records(self):
        records = [json.loads(line) for line in self.records.read_text().splitlines()]
        self.assertEqual(len(records), 60)
        self.assertEqual(self.text("#count"), "Devices 1 to 50 of 60")
        for place in (0, 31, 59):
            self.open(f"#device={place}")
            self.assertEqual(self.text("h1"), records[place]["image"])
            self.assertEqual(self.text(".facts .badge"), records[place]["outcome"])
            ids = [item.text.split("\n")[-1] for item in self.all(".findings > li")]
            self.assertEqual(ids, records[place]["findings"])
        self.open()
        self.shoot("rehearsed")

    def test_is_what_the_summary_draws(self):
        drawn = self.folder / "summary.html"
        devicelab("summary", self.records, "--html", drawn)
        self.assertEqual(drawn.read_bytes(), self.page.read_bytes())


class PageOfHostileDevices(PageCase):
    @classmethod
    def make(cls):
        household = json.loads(devicelab("run", SOURCE / "devices/tri-band-repeater", "--from", "8000", "--json"))
        texts = made_up.HOSTILE + [made_up.RIGHT_TO_LEFT, made_up.HEBREW, made_up.LINE_ENDS, "Caf@BYTE@"]
        devices = []
        for number, text in enumerate(texts):
            device = made_up.with_household(made_up.record(number), household, text)
            device["image"] = text + f" number {number}"
            device["error"] = text
            device["findings"] = [text]
            device["log"] = device["household"]["log"] = [{"number": 760, "severity": 3, "text": text}]
            device["household"]["networks"][0]["name"] = text
            devices.append(device)
        # As a program writes it that does not look at its bytes.
        written = made_up.lines(devices).replace(b"@BYTE@", b"\xe9")
        made_up.write_page(BUILD / "lab_make_page", "fleet", written, cls.page)

    def tearDown(self):
        self.assertEqual(self.browser.run("return typeof hurt + document.scripts.length"), "undefined2")
        self.assertEqual(self.all("main img, main svg, main script, main b, main a[href^='javascript']"), [])
        super().tearDown()

    def test_shows_hostile_texts_as_they_are(self):
        self.assertEqual(len(self.all(".devices tbody tr")), len(made_up.HOSTILE) + 4)
        for number, text in enumerate(made_up.HOSTILE):
            self.assertIn(text, self.text(".devices"))
            self.open(f"#device={number}")
            self.assertEqual(self.text("h1"), text + f" number {number}")
            self.assertGreater(self.text().count(text), 4)
            self.open()
        self.shoot("hostile")

    def test_is_not_turned_around(self):
        number = len(made_up.HOSTILE)
        self.open(f"#device={number}")
        self.assertIn("\\u202egnp.\\u2067x", self.text())
        self.assertNotIn("\u202e", self.browser.run("return document.documentElement.textContent"))
        self.open(f"#device={number + 1}")
        self.assertEqual(self.text("h1"), made_up.HEBREW + f" number {number + 1}")
        isolated = self.browser.run(
            "const walker = document.createTreeWalker(document.querySelector('main'), NodeFilter.SHOW_TEXT);"
            "const found = [];"
            "while (walker.nextNode()) if (/[\u0590-\u05ff]/.test(walker.currentNode.data))"
            "  found.push(getComputedStyle(walker.currentNode.parentNode).unicodeBidi);"
            "return found")
        self.assertGreater(len(isolated), 4)
        self.assertEqual(set(isolated), {"isolate"})

    def test_shows_line_ends_and_bytes_that_are_no_utf8(self):
        number = len(made_up.HOSTILE)
        self.open(f"#device={number + 2}")
        self.assertIn("one\\u2028two\\u2029three", self.text())
        self.open(f"#device={number + 3}")
        self.assertIn("Caf\\xe9", self.text())
        self.assertIn("Bytes that are no UTF-8 stand here as \\xe9", self.text("footer"))

    def test_fits_a_phone(self):
        self.browser.window(360)
        self.assert_fits(360)


class PageOfAHostileHousehold(PageCase):
    """A device whose network names are hostile bytes, through the real program."""

    @classmethod
    def make(cls):
        image = cls.folder / "device"
        shutil.copytree(SOURCE / "devices/tri-band-repeater", image)
        file = next((image / "usr/kelp/etc/wifi").glob("wifi_ap_60*"))
        names = {b"ssid=": b"<script>hurt()</script>", b"guest_ssid=": b"\xe9t\xe9 \xe2\x80\xae\"'"}
        lines = []
        for line in file.read_bytes().split(b"\n"):
            for key, name in names.items():
                if line.startswith(key):
                    line = key + base64.b64encode(name)
            if line.startswith(b"security="):
                line = b"security=PERSONAL_WPA3 "
            lines.append(line)
        file.write_bytes(b"\n".join(lines))
        devicelab("run", image, "--from", "8000", "--html", cls.page)

    def test_shows_the_names(self):
        self.assertIn("<script>hurt()</script>", self.text())
        self.assertIn("\\xe9t\\xe9 \\u202e\"'", self.text())
        self.assertEqual(self.browser.run("return typeof hurt"), "undefined")

    def test_shows_a_blank_at_the_end_of_a_word(self):
        self.assertIn('Security\nsecurity\n"PERSONAL_WPA3 " 4, WPA2 fell back', [row.text for row in self.all("tr.marked")])
        self.assertIn(': security=PERSONAL_WPA3 "', self.text(".findings"))


class PageOfForeignDocuments(PageCase):
    """A device whose documents of an earlier run hold other kinds of values than the program writes."""

    @classmethod
    def make(cls):
        image = cls.folder / "device"
        shutil.copytree(SOURCE / "devices/dual-band-standalone", image)
        folder = image / "usr/kelp/etc/wifi"
        (folder / "misc.json").write_text('{"netTopology": {"refs": [0]}, "macFilterProfiles": [{"id": 0, "devices": "none"},'
                                          ' {"id": 1, "name": 5, "devices": [{"name": {"refs": [9]}, "mac": []}, 7]}]}')
        (folder / "network.json.default").write_text('[{"name": {}, "featureSettings": [{"ssid": {"refs": [1]}}, 3]}]')
        records = cls.folder / "fleet.jsonl"
        devicelab("fleet", image, "--from", "8000", "--details", "--output", records)
        devicelab("summary", records, "--html", cls.page)

    def test_shows_what_is_in_them(self):
        self.one(".devices tbody a").click()
        self.wait(lambda: "skipped" in self.text(".facts"))
        self.assertIn('{"refs":[0]}', self.text())
        self.assertIn('{"refs":[1]}', self.text())

    def test_can_be_searched(self):
        self.one("input[name=q]").send_keys("no such device")
        self.wait(lambda: self.text("#count") == "No device")


class PageOfAComparison(PageCase):
    @classmethod
    def make(cls):
        devices = []
        for number in range(120):
            differences = [{"what": f"network.json.default[{number % 2}].security", "old": "4", "new": "7"}]
            if number % 3 == 0:
                differences.append({"what": "outcome", "old": "\"migrated\"", "new": ""})
            devices.append({"schema": 1, "image": f"fleet/{number:03}", "from": "8000", "differences": differences})
        made_up.write_page(BUILD / "lab_make_page", "comparison", made_up.lines(devices), cls.page)

    def test_shows_differences_setting_by_setting(self):
        self.assertEqual(self.text("h1"), "120 devices differ of 120")
        self.assertIn("network.json.default[\u2026].security\n120 (100.0 %)", self.text(".chart"))
        self.shoot("comparison")
        self.all(".chart a")[1].click()
        self.wait(lambda: self.text("#count") == "Devices 1 to 40 of 40")
        self.one("a[href='#device=3']").click()
        self.wait(lambda: self.text("h1") == "fleet/003")
        self.assertEqual([row.text for row in self.all("tbody tr")],
                         ["network.json.default[1].security 4 7", "outcome \"migrated\" (none)"])
        self.back()
        self.wait(lambda: self.all("#count") and self.text("#count") == "Devices 1 to 40 of 40")

    def test_fits_a_phone(self):
        self.browser.window(360)
        self.assert_fits(360)
        self.open("#device=3")
        self.assert_fits(360)


if __name__ == "__main__":
    unittest.main(verbosity=2)
