"""The pages in a real browser, of a site with all its processes.

    pages_test.py BINARIES LIBRARIES AXE PICTURES [-v] [NAME...]

PICTURES is a folder: each page at each width and in both schemes, of the last run.
"""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from selenium.webdriver.common.keys import Keys

from browser import Browser
from live_server import Server
from live_site import Site, free_port, is_there, until

TELEPHONE, TABLET, WALL = 320, 900, 1920
LISTS = ["/", "/pages", "/failed", "/alarms", "/hours", "/tests", "/trail"]


def setUpModule():
    global site, browser
    site = Site(BINARIES, LIBRARIES).__enter__()
    browser = Browser(AXE)


def tearDownModule():
    browser.close()
    site.__exit__()


class Case(unittest.TestCase):
    def setUp(self):
        self.site = site
        browser.look()
        browser.driver.delete_all_cookies()
        browser.complaints()

    def sign_in(self, may="manage"):
        browser.open(f"{self.site.address}/sign-in")
        browser.one("[name=token]").send_keys(self.site.tokens[may])
        browser.press("Sign in")
        until(lambda: browser.text("h1") == "Overview")

    def open(self, path):
        browser.open(self.site.address + path)

    def state_of(self, alarm):
        return next(a["state"] for a in site.alarms() if int(a["alarm"]) == alarm)

    def shows(self, path, text):
        self.open(path)
        return text in browser.text()


class Pages(Case):
    # --- Who is let in.

    def test_nobody_is_let_in_without_a_token(self):
        self.open("/")
        self.assertEqual("Sign in", browser.text("h1"))
        browser.one("[name=token]").send_keys("pagerfwd_0123")
        browser.press("Sign in")
        until(lambda: "This is no token" in browser.text("[role=alert]"))

    def test_who_may_look_sees_no_form_and_is_refused(self):
        alarm = site.raise_alarm("looked at")
        self.sign_in("look")
        self.open(f"/alarm?number={alarm}")
        self.assertFalse(browser.has_button("Acknowledge"))
        self.open("/")
        self.assertEqual([], browser.all("form[action='/pause']"))
        form = browser.one("[name=form]").get_attribute("value")
        cookie = "; ".join(f"{c['name']}={c['value']}" for c in browser.driver.get_cookies())
        for path in ("/acknowledge", "/withdraw", "/pause", "/test-page"):
            body = f"form={form}&alarm={alarm}&line=north&pager=engaged"
            self.assertEqual(403, site.post(path, body, cookie), path)
        self.assertNotIn("acknowledged", self.state_of(alarm))

    def test_what_another_site_makes_the_browser_send_is_refused(self):
        alarm = site.raise_alarm("forged")
        self.sign_in()
        cookie = "; ".join(f"{c['name']}={c['value']}" for c in browser.driver.get_cookies())
        self.assertEqual(403, site.post("/acknowledge", f"alarm={alarm}", cookie))
        # From another address the browser doesn't even send the cookie.
        browser.open("data:text/html,<form method=post action="
                     f"{site.address}/acknowledge><input name=alarm value={alarm}><button>Go</button>")
        browser.press("Go")
        until(lambda: "Signed out" in browser.text("body"))
        self.assertNotIn("acknowledged", self.state_of(alarm))

    def test_who_signs_out_is_out(self):
        self.sign_in()
        browser.press("Sign out")
        until(lambda: browser.text("h1") == "Sign in")
        self.open("/alarms")
        self.assertEqual("Sign in", browser.text("h1"))

    # --- What is seen and done.

    def test_what_alertmanager_sends_is_seen_acknowledged_and_its_pages_end(self):
        alertmanager = site.start_alertmanager()
        self.sign_in()
        site.send_alert(alertmanager, "disk", "OPS/web1")
        until(lambda: "disk is full" in browser.text())
        alarm = max(int(alarm["alarm"]) for alarm in site.alarms())
        browser.follow(str(alarm))
        self.assertIn("disk is full", browser.text())
        until(lambda: "Call " in browser.text(), 120)
        browser.one("[name=comment]").send_keys("on my way")
        browser.press("Acknowledge")
        until(lambda: browser.text("#refreshed [role=status]") == "acknowledged")
        self.assertFalse(browser.has_button("Acknowledge"))
        self.assertIn("on my way", browser.text())
        until(lambda: all(int(page["alarm"]) != alarm for page in site.status()["pending"]), 120)
        site.send_alert(alertmanager, "disk", "OPS/web1", ends="2026-01-01T00:05:00Z")
        until(lambda: "resolved" in browser.text("#refreshed"))
        self.assertEqual(1, sum(alarm["details"] == "disk is full" for alarm in site.alarms()))
        self.open("/trail")
        self.assertIn("on my way", browser.text())

    def test_a_call_has_its_dialogue_and_its_picture(self):
        self.sign_in()
        alarm = site.raise_alarm("call", "DUTY/1")
        self.open(f"/alarm?number={alarm}")
        until(lambda: browser.all("a[href^='/call']"), 120)
        browser.one("a[href^='/call']").click()
        until(lambda: "> ATDT0,5550" in browser.text("pre"))
        until(lambda: browser.one("img").get_property("naturalWidth") > 0)

    def test_a_line_is_paused_and_put_back(self):
        self.sign_in()
        browser.press("Pause south")
        until(lambda: browser.has_button("Resume south"))
        self.assertIn("Paging is alive, but not all is as it should be", browser.text(".verdict"))
        browser.press("Resume south")
        until(lambda: browser.has_button("Pause south"))

    def test_a_test_page_is_sent_by_the_engine(self):
        self.sign_in()
        self.open("/tests")
        browser.press("Send")
        until(lambda: "sent" == browser.text("#refreshed [role=status]"), 120)

    def test_what_fails_is_told_with_its_reason(self):
        self.sign_in()
        site.raise_alarm("failing", "BUSY/1")
        until(lambda: site.status()["lines"] and self.shows("/failed", "BUSY"), 120)
        self.assertIn("dialling failed: busy, no answer", browser.text())

    def test_a_search_is_a_link_that_keeps(self):
        site.raise_alarm("searched", "OPS/kept")
        self.sign_in()
        self.open("/alarms")
        browser.one("[name=group]").send_keys("OPS/k*")
        browser.press("Search")
        until(lambda: "group=OPS%2Fk" in browser.driver.current_url)
        until(lambda: "searched is full" in browser.text("table"))
        self.assertEqual(1, len(browser.all("tbody tr")))
        browser.driver.refresh()
        self.assertEqual("OPS/k*", browser.one("[name=group]").get_attribute("value"))

    # --- The part that is loaded again.

    def test_a_part_is_loaded_again_and_keeps_focus_and_place(self):
        self.sign_in()
        self.assertEqual("This part is loaded again every 5 seconds.",
                         browser.text(".refresh [role=status]"))
        browser.look(width=800, height=300)
        browser.driver.execute_script("window.scrollTo(0, 200)")
        browser.driver.execute_script("document.getElementById('line-1').focus({preventScroll: true})")
        alarm = site.raise_alarm("refreshed")
        until(lambda: str(alarm) in browser.text(), 15)
        self.assertEqual("line-1", browser.focused().get_attribute("id"))
        self.assertEqual(200, browser.driver.execute_script("return window.scrollY"))

    def test_who_stops_it_has_peace_on_all_pages(self):
        self.sign_in()
        browser.press("Stop refreshing")
        self.assertEqual("Refreshing is stopped.", browser.text(".refresh [role=status]"))
        alarm = site.raise_alarm("not seen")
        time.sleep(7)  # longer than a round
        self.assertNotIn(str(alarm), browser.text())
        self.open("/alarms")
        self.assertEqual("Refreshing is stopped.", browser.text(".refresh [role=status]"))
        browser.press("Refresh again")
        self.assertEqual("Stop refreshing", browser.text("#refreshing"))

    def test_without_scripts_all_is_there(self):
        alarm = site.raise_alarm("no script")
        browser.look(scripts=False)
        self.sign_in()
        self.assertEqual([], browser.all(".refresh"))
        browser.follow(str(alarm))
        until(lambda: browser.has_button("Acknowledge"))
        browser.press("Acknowledge")
        until(lambda: "acknowledged" in self.state_of(alarm))

    def test_the_database_is_away_and_comes_back(self):
        self.sign_in()
        site.take_database_away()
        try:
            until(lambda: "is old" in browser.text(".refresh"), 20)
            self.open("/alarms")
            self.assertIn("The database is away", browser.text("[role=alert]"))
            self.assertEqual([], browser.findings())
        finally:
            site.bring_database_back()
        self.open("/")
        until(lambda: self.shows("/", "Is paging alive?"), 30)

    # --- For everybody.

    def test_all_is_reached_by_the_keyboard_alone(self):
        alarm = site.raise_alarm("keys")
        self.open("/sign-in")
        browser.tab_to("token").send_keys(site.tokens["manage"], Keys.ENTER)
        until(lambda: browser.text("h1") == "Overview")
        browser.type(Keys.TAB)
        self.assertEqual("Skip to the content", browser.focused().text)
        browser.type(Keys.ENTER)
        self.assertEqual("main", browser.focused().get_attribute("id"))
        browser.tab_to(str(alarm)).send_keys(Keys.ENTER)
        until(lambda: browser.text("h1") == f"Alarm {alarm}")
        browser.tab_to("comment").send_keys("by keys")
        at = browser.tab_to("Acknowledge")
        self.assertNotEqual("none", at.value_of_css_property("outline-style"))
        at.send_keys(Keys.ENTER)
        until(lambda: "acknowledged" in self.state_of(alarm))

    def test_every_page_is_without_a_finding_at_all_widths_in_both_schemes(self):
        alarm = site.raise_alarm("seen by all <b>&amp;</b> " + "x" * 80)
        self.open("/sign-in")
        self.see("/sign-in")
        self.sign_in()
        self.open(f"/alarm?number={alarm}")
        until(lambda: browser.all("a[href^='/call']"), 120)
        call = browser.one("a[href^='/call']").get_attribute("href").removeprefix(site.address)
        for path in LISTS + [f"/alarm?number={alarm}", call, "/test?number=1", "/nothing",
                             "/alarms?state=new&group=none", "/alarms?since=soon"]:
            self.see(path)

    def see(self, path):
        name = path.strip("/").split("?")[0].replace("/", "-") or "overview"
        name += "-search" if "group=" in path else "-mistake" if "soon" in path else ""
        for width in (TELEPHONE, TABLET, WALL):
            for scheme in ("light", "dark"):
                with self.subTest(path=path, width=width, scheme=scheme):
                    browser.look(width=width, height=640 if width == TELEPHONE else 1080,
                                 scheme=scheme)
                    self.open(path)
                    browser.picture(f"{PICTURES}/{name}-{width}-{scheme}.png")
                    self.assertEqual([], browser.findings())
                    self.assertFalse(browser.is_wider_than_the_screen())
                    self.assertEqual(
                        [], [c for c in browser.complaints() if "status of 40" not in c])


class Crowd(Case):
    def setUp(self):
        super().setUp()
        self.site = Site(BINARIES, LIBRARIES).__enter__()
        self.addCleanup(self.site.__exit__)

    def test_ten_thousand_pending_pages_are_shown_quickly(self):
        self.site.run("line", "pause", "north")
        self.site.run("line", "pause", "south")
        self.sign_in()
        few = self.seconds_to_show()
        alarms = [{"text": f"number {i}", "group": "OPS/many"} for i in range(1000)]
        for _ in range(5):
            self.site.run("alarm", "raise", "--json", given=json.dumps(alarms))
        until(lambda: self.shows("/pages", "Pending: 10"), 120)
        many = self.seconds_to_show()
        print(f"\noverview: {few:.2f} s with few pending pages, {many:.2f} s with ten thousand")
        self.assertLess(many, 2)
        self.open("/pages")
        browser.follow("Further ones")
        until(lambda: "from=" in browser.driver.current_url)
        self.assertEqual(50, len(browser.all("tbody tr")))

    def seconds_to_show(self):
        begun = time.monotonic()
        self.open("/")
        return time.monotonic() - begun


class OnAServer(Case):
    def test_the_server_is_stopped_and_comes_back(self):
        server = Server()
        try:
            with Site(BINARIES, LIBRARIES, server.database) as other:
                self.see_it_stop(server, other)
        finally:
            server.remove()

    def see_it_stop(self, server, other):
        other.run("alarm", "raise", "--group", "OPS/1", "kept on a server")
        browser.open(f"{other.address}/sign-in")
        browser.one("[name=token]").send_keys(other.token("maria", "look"))
        browser.press("Sign in")
        until(lambda: "kept on a server" in browser.text())
        server.stop()
        until(lambda: "is old" in browser.text(".refresh"), 40)
        self.assertIn("kept on a server", browser.text())
        browser.open(f"{other.address}/alarms")
        until(lambda: "The database is away" in browser.text("[role=alert]"), 40)
        server.start()
        browser.open(other.address)
        until(lambda: browser.driver.refresh() or "kept on a server" in browser.text(), 60)


class Demo(Case):
    def test_a_month_is_there_to_click_through_and_nothing_is_left_of_it(self):
        folder = tempfile.mkdtemp(prefix="pagerfwd-browser-")
        address = f"127.0.0.1:{free_port()}"
        demo = subprocess.Popen([f"{BINARIES}/pagerfwd", "--library", site.library, "web",
                                 "--demo", "--listen", address],
                                env={**os.environ, "TMPDIR": folder}, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        try:
            token = next(line for line in demo.stdout if line.startswith("  pagerfwd_")).strip()
            until(lambda: is_there(f"http://{address}/sign-in"))
            self.click_through(f"http://{address}", token)
        finally:
            demo.send_signal(signal.SIGINT)
            demo.communicate(timeout=60)
        self.assertEqual([], os.listdir(folder))
        os.rmdir(folder)

    def click_through(self, address, token):
        browser.open(f"{address}/sign-in")
        browser.one("[name=token]").send_keys(token)
        browser.press("Sign in")
        until(lambda: "Paging is alive" in browser.text(".verdict"), 120)
        browser.picture(f"{PICTURES}/demo.png")
        browser.open(f"{address}/failed")
        self.assertGreater(len(browser.all("tbody tr")), 10)
        browser.picture(f"{PICTURES}/demo-failed.png")
        browser.one("a[href^='/call']").click()
        until(lambda: "What was said" in browser.text())
        browser.picture(f"{PICTURES}/demo-call.png")
        browser.open(f"{address}/trail")
        self.assertIn("maria", browser.text())


if __name__ == "__main__":
    BINARIES, LIBRARIES, AXE, PICTURES = sys.argv[1:5]
    os.makedirs(PICTURES, exist_ok=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
