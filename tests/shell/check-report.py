#!/usr/bin/env python3
"""Opens the page of `vanxml check --format html` in headless Chromium, and filters it.

    check-report.py VANXML [--screenshots FOLDER]

Checks documents whose names and texts try to add a script to the page. Nothing of them may run, and the browser may
report no error. With --screenshots, keeps pictures of the page in FOLDER: light, dark, narrow, filtered and printed.
Exits with status 77, which counts as skipped, if chromium or chromedriver is missing.
"""

import argparse
import base64
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import urllib.request

SKIPPED = 77
TIMEOUT = 120  # seconds for one request to the browser
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the key of an element in WebDriver
ENTER = "\ue007"

HOSTILE = "<img src=x onerror=alert(1)><script>document.title='hacked'</script>"
DOCUMENTS = {
    "good.xml": "<a/>",
    "orders.xml": "<orders>\n  <order id='1'>\n    <item>pen</item>\n  </ordr>\n</orders>\n",
    "sales/north.kxa": "<?xml version='1.0' encoding='no-such'?>\n<a/>\n",
    "sales/south.kxa": "<a>\n  <b c='1' c='2'/>\n</a>\n",
    "bytes.xml": "<?xml version='1.0' encoding='iso-8859-1'?>\n<a>\u00e9</a>\n",
    "mismatch.xml": "<?xml version='1.0' encoding='iso-8859-1'?>\n<a>\u20ac</a>\n",
    "hostile.xml": f"<a>\n  <b c=\"{HOSTILE.replace('<', '&lt;')}\" c=''/><!-- {HOSTILE} -->\n</a>\n",
    f"\"'{HOSTILE.replace('/', '-')}.xml": "<a>",
    "long.xml": "<a>" + "<b>text</b>" * 200 + "</c></a>\n",
    "hebrew.xml": "<a>\n<b>\u05e9\u05dc\u05d5\u05dd</c></a>\n",
    "controls.xml": "<a>\u202e\n<b></a>\n",
}


class Browser:
    """A session of WebDriver."""

    def __init__(self, driver, chromium, folder):
        self.opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        self.process = subprocess.Popen([driver, "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        text=True)
        for line in self.process.stdout:
            if found := re.search(r"successfully on port (\d+)", line):
                self.address = f"http://127.0.0.1:{found[1]}"
                break
        options = {"binary": chromium, "args": ["--headless=new", "--no-sandbox", "--disable-gpu",
                                                "--disable-dev-shm-usage", f"--user-data-dir={folder}",
                                                "--window-size=1200,900"]}
        capabilities = {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}
        session = self._request("POST", "/session", {"capabilities": {"alwaysMatch": capabilities}})
        self.session = f"/session/{session['sessionId']}"

    def _request(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.address + path, data, {"Content-Type": "application/json"},
                                         method=method)
        with self.opener.open(request, timeout=TIMEOUT) as answer:
            return json.load(answer)["value"]

    def post(self, path, **body):
        return self._request("POST", self.session + path, body)

    def run(self, script, *arguments):
        """The value of a function body. It runs beside the security policy of the page."""
        return self.post("/execute/sync", script=script, args=list(arguments))

    def find(self, selector):
        return self.post("/element", using="css selector", value=selector)[ELEMENT]

    def click(self, selector):
        self.post(f"/element/{self.find(selector)}/click")

    def type(self, selector, text):
        self.post(f"/element/{self.find(selector)}/value", text=text)

    def devtools(self, command, **parameters):
        return self.post("/goog/cdp/execute", cmd=command, params=parameters)

    def close(self):
        try:
            self._request("DELETE", self.session)
        finally:
            self.process.terminate()
            self.process.wait()


class Page:
    def __init__(self, browser, screenshots):
        self.browser = browser
        self.screenshots = screenshots
        self.failures = 0

    def expect(self, what, value, expected):
        if value != expected:
            self.failures += 1
            print(f"{what}: expected {expected!r}, not {value!r}")

    def shown_files(self):
        return self.browser.run("return [...document.querySelectorAll('tbody')].filter(b => b.offsetHeight > 0)"
                                ".map(b => b.querySelector('button').textContent)")

    def shown_messages(self):
        return self.browser.run("return [...document.querySelectorAll('tr.messages li')]"
                                ".filter(i => i.offsetHeight > 0).length")

    def status(self):
        return self.browser.run("return document.getElementById('shown').textContent")

    def picture(self, name, **size):
        if self.screenshots is None:
            return
        if size:
            self.browser.devtools("Emulation.setDeviceMetricsOverride", deviceScaleFactor=1, mobile=False, **size)
        data = self.browser.devtools("Page.captureScreenshot", captureBeyondViewport=False)["data"]
        (self.screenshots / f"{name}.png").write_bytes(base64.b64decode(data))


def check_start(page, counts):
    browser = page.browser
    page.expect("the title", browser.run("return document.title"), "Report of vanxml check")
    page.expect("the first sections", browser.run("return [...document.querySelectorAll('main > *')].map(e => e.id)"),
                ["", "summary", "files"])
    page.expect("scripts and pictures of documents",
                browser.run("return document.querySelectorAll('script, img, iframe, link').length"), 1)
    page.expect("requests", browser.run("return performance.getEntriesByType('resource').length"), 0)
    page.expect("shown messages", page.shown_messages(), counts["messages"])
    bars = browser.run("return [...document.querySelectorAll('.bars button')]"
                       ".map(b => [b.dataset.kind, Number(b.querySelector('.count').textContent)])")
    page.expect("the bars", dict(bars), counts["kinds"])
    widths = browser.run("return [...document.querySelectorAll('.bars button')].map(b => "
                         "[...b.querySelectorAll('rect')].reduce((sum, r) => "
                         "sum + Number(r.getAttribute('width')), 0))")
    page.expect("the widths of the bars are sorted", widths, sorted(widths, reverse=True))
    page.expect("the longest bar", widths[0], 1000)
    marks = browser.run("return [...document.querySelectorAll('tr.messages li')]"
                        ".filter(i => i.querySelector('.source') && !i.querySelector('mark')).length")
    page.expect("source lines without a mark", marks, 0)
    marked = browser.run("return [...document.querySelectorAll('tbody')]"
                         ".find(b => b.textContent.includes('orders.xml')).querySelector('mark').textContent")
    page.expect("the mark in orders.xml", marked, "</ordr>")
    # The mark stands right of the Hebrew text.
    overlap = browser.run("const mark = [...document.querySelectorAll('tbody')]"
                          ".find(b => b.textContent.includes('hebrew.xml')).querySelector('mark');"
                          "const range = document.createRange(); range.selectNodeContents(mark.previousSibling);"
                          "return range.getBoundingClientRect().right - mark.getBoundingClientRect().left")
    page.expect("the place of the mark in hebrew.xml", abs(overlap) < 1, True)


def check_filters(page, counts):
    browser = page.browser
    files = page.shown_files()
    browser.type("#text", "SALES")
    page.expect("files with 'sales'", sorted(page.shown_files()), ["sales/north.kxa", "sales/south.kxa"])
    page.picture("filtered")
    browser.type("#text", "no such text")
    page.expect("the status without a match", page.status(), "No message matches")
    page.expect("tables without a match", browser.run("return document.querySelector('table').offsetHeight"), 0)
    page.picture("nothing")
    browser.click("#clear")
    page.expect("all files", page.shown_files(), files)
    browser.click("#filters input[value=warning]")
    page.expect("messages without warnings", page.shown_messages(), counts["messages"] - counts["warnings"])
    browser.click("#filters input[value=warning]")
    browser.click("#filters input[value=failure]")
    page.expect("messages without failures", page.shown_messages(), counts["messages"] - counts["failures"])
    browser.click("#clear")
    # By keyboard: a kind of messages, then the messages of the first file.
    kind, count = next(iter(counts["kinds"].items()))
    browser.type(f".bars button[data-kind={kind}]", ENTER)
    page.expect(f"messages with {kind}", page.shown_messages(), count)
    page.expect("the status", page.status().split(" messages")[0], f"{count} of {counts['messages']}")
    browser.type(f".bars button[data-kind={kind}]", ENTER)
    page.expect("messages after the second Enter", page.shown_messages(), counts["messages"])
    browser.run("document.querySelector('#filters input[type=checkbox]').focus()")
    browser.post("/actions", actions=[{"type": "key", "id": "keyboard", "actions": [
        {"type": "keyDown", "value": "/"}, {"type": "keyUp", "value": "/"}]}])
    page.expect("the focus", browser.run("return document.activeElement.id"), "text")
    browser.click("#fold")
    page.expect("folded messages", page.shown_messages(), 0)
    page.expect("folded files", page.shown_files(), files)
    label = "return document.getElementById('fold').textContent"
    page.expect("the button after folding", browser.run(label), "Show messages")
    browser.type("tr.name button", ENTER)
    page.expect("messages of the first file", page.shown_messages() > 0, True)
    page.expect("the button after unfolding a file", browser.run(label), "Hide messages")
    browser.click("#fold")
    browser.click("#fold")
    page.expect("unfolded messages", page.shown_messages(), counts["messages"])


def take_pictures(page):
    browser = page.browser
    page.picture("light", width=1200, height=1500)
    browser.devtools("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": "dark"}])
    page.picture("dark")
    back = browser.run("return getComputedStyle(document.body).backgroundColor")
    page.expect("the background in the dark", back, "rgb(21, 24, 28)")
    browser.devtools("Emulation.setEmulatedMedia", features=[])
    page.picture("narrow", width=400, height=900)
    width = browser.run("return document.documentElement.scrollWidth - document.documentElement.clientWidth")
    page.expect("the excess of the width on a narrow screen", width, 0)
    if page.screenshots is not None:
        data = browser.post("/print", background=True)
        (page.screenshots / "printed.pdf").write_bytes(base64.b64decode(data))


def write_report(tool, folder):
    """Checks the documents. Returns the numbers that the page must show, from the JSON of the same documents."""
    for name, text in DOCUMENTS.items():
        path = folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(text.encode("iso-8859-1" if name == "bytes.xml" else "utf-8"))
    command = [tool, "check", *DOCUMENTS, "no-such-file.xml"]
    subprocess.run([*command, "--format", "html", "-o", "report.html"], cwd=folder, stdout=subprocess.DEVNULL,
                   timeout=TIMEOUT, check=False)
    result = subprocess.run([*command, "--format", "json"], cwd=folder, capture_output=True, timeout=TIMEOUT,
                            check=False)
    objects = [json.loads(line) for line in result.stdout.decode().splitlines()]
    kinds = {}
    for each in objects:
        kind = each.get("code", "not-checked")
        kinds[kind] = kinds.get(kind, 0) + 1
    return {"messages": len(objects), "kinds": kinds,
            "warnings": sum(each.get("severity") == "warning" for each in objects),
            "failures": sum(each["type"] == "failure" for each in objects)}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("vanxml", type=pathlib.Path)
    parser.add_argument("--screenshots", type=pathlib.Path)
    arguments = parser.parse_args()
    driver = shutil.which("chromedriver")
    chromium = shutil.which("chromium")
    if driver is None or chromium is None:
        print("missing: chromium or chromedriver")
        return SKIPPED
    if arguments.screenshots is not None:
        arguments.screenshots.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as work:
        folder = pathlib.Path(work) / "documents"
        folder.mkdir()
        counts = write_report(arguments.vanxml.resolve(), folder)
        browser = Browser(driver, chromium, pathlib.Path(work) / "profile")
        try:
            page = Page(browser, arguments.screenshots)
            browser.post("/url", url=(folder / "report.html").as_uri())
            check_start(page, counts)
            check_filters(page, counts)
            take_pictures(page)
            page.expect("the title at the end", browser.run("return document.title"), "Report of vanxml check")
            page.expect("errors of the browser", browser.post("/se/log", type="browser"), [])
        finally:
            browser.close()
    return 1 if page.failures else 0


if __name__ == "__main__":
    sys.exit(main())
