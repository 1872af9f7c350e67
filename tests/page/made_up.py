"""Devices that are made up for the pages: many of them, and hostile ones."""

import base64
import copy
import json
import subprocess

OUTCOMES = ["migrated", "migrated", "migrated", "migrated-with-fallbacks", "failed"]

# Each is tried as an SSID, a name of an image, a line of the log.
HOSTILE = [
    "<script>hurt()</script>",
    "</script><script>hurt()</script>",
    "<img src=x onerror=hurt()>",
    "<!--<script>",
    "\"'><svg onload=hurt()>",
    "javascript:hurt()",
    "&lt;b&gt;",
    "%3Cscript%3E",
]
RIGHT_TO_LEFT = "\u202egnp.\u2067x"
HEBREW = "\u05d1\u05d9\u05ea 5G"
LINE_ENDS = "one\u2028two\u2029three"


def record(number):
    """A fleet's record without settings, a pure function of the number."""
    outcome = OUTCOMES[number % 5]
    findings = {3: ["security-unknown"], 4: ["archive-stopped"]}.get(number % 5, [])
    if number % 100 == 3:
        findings = findings + ["ssid-lost"]
    log = [{"number": 229, "severity": 4, "text": "Start to migrate config from 1.2.5 to 1.3"}]
    if number % 5 == 3:
        log.append({"number": 760, "severity": 3, "text": "Invalid security mode: WPA2, select wpa2."})
    return {"schema": 1, "image": f"fleet/device-{number:05}", "from": "8000", "outcome": outcome,
            "status": 1 if outcome == "failed" else 0, "signal": None,
            "error": "cannot move wifi_nvram" if outcome == "failed" else "", "log": log,
            "documents": ["/usr/kelp/etc/wifi/global.json"], "archived": ["/usr/kelp/etc/wifi/wifi_nvram"],
            "findings": findings, "milliseconds": number % 7}


def with_household(made, household, ssid):
    """The record with the settings of a household whose first network has another name."""
    changed = copy.deepcopy(household)
    for radio in changed["networks"][0]["radios"]:
        for setting in radio["settings"]:
            if setting["member"] == "ssid":
                setting["now"] = ssid
                setting["was"] = base64.b64encode(ssid.encode()).decode()
    return {**made, "household": changed}


def lines(devices):
    return b"".join(json.dumps(device).encode() + b"\n" for device in devices)


def write_page(program, kind, text, file):
    subprocess.run([program, kind, str(file)], input=text, check=True)
