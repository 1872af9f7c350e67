"""A browser of its own for the tests: no window, no network, no profile but an empty one."""

import base64
import json
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

SWITCHES = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--disable-dev-shm-usage", "--lang=en"]


class Browser:
    def __init__(self):
        self.profile = tempfile.TemporaryDirectory()
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for switch in [*SWITCHES, "--user-data-dir=" + self.profile.name]:
            options.add_argument(switch)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def close(self):
        self.driver.quit()
        self.profile.cleanup()

    def window(self, width, height=900, **media):
        """The size of the window in pixels, and what the reader prefers: scheme="dark", medium="print"."""
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": media.get("medium", ""),
            "features": [{"name": "prefers-color-scheme", "value": media.get("scheme", "light")}]})

    def open(self, file, address=""):
        self.driver.get("about:blank")
        self.console()
        self.requests()
        self.driver.get(file.as_uri() + address)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def console(self):
        """What the console was told since the last call."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """The addresses that were asked for since the last call."""
        events = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent"]

    def screenshot(self, file, most=3000):
        size = self.run("return [innerWidth, document.documentElement.scrollHeight]")
        shot = self.driver.execute_cdp_cmd("Page.captureScreenshot", {
            "captureBeyondViewport": True,
            "clip": {"x": 0, "y": 0, "width": size[0], "height": min(size[1], most), "scale": 1}})
        file.write_bytes(base64.b64decode(shot["data"]))

    def paper(self):
        """The page as it is printed, a PDF."""
        return base64.b64decode(self.driver.execute_cdp_cmd("Page.printToPDF", {})["data"])
