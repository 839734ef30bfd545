"""A real Chromium with no profile and no network of its own, and what the tests ask of it."""

import base64
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-dev-shm-usage", "--force-prefers-reduced-motion",
]
WCAG = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"]


class Browser:
    def __init__(self, axe):
        with open(axe, encoding="utf-8") as file:
            self.axe = file.read()
        self.profile = tempfile.TemporaryDirectory(prefix="pagerfwd-chromium-")
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for option in OPTIONS + [f"--user-data-dir={self.profile.name}"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def close(self):
        self.driver.quit()
        self.profile.cleanup()

    # --- How it shows pages.

    def look(self, width=1280, height=900, scheme="light", scripts=True):
        self.command("Emulation.setDeviceMetricsOverride",
                     width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.command("Emulation.setEmulatedMedia",
                     features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.command("Emulation.setScriptExecutionDisabled", value=not scripts)

    def command(self, name, **arguments):
        return self.driver.execute_cdp_cmd(name, arguments)

    def picture(self, path):
        """Of the whole page: it needs no scroll bar, so it is as wide as the window."""
        width = self.driver.execute_script("return window.innerWidth")
        height = self.command("Page.getLayoutMetrics")["cssContentSize"]["height"]
        picture = self.command(
            "Page.captureScreenshot", captureBeyondViewport=True,
            clip={"x": 0, "y": 0, "width": width, "height": min(height, 8000), "scale": 1})
        with open(path, "wb") as file:
            file.write(base64.b64decode(picture["data"]))

    # --- What is on the page.

    def open(self, url):
        self.driver.get(url)

    def text(self, selector="main"):
        """Empty where there is none. At once, since the page may be another in a moment."""
        return self.driver.execute_script(
            "const at = document.querySelector(arguments[0]); return at ? at.innerText : '';",
            selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def button(self, name):
        return self.driver.find_element(By.XPATH, f"//button[normalize-space()='{name}']")

    def press(self, name):
        self.button(name).click()

    def has_button(self, name):
        return bool(self.driver.find_elements(By.XPATH, f"//button[normalize-space()='{name}']"))

    def follow(self, name):
        self.driver.find_element(By.LINK_TEXT, name).click()

    def complaints(self):
        """Of the browser itself: what the content policy refused, what failed in the script."""
        return [entry["message"] for entry in self.driver.get_log("browser")
                if entry["level"] in ("SEVERE", "WARNING")]

    def findings(self):
        """What axe-core finds on the page, each as a sentence."""
        self.driver.execute_script(self.axe)
        report = self.driver.execute_async_script(
            "const done = arguments[arguments.length - 1];"
            "axe.run(document, {runOnly: arguments[0]}).then(done);", WCAG)
        return [f"{rule['id']}: {node['html']} ({node.get('failureSummary', '')})"
                for rule in report["violations"] for node in rule["nodes"]]

    def is_wider_than_the_screen(self):
        return self.driver.execute_script(
            "return document.documentElement.scrollWidth > window.innerWidth")

    # --- By the keyboard alone.

    def type(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self):
        return self.driver.switch_to.active_element

    def tab_to(self, wanted, most=80):
        """Goes on from element to element until one has this text, or this name."""
        for _ in range(most):
            self.type(Keys.TAB)
            at = self.focused()
            if wanted in (at.text.strip(), at.get_attribute("name"), at.get_attribute("id")):
                return at
        raise AssertionError(f"no {wanted} among {most} elements that the keyboard reaches")


